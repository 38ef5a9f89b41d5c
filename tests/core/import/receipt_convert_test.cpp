// SPDX-License-Identifier: GPL-3.0-or-later
// An Authorize.Net receipt's text turned into the receipt document.
#include <gtest/gtest.h>

#include "common/text.h"
#include "import/exchangefile.h"
#include "import/receipt.h"
#include "import/receiptimport.h"
#include "platform/programfolder.h"
#include "support/testsupport.h"

namespace dorvane::imports {
namespace {

constexpr const char* kOpen = "<?xml version=\"1.0\" ?><AuthorizeNet>";
constexpr const char* kClose = "</AuthorizeNet>";

std::string body(const std::string& xml) {
    EXPECT_EQ(xml.rfind(kOpen, 0), 0u) << xml;
    EXPECT_GE(xml.size(), std::string(kOpen).size() + std::string(kClose).size());
    EXPECT_EQ(xml.substr(xml.size() - std::string(kClose).size()), kClose);
    return xml.substr(std::string(kOpen).size(),
                      xml.size() - std::string(kOpen).size() - std::string(kClose).size());
}

TEST(ReceiptToXml, OneLineGivesOneElement) {
    const struct {
        const char* line;
        const char* element;
    } cases[] = {
        {"Invoice Number : 1234", "<InvoiceNumber>1234</InvoiceNumber>\r\n"},
        {"Customer ID : C-17", "<CustomerID>C-17</CustomerID>\r\n"},
        {"P.O. Number : 55", "<P.O.Number>55</P.O.Number>\r\n"},
        {"Ship/To : x", "<ShipTo>x</ShipTo>\r\n"},
        {"Amount : $12.50", "<Amount>$12.50</Amount>\r\n"},
        {"Note : see 10:30", "<Note>see 10</Note>\r\n"},
        {"Fax :", "<Fax></Fax>\r\n"},
        {"Fax :   ", "<Fax></Fax>\r\n"},
        {"Date/Time: 12-Mar-2003 10:15:22 AM", "<DateTime>12-Mar-2003</DateTime>\r\n"},
        // Trimmed first, then eleven characters: a one-digit day lets the blank in.
        {"Date/Time: 1-Mar-2003 9:05:00 AM", "<DateTime>1-Mar-2003 </DateTime>\r\n"},
        {"Date/Time:", "<DateTime></DateTime>\r\n"},
        // Eleven characters, not eleven bytes.
        {"Date/Time: \xC3\x84-M\xC3\xA4rz-2003 9:00",
         "<DateTime>\xC3\x84-M\xC3\xA4rz-2003</DateTime>\r\n"},
        // "Date/Time" is looked for at the very start of the untrimmed line only.
        {" Date/Time: 12-Mar-2003 10:15", "<DateTime>12-Mar-2003 10</DateTime>\r\n"},
        {"Date/Time 12-Mar-2003", ""},
        // Stray blanks: tabs, no-break spaces, trailing blanks.
        {"Company\t:\tCaf\xC3\xA9 Lumi\xC3\xA8re \t",
         "<Company>Caf\xC3\xA9 Lumi\xC3\xA8re</Company>\r\n"},
        {"First\xC2\xA0Name\xC2\xA0: Zo\xC3\xAB\xC2\xA0", "<FirstName>Zo\xC3\xAB</FirstName>\r\n"},
        {"Dear customer, thank you.", ""},
        {"  \t ", ""},
        // Values go in as they stand.
        {"Company : Smith & Sons", "<Company>Smith & Sons</Company>\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(body(receiptToXml(c.line)), c.element);
    }
}

TEST(ReceiptToXml, SectionHeadersWrapTheFieldsThatFollow) {
    const struct {
        const char* label;
        const char* text;
        const char* body;
    } cases[] = {
        {"billing then shipping then another header",
         "=== CUSTOMER BILLING INFORMATION ===\nCompany : A\n=== Customer Shipping Information "
         "===\nCompany : B\n======= ADDITIONAL INFORMATION ======\nTax : 1",
         "<Billing><Company>A</Company>\r\n</Billing><Shipping><Company>B</Company>\r\n"
         "</Shipping><Tax>1</Tax>\r\n"},
        {"another header with nothing open", "=== RESULTS ===\nResponse : approved",
         "<Response>approved</Response>\r\n"},
        {"billing twice", "=CUSTOMER BILLING\n=CUSTOMER BILLING\nCity : X",
         "<Billing></Billing><Billing><City>X</City>\r\n"},
        // A section open at the end stays open.
        {"open at the end", "=CUSTOMER SHIPPING\nCity : Y", "<Shipping><City>Y</City>\r\n"},
        {"indented header is no header", "  === CUSTOMER BILLING ===\nCity : Z",
         "<City>Z</City>\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(body(receiptToXml(c.text)), c.body);
    }
}

TEST(ReceiptToXml, LineEndingsOfAnyPlatformGiveTheSameDocument) {
    const std::string crlf = test::readFile(test::dataDir() / "import/receipts/standard-crlf.txt");
    ASSERT_NE(crlf.find("\r\n"), std::string::npos);
    const std::string lf = text::replaceAll(crlf, "\r\n", "\n");
    const std::string cr = text::replaceAll(crlf, "\r\n", "\r");
    const std::string expected = receiptToXml(crlf);
    EXPECT_EQ(receiptToXml(lf), expected);
    EXPECT_EQ(receiptToXml(cr), expected);
    EXPECT_EQ(receiptToXml("\xEF\xBB\xBF" + lf), expected);
}

TEST(ReceiptToXml, AStandardReceiptOpensAsAReceiptDocument) {
    const std::string text = test::readFile(test::dataDir() / "import/receipts/standard-crlf.txt");
    auto file = parseExchangeText(receiptToXml(text));
    ASSERT_TRUE(file.ok()) << file.error().description;
    EXPECT_EQ(file->kind, DocumentKind::AuthorizeNet);
    const xml::Document& doc = file->document;
    EXPECT_EQ(doc.valueOf("//Company"), "Caf\xC3\xA9 Lumi\xC3\xA8re");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Billing/Company"), "Caf\xC3\xA9 Lumi\xC3\xA8re");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Shipping/City"),
              "Montr\xC3\xA9"
              "al");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/DateTime"), "7-Apr-2003 ");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Amount"), "185.40 (USD)");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/TransactionID"), "2147483790");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/AddressVerification"), "Street Address");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Billing/StateProvince"), "QC");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Billing/ZipPostalCode"), "H2X 1Y4");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/Billing/E-Mail"), "zoe@example.com");
    EXPECT_EQ(doc.valueOf("/AuthorizeNet/PONumber"), "55");
    EXPECT_EQ(doc.selectAll("/AuthorizeNet/Billing/*").size(), 12u);
}

