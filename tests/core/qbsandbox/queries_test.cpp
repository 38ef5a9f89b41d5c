// SPDX-License-Identifier: GPL-3.0-or-later
// Queries against the demo company: shapes, filters and the no-match and not-found answers.
#include <set>

#include "qbsandbox/companyfile.h"
#include "qbsandbox/schema.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

class QueriesTest : public SandboxTest {
protected:
    void SetUp() override {
        SandboxTest::SetUp();
        useDemo();
    }
};

// Every Ret of an answer follows the order tables, with its required elements present.
void expectRetsValid(const xml::Document& doc, qbsandbox::Version version) {
    for (const auto& ret : doc.selectAll("/QBXML/QBXMLMsgsRs/*/*")) {
        auto check = qbsandbox::validateElement(ret, version);
        EXPECT_FALSE(check.fault) << ret.name() << ": " << check.fault.value_or("");
        EXPECT_EQ(check.statusCode, 0) << ret.name() << ": " << check.statusMessage;
    }
}

TEST_F(QueriesTest, EveryQueryAnswersInSchemaOrder) {
    const char* txns[] = {"Invoice",    "Estimate",      "SalesReceipt",
                          "CreditMemo", "PurchaseOrder", "ReceivePayment",
                          "Bill",       "Check",         "CreditCardCharge"};
    std::string body;
    for (const char* t : txns) {
        body += std::string("<") + t + "QueryRq><IncludeLineItems>true</IncludeLineItems>" +
                (std::string(t) == "Invoice" || std::string(t) == "Bill"
                     ? "<IncludeLinkedTxns>true</IncludeLinkedTxns>"
                     : "") +
                "</" + t + "QueryRq>";
    }
    body += "<TimeTrackingQueryRq/>";
    for (const char* l : {"Customer", "Vendor", "Employee", "OtherName", "Account", "Item", "Terms",
                          "PayrollItemWage"}) {
        body +=
            std::string("<") + l + "QueryRq><ActiveStatus>All</ActiveStatus></" + l + "QueryRq>";
    }
    body += "<CompanyQueryRq/><PreferencesQueryRq/><HostQueryRq/>";
    for (const std::string version : {"2.0", "13.0"}) {
        auto doc = ask(body, version);
        auto rs = doc.selectAll("/QBXML/QBXMLMsgsRs/*");
        ASSERT_EQ(rs.size(), 21u);
        for (const auto& r : rs) {
            EXPECT_EQ(r.attribute("statusCode"), "0")
                << r.name() << " " << r.attribute("statusMessage");
            EXPECT_TRUE(r.firstChildElement()) << r.name();
        }
        expectRetsValid(doc, *qbsandbox::parseVersion(version));
    }
    // Each element on its own line, as QuickBooks writes answers.
    EXPECT_EQ(m_lastText.find("><"), std::string::npos);
}

TEST_F(QueriesTest, DemoCompanyIsRealistic) {
    auto doc = ask(
        "<CustomerQueryRq><ActiveStatus>All</ActiveStatus></CustomerQueryRq>"
        "<VendorQueryRq/><ItemQueryRq/><AccountQueryRq/><PayrollItemWageQueryRq/><TermsQueryRq/>");
    auto customers = doc.selectAll("//CustomerRet");
    EXPECT_EQ(customers.size(), 50u);
    EXPECT_GE(doc.selectAll("//CustomerRet[Sublevel='1']").size(), 10u);
    EXPECT_GE(doc.selectAll("//CustomerRet[IsActive='false']").size(), 2u);
    EXPECT_GE(doc.selectAll("//CustomerRet[not(Email)]").size(), 5u);
    EXPECT_GE(doc.selectAll("//CustomerRet[TotalBalance='0.00']").size(), 5u);
    EXPECT_GE(doc.selectAll("//CustomerRet[TotalBalance!='0.00']").size(), 5u);
    EXPECT_EQ(doc.selectAll("//VendorRet").size(), 20u);
    EXPECT_GE(doc.selectAll("//VendorRet[not(Email)]").size(), 3u);
    for (const auto& email : doc.selectAll("//Email")) {
        std::string domain = email.text().substr(email.text().find('@') + 1);
        EXPECT_TRUE(domain == "example.com" || domain == "example.net" || domain == "example.org")
            << email.text();
    }
    for (const char* kind : {"ItemServiceRet", "ItemInventoryRet", "ItemNonInventoryRet",
                             "ItemOtherChargeRet", "ItemSubtotalRet", "ItemDiscountRet",
                             "ItemSalesTaxRet", "ItemGroupRet", "ItemPaymentRet"}) {
        EXPECT_FALSE(doc.selectAll(std::string("//ItemQueryRs/") + kind).empty()) << kind;
    }
    for (const char* type :
         {"Bank", "CreditCard", "AccountsReceivable", "AccountsPayable", "OtherCurrentAsset",
          "Income", "Expense", "CostOfGoodsSold", "Equity"}) {
        EXPECT_FALSE(doc.selectAll(std::string("//AccountRet[AccountType='") + type + "']").empty())
            << type;
    }
    EXPECT_GE(doc.selectAll("//PayrollItemWageRet").size(), 3u);
    EXPECT_FALSE(doc.selectAll("//StandardTermsRet").empty());
    EXPECT_FALSE(doc.selectAll("//DateDrivenTermsRet").empty());
    // A job's full name is "Customer:Job" and its parent's total includes it.
    xml::Node job = doc.selectOne("//CustomerRet[Sublevel='1']");
    std::string parent = job.valueOf("ParentRef/FullName");
    EXPECT_EQ(job.valueOf("FullName"), parent + ":" + job.valueOf("Name"));
}

