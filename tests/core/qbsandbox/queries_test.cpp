// SPDX-License-Identifier: GPL-3.0-or-later
// Queries against the demo company: shapes, filters and the no-match and not-found answers.
#include <map>
#include <set>

#include "common/text.h"
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

// The element order of the answers the program reads, as qbXML 2.0 (the version of its
// request templates) lays them out, written out from the published qbXML reference and not
// from the sandbox's tables. "A|B" is a choice; a trailing "*" lets the slot repeat.
using Layout = std::vector<std::string>;
const std::map<std::string, Layout>& publishedLayouts() {
    static const std::map<std::string, Layout> layouts = [] {
        const std::string line =
            "TxnLineID ItemRef Desc Quantity Rate|RatePercent ClassRef Amount ServiceDate "
            "SalesTaxCodeRef DataExtRet*";
        const std::string group =
            "ItemGroupRef Desc Quantity IsPrintItemsInGroup TotalAmount LINE* DataExtRet*";
        const std::string txn = "TxnID TimeCreated TimeModified EditSequence TxnNumber ";
        const std::pair<std::string, std::string> text[] = {
            {"InvoiceRet",
             txn + "CustomerRef ClassRef ARAccountRef TxnDate RefNumber BillAddress ShipAddress "
                   "IsPending IsFinanceCharge PONumber TermsRef DueDate SalesRepRef FOB ShipDate "
                   "ShipMethodRef Subtotal ItemSalesTaxRef SalesTaxPercentage SalesTaxTotal "
                   "AppliedAmount BalanceRemaining Memo IsPaid CustomerMsgRef IsToBePrinted "
                   "CustomerSalesTaxCodeRef SuggestedDiscountAmount SuggestedDiscountDate "
                   "LinkedTxn* InvoiceLineRet|InvoiceLineGroupRet* DataExtRet*"},
            {"EstimateRet",
             txn + "CustomerRef ClassRef TxnDate RefNumber BillAddress PONumber TermsRef DueDate "
                   "SalesRepRef FOB Subtotal ItemSalesTaxRef SalesTaxPercentage SalesTaxTotal "
                   "TotalAmount Memo CustomerMsgRef CustomerSalesTaxCodeRef "
                   "EstimateLineRet|EstimateLineGroupRet* DataExtRet*"},
            {"EstimateLineRet",
             "TxnLineID ItemRef Desc Quantity Rate|RatePercent ClassRef Amount SalesTaxCodeRef "
             "MarkupRate|MarkupRatePercent DataExtRet*"},
            {"SalesReceiptRet",
             txn + "CustomerRef ClassRef TxnDate RefNumber BillAddress ShipAddress IsPending "
                   "CheckNumber PaymentMethodRef DueDate SalesRepRef ShipDate ShipMethodRef FOB "
                   "Subtotal ItemSalesTaxRef SalesTaxPercentage SalesTaxTotal TotalAmount Memo "
                   "CustomerMsgRef IsToBePrinted CustomerSalesTaxCodeRef DepositToAccountRef "
                   "SalesReceiptLineRet|SalesReceiptLineGroupRet* DataExtRet*"},
            {"CreditMemoRet",
             txn + "CustomerRef ClassRef ARAccountRef TxnDate RefNumber BillAddress ShipAddress "
                   "IsPending PONumber TermsRef DueDate SalesRepRef FOB ShipDate ShipMethodRef "
                   "Subtotal ItemSalesTaxRef SalesTaxPercentage SalesTaxTotal TotalAmount "
                   "CreditRemaining Memo CustomerMsgRef IsToBePrinted CustomerSalesTaxCodeRef "
                   "LinkedTxn* CreditMemoLineRet|CreditMemoLineGroupRet* DataExtRet*"},
            {"PurchaseOrderRet",
             txn + "VendorRef ClassRef ShipToEntityRef TxnDate RefNumber VendorAddress "
                   "ShipAddress TermsRef DueDate ExpectedDate ShipMethodRef FOB TotalAmount Memo "
                   "VendorMsg IsToBePrinted PurchaseOrderLineRet|PurchaseOrderLineGroupRet* "
                   "DataExtRet*"},
            {"PurchaseOrderLineRet",
             "TxnLineID ItemRef Desc Quantity Rate ClassRef Amount CustomerRef ServiceDate "
             "ReceivedQuantity DataExtRet*"},
            {"TimeTrackingRet",
             txn + "TxnDate EntityRef CustomerRef ItemServiceRef Duration ClassRef "
                   "PayrollItemWageRef Notes IsBillable IsBilled"},
            {"CustomerRet",
             "ListID TimeCreated TimeModified EditSequence Name FullName IsActive ParentRef "
             "Sublevel CompanyName Salutation FirstName MiddleName LastName BillAddress "
             "ShipAddress Phone AltPhone Fax Email Contact AltContact CustomerTypeRef TermsRef "
             "SalesRepRef Balance TotalBalance SalesTaxCodeRef ItemSalesTaxRef ResaleNumber "
             "AccountNumber CreditLimit JobStatus JobStartDate JobProjectedEndDate JobEndDate "
             "JobDesc JobTypeRef Notes DataExtRet*"},
            {"VendorRet",
             "ListID TimeCreated TimeModified EditSequence Name IsActive CompanyName Salutation "
             "FirstName MiddleName LastName VendorAddress Phone AltPhone Fax Email Contact "
             "AltContact NameOnCheck Notes AccountNumber VendorTypeRef TermsRef CreditLimit "
             "VendorTaxIdent IsVendorEligibleFor1099 Balance DataExtRet*"},
            {"CompanyRet",
             "CompanyName LegalCompanyName Address LegalAddress CompanyAddressForCustomer Phone "
             "Fax Email CompanyWebSite FirstMonthFiscalYear FirstMonthIncomeTaxYear CompanyType "
             "EIN"},
            {"LinkedTxn", "TxnID TxnType TxnDate RefNumber Amount"},
            {"Address", "Addr1 Addr2 Addr3 Addr4 City State PostalCode Country"},
            {"Ref", "ListID FullName"},
            {"InvoiceLineRet", line},
            {"SalesReceiptLineRet", line},
            {"CreditMemoLineRet", line},
        };
        std::map<std::string, Layout> out;
        for (const auto& [name, slots] : text) {
            out[name] = text::split(slots, ' ');
        }
        for (const char* kind :
             {"Invoice", "Estimate", "SalesReceipt", "CreditMemo", "PurchaseOrder"}) {
            out[std::string(kind) + "LineGroupRet"] =
                text::split(text::replaceAll(group, "LINE", std::string(kind) + "LineRet"), ' ');
        }
        return out;
    }();
    return layouts;
}

