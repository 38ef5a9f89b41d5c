// SPDX-License-Identifier: GPL-3.0-or-later
// Adds, read back by queries; references, computed amounts and balances; TxnDel.
#include "qbsandbox/schema.h"
#include "qbsandbox/values.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

class AddsTest : public SandboxTest {
protected:
    void SetUp() override {
        SandboxTest::SetUp();
        useDemo();
    }

    // Adds through one request, checks status 0, answers the Ret.
    xml::Node add(const std::string& kind, const std::string& content,
                  const std::string& version = "13.0") {
        m_doc = ask("<" + kind + "AddRq requestID=\"1\"><" + kind + "Add>" + content + "</" + kind +
                        "Add></" + kind + "AddRq>",
                    version);
        EXPECT_EQ(status(m_doc), "0 Info Status OK") << kind << "\n" << m_lastText;
        xml::Node ret = m_doc.selectOne("//" + kind + "Ret");
        auto check = qbsandbox::validateElement(ret, *qbsandbox::parseVersion(version));
        EXPECT_FALSE(check.fault) << check.fault.value_or("");
        EXPECT_EQ(check.statusCode, 0) << check.statusMessage;
        return ret;
    }

    // Queries the kind back by its ID and answers the Ret's text without volatile parts.
    std::string readBack(const std::string& kind, const xml::Node& ret, bool txn) {
        std::string id = ret.valueOf(txn ? "TxnID" : "ListID");
        auto doc =
            ask("<" + kind + "QueryRq><" + (txn ? "TxnID" : "ListID") + ">" + id + "</" +
                (txn ? "TxnID" : "ListID") + ">" +
                (txn && kind != "TimeTracking" ? "<IncludeLineItems>true</IncludeLineItems>" : "") +
                "</" + kind + "QueryRq>");
        EXPECT_EQ(status(doc), "0 Info Status OK");
        return doc.selectOne("//" + kind + "Ret").xml();
    }

    std::string balance(const std::string& query, const std::string& path) {
        return ask(query).valueOf(path);
    }

    xml::Document m_doc;
};

TEST_F(AddsTest, ListAddsRoundTrip) {
    struct Case {
        std::string kind;
        std::string content;
    };
    const Case cases[] = {
        {"Account",
         "<Name>Freight In</Name><AccountType>Expense</AccountType><Desc>Imported</Desc>"},
        {"ItemService",
         "<Name>Uncategorized Item</Name><SalesOrPurchase><Desc>Imported</Desc><Price>0.00</Price>"
         "<AccountRef><FullName>Sales</FullName></AccountRef></SalesOrPurchase>"},
        {"ItemNonInventory",
         "<Name>Stepping "
         "Stones</Name><SalesAndPurchase><SalesDesc>Stone</SalesDesc><SalesPrice>9.5</SalesPrice>"
         "<IncomeAccountRef><FullName>Materials "
         "Income</FullName></IncomeAccountRef><PurchaseCost>4.25</PurchaseCost>"
         "<ExpenseAccountRef><FullName>Job "
         "Expenses</FullName></ExpenseAccountRef></SalesAndPurchase>"},
        {"ItemOtherCharge",
         "<Name>Disposal "
         "Fee</Name><SalesOrPurchase><Price>15.00</Price><AccountRef><FullName>Sales</FullName>"
         "</AccountRef></SalesOrPurchase>"},
        {"ItemGroup",
         "<Name>Patio "
         "Kit</Name><ItemDesc>Patio</ItemDesc><IsPrintItemsInGroup>true</IsPrintItemsInGroup>"
         "<ItemGroupLine><ItemRef><FullName>Gravel</FullName></ItemRef><Quantity>2</Quantity></"
         "ItemGroupLine>"
         "<ItemGroupLine><ItemRef><FullName>Installation</FullName></ItemRef><Quantity>3</"
         "Quantity></ItemGroupLine>"},
        {"Vendor",
         "<Name>Acme Pavers</Name><CompanyName>Acme Pavers</CompanyName><VendorAddress><Addr1>1 "
         "Main</Addr1>"
         "<City>Bayview</City></VendorAddress><Email>ap@example.com</Email><TermsRef><FullName>Net "
         "30</FullName></TermsRef>"},
        {"Customer",
         "<Name>Jordan "
         "Lee</Name><FirstName>Jordan</FirstName><LastName>Lee</LastName><BillAddress><Addr1>9 "
         "Elm</Addr1>"
         "</BillAddress><Email>jordan@example.net</Email>"},
        {"Employee",
         "<FirstName>Sam</FirstName><LastName>Ortiz</LastName><Email>sam@example.org</Email>"},
    };
    for (const auto& c : cases) {
        xml::Node ret = add(c.kind, c.content);
        std::string added = ret.xml();
        EXPECT_EQ(readBack(c.kind, ret, false), added) << c.kind;
    }
    EXPECT_EQ(balance("<EmployeeQueryRq><FullName>Sam Ortiz</FullName></EmployeeQueryRq>",
                      "//EmployeeRet/Email"),
              "sam@example.org");
    EXPECT_EQ(balance("<ItemNonInventoryQueryRq><FullName>Stepping "
                      "Stones</FullName></ItemNonInventoryQueryRq>",
                      "//SalesAndPurchase/SalesPrice"),
              "9.50");
    EXPECT_EQ(balance("<CustomerQueryRq><FullName>Jordan Lee</FullName></CustomerQueryRq>",
                      "//JobStatus"),
              "None");
}

