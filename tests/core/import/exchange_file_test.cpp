// SPDX-License-Identifier: GPL-3.0-or-later
// Reading exchange files: the document kind from child node 1, and files that must be refused
// without harm.
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "import/exchangefile.h"
#include "import/receipt.h"
#include "support/testsupport.h"

namespace dorvane::imports {
namespace {

using test::TempDir;

struct KindCase {
    const char* label;
    const char* text;
    std::optional<std::string> kindName;
    DocumentKind kind;
};

TEST(ExchangeFile, KindIsTheNameOfChildNodeOneUpperCased) {
    const KindCase cases[] = {
        {"invoice", "<?xml version=\"1.0\"?><InvoiceRet><CompanyRet/></InvoiceRet>", "InvoiceRet",
         DocumentKind::Invoice},
        {"estimate, declaration with encoding",
         "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<EstimateRet/>", "EstimateRet",
         DocumentKind::Estimate},
        {"sales receipt", "<?xml version=\"1.0\" ?>\r\n<SalesReceiptRet/>", "SalesReceiptRet",
         DocumentKind::SalesReceipt},
        {"receipt", "<?xml version=\"1.0\" ?><AuthorizeNet></AuthorizeNet>", "AuthorizeNet",
         DocumentKind::AuthorizeNet},
        {"handheld", "<?xml version=\"1.0\"?><Dorvane_PDA/>", "Dorvane_PDA", DocumentKind::Pda},
        {"any case is recognised", "<?xml version=\"1.0\"?><invoiceret/>", "invoiceret",
         DocumentKind::Invoice},
        {"unknown root", "<?xml version=\"1.0\"?><BillRet/>", "BillRet", DocumentKind::Unknown},
        {"byte-order mark", "\xEF\xBB\xBF<?xml version=\"1.0\"?><InvoiceRet/>", "InvoiceRet",
         DocumentKind::Invoice},
        // Child 1 is whatever stands second: a comment between declaration and root hides it.
        {"comment before the root", "<?xml version=\"1.0\"?><!-- sent --><InvoiceRet/>", "#comment",
         DocumentKind::Unknown},
        {"document type before the root",
         "<?xml version=\"1.0\"?><!DOCTYPE InvoiceRet SYSTEM \"x.dtd\"><InvoiceRet/>", "InvoiceRet",
         DocumentKind::Invoice},
        {"processing instruction before the root",
         "<?xml version=\"1.0\"?><?qbxml version=\"1.1\"?><InvoiceRet/>", "qbxml",
         DocumentKind::Unknown},
        // Without a declaration the root is child 0.
        {"no declaration, nothing after the root", "<InvoiceRet/>", std::nullopt,
         DocumentKind::Unknown},
        {"no declaration, comment after the root", "<InvoiceRet/><!-- end -->", "#comment",
         DocumentKind::Unknown},
        {"no declaration, comment before the root", "<!-- x --><EstimateRet/>", "EstimateRet",
         DocumentKind::Estimate},
    };
    for (const KindCase& c : cases) {
        SCOPED_TRACE(c.label);
        auto file = parseExchangeText(c.text);
        ASSERT_TRUE(file.ok()) << file.error().description;
        EXPECT_EQ(file->kindName, c.kindName);
        EXPECT_EQ(file->kind, c.kind);
    }
}

TEST(ExchangeFile, ConversionSelectsTheRootByItsExactName) {
    auto exact =
        parseExchangeText("<?xml version=\"1.0\"?><InvoiceRet><TxnID>1</TxnID></InvoiceRet>");
    ASSERT_TRUE(exact.ok());
    EXPECT_EQ(selectConversionRoot(exact->document, exact->kind).name(), "InvoiceRet");

    auto lower = parseExchangeText("<?xml version=\"1.0\"?><invoiceret/>");
    ASSERT_TRUE(lower.ok());
    EXPECT_EQ(lower->kind, DocumentKind::Invoice);
    EXPECT_FALSE(selectConversionRoot(lower->document, lower->kind));
}

TEST(ExchangeFile, UnicodeFileKeepsItsText) {
    TempDir dir;
    // UTF-16 with its byte-order mark, as some editors save.
    const std::string utf8 =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?><InvoiceRet><CompanyRet>"
        "<CompanyName>M\xC3\xBCller &amp; S\xC3\xB6hne</CompanyName>"
        "</CompanyRet></InvoiceRet>";
    std::string utf16 = "\xFF\xFE";
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        unsigned code = c;
        if (c >= 0xC0) {  // two-byte sequences only in this text
            code = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3Fu);
        }
        utf16 += static_cast<char>(code & 0xFF);
        utf16 += static_cast<char>(code >> 8);
    }
    test::writeFile(dir / "u16.dvx", utf16);
    auto file = readExchangeFile(dir / "u16.dvx");
    ASSERT_TRUE(file.ok()) << file.error().description;
    EXPECT_EQ(file->kind, DocumentKind::Invoice);
    EXPECT_EQ(file->document.valueOf("//CompanyRet/CompanyName"), "M\xC3\xBCller & S\xC3\xB6hne");
}

