// SPDX-License-Identifier: GPL-3.0-or-later
// The import settings, the import preferences dialog and the rewriting of converted requests.
#include <gtest/gtest.h>

#include "common/text.h"
#include "import/assignment.h"
#include "import/exchangefile.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/response.h"
#include "support/demoapp.h"

namespace dorvane::imports {
namespace {

using test::TempDir;

std::vector<std::string> texts(const std::string& request, const char* xpath) {
    auto doc = xml::Document::parse(request);
    EXPECT_TRUE(doc.ok()) << request;
    std::vector<std::string> out;
    if (doc) {
        for (const xml::Node& n : doc->selectAll(xpath)) {
            out.push_back(n.text());
        }
    }
    return out;
}

using Texts = std::vector<std::string>;

const char* kBill =
    "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><BillAddRq><BillAdd>"
    "<VendorRef><FullName>Acme &amp; Sons</FullName></VendorRef>"
    "<TermsRef><FullName>2% 10 Net 30</FullName></TermsRef>"
    "<ExpenseLineAdd><AccountRef><FullName>Freight</FullName></AccountRef></ExpenseLineAdd>"
    "<ItemLineAdd><ItemRef><FullName>Widget A</FullName></ItemRef></ItemLineAdd>"
    "<ItemLineAdd><ItemRef><FullName>Subtotal</FullName></ItemRef></ItemLineAdd>"
    "<ItemLineAdd><ItemRef><FullName>Gadget B</FullName></ItemRef></ItemLineAdd>"
    "<ItemGroupLineAdd><ItemGroupRef><Name>Kit</Name><FullName>Kit</FullName></ItemGroupRef>"
    "</ItemGroupLineAdd>"
    "<DepositToAccountRef><FullName>Savings</FullName></DepositToAccountRef>"
    "</BillAdd></BillAddRq></QBXMLMsgsRq></QBXML>";

TEST(ItemAssignment, PointsEveryReferenceAtTheSettingsButSubtotalAndExpenseAccounts) {
    const ImportSettings settings;  // the defaults
    std::string request = kBill;
    applyItemAssignment(request, settings);
    EXPECT_EQ(texts(request, "//ItemRef/FullName"),
              (Texts{"Uncategorized Expenses", "Subtotal", "Uncategorized Expenses"}));
    EXPECT_EQ(texts(request, "//ItemGroupRef/Name"), Texts{"Uncategorized Expense Group"});
    EXPECT_EQ(texts(request, "//ItemGroupRef/FullName"), Texts{"Kit"});
    EXPECT_EQ(texts(request, "//TermsRef/FullName"), Texts{"Net 30"});
    // Rooted at the document, so a QBXML request keeps its expense account.
    EXPECT_EQ(texts(request, "//ExpenseLineAdd/AccountRef/FullName"), Texts{"Freight"});
    EXPECT_EQ(texts(request, "//DepositToAccountRef/FullName"), Texts{"Uncategorized Expenses"});
    EXPECT_EQ(texts(request, "//VendorRef/FullName"), Texts{"Acme & Sons"});
}

TEST(ItemAssignment, ExpenseLineAccountChangesOnlyWhenItIsTheDocumentElement) {
    ImportSettings settings;
    settings.importAccountName = "Office <Supplies> & \"More\"";
    std::string request =
        "<ExpenseLineAdd><AccountRef><FullName>Freight</FullName></AccountRef></ExpenseLineAdd>";
    applyItemAssignment(request, settings);
    EXPECT_EQ(texts(request, "/ExpenseLineAdd/AccountRef/FullName"),
              Texts{"Office <Supplies> & \"More\""});
}

TEST(ItemAssignment, TextThatDoesNotParseStaysAsItIs) {
    const ImportSettings settings;
    for (std::string request :
         {std::string("<QBXML><ItemRef>"), std::string(), std::string("not xml at all")}) {
        const std::string before = request;
        applyItemAssignment(request, settings);
        applyAccountAssignment(request, "Checking");
        applyItemAssignmentByLookup(request, settings, xml::Document());
        EXPECT_EQ(request, before);
    }
}

TEST(AccountAssignment, ChangesOnlyTheFirstAccountReference) {
    std::string request =
        "<QBXML><CheckAdd><AccountRef><FullName>Their Bank</FullName></AccountRef>"
        "<ExpenseLineAdd><AccountRef><FullName>Freight</FullName></AccountRef></ExpenseLineAdd>"
        "</CheckAdd></QBXML>";
    applyAccountAssignment(request, "K\xC3\xB6nto & Co");
    EXPECT_EQ(texts(request, "//AccountRef/FullName"), (Texts{"K\xC3\xB6nto & Co", "Freight"}));
}

TEST(ItemAssignmentByLookup, KeepsNamesTheListsKnow) {
    auto lists = xml::Document::parse(
        "<QBXML><QBXMLMsgsRs>"
        "<ItemQueryRs><ItemServiceRet><Name>Widget A</Name><FullName>Widget A</FullName>"
        "</ItemServiceRet><ItemGroupRet><Name>Kit</Name><FullName>Kit</FullName></ItemGroupRet>"
        "</ItemQueryRs>"
        "<TermsQueryRs><StandardTermsRet><Name>Net 15</Name></StandardTermsRet></TermsQueryRs>"
        "<AccountQueryRs><AccountRet><Name>Freight</Name><FullName>Freight</FullName>"
        "</AccountRet></AccountQueryRs></QBXMLMsgsRs></QBXML>");
    ASSERT_TRUE(lists.ok());
    const ImportSettings settings;
    const std::string request =
        "<QBXML><BillAdd><TermsRef><FullName>Net 15</FullName></TermsRef>"
        "<ExpenseLineAdd><AccountRef><FullName>Freight</FullName></AccountRef></ExpenseLineAdd>"
        "<ExpenseLineAdd><AccountRef><FullName>Postage</FullName></AccountRef></ExpenseLineAdd>"
        "<ItemLineAdd><ItemRef><FullName>Widget A</FullName></ItemRef></ItemLineAdd>"
        "<ItemLineAdd><ItemRef><FullName>Gadget B</FullName></ItemRef></ItemLineAdd>"
        "<ItemLineAdd><ItemRef><FullName>Subtotal</FullName></ItemRef></ItemLineAdd>"
        "<ItemGroupLineAdd><ItemGroupRef><FullName>Kit</FullName></ItemGroupRef>"
        "</ItemGroupLineAdd><ItemGroupLineAdd><ItemGroupRef><FullName>Box</FullName>"
        "</ItemGroupRef></ItemGroupLineAdd></BillAdd></QBXML>";

    std::string known = request;
    applyItemAssignmentByLookup(known, settings, *lists);
    EXPECT_EQ(texts(known, "//ItemRef/FullName"),
              (Texts{"Widget A", "Uncategorized Expenses", "Subtotal"}));
    EXPECT_EQ(texts(known, "//ItemGroupRef/FullName"),
              (Texts{"Kit", "Uncategorized Expense Group"}));
    EXPECT_EQ(texts(known, "//TermsRef/FullName"), Texts{"Net 15"});
    EXPECT_EQ(texts(known, "//AccountRef/FullName"), (Texts{"Freight", "Uncategorized Expenses"}));

    // An apostrophe breaks the lookup expression, and that ends the rewrite.
    std::string quoted = request;
    const std::string gadget = "Gadget B";
    quoted.replace(quoted.find(gadget), gadget.size(), "Bob's Gadget");
    const std::string before = quoted;
    applyItemAssignmentByLookup(quoted, settings, *lists);
    EXPECT_EQ(quoted, before);
}

TEST(ImportSettings, DefaultsAndTheAccountNameBehindTheType) {
    TempDir dir;
    platform::SettingsStore store(dir / "DV01.ini");
    const ImportSettings defaults = loadImportSettings(store);
    EXPECT_EQ(defaults.importItemName, "Uncategorized Expenses");
    EXPECT_EQ(defaults.importItemGroupName, "Uncategorized Expense Group");
    EXPECT_EQ(defaults.importTermsName, "Net 30");
    EXPECT_EQ(defaults.importAccountName, "Uncategorized Expenses");
    EXPECT_FALSE(defaults.ignoreAuthNetCustomer);

    const struct {
        const char* stored;
        const char* name;
    } accounts[] = {
        {"[Bank] Checking", "Checking"},
        {"[Other Current Asset] Deposits", "Deposits"},
        {"[Bank]Checking", ""},
        {"Checking", ""},
        {"[Expense] Travel] Meals", "Travel] Meals"},
    };
    for (const auto& a : accounts) {
        SCOPED_TRACE(a.stored);
        ASSERT_TRUE(store.set("Import", "Account", a.stored).ok());
        EXPECT_EQ(loadImportSettings(store).importAccountName, a.name);
    }
    for (const auto& [stored, ignore] : std::vector<std::pair<const char*, bool>>{
             {"1", true}, {"0", false}, {"2", true}, {"x", false}}) {
        ASSERT_TRUE(store.set("Import", "IgnoreAuthNetCust", stored).ok());
        EXPECT_EQ(loadImportSettings(store).ignoreAuthNetCustomer, ignore) << stored;
    }
}

const char* kLists =
    "<QBXML><QBXMLMsgsRs>"
    "<ItemQueryRs><ItemServiceRet><FullName>Consulting</FullName></ItemServiceRet>"
    "<ItemOtherChargeRet><FullName>Uncategorized Expenses</FullName></ItemOtherChargeRet>"
    "<ItemServiceRet><FullName>Consulting</FullName></ItemServiceRet></ItemQueryRs>"
    "<ItemGroupQueryRs><ItemGroupRet><Name>Kit</Name></ItemGroupRet></ItemGroupQueryRs>"
    "<TermsQueryRs><StandardTermsRet><Name>Due on receipt</Name></StandardTermsRet>"
    "<StandardTermsRet><Name>Net 30</Name></StandardTermsRet></TermsQueryRs>"
    "<AccountQueryRs><AccountRet><FullName>Checking</FullName><AccountType>Bank</AccountType>"
    "</AccountRet><AccountRet><FullName>Uncategorized Expenses</FullName>"
    "<AccountType>Expense</AccountType></AccountRet></AccountQueryRs>"
    "</QBXMLMsgsRs></QBXML>";

TEST(ImportPreferences, ListsSelectTheStoredEntryAndOkWritesTheSelection) {
    TempDir dir;
    platform::SettingsStore store(dir / "DV01.ini");
    ASSERT_TRUE(store.set("Import", "Item", "Consulting").ok());
    ASSERT_TRUE(store.set("Import", "Term", "net 30").ok());  // case differs: no match
    auto lists = xml::Document::parse(kLists);
    ASSERT_TRUE(lists.ok());

    ImportPreferencesModel model(*lists, store);
    EXPECT_EQ(model.dialogName(), "Dialog3");
    EXPECT_EQ(model.label1, "Please select your preferences for item assignment");
    EXPECT_EQ(model.itemlist.entries,
              (Texts{"Consulting", "Uncategorized Expenses", "Consulting"}));
    EXPECT_EQ(model.itemlist.selected, 2u);  // the last equal entry wins
    EXPECT_EQ(model.itemgrouplist.entries, Texts{"Kit"});
    EXPECT_EQ(model.termlist.selected, 0u);
    EXPECT_EQ(model.Accountlist.entries,
              (Texts{"[Bank] Checking", "[Expense] Uncategorized Expenses"}));
    EXPECT_EQ(model.Accountlist.selected, 1u);  // the default "Account"
    EXPECT_FALSE(model.IgnoreAuthNetCust);

    model.Accountlist.selected = 0;
    model.IgnoreAuthNetCust = true;
    ASSERT_TRUE(model.save(store).ok());
    platform::SettingsStore again(dir / "DV01.ini");
    EXPECT_EQ(again.get("Import", "Item"), "Consulting");
    EXPECT_EQ(again.get("Import", "ItemGroup"), "Kit");
    EXPECT_EQ(again.get("Import", "Term"), "Due on receipt");  // the first entry stood
    EXPECT_EQ(again.get("Import", "Account"), "[Bank] Checking");
    EXPECT_EQ(again.get("Import", "IgnoreAuthNetCust"), "1");
    const ImportSettings settings = loadImportSettings(again);
    EXPECT_EQ(settings.importAccountName, "Checking");
    EXPECT_TRUE(settings.ignoreAuthNetCustomer);
}

// Against the demo company: the lists come from QuickBooks through the gateway, names it knows
// stay, and the rewritten request, behind the qbXML 1.1 prolog, is booked.
using ItemAssignmentByLookupTest = test::DemoAppTest;

TEST_F(ItemAssignmentByLookupTest, DemoCompanyKeepsItsOwnItemsAndBooksTheBill) {
    startApp();
    app->defaultRecords().ensureDefaultRecords();

    ImportSettings settings;
    settings.importItemName = "Uncategorized Item";
    std::string request =
        "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><BillAddRq requestID=\"1\"><BillAdd>"
        "<VendorRef><FullName>Quarry Direct</FullName></VendorRef>"
        "<ExpenseLineAdd><AccountRef><FullName>Their Freight</FullName></AccountRef>"
        "<Amount>10.00</Amount></ExpenseLineAdd>"
        "<ItemLineAdd><ItemRef><FullName>Soil</FullName></ItemRef><Quantity>2</Quantity>"
        "</ItemLineAdd>"
        "<ItemLineAdd><ItemRef><FullName>Their Widget</FullName></ItemRef><Quantity>1</Quantity>"
        "<Cost>5.00</Cost></ItemLineAdd>"
        "</BillAdd></BillAddRq></QBXMLMsgsRq></QBXML>";
    ASSERT_TRUE(app->defaultRecords().itemList().empty());
    applyItemAssignmentByLookup(request, settings, app->defaultRecords());
    EXPECT_FALSE(app->defaultRecords().itemList().empty());
    EXPECT_EQ(texts(request, "//ItemRef/FullName"), (Texts{"Soil", "Uncategorized Item"}));
    EXPECT_EQ(texts(request, "//AccountRef/FullName"), Texts{"Uncategorized Expenses"});

    const std::string response = app->gateway().processRequest(withRequestProlog(request));
    EXPECT_TRUE(qbgateway::isResponseOK(response, ui)) << response;
    EXPECT_NE(test::readFile(home / "program" / "QBXMLReq.txt")
                  .find("<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN'"),
              std::string::npos);
}

}  // namespace
}  // namespace dorvane::imports