TEST_F(AddsTest, IdentifiersTakeQuickBooksFormats) {
    xml::Node ret = add("Customer", "<Name>Format Check</Name>");
    std::string id = ret.valueOf("ListID");
    ASSERT_EQ(id.size(), 19u) << id;
    EXPECT_EQ(id.substr(0, 4), "8000");
    EXPECT_EQ(id.substr(9), ret.valueOf("EditSequence"));
    EXPECT_EQ(ret.valueOf("TimeCreated").size(), 25u);
}

TEST_F(AddsTest, SubJobsAndDuplicateNames) {
    add("Customer", "<Name>Parent Co</Name>");
    xml::Node job = add(
        "Customer", "<Name>Phase 1</Name><ParentRef><FullName>Parent Co</FullName></ParentRef>");
    EXPECT_EQ(job.valueOf("FullName"), "Parent Co:Phase 1");
    EXPECT_EQ(job.valueOf("Sublevel"), "1");
    auto dup = ask("<VendorAddRq><VendorAdd><Name>parent co</Name></VendorAdd></VendorAddRq>");
    EXPECT_EQ(status(dup),
              "3100 Error The name \"parent co\" of the list element is already in use.");
    EXPECT_NE(m_lastText.find("&quot;parent co&quot;"), std::string::npos);
    auto badParent =
        ask("<CustomerAddRq><CustomerAdd><Name>X</Name><ParentRef><ListID>80000999-1</ListID></"
            "ParentRef>"
            "</CustomerAdd></CustomerAddRq>");
    EXPECT_EQ(status(badParent),
              "3140 Error There is an invalid reference to QuickBooks Customer \"80000999-1\".");
}

