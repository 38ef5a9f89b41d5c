// SPDX-License-Identifier: GPL-3.0-or-later
// The PDF copy of a mailed document: the shipped style sheets' HTML drawn to PDF, read back
// with poppler's pdftotext, pdfinfo and pdffonts.
#include "pdf/pdf.h"

#include <gtest/gtest.h>
#include <thread>

#include "../render/rendersupport.h"

namespace dorvane::pdf {
namespace {

using dorvane::render::test::count;
using dorvane::render::test::loadFixture;
using dorvane::render::test::render;
using dorvane::test::runCommand;
using dorvane::test::TempDir;
using dorvane::test::writeFile;

// A PDF as poppler reads it: its text laid out page by page, its info and its fonts.
struct ReadBack {
    std::string text;
    std::vector<std::string> pages;
    std::string info;
    std::string fonts;

    explicit ReadBack(const std::string& pdf) {
        TempDir dir;
        const std::string file = (dir / "copy.pdf").string();
        writeFile(file, pdf);
        std::string err;
        EXPECT_EQ(runCommand("pdftotext -layout '" + file + "' -", &text, &err), 0)
            << "pdftotext (poppler-utils, see scripts/setup.sh): " << err;
        EXPECT_EQ(runCommand("pdfinfo '" + file + "'", &info, &err), 0) << err;
        EXPECT_EQ(runCommand("pdffonts '" + file + "'", &fonts, &err), 0) << err;
        for (std::size_t start = 0; start < text.size();) {
            std::size_t end = text.find('\f', start);
            if (end == std::string::npos) {
                end = text.size();
            }
            pages.push_back(text.substr(start, end - start));
            start = end + 1;
        }
    }

    int pageCount() const {
        const std::size_t at = info.find("Pages:");
        return at == std::string::npos ? -1 : std::atoi(info.c_str() + at + 6);
    }
    // The page that shows `what`, from 1; 0 for none.
    int pageOf(const std::string& what) const {
        for (std::size_t i = 0; i < pages.size(); ++i) {
            if (pages[i].find(what) != std::string::npos) {
                return static_cast<int>(i) + 1;
            }
        }
        return 0;
    }
};

ReadBack readBack(const Result<std::string>& pdf) {
    EXPECT_TRUE(pdf.ok()) << (pdf.ok() ? "" : pdf.error().description);
    return ReadBack(pdf.ok() ? *pdf : std::string());
}

// The fixture company's header over one of its invoices, as a send run mails it.
class InvoiceCopy : public ::testing::Test {
protected:
    std::string mailed(const std::string& txnId, const std::string& logo = "") {
        std::string header = render(
            "company.xslt", fixture.selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet"),
            {{"logo", logo}});
        return header +
               render("invoice.xslt", fixture.selectOne("//InvoiceRet[TxnID=\"" + txnId + "\"]"));
    }

    // An invoice of `lines` lines, "Item 001" at 1.00 to "Item NNN" at NNN.00.
    static std::string longInvoice(int lines) {
        std::string xml =
            "<InvoiceRet><TxnID>9-1</TxnID><CustomerRef><FullName>Long Lines Ltd"
            "</FullName></CustomerRef><TxnDate>2026-11-17</TxnDate><RefNumber>"
            "7001</RefNumber>";
        for (int i = 1; i <= lines; ++i) {
            char line[320];
            std::snprintf(line, sizeof line,
                          "<InvoiceLineRet><TxnLineID>L%d</TxnLineID><ItemRef><FullName>Item %03d"
                          "</FullName></ItemRef><Desc>Part %03d</Desc><Quantity>1</Quantity>"
                          "<Rate>%d.00</Rate><Amount>%d.00</Amount></InvoiceLineRet>",
                          i, i, i, 1000 + i, 1000 + i);
            xml += line;
        }
        xml += "</InvoiceRet>";
        auto doc = xml::Document::parse(xml);
        EXPECT_TRUE(doc.ok());
        return doc.ok() ? render("invoice.xslt", doc->root()) : std::string();
    }