TEST_F(QueriesTest, ThisWeekToDateReturnsOnlyThisWeeksInvoicesWithTheirLines) {
    const std::string query =
        "<InvoiceQueryRq><TxnDateRangeFilter><DateMacro>ThisWeekToDate</DateMacro></"
        "TxnDateRangeFilter>"
        "<IncludeLineItems>true</IncludeLineItems></InvoiceQueryRq><CustomerQueryRq/>";
    auto doc = ask(query, "2.0");
    auto invoices = doc.selectAll("//InvoiceRet");
    ASSERT_FALSE(invoices.empty());
    for (const auto& inv : invoices) {
        std::string date = inv.valueOf("TxnDate");
        EXPECT_GE(date, "2026-11-15");  // the week starts on Sunday
        EXPECT_LE(date, "2026-11-18");
        EXPECT_FALSE(inv.selectAll("InvoiceLineRet | InvoiceLineGroupRet").empty());
        EXPECT_NE(inv.valueOf("Subtotal"), "");
    }
    EXPECT_EQ(status(doc, 2), "0 Info Status OK");
    auto withoutLines =
        ask("<InvoiceQueryRq><TxnDateRangeFilter><DateMacro>ThisWeekToDate</DateMacro>"
            "</TxnDateRangeFilter></InvoiceQueryRq>");
    EXPECT_EQ(withoutLines.selectAll("//InvoiceRet").size(), invoices.size());
    EXPECT_TRUE(withoutLines.selectAll("//InvoiceLineRet").empty());
    // No DateMacro at all, or an empty one, means no date filter.
    auto all = ask("<InvoiceQueryRq/>");
    EXPECT_EQ(all.selectAll("//InvoiceRet").size(), 120u);
    auto empty =
        ask("<InvoiceQueryRq><TxnDateRangeFilter><DateMacro></DateMacro></TxnDateRangeFilter></"
            "InvoiceQueryRq>",
            "2.0");
    EXPECT_EQ(empty.selectAll("//InvoiceRet").size(), 120u);
}

TEST_F(QueriesTest, InvoiceBalancesFollowPayments) {
    auto doc =
        ask("<InvoiceQueryRq><PaidStatus>PaidOnly</PaidStatus><IncludeLinkedTxns>true</"
            "IncludeLinkedTxns></InvoiceQueryRq>"
            "<InvoiceQueryRq><PaidStatus>NotPaidOnly</PaidStatus></InvoiceQueryRq>");
    auto paid = doc.selectAll("//InvoiceQueryRs[1]/InvoiceRet");
    auto open = doc.selectAll("//InvoiceQueryRs[2]/InvoiceRet");
    ASSERT_FALSE(paid.empty());
    ASSERT_FALSE(open.empty());
    EXPECT_EQ(paid.size() + open.size(), 120u);
    for (const auto& inv : paid) {
        EXPECT_EQ(inv.valueOf("BalanceRemaining"), "0.00");
        EXPECT_EQ(inv.valueOf("IsPaid"), "true");
        auto applied = qbsandbox::Decimal::parse(inv.valueOf("AppliedAmount"));
        auto subtotal = qbsandbox::Decimal::parse(inv.valueOf("Subtotal"));
        auto tax = qbsandbox::Decimal::parse(inv.valueOf("SalesTaxTotal"));
        EXPECT_EQ(*subtotal + *tax + *applied, qbsandbox::Decimal{}) << inv.valueOf("TxnID");
        EXPECT_EQ(inv.valueOf("LinkedTxn/TxnType"), "ReceivePayment");
    }
}