TEST_F(AddsTest, InvoiceComputesAmountsTaxAndBalances) {
    add("Customer",
        "<Name>Tax Payer</Name><TermsRef><FullName>Net 15</FullName></TermsRef>"
        "<ItemSalesTaxRef><FullName>State Tax</FullName></ItemSalesTaxRef>");
    std::string itemId = ask("<ItemServiceQueryRq><FullName>Design</FullName></ItemServiceQueryRq>")
                             .valueOf("//ListID");
    xml::Node inv = add(
        "Invoice",
        "<CustomerRef><FullName>Tax Payer</FullName></CustomerRef><TxnDate>2026-11-02</TxnDate>"
        "<InvoiceLineAdd><ItemRef><ListID>" +
            itemId +
            "</ListID></ItemRef><Quantity>2</Quantity></InvoiceLineAdd>"
            "<InvoiceLineAdd><ItemRef><FullName>Mulch</FullName></ItemRef><Quantity>3</"
            "Quantity><Rate>40</Rate></InvoiceLineAdd>"
            "<InvoiceLineAdd><ItemRef><FullName>Delivery</FullName></ItemRef><Amount>12.50</"
            "Amount></InvoiceLineAdd>"
            "<InvoiceLineGroupAdd><ItemGroupRef><FullName>Spring Package</FullName></ItemGroupRef>"
            "<Quantity>2</Quantity></InvoiceLineGroupAdd>");
    // Design 2 x 55 = 110 (not taxable); Mulch 3 x 40 = 120 (taxable); Delivery 12.50;
    // Spring Package x2 = Maintenance 8 x 35 = 280 + Mulch 4 x 38 = 152 (taxable).
    EXPECT_EQ(inv.valueOf("Subtotal"), "674.50");
    EXPECT_EQ(inv.valueOf("SalesTaxPercentage"), "7.25");
    EXPECT_EQ(inv.valueOf("SalesTaxTotal"), "19.72");  // 272 x 7.25% = 19.72
    EXPECT_EQ(inv.valueOf("BalanceRemaining"), "694.22");
    EXPECT_EQ(inv.valueOf("AppliedAmount"), "0.00");
    EXPECT_EQ(inv.valueOf("DueDate"), "2026-11-17");
    EXPECT_EQ(inv.valueOf("InvoiceLineRet[1]/Rate"), "55.00");
    EXPECT_EQ(inv.valueOf("InvoiceLineRet[1]/Desc"), "Custom landscape design");
    EXPECT_EQ(inv.valueOf("InvoiceLineGroupRet/TotalAmount"), "432.00");
    EXPECT_EQ(inv.selectAll("InvoiceLineGroupRet/InvoiceLineRet").size(), 2u);
    EXPECT_EQ(inv.valueOf("InvoiceLineGroupRet/InvoiceLineRet[1]/Quantity"), "8");
    EXPECT_EQ(readBack("Invoice", inv, true), inv.xml());
    EXPECT_EQ(
        balance("<CustomerQueryRq><FullName>Tax Payer</FullName></CustomerQueryRq>", "//Balance"),
        "694.22");

    // Paying part of it moves the balances and links the two.
    std::string invoiceId = inv.valueOf("TxnID");
    xml::Node pay = add(
        "ReceivePayment",
        "<CustomerRef><FullName>Tax Payer</FullName></CustomerRef><TotalAmount>500.00</TotalAmount>"
        "<AppliedToTxnAdd><TxnID>" +
            invoiceId +
            "</TxnID><PaymentAmount>400.00</PaymentAmount>"
            "</AppliedToTxnAdd>");
    EXPECT_EQ(pay.valueOf("UnusedPayment"), "100.00");
    EXPECT_EQ(pay.valueOf("AppliedToTxnRet/BalanceRemaining"), "294.22");
    EXPECT_EQ(readBack("ReceivePayment", pay, true), pay.xml());
    auto after = ask("<InvoiceQueryRq><TxnID>" + invoiceId +
                     "</TxnID><IncludeLinkedTxns>true</IncludeLinkedTxns></InvoiceQueryRq>"
                     "<CustomerQueryRq><FullName>Tax Payer</FullName></CustomerQueryRq>");
    EXPECT_EQ(after.valueOf("//InvoiceRet/BalanceRemaining"), "294.22");
    EXPECT_EQ(after.valueOf("//InvoiceRet/AppliedAmount"), "-400.00");
    EXPECT_EQ(after.valueOf("//InvoiceRet/LinkedTxn/TxnID"), pay.valueOf("TxnID"));
    EXPECT_EQ(after.valueOf("//CustomerRet/Balance"), "194.22");

    // Deleting the payment undoes all of it.
    auto del = ask("<TxnDelRq><TxnDelType>ReceivePayment</TxnDelType><TxnID>" +
                   pay.valueOf("TxnID") + "</TxnID></TxnDelRq>");
    EXPECT_EQ(status(del), "0 Info Status OK");
    EXPECT_EQ(del.valueOf("//TxnDelRs/TxnID"), pay.valueOf("TxnID"));
    auto undone = ask("<InvoiceQueryRq><TxnID>" + invoiceId +
                      "</TxnID><IncludeLinkedTxns>true</IncludeLinkedTxns></InvoiceQueryRq>"
                      "<CustomerQueryRq><FullName>Tax Payer</FullName></CustomerQueryRq>");
    EXPECT_EQ(undone.valueOf("//InvoiceRet/BalanceRemaining"), "694.22");
    EXPECT_TRUE(undone.selectAll("//LinkedTxn").empty());
    EXPECT_EQ(undone.valueOf("//CustomerRet/Balance"), "694.22");
}

