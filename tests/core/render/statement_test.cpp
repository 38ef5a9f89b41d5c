// SPDX-License-Identifier: GPL-3.0-or-later
// Customer statements: a customer record with the period's invoices and payments, a print
// date and the balance brought forward, rendered by statement.xslt.
#include <charconv>
#include <gtest/gtest.h>

#include "rendersupport.h"

namespace dorvane::render::test {
namespace {

constexpr const char* kSmith = "80000020-1209525941";
constexpr const char* kOrtega = "8000002A-1209612011";

std::string doubleText(double value) {
    char buffer[64];
    auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return std::string(buffer, end);
}

double amount(const xml::Node& n, const char* path) {
    const std::string text = n.valueOf(path);
    return text.empty() ? 0.0 : std::stod(text);
}

// Composes the statement node of one customer the way the mail run does: the customer's
// invoices and payments move into the customer record, then the print date and the
// balance before the period are appended.
xml::Node composeStatement(xml::Document& doc, const std::string& listId,
                           const std::string& printDate) {
    const std::string quoted = "\"" + listId + "\"";
    xml::Node customer =
        doc.selectOne("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[ListID =" + quoted + "]");
    double forward = amount(customer, "TotalBalance");
    for (xml::Node invoice : doc.selectAll(
             "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet[CustomerRef/ListID =" + quoted + "]")) {
        forward -= amount(invoice, "Subtotal") + amount(invoice, "SalesTaxTotal");
        customer.appendChild(invoice);
    }
    for (xml::Node payment : doc.selectAll(
             "/QBXML/QBXMLMsgsRs/ReceivePaymentQueryRs/ReceivePaymentRet[CustomerRef/ListID =" +
             quoted + "]")) {
        forward += amount(payment, "TotalAmount");
        customer.appendChild(payment);
    }
    customer.appendElement("PrintDate", printDate);
    customer.appendElement("ForwardBalance", doubleText(forward));
    return customer;
}

TEST(StatementSheet, ListsThePeriodInDateOrderWithARunningBalance) {
    auto doc = loadFixture("statements.xml");
    xml::Node customer = composeStatement(doc, kSmith, "11/21/2026");
    std::string html = render("statement.xslt", customer);
    auto rows = tableRows(html);

    EXPECT_TRUE(hasRow(rows, {"Date", "Transaction", "Charges", "Payments", "Balance"}))
        << rowsText(rows);
    // payments were appended after the invoices, yet the first payment comes first
    const std::vector<Row> expected = {
        {"", "Balance forward", "", "", "250.00"},
        {"Nov 1, 2026", "Payment #5497 (Check)", "", "500.00", "-250.00"},
        {"Nov 2, 2026", "Invoice #1041 due Dec 2, 2026", "1,974.56", "", "1,724.56"},
        {"Nov 10, 2026", "Payment #5512 (Check)", "", "1,000.00", "724.56"},
        {"Nov 20, 2026", "Invoice #1050 due Dec 20, 2026", "300.00", "", "1,024.56"},
    };
    auto first = std::find(rows.begin(), rows.end(), expected.front());
    ASSERT_NE(first, rows.end()) << rowsText(rows);
    ASSERT_GE(rows.end() - first, static_cast<long>(expected.size()));
    EXPECT_EQ(std::vector<Row>(first, first + static_cast<long>(expected.size())), expected)
        << rowsText(rows);
    // the amount due is what QuickBooks says the customer owes
    EXPECT_EQ(rowLabelled(rows, "Amount Due"), (Row{"Amount Due", "1,024.56"}));
}

TEST(StatementSheet, ShowsCustomerAddressAndPrintDateAndOnlyThatCustomersTransactions) {
    auto doc = loadFixture("statements.xml");
    std::string html = render("statement.xslt", composeStatement(doc, kSmith, "11/21/2026"));
    auto rows = tableRows(html);
    EXPECT_TRUE(
        hasRow(rows, {"To\nSmith & <Sons> Plumbing\n1200 Water Street\nBayshore, CA 94326"}))
        << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "11/21/2026"}));
    EXPECT_EQ(rowLabelled(rows, "Account No."), (Row{"Account No.", "C-1077"}));
    EXPECT_NE(html.find("Smith &amp; &lt;Sons&gt; Plumbing"), std::string::npos);
    EXPECT_EQ(html.find("<Sons>"), std::string::npos);
    // Ortega's invoice stays out of Smith's statement
    EXPECT_EQ(visibleText(html).find("#1042"), std::string::npos);
    EXPECT_NE(visibleText(html).find("STATEMENT"), std::string::npos);
}

