// SPDX-License-Identifier: GPL-3.0-or-later
// What a user adds to a mailed document: the facts its placeholders stand for, the pay-now
// link's encoding, the own words' file and the PDF's page.
#include "mail/documentextras.h"

#include <gtest/gtest.h>
#include <tuple>

#include "browser/documenttypes.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "support/testsupport.h"

namespace dorvane::mail {
namespace {

struct FactsCase {
    const char* type;
    const char* record;
    const char* number;
    const char* customer;
    const char* total;
    const char* balance;
    const char* currency;
};

TEST(DocumentExtras, FactsFollowEachKindOfRecord) {
    const FactsCase cases[] = {
        // An invoice has no TotalAmount: subtotal and tax; its balance is what is still due.
        {"Invoice",
         "<InvoiceRet><RefNumber>50</RefNumber><CustomerRef><FullName>Able Co</FullName>"
         "</CustomerRef><Subtotal>100</Subtotal><SalesTaxTotal>7.5</SalesTaxTotal>"
         "<BalanceRemaining>0.00</BalanceRemaining></InvoiceRet>",
         "50", "Able Co", "107.50", "0.00", "USD"},
        {"SalesReceipt",
         "<SalesReceiptRet><RefNumber>7</RefNumber><CustomerRef><FullName>B</FullName>"
         "</CustomerRef><TotalAmount>12</TotalAmount></SalesReceiptRet>",
         "7", "B", "12.00", "0.00", "USD"},
        {"CreditMemo",
         "<CreditMemoRet><CustomerRef><FullName>C</FullName></CustomerRef><TotalAmount>30"
         "</TotalAmount><CreditRemaining>10</CreditRemaining><CurrencyRef><FullName>Euro"
         "</FullName></CurrencyRef></CreditMemoRet>",
         "", "C", "30.00", "10.00", "EUR"},
        {"PurchaseOrder",
         "<PurchaseOrderRet><RefNumber>PO-1</RefNumber><VendorRef><FullName>Vend</FullName>"
         "</VendorRef><TotalAmount>5</TotalAmount></PurchaseOrderRet>",
         "PO-1", "Vend", "5.00", "5.00", "USD"},
        {"Statement",
         "<CustomerRet><FullName>Kim</FullName><AccountNumber>A-9</AccountNumber>"
         "<TotalBalance>1234.5</TotalBalance></CustomerRet>",
         "A-9", "Kim", "1234.50", "1234.50", "USD"},
    };
    for (const FactsCase& c : cases) {
        auto doc = xml::Document::parse(c.record);
        ASSERT_TRUE(doc.ok()) << c.record;
        const DocumentFacts f =
            documentFacts(*browser::findDocumentType(c.type), doc->root(), "Harbor", "US");
        EXPECT_EQ(f.number, c.number) << c.type;
        EXPECT_EQ(f.customer, c.customer) << c.type;
        EXPECT_EQ(f.total, c.total) << c.type;
        EXPECT_EQ(f.balance, c.balance) << c.type;
        EXPECT_EQ(f.currency, c.currency) << c.type;
        EXPECT_EQ(f.company, "Harbor");
    }
}

TEST(DocumentExtras, PlaceholdersLinksPagesAndNames) {
    DocumentFacts f;
    f.number = "10/4 #1";
    f.customer = "Baker & Sons";
    f.balance = "5.00";
    f.currency = "CAD";
    EXPECT_EQ(fillPlaceholders("Invoice {Number} for {customer}: {balance} {currency} {x} {", f),
              "Invoice 10/4 #1 for Baker & Sons: 5.00 CAD {x} {");
    EXPECT_EQ(fillPlaceholders("https://p.example/i/{number}?c={customer}&a={balance}", f, true),
              "https://p.example/i/10%2F4%20%231?c=Baker%20%26%20Sons&a=5.00");
    EXPECT_EQ(pdfFileName(*browser::findDocumentType("Invoice"), f), "Invoice-10-4 #1.pdf");

    // Only invoices and statements ask to be paid.
    for (const browser::DocumentType& type : browser::kDocumentTypes) {
        const std::string_view name = type.name;
        EXPECT_EQ(takesPayLink(type), name == "Invoice" || name == "Statement") << name;
    }
    EXPECT_NE(
        payButtonHtml("https://x.example/?a=1&b=2").find("href=\"https://x.example/?a=1&amp;b=2\""),
        std::string::npos);
    // The HTML part is ASCII: other letters go as references, a broken byte as U+FFFD.
    EXPECT_NE(coverHtml("M\xc3\xbcller \xff").find("M&#252;ller &#65533;"), std::string::npos);
    EXPECT_EQ(coverHtml("Hi <you>,\n\nline one\nline two\n"),
              "<div style=\"font-family:Arial,Helvetica,sans-serif;font-size:14px;line-height:1.5;"
              "color:#222222;max-width:660px;margin:0 0 20px 0;\"><p style=\"margin:0 0 10px "
              "0;\">Hi &lt;you&gt;,</p><p style=\"margin:0 0 10px 0;\">line one<br>line "
              "two</p></div>");

    // "auto" prints on Letter in North America and where the country is unknown.
    platform::MailSettings settings;
    for (const auto& [size, country, expected] : {std::tuple{"auto", "US", pdf::PageSize::Letter},
                                                  {"auto", "CA", pdf::PageSize::Letter},
                                                  {"auto", "", pdf::PageSize::Letter},
                                                  {"auto", "UK", pdf::PageSize::A4},
                                                  {"A4", "US", pdf::PageSize::A4},
                                                  {"letter", "DE", pdf::PageSize::Letter}}) {
        settings.pageSize = size;
        EXPECT_EQ(pageSetup(settings, country).size, expected) << size << " " << country;
    }
    settings.marginPoints = 5;
    EXPECT_EQ(pageSetup(settings, "US").marginPoints, 18);
}

TEST(DocumentExtras, OwnWordsKeepTheirLinesAndABrokenFileIsAnError) {
    test::TempDir dir;
    const platform::ProgramFolder folder(dir.path());
    auto none = DocumentTexts::load(folder);
    ASSERT_TRUE(none.ok());
    EXPECT_TRUE(none->words("Invoice").empty());

    DocumentTexts texts;
    texts.setWords("Invoice", {"Invoice {number}", "Dear {customer},\n\n  Thanks & bye"});
    texts.setWords("Estimate", {"E", ""});
    texts.setWords("Estimate", {});
    ASSERT_TRUE(texts.save(folder).ok());
    auto back = DocumentTexts::load(folder);
    ASSERT_TRUE(back.ok());
    EXPECT_EQ(back->words("Invoice").cover, "Dear {customer},\n\n  Thanks & bye");
    EXPECT_TRUE(back->words("Estimate").empty());

    test::writeFile(dir / kDocumentTextsFile, "<DocumentTexts><Document type=");
    EXPECT_FALSE(DocumentTexts::load(folder).ok());
}

}  // namespace
}  // namespace dorvane::mail