TEST_F(AddsTest, PurchaseSideAddsRoundTripAndMoveBalances) {
    std::string checking = "<AccountQueryRq><FullName>Checking</FullName></AccountQueryRq>";
    std::string before = balance(checking, "//Balance");
    xml::Node bill = add(
        "Bill",
        "<VendorRef><FullName>Delta Irrigation</FullName></VendorRef><TxnDate>2026-11-10</TxnDate>"
        "<RefNumber>D-1</RefNumber><ExpenseLineAdd><AccountRef><FullName>Utilities</FullName></"
        "AccountRef>"
        "<Amount>120.00</Amount><Memo>Water</Memo></"
        "ExpenseLineAdd><ItemLineAdd><ItemRef><FullName>Timer</FullName>"
        "</ItemRef><Quantity>2</Quantity></"
        "ItemLineAdd><ItemGroupLineAdd><ItemGroupRef><FullName>Fountain Kit"
        "</FullName></ItemGroupRef></ItemGroupLineAdd>");
    EXPECT_EQ(bill.valueOf("ItemLineRet/Cost"), "48.00");
    EXPECT_EQ(bill.valueOf("AmountDue"), bill.valueOf("OpenAmount"));
    EXPECT_EQ(bill.valueOf("DueDate"), "2026-11-25");  // the vendor's Net 15
    EXPECT_EQ(bill.valueOf("IsPaid"), "false");
    EXPECT_EQ(readBack("Bill", bill, true), bill.xml());

    xml::Node check =
        add("Check",
            "<AccountRef><FullName>Checking</FullName></AccountRef><PayeeEntityRef><FullName>Union "
            "Hardware"
            "</FullName></PayeeEntityRef><RefNumber>5001</RefNumber><TxnDate>2026-11-12</TxnDate>"
            "<ExpenseLineAdd><AccountRef><FullName>Office "
            "Supplies</FullName></AccountRef><Amount>75.25</Amount>"
            "</ExpenseLineAdd>");
    EXPECT_EQ(check.valueOf("Amount"), "75.25");
    EXPECT_EQ(readBack("Check", check, true), check.xml());
    auto b = qbsandbox::Decimal::parse(before);
    EXPECT_EQ(balance(checking, "//Balance"), (*b - *qbsandbox::Decimal::parse("75.25")).amount());

    xml::Node charge =
        add("CreditCardCharge",
            "<AccountRef><FullName>Visa Card</FullName></AccountRef><PayeeEntityRef><FullName>"
            "Golden State Fuel</FullName></PayeeEntityRef><ExpenseLineAdd><AccountRef><FullName>"
            "Automobile:Fuel</FullName></AccountRef><Amount>48.10</Amount></ExpenseLineAdd>");
    EXPECT_EQ(charge.valueOf("TxnDate"), kToday);
    EXPECT_EQ(readBack("CreditCardCharge", charge, true), charge.xml());

    xml::Node po =
        add("PurchaseOrder",
            "<VendorRef><FullName>West Coast Pumps</FullName></VendorRef><PurchaseOrderLineAdd>"
            "<ItemRef><FullName>Pump</FullName></ItemRef><Quantity>4</Quantity></"
            "PurchaseOrderLineAdd>");
    EXPECT_EQ(po.valueOf("TotalAmount"), "328.00");
    EXPECT_EQ(po.valueOf("PurchaseOrderLineRet/ReceivedQuantity"), "0");
    EXPECT_EQ(readBack("PurchaseOrder", po, true), po.xml());
}