TEST(StatementSheet, SecondCompositionUsesTheLastPrintDateAndForwardBalance) {
    auto doc = loadFixture("statements.xml");
    xml::Node customer = composeStatement(doc, kSmith, "11/21/2026");
    render("statement.xslt", customer);
    // The list was not reloaded: the invoices and payments already moved into the record,
    // so the second composition finds none and brings forward the whole balance.
    customer = composeStatement(doc, kSmith, "11/22/2026");
    ASSERT_EQ(customer.selectAll("ForwardBalance").size(), 2u);
    std::string html = render("statement.xslt", customer);
    auto rows = tableRows(html);
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "11/22/2026"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Balance forward"), (Row{"Balance forward", "", "", "1,024.56"}));
    EXPECT_EQ(visibleText(html).find("11/21/2026"), std::string::npos);
    EXPECT_EQ(visibleText(html).find("250.00"), std::string::npos);
}

TEST(StatementSheet, CustomerWithoutTransactionsOwesTheForwardBalance) {
    auto doc = loadFixture("statements.xml");
    xml::Node customer = doc.selectOne("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[ListID =\"" +
                                       std::string(kOrtega) + "\"]");
    customer.appendElement("PrintDate", "2026-11-21");
    customer.appendElement("ForwardBalance", "96");
    std::string html = render("statement.xslt", customer);
    auto rows = tableRows(html);
    EXPECT_EQ(rowLabelled(rows, "Balance forward"), (Row{"Balance forward", "", "", "96.00"}))
        << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Amount Due"), (Row{"Amount Due", "96.00"}));
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "Nov 21, 2026"}));
    // no address: the customer's name stands in
    EXPECT_TRUE(hasRow(rows, {"To\nOrtega Bakery"}));
    EXPECT_EQ(visibleText(html).find("Invoice"), std::string::npos);
    EXPECT_EQ(visibleText(html).find("Payment #"), std::string::npos);
}

// The balance brought forward arrives as the text of a double.
class ForwardBalanceText : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(ForwardBalanceText, IsShownAsMoney) {
    auto [text, shown] = GetParam();
    auto doc = loadFixture("statements.xml");
    xml::Node customer = doc.selectOne("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[ListID =\"" +
                                       std::string(kOrtega) + "\"]");
    customer.appendElement("PrintDate", "2026-11-21");
    customer.appendElement("ForwardBalance", text);
    auto rows = tableRows(render("statement.xslt", customer));
    EXPECT_EQ(rowLabelled(rows, "Balance forward"), (Row{"Balance forward", "", "", shown}))
        << text;
    EXPECT_EQ(rowLabelled(rows, "Amount Due"), (Row{"Amount Due", shown})) << text;
}

INSTANTIATE_TEST_SUITE_P(Statement, ForwardBalanceText,
                         ::testing::Values(std::pair{"1234.5", "1,234.50"},
                                           std::pair{"-20", "-20.00"}, std::pair{"1.0E-2", "0.01"},
                                           std::pair{"2.5e+2", "250.00"},
                                           std::pair{"-1.2345678E3", "-1,234.57"},
                                           std::pair{"1024.5600000000002", "1,024.56"},
                                           std::pair{"-4.547473508864641e-13", "0.00"},
                                           std::pair{"0", "0.00"}));

}  // namespace
}  // namespace dorvane::render::test