const Layout* publishedLayout(const std::string& name) {
    const auto& all = publishedLayouts();
    std::string key = name;
    if (name.ends_with("Address")) {
        key = "Address";
    } else if (name.ends_with("Ref")) {
        key = "Ref";
    }
    auto it = all.find(key);
    return it == all.end() ? nullptr : &it->second;
}

// Checks the children of `element`, and theirs, against the published layouts; counts every
// slot seen so that the caller can tell what the answers covered.
void expectPublishedOrder(const xml::Node& element, const std::string& path,
                          std::set<std::string>& seen) {
    const Layout* layout = publishedLayout(element.name());
    if (!layout) {
        ADD_FAILURE() << path << ": no published layout";
        return;
    }
    std::size_t at = 0;
    bool atUsed = false;
    for (xml::Node child = element.firstChildElement(); child; child = child.nextSiblingElement()) {
        const std::string name = child.name();
        std::size_t j = at;
        auto holds = [&](const std::string& slot) {
            std::string names = slot.ends_with("*") ? slot.substr(0, slot.size() - 1) : slot;
            for (const std::string& n : text::split(names, '|')) {
                if (n == name) {
                    return true;
                }
            }
            return false;
        };
        while (j < layout->size() && !holds((*layout)[j])) {
            ++j;
        }
        if (j == layout->size()) {
            ADD_FAILURE() << path << ": " << name << " is out of order or not in the layout";
            return;
        }
        if (j == at && atUsed && !(*layout)[j].ends_with("*")) {
            ADD_FAILURE() << path << ": " << name << " appears twice";
            return;
        }
        at = j;
        atUsed = true;
        seen.insert(element.name() + "/" + name);
        if (child.firstChildElement()) {
            expectPublishedOrder(child, path + "/" + name, seen);
        }
    }
}