TEST(ExchangeFile, HostileFilesAreRefusedWithAReason) {
    TempDir dir;
    test::writeFile(dir / "secret.txt", "TOPSECRET");
    std::string binary;
    for (int i = 0; i < 4096; ++i) {
        binary += static_cast<char>((i * 131 + 7) % 256);
    }
    const std::string invoice =
        "<?xml version=\"1.0\"?><InvoiceRet><CompanyRet><CompanyName>Acme</CompanyName>"
        "</CompanyRet><InvoiceLineRet><Desc>x</Desc></InvoiceLineRet></InvoiceRet>";
    struct Hostile {
        const char* label;
        std::string text;
    };
    const Hostile cases[] = {
        {"billion laughs",
         "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
         "<!ENTITY lol2 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
         "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">"
         "<!ENTITY lol4 \"&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;\">"
         "<!ENTITY lol5 \"&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;\">"
         "<!ENTITY lol6 \"&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;\">"
         "<!ENTITY lol7 \"&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;\">"
         "<!ENTITY lol8 \"&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;\">"
         "<!ENTITY lol9 \"&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;\">]>"
         "<InvoiceRet><CompanyRet><CompanyName>&lol9;</CompanyName></CompanyRet></InvoiceRet>"},
        {"external entity",
         "<?xml version=\"1.0\"?><!DOCTYPE InvoiceRet [<!ENTITY x SYSTEM \"file://" +
             (dir / "secret.txt").string() +
             "\">]><InvoiceRet><CompanyRet><CompanyName>&x;</CompanyName></CompanyRet>"
             "</InvoiceRet>"},
        {"binary", binary},
        {"empty", ""},
        {"truncated", invoice.substr(0, invoice.size() / 2)},
        {"NUL inside", std::string("<?xml version=\"1.0\"?><InvoiceRet>a\0b</InvoiceRet>", 45)},
    };
    for (const Hostile& c : cases) {
        SCOPED_TRACE(c.label);
        test::writeFile(dir / "hostile.dvx", c.text);
        auto file = readExchangeFile(dir / "hostile.dvx");
        ASSERT_FALSE(file.ok());
        EXPECT_FALSE(file.error().description.empty());
        const std::string message = cannotProcessMessage(file.error());
        EXPECT_EQ(message.rfind("Cannot process file ", 0), 0u);
        EXPECT_EQ(message.find("TOPSECRET"), std::string::npos);
    }
}

TEST(ExchangeFile, ExternalDocumentTypeIsNeverFetched) {
    TempDir dir;
    test::writeFile(dir / "evil.dtd", "<!ENTITY x \"TOPSECRET\">");
    test::writeFile(dir / "in.dvx", "<?xml version=\"1.0\"?><!DOCTYPE InvoiceRet SYSTEM \"" +
                                        (dir / "evil.dtd").string() +
                                        "\"><InvoiceRet><CompanyRet><CompanyName>&x;</CompanyName>"
                                        "</CompanyRet></InvoiceRet>");
    auto file = readExchangeFile(dir / "in.dvx");
    if (file.ok()) {
        EXPECT_EQ(file->document.valueOf("//CompanyName").find("TOPSECRET"), std::string::npos);
    }
}

TEST(ExchangeFile, OversizedFilesAreRefusedBeforeReading) {
    TempDir dir;
    // 100 MB that the size alone refuses (sparse on disk).
    {
        std::ofstream out(dir / "huge.dvx", std::ios::binary);
        out << "<?xml version=\"1.0\"?><InvoiceRet>";
    }
    std::filesystem::resize_file(dir / "huge.dvx", 100u * 1024u * 1024u);
    // Just over the cap, a complete document: refused all the same.
    std::string big = "<?xml version=\"1.0\"?><InvoiceRet><Memo>";
    big.append(kMaxExchangeFileSize, 'a');
    big += "</Memo></InvoiceRet>";
    test::writeFile(dir / "big.dvx", big);

    for (const char* name : {"huge.dvx", "big.dvx"}) {
        SCOPED_TRACE(name);
        auto file = readExchangeFile(dir / name);
        ASSERT_FALSE(file.ok());
        EXPECT_EQ(cannotProcessMessage(file.error()),
                  "Cannot process file The file is larger than 8 MB");
    }
    EXPECT_FALSE(parseExchangeText(big).ok());
    // A receipt document has a cap of its own, far below: its sheets search every section.
    std::string receipts = "<?xml version=\"1.0\"?><AuthorizeNet>";
    while (receipts.size() <= kMaxReceiptDocument) {
        receipts += "<Billing><Company>Acme</Company></Billing>";
    }
    receipts += "</AuthorizeNet>";
    auto refused = parseExchangeText(receipts);
    ASSERT_FALSE(refused.ok());
    EXPECT_NE(refused.error().description.find("copy only the receipt"), std::string::npos);
}

TEST(ExchangeFile, WhatCannotBeReadIsRefused) {
    TempDir dir;
    for (const std::filesystem::path& path :
         {dir / "missing.dvx", dir.path(), std::filesystem::path("/dev/zero")}) {
        SCOPED_TRACE(path.string());
        auto file = readExchangeFile(path);
        ASSERT_FALSE(file.ok());
        EXPECT_FALSE(file.error().description.empty());
    }
}

TEST(RequestProlog, DeclarationAndQbxmlDoctypeEachEndWithCrLf) {
    EXPECT_EQ(withRequestProlog("<QBXML/>"),
              "<?xml version=\"1.0\" ?>\r\n<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD "
              "1.1//EN' 'http://developer.intuit.com'>\r\n<QBXML/>");
}

}  // namespace
}  // namespace dorvane::imports