TEST(ReceiptToXml, TextThatMakesNoDocumentIsRefusedWhenOpened) {
    std::string binary;
    for (int i = 0; i < 2048; ++i) {
        binary += static_cast<char>((i * 37 + 11) % 256);
    }
    const struct {
        const char* label;
        std::string text;
        bool opens;
    } cases[] = {
        {"empty clipboard", "", true},
        {"no recognisable line", "hello\nworld", true},
        {"markup in a value", "Company : Smith & Sons", false},
        {"label that is no element name", "1st Line : x", false},
        {"section left open", "=CUSTOMER BILLING\nCompany : A", false},
        {"not UTF-8", "Company : Caf\xE9", false},
        {"binary", binary, false},
        {"NUL in a value", std::string("Company : A\0B", 13), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        auto file = parseExchangeText(receiptToXml(c.text));
        EXPECT_EQ(file.ok(), c.opens);
        if (file) {
            EXPECT_EQ(file->kind, DocumentKind::AuthorizeNet);
        } else {
            EXPECT_EQ(cannotProcessMessage(file.error()).rfind("Cannot process file ", 0), 0u);
        }
    }
}

TEST(ReceiptToXml, EscapedValuesKeepMarkupCharacters) {
    auto file = parseExchangeText(receiptToXml("Company : Smith & <Sons>", true));
    ASSERT_TRUE(file.ok()) << file.error().description;
    EXPECT_EQ(file->document.valueOf("//Company"), "Smith & <Sons>");
}

// A clipboard that took far more than the receipt is refused before anything is written.
TEST(ReceiptImport, TextLongerThanAnyReceiptIsRefused) {
    const test::TempDir dir;
    const platform::ProgramFolder folder(dir.path().string());
    test::ScriptedUi ui;
    ReceiptImport receipts(ui, folder);
    const std::string receipt =
        test::readFile(test::dataDir() / "import/receipts/standard-crlf.txt");
    std::string pasted;
    while (pasted.size() <= kMaxReceiptText) {
        pasted += receipt;
    }
    EXPECT_FALSE(receipts.writeReceiptFile(pasted));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.messages[0].text.find("Copy only the receipt"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / kReceiptFileName));
    EXPECT_TRUE(receipts.writeReceiptFile(receipt));
}

}  // namespace
}  // namespace dorvane::imports
