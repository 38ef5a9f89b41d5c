// SPDX-License-Identifier: GPL-3.0-or-later
// The company header above every mailed document, rendered by company.xslt from the
// company record (QuickBooks' CompanyRet or a record of companyinfo.xml).
#include <gtest/gtest.h>

#include "rendersupport.h"

namespace dorvane::render::test {
namespace {

xml::Node storedRecord(const xml::Document& doc, const std::string& fileName) {
    return doc.selectOne("/CompanyInfo/CompanyRet[FileName =\"" + fileName + "\"]");
}

TEST(CompanyHeader, ShowsNameAddressAndContactsOfTheQuickBooksRecord) {
    auto doc = loadFixture("invoices.xml");
    std::string html =
        render("company.xslt", doc.selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet"));
    // QuickBooks repeats the name as the first address line; it is shown once
    EXPECT_EQ(visibleText(html),
              "Harbor Light Fixtures\n450 Marina Way, Suite 2\nBayshore, CA 94326\n"
              "Phone (650) 555-0142\nFax (650) 555-0143\nbilling@harborlight.example\n"
              "www.harborlight.example");
    EXPECT_NE(html.find("href=\"mailto:billing@harborlight.example\""), std::string::npos);
    EXPECT_NE(html.find("href=\"http://www.harborlight.example\""), std::string::npos);
    EXPECT_EQ(html.find("<img"), std::string::npos);
    // the legal name and address are not the company's face to its customers
    EXPECT_EQ(html.find("LLC"), std::string::npos);
    EXPECT_EQ(html.rfind("<table", 0), 0u);
}

TEST(CompanyHeader, CarriesTheLogoByItsAbsolutePathOnlyWhenOneIsGiven) {
    auto doc = loadFixture("invoices.xml");
    xml::Node company = doc.selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet");
    const std::string logo = "/opt/dorvane/images/logo.png";
    std::string with = render("company.xslt", company, {{"logo", logo}});
    EXPECT_EQ(count(with, "<img"), 1u);
    EXPECT_NE(with.find("<img src=\"" + logo + "\""), std::string::npos) << with;
    EXPECT_NE(with.find("alt=\"Harbor Light Fixtures\""), std::string::npos);
    EXPECT_EQ(visibleText(with), visibleText(render("company.xslt", company)));

    EXPECT_EQ(render("company.xslt", company, {{"logo", ""}}).find("<img"), std::string::npos);
}

TEST(CompanyHeader, LogoPathIsWrittenAsAnAddressAndNamesKeepTheirLetters) {
    auto doc = xml::Document::parse(
        "<CompanyRet><CompanyName>Caf\xC3\xA9 M\xC3\xBCller &amp; Fils</CompanyName>"
        "<Address><City>Montr\xC3\xA9"
        "al</City><State>QC</State></Address></CompanyRet>");
    ASSERT_TRUE(doc.ok());
    std::string html =
        render("company.xslt", doc->root(), {{"logo", "/opt/Dorvane Mail/images/logo.png"}});
    // HTML output writes a blank in an image address as %20; whoever reads the file back
    // from the address decodes it
    EXPECT_NE(html.find("src=\"/opt/Dorvane%20Mail/images/logo.png\""), std::string::npos) << html;
    // the fragment is ASCII; other letters travel as character references
    EXPECT_TRUE(std::all_of(html.begin(), html.end(), [](unsigned char c) { return c < 0x80; }))
        << html;
    EXPECT_NE(html.find("M&#252;ller"), std::string::npos) << html;
    EXPECT_EQ(visibleText(html),
              "Caf\xC3\xA9 M\xC3\xBCller & Fils\nMontr\xC3\xA9"
              "al, QC");
}

TEST(CompanyHeader, StoredRecordIsEscapedAndLeavesOutWhatIsEmpty) {
    auto doc = loadFixture("companyinfo.xml");
    std::string html =
        render("company.xslt", storedRecord(doc, "C:\\QuickBooks\\Baker and Daughters.QBW"));
    EXPECT_EQ(visibleText(html),
              "Baker & <Daughters> Co.\n17 Mill Road\nRiverton, WY 82501\nPhone 307-555-0100\n"
              "office@bakerdaughters.example\nhttps://bakerdaughters.example/shop");
    EXPECT_NE(html.find("Baker &amp; &lt;Daughters&gt; Co."), std::string::npos);
    EXPECT_EQ(html.find("<Daughters>"), std::string::npos);
    EXPECT_NE(html.find("href=\"https://bakerdaughters.example/shop\""), std::string::npos);
    EXPECT_EQ(html.find("Fax"), std::string::npos);
}

TEST(CompanyHeader, RecordWithOnlyLegalDataShowsTheLegalNameAndAddress) {
    auto doc = loadFixture("companyinfo.xml");
    std::string html = render("company.xslt", storedRecord(doc, "C:\\QuickBooks\\Legal only.QBW"));
    EXPECT_EQ(visibleText(html), "Northwind Holdings LLC\n500 Harbor Blvd\nSeaview, OR 97000");
    EXPECT_EQ(html.find("mailto:"), std::string::npos);
    EXPECT_EQ(html.find("href"), std::string::npos);
}

TEST(CompanyHeader, BlankRecordMakesNoHeaderButALogoAloneDoes) {
    // a new record as the company editor starts it: every field there, none filled in
    auto doc = xml::Document::parse(
        "<CompanyInfo><CompanyRet><FileName>C:\\QuickBooks\\New.QBW</FileName><CompanyName/>"
        "<LegalCompanyName/><Address><Addr1/><Addr2/><City/><State/><PostalCode/><Country/>"
        "</Address><LegalAddress><Addr1/><Addr2/><City/><State/><PostalCode/><Country/>"
        "</LegalAddress><Phone/><Fax/><Email/><CompanyWebSite/></CompanyRet></CompanyInfo>");
    ASSERT_TRUE(doc.ok());
    xml::Node blank = doc->selectOne("/CompanyInfo/CompanyRet");
    ASSERT_TRUE(blank);
    EXPECT_EQ(render("company.xslt", blank), "");
    std::string logoOnly =
        render("company.xslt", blank, {{"logo", "/opt/dorvane/images/logo.png"}});
    EXPECT_NE(logoOnly.find("<img src=\"/opt/dorvane/images/logo.png\""), std::string::npos);
    EXPECT_EQ(visibleText(logoOnly), "");
}

TEST(CompanyHeader, WholeCompanyFileShowsItsFirstRecord) {
    auto doc = loadFixture("companyinfo.xml");
    std::string html = render("company.xslt", doc.selectOne("/"));
    EXPECT_EQ(visibleText(html).rfind("Baker & <Daughters> Co.\n", 0), 0u) << visibleText(html);
    EXPECT_EQ(html.find("Northwind"), std::string::npos);
}

}  // namespace
}  // namespace dorvane::render::test