TEST_F(AddsTest, SalesReceiptTimeTrackingAndInvalidReferences) {
    xml::Node sr = add(
        "SalesReceipt",
        "<TxnDate>2026-11-18</TxnDate><PaymentMethodRef><FullName>Cash</FullName></"
        "PaymentMethodRef>"
        "<SalesReceiptLineAdd><ItemRef><FullName>Plants</FullName></ItemRef><Quantity>4</Quantity>"
        "</SalesReceiptLineAdd>");
    EXPECT_EQ(sr.valueOf("TotalAmount"), "50.00");
    EXPECT_EQ(sr.valueOf("DepositToAccountRef/FullName"), "Undeposited Funds");
    EXPECT_EQ(readBack("SalesReceipt", sr, true), sr.xml());

    xml::Node tt = add(
        "TimeTracking",
        "<TxnDate>2026-11-17</TxnDate><EntityRef><FullName>Ana Lopez</FullName></EntityRef>"
        "<CustomerRef><FullName>Harborside Cafe</FullName></CustomerRef><ItemServiceRef><FullName>"
        "Maintenance</FullName></ItemServiceRef><Duration>PT2H30M</Duration><IsBillable>true</"
        "IsBillable>");
    EXPECT_EQ(tt.valueOf("Duration"), "PT2H30M0S");
    EXPECT_EQ(tt.valueOf("BillableStatus"), "Billable");
    EXPECT_EQ(readBack("TimeTracking", tt, true), tt.xml());
    auto missing = ask(
        "<TimeTrackingAddRq><TimeTrackingAdd><EntityRef><FullName>Ana Lopez</FullName></EntityRef>"
        "<Duration>PT1H</Duration><IsBillable>true</IsBillable></TimeTrackingAdd></"
        "TimeTrackingAddRq>");
    EXPECT_EQ(status(missing), "3150 Error There is a missing element: \"CustomerRef\".");

    auto badLine =
        ask("<SalesReceiptAddRq><SalesReceiptAdd><SalesReceiptLineAdd><ItemRef><FullName>Tax On "
            "Sale</FullName>"
            "</ItemRef></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>");
    EXPECT_EQ(status(badLine),
              "3140 Error There is an invalid reference to QuickBooks Item \"Tax On Sale\" in the "
              "SalesReceipt line.");
    auto badCustomer =
        ask("<InvoiceAddRq><InvoiceAdd><CustomerRef><FullName>Missing</FullName></CustomerRef></"
            "InvoiceAdd></InvoiceAddRq>");
    EXPECT_EQ(status(badCustomer),
              "3140 Error There is an invalid reference to QuickBooks Customer \"Missing\".");
    // A vendor is no customer, even by its ListID.
    std::string vendorId =
        ask("<VendorQueryRq><MaxReturned>1</MaxReturned></VendorQueryRq>").valueOf("//ListID");
    auto wrongKind = ask("<InvoiceAddRq><InvoiceAdd><CustomerRef><ListID>" + vendorId +
                         "</ListID></CustomerRef></InvoiceAdd></InvoiceAddRq>");
    EXPECT_EQ(status(wrongKind).substr(0, 10), "3140 Error");
}

TEST_F(AddsTest, TxnDelRemovesTheTransactionAndItsEffects) {
    std::string vendor = "<VendorQueryRq><FullName>Quarry Direct</FullName></VendorQueryRq>";
    std::string before = balance(vendor, "//Balance");
    xml::Node bill = add("Bill",
                         "<VendorRef><FullName>Quarry "
                         "Direct</FullName></VendorRef><ExpenseLineAdd><AccountRef><FullName>"
                         "Rent</FullName></AccountRef><Amount>900.00</Amount></ExpenseLineAdd>");
    EXPECT_NE(balance(vendor, "//Balance"), before);
    std::string id = bill.valueOf("TxnID");
    auto wrongType =
        ask("<TxnDelRq><TxnDelType>Invoice</TxnDelType><TxnID>" + id + "</TxnID></TxnDelRq>");
    EXPECT_EQ(status(wrongType),
              "3120 Error Object \"" + id + "\" specified in the request cannot be found.");
    auto del = ask("<TxnDelRq requestID=\"9\"><TxnDelType>Bill</TxnDelType><TxnID>" + id +
                   "</TxnID></TxnDelRq>");
    EXPECT_EQ(status(del), "0 Info Status OK");
    EXPECT_EQ(del.valueOf("//TxnDelRs/TxnDelType"), "Bill");
    EXPECT_EQ(balance(vendor, "//Balance"), before);
    EXPECT_EQ(status(ask("<BillQueryRq><TxnID>" + id + "</TxnID></BillQueryRq>")).substr(0, 8),
              "500 Warn");
}

}  // namespace
}  // namespace dorvane::test