TEST_F(QueriesTest, LookupsByIdAndNameAnd500ForUnknownOnes) {
    auto list =
        ask("<CustomerQueryRq><MaxReturned>3</MaxReturned></"
            "CustomerQueryRq><VendorQueryRq><MaxReturned>1</MaxReturned></VendorQueryRq>");
    ASSERT_EQ(list.selectAll("//CustomerRet").size(), 3u);
    std::string id = list.valueOf("//CustomerRet[Email][1]/ListID");
    std::string email = list.valueOf("//CustomerRet[Email][1]/Email");
    std::string vendorId = list.valueOf("//VendorRet/ListID");
    ASSERT_FALSE(id.empty());

    // The program's "any name list by ListID" lookup.
    auto byId = ask("<CustomerQueryRq><ListID>" + id +
                        "</ListID></CustomerQueryRq><VendorQueryRq><ListID>" + id +
                        "</ListID></VendorQueryRq><EmployeeQueryRq><ListID>" + vendorId +
                        "</ListID></EmployeeQueryRq>",
                    "2.0", "continueOnError");
    EXPECT_EQ(byId.valueOf("/QBXML/QBXMLMsgsRs//*[ListID =\"" + id + "\"]/Email"), email);
    EXPECT_EQ(
        status(byId, 2),
        "500 Warn The query request has not been fully completed. There was a required element "
        "(\"" +
            id + "\") that could not be found in QuickBooks.");
    EXPECT_EQ(status(byId, 3).substr(0, 8), "500 Warn");

    std::string name = list.valueOf("//CustomerRet[1]/FullName");
    auto byName = ask("<CustomerQueryRq><FullName>" + name +
                      "</FullName><FullName>Nobody At All</FullName></CustomerQueryRq>");
    EXPECT_EQ(byName.selectAll("//CustomerRet").size(), 1u);
    EXPECT_EQ(status(byName).substr(0, 8), "500 Warn");

    auto txn =
        ask("<InvoiceQueryRq><TxnID>ABCDE-1234567890</TxnID></"
            "InvoiceQueryRq><InvoiceQueryRq><RefNumber>1</RefNumber></InvoiceQueryRq>",
            "13.0", "continueOnError");
    EXPECT_EQ(status(txn).substr(0, 8), "500 Warn");
    EXPECT_EQ(txn.valueOf("//InvoiceQueryRs[2]/InvoiceRet/RefNumber"), "1");
}

TEST_F(QueriesTest, FiltersNarrowTheAnswer) {
    auto doc =
        ask("<CustomerQueryRq><NameFilter><MatchCriterion>Contains</MatchCriterion><Name>zzzz</"
            "Name></NameFilter></CustomerQueryRq>"
            "<CustomerQueryRq><ActiveStatus>InactiveOnly</ActiveStatus></CustomerQueryRq>"
            "<CustomerQueryRq/>"
            "<AccountQueryRq><AccountType>Bank</AccountType></AccountQueryRq>"
            "<ItemServiceQueryRq><NameFilter><MatchCriterion>StartsWith</"
            "MatchCriterion><Name>labor</Name></NameFilter></ItemServiceQueryRq>"
            "<CustomerQueryRq><TotalBalanceFilter><Operator>GreaterThan</Operator><Amount>0.00</"
            "Amount></TotalBalanceFilter></CustomerQueryRq>",
            "13.0", "continueOnError");
    EXPECT_EQ(status(doc, 1),
              "1 Info A query request did not find a matching object in QuickBooks");
    auto inactive = doc.selectAll("//CustomerQueryRs[2]/CustomerRet");
    auto active = doc.selectAll("//CustomerQueryRs[3]/CustomerRet");
    EXPECT_EQ(inactive.size() + active.size(), 50u);
    for (const auto& c : active) {
        EXPECT_EQ(c.valueOf("IsActive"), "true");
    }
    for (const auto& a : doc.selectAll("//AccountQueryRs/AccountRet")) {
        EXPECT_EQ(a.valueOf("AccountType"), "Bank");
    }
    EXPECT_EQ(doc.selectAll("//ItemServiceQueryRs/ItemServiceRet").size(),
              2u);  // Labor, Labor:Trimming
    for (const auto& c : doc.selectAll("//CustomerQueryRs[4]/CustomerRet")) {
        EXPECT_NE(c.valueOf("TotalBalance"), "0.00");
        EXPECT_NE(c.valueOf("TotalBalance")[0], '-');
    }

    std::string customer = ask("<InvoiceQueryRq><MaxReturned>1</MaxReturned></InvoiceQueryRq>")
                               .valueOf("//CustomerRef/FullName");
    auto byEntity = ask("<InvoiceQueryRq><EntityFilter><FullName>" + customer +
                        "</FullName></EntityFilter></InvoiceQueryRq>");
    for (const auto& inv : byEntity.selectAll("//InvoiceRet")) {
        EXPECT_EQ(inv.valueOf("CustomerRef/FullName"), customer);
    }
    auto range =
        ask("<BillQueryRq><TxnDateRangeFilter><FromTxnDate>2026-01-01</"
            "FromTxnDate><ToTxnDate>2026-06-30</ToTxnDate>"
            "</TxnDateRangeFilter><AccountFilter><FullName>Accounts "
            "Payable</FullName></AccountFilter></BillQueryRq>");
    for (const auto& bill : range.selectAll("//BillRet")) {
        EXPECT_GE(bill.valueOf("TxnDate"), "2026-01-01");
        EXPECT_LE(bill.valueOf("TxnDate"), "2026-06-30");
    }
    auto refs =
        ask("<InvoiceQueryRq><RefNumberFilter><MatchCriterion>EndsWith</"
            "MatchCriterion><RefNumber>7</RefNumber>"
            "</RefNumberFilter></InvoiceQueryRq>");
    ASSERT_EQ(refs.selectAll("//InvoiceRet").size(), 12u);  // 7, 17, ..., 117
}