    xml::Document fixture = loadFixture("invoices.xml");
    PageSetup letter;
};

TEST_F(InvoiceCopy, ShowsTheDocumentWithEmbeddedFontsOnItsPage) {
    const ReadBack pdf = readBack(renderPdf(mailed("2484-1263499231"), letter, "Invoice 1041"));
    EXPECT_EQ(pdf.pageCount(), 1) << pdf.info;
    for (const char* shown :
         {"Harbor Light Fixtures", "1041", "Smith & <Sons> Plumbing", "Installation labor",
          "Brushed nickel faucet, single handle", "Hardware:Sink", "180.51", "Balance Due",
          "1,474.56", "Page 1 of 1"}) {
        EXPECT_EQ(count(pdf.text, shown), 1u) << shown << " in\n" << pdf.text;
    }
    EXPECT_NE(pdf.info.find("Title:           Invoice 1041"), std::string::npos) << pdf.info;
    // every font is embedded, as a subset
    EXPECT_EQ(count(pdf.fonts, " yes yes "), count(pdf.fonts, "\n") - 2) << pdf.fonts;
    EXPECT_NE(pdf.fonts.find("Liberation"), std::string::npos) << pdf.fonts;
}

TEST_F(InvoiceCopy, LongInvoiceBreaksBetweenRowsAndRepeatsTheLineHeading) {
    const ReadBack pdf = readBack(renderPdf(longInvoice(300), letter));
    const int pages = pdf.pageCount();
    ASSERT_GT(pages, 3) << pdf.info;
    ASSERT_EQ(static_cast<int>(pdf.pages.size()), pages);
    EXPECT_EQ(pdf.pageOf("Page 1 of " + std::to_string(pages)), 1);
    EXPECT_EQ(pdf.pageOf("Page " + std::to_string(pages) + " of " + std::to_string(pages)), pages);
    for (int i = 1; i <= 300; ++i) {
        char item[16];
        char amount[16];
        std::snprintf(item, sizeof item, "Item %03d", i);
        std::snprintf(amount, sizeof amount, "1,%03d.00", i);
        ASSERT_EQ(count(pdf.text, item), 1u) << item << "\n" << pdf.text;
        // a row is never cut: its description and amount stand on its page
        const int page = pdf.pageOf(item);
        EXPECT_NE(pdf.pages[page - 1].find(std::string("Part ") + (item + 5)), std::string::npos)
            << item;
        EXPECT_NE(pdf.pages[page - 1].find(amount), std::string::npos) << item;
    }
    for (int p = 0; p < pages; ++p) {
        EXPECT_EQ(count(pdf.pages[p], "DESCRIPTION"), 1u) << "page " << p + 1 << pdf.pages[p];
    }
}

TEST_F(InvoiceCopy, PageSizeIsTheOneAskedFor) {
    const struct {
        PageSize size;
        const char* info;
    } cases[] = {{PageSize::Letter, "612 x 792 pts (letter)"},
                 {PageSize::A4, "595.276 x 841.89 pts (A4)"}};
    for (const auto& c : cases) {
        const ReadBack pdf = readBack(renderPdf(mailed("24A0-1263588001"), PageSetup{c.size, 50}));
        EXPECT_NE(pdf.info.find(c.info), std::string::npos) << pdf.info;
        EXPECT_EQ(count(pdf.text, "Ortega Bakery"), 1u) << pdf.text;
    }
}

TEST_F(InvoiceCopy, PayNowLinkStaysClickable) {
    const std::string button =
        "<a href=\"https://pay.example.com/invoice?n=1041&amp;k=x\" style=\"display:inline-block;"
        "padding:10px 18px;background-color:#1a73e8;color:#ffffff;font-weight:bold;"
        "border-radius:4px;text-decoration:none\">Pay now</a>";
    const auto pdf = renderPdf(mailed("2484-1263499231") + button, letter);
    ASSERT_TRUE(pdf.ok()) << pdf.error().description;
    EXPECT_NE(pdf->find("/URI (https://pay.example.com/invoice?n=1041&k=x)"), std::string::npos);
    // the header's mail address and web site are links too
    EXPECT_NE(pdf->find("/URI (mailto:billing@harborlight.example)"), std::string::npos);
    EXPECT_EQ(count(ReadBack(*pdf).text, "Pay now"), 1u);
}

TEST_F(InvoiceCopy, LogoIsDrawnFromALocalFileOnlyAndAMissingOneLeavesTheDocument) {
    TempDir dir;
    // A 1x1 GIF.
    writeFile(dir / "logo.gif",
              std::string("GIF89a\x01\x00\x01\x00\x80\x00\x00\x00\x00\x00\xff\xff\xff!\xf9\x04"
                          "\x01\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02\x44"
                          "\x01\x00;",
                          43));
    writeFile(dir / "broken.png", "\x89PNG\r\n\x1a\n not really");
    const struct {
        std::string logo;
        int images;
    } cases[] = {
        {"file://" + (dir / "logo.gif").string(), 1},
        {(dir / "logo.gif").string(), 1},
        {"file://" + (dir / "missing.gif").string(), 0},
        {(dir / "broken.png").string(), 0},
        {"https://example.com/logo.png", 0},
        {"http://127.0.0.1:9/logo.gif", 0},
    };
    for (const auto& c : cases) {
        const auto pdf = renderPdf(mailed("2484-1263499231", c.logo), letter);
        const ReadBack back = readBack(pdf);
        EXPECT_EQ(back.pageCount(), 1) << c.logo;
        EXPECT_EQ(count(back.text, "Harbor Light Fixtures"), 1u) << c.logo;
        TempDir out;
        writeFile(out / "copy.pdf", pdf.ok() ? *pdf : "");
        std::string list;
        runCommand("pdfimages -list '" + (out / "copy.pdf").string() +
                       "' | awk 'NR > 2 && $3 == \"image\"'",
                   &list);
        EXPECT_EQ(count(list, "\n"), static_cast<std::size_t>(c.images)) << c.logo << list;
    }
}

TEST_F(InvoiceCopy, EachDocumentStartsAPageAndIsNumberedOnItsOwn) {
    const ReadBack pdf = readBack(renderPdf(
        {mailed("2484-1263499231"), longInvoice(120), mailed("24A0-1263588001")}, letter));
    const int first = pdf.pageOf("1041");
    const int second = pdf.pageOf("7001");
    const int third = pdf.pageOf("1042");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_GT(third, 3);
    EXPECT_EQ(pdf.pageCount(), third);
    EXPECT_NE(pdf.pages[0].find("Page 1 of 1"), std::string::npos);
    EXPECT_NE(pdf.pages[1].find("Page 1 of " + std::to_string(third - 2)), std::string::npos);
    EXPECT_NE(pdf.pages[third - 1].find("Page 1 of 1"), std::string::npos);
}

TEST_F(InvoiceCopy, RendersTheSameOnAnotherThread) {
    const std::string html = mailed("2484-1263499231");
    const ReadBack here = readBack(renderPdf(html, letter));
    std::optional<Result<std::string>> there;
    std::thread([&] { there.emplace(renderPdf(html, letter)); }).join();
    EXPECT_EQ(readBack(*there).text, here.text);
}

TEST(HostileHtml, GivesAnErrorOrAPdfNeverACrash) {
    const std::string deep(200000, 'x');
    std::string nested;
    for (int i = 0; i < 5000; ++i) {
        nested += "<div><table><tr><td>";
    }
    auto rows = [](int count) {
        std::string html = "<table>";
        for (int i = 0; i < count; ++i) {
            html += "<tr><td>row " + std::to_string(i) + "</td></tr>";
        }
        return html;
    };
    const struct {
        std::string html;
        bool pdf;
    } cases[] = {
        {"", false},
        {" \n\t ", false},
        {"<", true},
        {"<<<>>> &&& </td></tr></table> \x01\x02\xff\xfe plain text", true},
        {"<table><tr><td rowspan=99999 colspan=99999>x</td></tr></table>", true},
        {"<div style=\"font-size:99999px;width:-5px;height:1e9px\">huge</div>", true},
        {"<img src=\"/dev/zero\"><img src=\"file:///etc/passwd\"><img src=\"\">", true},
        {"<a href=\"javascript:alert(1)\">x</a><a href=\"https://e.com/')>>\">y</a>", true},
        {deep, true},
        {nested, false},
        {rows(2000), true},
        {rows(40000), false},  // too long: hundreds of pages, each a walk over all rows
    };
    for (const auto& c : cases) {
        const auto pdf = renderPdf(c.html, PageSetup{});
        EXPECT_EQ(pdf.ok(), c.pdf)
            << c.html.substr(0, 80) << (pdf.ok() ? "" : ": " + pdf.error().description);
        if (pdf.ok()) {
            EXPECT_GE(ReadBack(*pdf).pageCount(), 1) << c.html.substr(0, 80);
        }
    }
    EXPECT_TRUE(renderPdf("<p>x</p>", PageSetup{}, "Invoice \xff\xfe").ok());
    EXPECT_FALSE(renderPdf(std::vector<std::string>{}, PageSetup{}).ok());
    EXPECT_FALSE(renderPdf("<p>x</p>", PageSetup{PageSize::A4, 300}).ok());
}

}  // namespace
}  // namespace dorvane::pdf
