// SPDX-License-Identifier: GPL-3.0-or-later
// The exchange file (.dvx) written by attachment.xslt from a copy of a document's Ret
// element with the sender's company record appended.
#include <gtest/gtest.h>

#include "rendersupport.h"

namespace dorvane::render::test {
namespace {

struct Exchange {
    std::string text;
    xml::Document parsed;
};

// Builds the attachment input as the mail run does: a deep copy of the document with the
// company record appended, then runs the sheet and reads its output back.
Exchange exchangeFile(xml::Document& doc, const std::string& retPath, xml::Node company) {
    xml::Node copy = doc.selectOne(retPath).cloneDeep();
    copy.appendChild(company.cloneDeep());
    Exchange out;
    out.text = render("attachment.xslt", copy);
    auto parsed = xml::Document::parse(out.text);
    EXPECT_TRUE(parsed.ok()) << (parsed.ok() ? "" : parsed.error().description) << "\n" << out.text;
    if (parsed.ok()) {
        out.parsed = std::move(parsed).value();
    }
    return out;
}

TEST(ExchangeFile, IsTheInvoiceWithAllItsLinesAndTheSendersCompanyButNoListIds) {
    auto doc = loadFixture("invoices.xml");
    const std::string path =
        "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet[TxnID =\"2484-1263499231\"]";
    xml::Node original = doc.selectOne(path);
    auto file =
        exchangeFile(doc, path, doc.selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet"));

    // the declaration, then the document's own element as the root, nothing in between
    ASSERT_EQ(file.text.rfind("<?xml version=\"1.0\"", 0), 0u) << file.text.substr(0, 80);
    size_t afterDeclaration = file.text.find("?>") + 2;
    EXPECT_EQ(file.text.find_first_not_of(" \r\n", afterDeclaration),
              file.text.find("<InvoiceRet>"));
    xml::Node root = file.parsed.root();
    ASSERT_TRUE(root);
    EXPECT_EQ(root.name(), "InvoiceRet");

    EXPECT_EQ(root.valueOf("TxnID"), "2484-1263499231");
    EXPECT_EQ(root.valueOf("RefNumber"), "1041");
    EXPECT_EQ(root.valueOf("CustomerRef/FullName"), "Smith & <Sons> Plumbing:Kitchen remodel");
    EXPECT_EQ(root.valueOf("BalanceRemaining"), "1474.56");
    EXPECT_EQ(root.valueOf("InvoiceLineRet[1]/Desc"),
              "Installation labor\nKitchen sink and dishwasher");
    EXPECT_EQ(root.selectAll("InvoiceLineRet").size(), original.selectAll("InvoiceLineRet").size());
    EXPECT_EQ(root.selectAll("InvoiceLineGroupRet/InvoiceLineRet").size(), 4u);
    EXPECT_EQ(root.valueOf("InvoiceLineGroupRet[1]/TotalAmount"), "829.51");

    // the company record comes last, and the receiver finds the sender's name in it
    xml::Node last;
    for (xml::Node c = root.firstChildElement(); c; c = c.nextSiblingElement()) {
        last = c;
    }
    EXPECT_EQ(last.name(), "CompanyRet");
    EXPECT_EQ(file.parsed.valueOf("//CompanyRet/CompanyName"), "Harbor Light Fixtures");
    EXPECT_EQ(file.parsed.valueOf("//CompanyRet/Email"), "billing@harborlight.example");
    EXPECT_EQ(file.parsed.selectAll("//CompanyRet").size(), 1u);

    // List ids at every depth read "ignore"; the response itself keeps its ids.
    const auto ids = file.parsed.selectAll("//ListID");
    EXPECT_EQ(ids.size(), original.selectAll(".//ListID").size());
    ASSERT_GT(ids.size(), 10u);
    for (const xml::Node& id : ids) {
        EXPECT_EQ(id.text(), "ignore");
    }
    EXPECT_EQ(
        file.parsed.valueOf("/InvoiceRet/InvoiceLineGroupRet/InvoiceLineRet/ItemRef/FullName"),
        "Hardware:Sink");
    EXPECT_EQ(doc.valueOf(path + "/CustomerRef/ListID"), "80000020-1209525941");
}

TEST(ExchangeFile, KeepsTheSendersPrivateCompanyDataAtHome) {
    auto doc = loadFixture("invoices.xml");
    auto stored = loadFixture("companyinfo.xml");
    auto file = exchangeFile(
        doc, "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet[TxnID =\"24A0-1263588001\"]",
        stored.selectOne("/CompanyInfo/CompanyRet[1]"));
    xml::Node company = file.parsed.selectOne("/InvoiceRet/CompanyRet");
    ASSERT_TRUE(company);
    EXPECT_EQ(company.valueOf("CompanyName"), "Baker & <Daughters> Co.");
    EXPECT_EQ(company.valueOf("Address/Addr2"), "17 Mill Road");
    for (const char* hidden : {"FileName", "LegalAddress", "LegalCompanyName", "CompanyType",
                               "FirstMonthFiscalYear", "FirstMonthIncomeTaxYear"}) {
        EXPECT_FALSE(company.selectOne(hidden)) << hidden;
    }
    EXPECT_EQ(file.text.find("QuickBooks\\"), std::string::npos);
}

// The receiver imports invoices, estimates and sales receipts; each travels as itself.
class ImportableKind : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(ImportableKind, TravelsUnderItsOwnRootName) {
    auto [fixture, type] = GetParam();
    auto doc = loadFixture(fixture);
    auto company = loadFixture("invoices.xml");
    const std::string ret = std::string(type) + "Ret";
    const std::string path = "/QBXML/QBXMLMsgsRs/" + std::string(type) + "QueryRs/" + ret + "[1]";
    auto file = exchangeFile(doc, path, company.selectOne("//CompanyRet"));
    ASSERT_TRUE(file.parsed.root());
    EXPECT_EQ(file.parsed.root().name(), ret);
    EXPECT_EQ(file.parsed.root().valueOf("TxnID"), doc.valueOf(path + "/TxnID"));
    EXPECT_EQ(file.parsed.valueOf("//CompanyRet/CompanyName"), "Harbor Light Fixtures");
    for (const xml::Node& id : file.parsed.selectAll("//ListID")) {
        EXPECT_EQ(id.text(), "ignore");
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, ImportableKind,
                         ::testing::Values(std::pair{"invoices.xml", "Invoice"},
                                           std::pair{"estimates.xml", "Estimate"},
                                           std::pair{"salesreceipts.xml", "SalesReceipt"},
                                           std::pair{"creditmemos.xml", "CreditMemo"},
                                           std::pair{"purchaseorders.xml", "PurchaseOrder"}),
                         [](const auto& info) { return std::string(info.param.second); });

}  // namespace
}  // namespace dorvane::render::test