TEST_F(QueriesTest, CompanyAndPreferences) {
    auto doc = ask("<CompanyQueryRq/><PreferencesQueryRq/>", "2.0");
    EXPECT_EQ(doc.valueOf("//CompanyRet/FirstMonthFiscalYear"), "January");
    EXPECT_TRUE(doc.selectAll("//CompanyRet/IsSampleCompany").empty());
    EXPECT_EQ(doc.valueOf("//PreferencesRet/JobsAndEstimatesPreferences/IsUsingEstimates"), "true");
    EXPECT_EQ(doc.valueOf("//PreferencesRet/TimeTrackingPreferences/FirstDayOfWeek"), "Sunday");
    EXPECT_NE(doc.valueOf("//SalesTaxPreferences/DefaultItemSalesTaxRef/FullName"), "");
}

TEST_F(QueriesTest, FeaturesTurnedOffAnswer3250) {
    {
        auto file = qbsandbox::CompanyFile::open(company());
        file->setSetting("Preferences/JobsAndEstimatesPreferences/IsUsingEstimates", "false");
        file->exec("DELETE FROM settings WHERE key LIKE 'Preferences/TimeTrackingPreferences/%'");
    }
    auto doc =
        ask("<EstimateQueryRq/><TimeTrackingQueryRq/><InvoiceQueryRq><MaxReturned>1</MaxReturned></"
            "InvoiceQueryRq>",
            "13.0", "continueOnError");
    const std::string off =
        "3250 Error This feature is not enabled or not available in this version of QuickBooks.";
    EXPECT_EQ(status(doc, 1), off);
    EXPECT_EQ(status(doc, 2), off);
    EXPECT_EQ(status(doc, 3), "0 Info Status OK");
    EXPECT_TRUE(ask("<PreferencesQueryRq/>").selectAll("//TimeTrackingPreferences").empty());
}

TEST_F(QueriesTest, TimeTrackingAndPartlyReceivedOrders) {
    auto doc = ask(
        "<TimeTrackingQueryRq><TxnDateRangeFilter><DateMacro>ThisWeekToDate</DateMacro></"
        "TxnDateRangeFilter></TimeTrackingQueryRq>"
        "<PurchaseOrderQueryRq><IncludeLineItems>true</IncludeLineItems></PurchaseOrderQueryRq>",
        "2.0");
    auto entries = doc.selectAll("//TimeTrackingRet");
    ASSERT_FALSE(entries.empty());
    for (const auto& e : entries) {
        EXPECT_NE(e.valueOf("Duration").find("PT"), std::string::npos);
        EXPECT_NE(e.valueOf("IsBillable"), "");  // 2.0 shape
    }
    EXPECT_FALSE(doc.selectAll("//PurchaseOrderLineRet[ReceivedQuantity!='0']").empty());
    EXPECT_FALSE(doc.selectAll("//PurchaseOrderLineRet[ReceivedQuantity='0']").empty());
    auto v13 = ask("<TimeTrackingQueryRq><MaxReturned>1</MaxReturned></TimeTrackingQueryRq>");
    EXPECT_NE(v13.valueOf("//BillableStatus"), "");
    EXPECT_TRUE(v13.selectAll("//IsBillable").empty());
}

}  // namespace
}  // namespace dorvane::test