TEST_F(QueriesTest, AnswersFollowThePublishedElementOrder) {
    // Records with the fields the demo company leaves empty.
    ask("<VendorAddRq><VendorAdd><Name>Order Check Supply</Name><CompanyName>Order Check"
        "</CompanyName><FirstName>Ann</FirstName><LastName>Lee</LastName><VendorAddress><Addr1>"
        "1 Dock Rd</Addr1><City>Bayview</City></VendorAddress><Phone>555-0101</Phone><Fax>"
        "555-0102</Fax><Email>ap@example.com</Email><Contact>Ann</Contact><NameOnCheck>Order "
        "Check Supply Inc</NameOnCheck><AccountNumber>A-17</AccountNumber><Notes>Net 10 on "
        "request</Notes><CreditLimit>500.00</CreditLimit><VendorTaxIdent>12-3456789"
        "</VendorTaxIdent><IsVendorEligibleFor1099>true</IsVendorEligibleFor1099></VendorAdd>"
        "</VendorAddRq>"
        "<CustomerAddRq><CustomerAdd><Name>Order Check Customer</Name><CompanyName>Order Check"
        "</CompanyName><Salutation>Ms.</Salutation><FirstName>Bea</FirstName><LastName>Ray"
        "</LastName><BillAddress><Addr1>2 Hill St</Addr1><City>Bayview</City></BillAddress>"
        "<ShipAddress><Addr1>3 Hill St</Addr1></ShipAddress><Phone>555-0103</Phone><AltPhone>"
        "555-0104</AltPhone><Fax>555-0105</Fax><Email>bea@example.com</Email><Contact>Bea"
        "</Contact><AltContact>Cy</AltContact><ResaleNumber>R-1</ResaleNumber><AccountNumber>"
        "C-17</AccountNumber><CreditLimit>900.00</CreditLimit><JobStatus>Awarded</JobStatus>"
        "<JobStartDate>2026-11-01</JobStartDate><JobDesc>Hedges</JobDesc><Notes>Gate code 42"
        "</Notes></CustomerAdd></CustomerAddRq>");
    std::string body;
    for (const char* t : {"Invoice", "Estimate", "SalesReceipt", "CreditMemo", "PurchaseOrder"}) {
        body += std::string("<") + t + "QueryRq><IncludeLineItems>true</IncludeLineItems>" +
                (std::string(t) == "Invoice" || std::string(t) == "CreditMemo"
                     ? "<IncludeLinkedTxns>true</IncludeLinkedTxns>"
                     : "") +
                "</" + t + "QueryRq>";
    }
    body +=
        "<TimeTrackingQueryRq/><CustomerQueryRq><ActiveStatus>All</ActiveStatus>"
        "</CustomerQueryRq><VendorQueryRq><ActiveStatus>All</ActiveStatus></VendorQueryRq>"
        "<CompanyQueryRq/>";
    auto doc = ask(body, "2.0");
    std::set<std::string> seen;
    for (const auto& ret : doc.selectAll("/QBXML/QBXMLMsgsRs/*/*")) {
        expectPublishedOrder(ret, ret.name(), seen);
    }
    // The answers reach the places where an order mistake would show.
    for (const char* pair :
         {"InvoiceRet/LinkedTxn", "InvoiceRet/InvoiceLineRet", "InvoiceRet/BalanceRemaining",
          "InvoiceRet/IsPaid", "CreditMemoRet/CreditRemaining", "EstimateRet/TotalAmount",
          "SalesReceiptRet/DepositToAccountRef", "PurchaseOrderRet/VendorAddress",
          "PurchaseOrderLineRet/ReceivedQuantity", "TimeTrackingRet/Duration",
          "TimeTrackingRet/IsBillable", "CustomerRet/Sublevel", "CustomerRet/Notes",
          "CustomerRet/JobStatus", "VendorRet/Notes", "VendorRet/AccountNumber",
          "CompanyRet/LegalAddress", "CompanyRet/EIN"}) {
        EXPECT_TRUE(seen.count(pair)) << pair << " never answered";
    }
    // Each element on its own line, as QuickBooks writes answers.
    EXPECT_EQ(m_lastText.find("><"), std::string::npos);
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
