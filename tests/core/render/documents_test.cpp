// SPDX-License-Identifier: GPL-3.0-or-later
// The mailed transactions: invoice, sales receipt, estimate, credit memo and purchase order,
// rendered by the shipped style sheets from QuickBooks query responses.
#include <gtest/gtest.h>

#include "rendersupport.h"

namespace dorvane::render::test {
namespace {

// The node the program hands to a document's style sheet.
xml::Node documentNode(const xml::Document& doc, const std::string& type,
                       const std::string& txnId) {
    return doc.selectOne("/QBXML/QBXMLMsgsRs/" + type + "QueryRs/" + type + "Ret[TxnID =\"" +
                         txnId + "\"]");
}

class InvoiceSheet : public ::testing::Test {
protected:
    xml::Document doc = loadFixture("invoices.xml");
    std::string full = render("invoice.xslt", documentNode(doc, "Invoice", "2484-1263499231"));
    std::string plain = render("invoice.xslt", documentNode(doc, "Invoice", "24A0-1263588001"));
};

TEST_F(InvoiceSheet, ShowsReferenceDatesTermsAndBothAddresses) {
    auto rows = tableRows(full);
    EXPECT_EQ(rowLabelled(rows, "Invoice No."), (Row{"Invoice No.", "1041"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "Nov 2, 2026"}));
    EXPECT_EQ(rowLabelled(rows, "Due Date"), (Row{"Due Date", "Dec 2, 2026"}));
    EXPECT_TRUE(hasRow(rows, {"P.O. No.", "Terms", "Rep", "Ship Date", "Ship Via", "F.O.B."}));
    EXPECT_TRUE(hasRow(rows, {"PO-7781", "Net 30", "RK", "Nov 3, 2026", "UPS Ground", "Bayshore"}));
    EXPECT_TRUE(
        hasRow(rows, {"Bill To\nSmith & <Sons> Plumbing\nAttn: Dana Smith\n1200 Water Street\n"
                      "Bayshore, CA 94326",
                      "Ship To\nKitchen site\n77 Quarry Lane\nMiddlefield, CA 94482\nUSA"}))
        << rowsText(rows);
}

TEST_F(InvoiceSheet, EveryLineShowsItemDescriptionQuantityRateAndAmount) {
    auto rows = tableRows(full);
    EXPECT_TRUE(hasRow(rows, {"Item", "Description", "Qty", "Rate", "Amount"}));
    EXPECT_TRUE(
        hasRow(rows, {"Installation",
                      "Installation labor\nKitchen sink and dishwasher\nService date: Oct 30, 2026",
                      "6", "75.00", "450.00"}))
        << rowsText(rows);
    EXPECT_TRUE(hasRow(rows, {"Hardware:Faucet", "Brushed nickel faucet, single handle", "1",
                              "189.99", "189.99"}));
    // a price keeps its third decimal; the amount is money
    EXPECT_TRUE(hasRow(
        rows, {"Hardware:Drain kit", "Drain kit with disposal flange", "2", "90.255", "180.51"}));
    // a line with nothing but a description
    EXPECT_TRUE(hasRow(rows, {"", "Work guaranteed for 12 months.", "", "", ""}));
}

TEST_F(InvoiceSheet, PrintedGroupShowsItsMembersIndentedAndItsTotal) {
    auto rows = tableRows(full);
    auto at = [&](const Row& r) { return std::find(rows.begin(), rows.end(), r) - rows.begin(); };
    const Row group{"Sink Package", "Double basin sink with fittings", "1", "", ""};
    const Row sink{"Hardware:Sink", "Stainless double basin sink", "1", "649.00", "649.00"};
    const Row drain{"Hardware:Drain kit", "Drain kit with disposal flange", "2", "90.255",
                    "180.51"};
    const Row total{"", "Total Sink Package", "829.51"};
    ASSERT_TRUE(hasRow(rows, group)) << rowsText(rows);
    ASSERT_TRUE(hasRow(rows, total)) << rowsText(rows);
    EXPECT_EQ(at(sink), at(group) + 1);
    EXPECT_EQ(at(drain), at(group) + 2);
    EXPECT_EQ(at(total), at(group) + 3);

    // the members stand further in than the lines outside the group
    auto rowHtml = [&](const std::string& item) {
        size_t cell = full.find(">" + item + "</td>");
        size_t start = full.rfind("<tr", cell);
        return full.substr(start, cell - start);
    };
    EXPECT_NE(rowHtml("Hardware:Sink").find("padding-left"), std::string::npos);
    EXPECT_EQ(rowHtml("Hardware:Faucet").find("padding-left"), std::string::npos);
}

TEST_F(InvoiceSheet, GroupNotPrintedIsOneLineWithItsTotal) {
    auto rows = tableRows(full);
    EXPECT_TRUE(
        hasRow(rows, {"Haul-away", "Removal and disposal of old fixtures", "1", "", "404.00"}))
        << rowsText(rows);
    EXPECT_EQ(full.find("hidden member"), std::string::npos);
    EXPECT_EQ(full.find("Removal labor"), std::string::npos);
}

TEST_F(InvoiceSheet, SubtotalLineShowsTheSumWithoutQuantityOrRate) {
    EXPECT_TRUE(hasRow(tableRows(full), {"", "Subtotal", "1,469.50"})) << rowsText(tableRows(full));
}

TEST_F(InvoiceSheet, TotalsAddTaxSubtractPaymentsAndShowTheBalance) {
    auto rows = tableRows(full);
    // the subtotal line among the lines sums only the lines above it
    EXPECT_EQ(lastRowLabelled(rows, "Subtotal"), (Row{"Subtotal", "1,873.50"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Sales Tax (7.75%)"), (Row{"Sales Tax (7.75%)", "101.06"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "1,974.56"}));
    EXPECT_EQ(rowLabelled(rows, "Payments/Credits"), (Row{"Payments/Credits", "-500.00"}));
    EXPECT_EQ(rowLabelled(rows, "Balance Due"), (Row{"Balance Due", "1,474.56"}));
    const std::string text = visibleText(full);
    EXPECT_NE(text.find("Thank you for your business."), std::string::npos);
    // the memo is the company's own note
    EXPECT_EQ(text.find("Deposit of 500.00"), std::string::npos);
}

TEST_F(InvoiceSheet, AbsentOptionalFieldsLeaveNoEmptyBlocks) {
    auto rows = tableRows(plain);
    const std::string text = visibleText(plain);
    for (const char* absent : {"Ship To", "Sales Tax", "Payments/Credits", "P.O. No.", "Terms",
                               "Due Date", "Ship Via", "F.O.B.", "Rep", "Service date"}) {
        EXPECT_EQ(text.find(absent), std::string::npos) << absent << " in\n" << text;
    }
    // no address: the customer's name stands in
    EXPECT_TRUE(hasRow(rows, {"Bill To\nOrtega Bakery"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Invoice No."), (Row{"Invoice No.", "1042"}));
    EXPECT_TRUE(hasRow(rows, {"Installation", "Service call", "1.5", "64.00", "96.00"}));
    EXPECT_EQ(rowLabelled(rows, "Subtotal"), (Row{"Subtotal", "96.00"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "96.00"}));
    EXPECT_EQ(rowLabelled(rows, "Balance Due"), (Row{"Balance Due", "96.00"}));
    for (const Row& r : rows) {
        const bool anyText =
            std::any_of(r.begin(), r.end(), [](const std::string& c) { return !c.empty(); });
        EXPECT_TRUE(anyText) << "an empty row in\n" << rowsText(rows);
    }
}

TEST_F(InvoiceSheet, CustomerNameWithMarkupCharactersIsEscaped) {
    EXPECT_NE(full.find("Smith &amp; &lt;Sons&gt; Plumbing"), std::string::npos);
    EXPECT_EQ(full.find("<Sons>"), std::string::npos);
    EXPECT_EQ(full.find("& <"), std::string::npos);
}

TEST_F(InvoiceSheet, RendersTheSameAfterTheResponseWasUsedBefore) {
    // rendering leaves the response as it was: a second run gives the same page
    EXPECT_EQ(render("invoice.xslt", documentNode(doc, "Invoice", "2484-1263499231")), full);
}

TEST(SalesReceiptSheet, ShowsPaymentLinesAndTotal) {
    auto doc = loadFixture("salesreceipts.xml");
    std::string html =
        render("salesreceipt.xslt", documentNode(doc, "SalesReceipt", "30-1285640333"));
    auto rows = tableRows(html);
    EXPECT_EQ(rowLabelled(rows, "Sale No."), (Row{"Sale No.", "3007"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "Nov 9, 2026"}));
    EXPECT_TRUE(
        hasRow(rows, {"Sold To\nLee & <Park> Dental\n88 Orchard Road\nBayshore, CA 94327"}));
    EXPECT_TRUE(hasRow(rows, {"Payment Method", "Check No."}));
    EXPECT_TRUE(hasRow(rows, {"Check", "5512"}));
    EXPECT_TRUE(hasRow(rows, {"Lamp:Desk lamp", "LED desk lamp, brass", "3", "80.00", "240.00"}));
    EXPECT_EQ(rowLabelled(rows, "Subtotal"), (Row{"Subtotal", "240.00"}));
    EXPECT_EQ(rowLabelled(rows, "Sales Tax (7.75%)"), (Row{"Sales Tax (7.75%)", "18.60"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "258.60"}));
    EXPECT_NE(html.find("Lee &amp; &lt;Park&gt; Dental"), std::string::npos);
    EXPECT_EQ(visibleText(html).find("Ship To"), std::string::npos);
}

TEST(SalesReceiptSheet, WithoutCustomerOrTaxShowsItsGroupAndTotal) {
    auto doc = loadFixture("salesreceipts.xml");
    std::string html =
        render("salesreceipt.xslt", documentNode(doc, "SalesReceipt", "3A-1285733001"));
    auto rows = tableRows(html);
    EXPECT_TRUE(hasRow(rows, {"Bulb 3-pack", "Three warm white bulbs", "1", "", ""}))
        << rowsText(rows);
    EXPECT_TRUE(hasRow(rows, {"Bulb:Warm white", "Warm white bulb, E26", "3", "15.00", "45.00"}));
    EXPECT_TRUE(hasRow(rows, {"", "Total Bulb 3-pack", "45.00"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "45.00"}));
    const std::string text = visibleText(html);
    for (const char* absent : {"Sold To", "Ship To", "Sales Tax", "Payment Method", "Check No."}) {
        EXPECT_EQ(text.find(absent), std::string::npos) << absent;
    }
}

TEST(EstimateSheet, ShowsReferenceLinesAndTotal) {
    auto doc = loadFixture("estimates.xml");
    std::string html = render("estimate.xslt", documentNode(doc, "Estimate", "141CA5-1231522949"));
    auto rows = tableRows(html);
    EXPECT_NE(visibleText(html).find("ESTIMATE"), std::string::npos);
    EXPECT_EQ(rowLabelled(rows, "Estimate No."), (Row{"Estimate No.", "E-215"})) << rowsText(rows);
    EXPECT_TRUE(hasRow(
        rows, {"Estimate For\nSmith & <Sons> Plumbing\n1200 Water Street\nBayshore, CA 94326"}));
    EXPECT_TRUE(
        hasRow(rows, {"Pendant light", "Glass pendant over island", "3", "250.00", "750.00"}));
    EXPECT_TRUE(hasRow(rows, {"Wiring package", "Circuits and switches", "1", "", "1,400.00"}));
    EXPECT_EQ(html.find("Electrician, hourly"), std::string::npos);
    EXPECT_EQ(rowLabelled(rows, "Subtotal"), (Row{"Subtotal", "2,150.00"}));
    EXPECT_EQ(rowLabelled(rows, "Sales Tax (7.75%)"), (Row{"Sales Tax (7.75%)", "116.25"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "2,266.25"}));
    EXPECT_NE(visibleText(html).find("We look forward to working with you."), std::string::npos);
}

TEST(CreditMemoSheet, ShowsTheCreditAndWhatRemainsOfIt) {
    auto doc = loadFixture("creditmemos.xml");
    std::string html =
        render("creditmemo.xslt", documentNode(doc, "CreditMemo", "25C0-1263920011"));
    auto rows = tableRows(html);
    EXPECT_NE(visibleText(html).find("CREDIT MEMO"), std::string::npos);
    EXPECT_EQ(rowLabelled(rows, "Credit No."), (Row{"Credit No.", "CM-88"})) << rowsText(rows);
    EXPECT_TRUE(hasRow(
        rows, {"Hardware:Faucet", "Returned: brushed nickel faucet", "1", "189.99", "189.99"}));
    EXPECT_EQ(rowLabelled(rows, "Sales Tax (7.75%)"), (Row{"Sales Tax (7.75%)", "14.72"}));
    EXPECT_EQ(rowLabelled(rows, "Total Credit"), (Row{"Total Credit", "204.71"}));
    EXPECT_EQ(rowLabelled(rows, "Remaining Credit"), (Row{"Remaining Credit", "104.71"}));
    EXPECT_NE(html.find("Smith &amp; &lt;Sons&gt; Plumbing"), std::string::npos);
    EXPECT_EQ(visibleText(html).find("Faucet returned, box damaged"), std::string::npos);
}

TEST(PurchaseOrderSheet, AddressesTheVendorAndShowsTheOrder) {
    auto doc = loadFixture("purchaseorders.xml");
    std::string html =
        render("PurchaseOrder.xslt", documentNode(doc, "PurchaseOrder", "2610-1264001122"));
    auto rows = tableRows(html);
    EXPECT_NE(visibleText(html).find("PURCHASE ORDER"), std::string::npos);
    EXPECT_EQ(rowLabelled(rows, "P.O. No."), (Row{"P.O. No.", "6021"})) << rowsText(rows);
    EXPECT_EQ(rowLabelled(rows, "Expected"), (Row{"Expected", "Nov 20, 2026"}));
    EXPECT_TRUE(hasRow(
        rows, {"Vendor\nBrightway & <Co> Supply\n9 Foundry Street\nOakridge, OR 97463",
               "Ship To\nHarbor Light Fixtures\n450 Marina Way, Suite 2\nBayshore, CA 94326"}));
    EXPECT_TRUE(
        hasRow(rows, {"Hardware:Sink", "Stainless double basin sink", "2", "412.00", "824.00"}));
    EXPECT_TRUE(
        hasRow(rows, {"Bulb:Warm white", "Warm white bulb, E26", "150", "4.7333", "710.00"}));
    EXPECT_TRUE(hasRow(rows, {"", "Total Bulb 3-pack", "710.00"}));
    EXPECT_EQ(rowLabelled(rows, "Total"), (Row{"Total", "1,534.00"}));
    EXPECT_EQ(visibleText(html).find("Subtotal"), std::string::npos);
    EXPECT_NE(visibleText(html).find("Please ship complete; call before delivery."),
              std::string::npos);
    EXPECT_NE(html.find("Brightway &amp; &lt;Co&gt; Supply"), std::string::npos);
}

// What every mailed document must be: an HTML fragment a mail client shows as it is.
struct SheetCase {
    const char* sheet;
    const char* fixture;
    const char* type;
    const char* txnId;
};

class MailableFragment : public ::testing::TestWithParam<SheetCase> {};

TEST_P(MailableFragment, IsATableWithInlineStylesAndNothingAMailClientDrops) {
    const SheetCase& c = GetParam();
    auto doc = loadFixture(c.fixture);
    std::string html = render(c.sheet, documentNode(doc, c.type, c.txnId));
    ASSERT_FALSE(html.empty());
    EXPECT_EQ(html.rfind("<table", 0), 0u) << html.substr(0, 80);
    std::string lower = html;
    std::transform(lower.begin(), lower.end(), lower.begin(), ::tolower);
    for (const char* banned : {"<html", "<body", "<head", "<meta", "<script", "<style", "<link",
                               "<?xml", "javascript:", "http://", "https://", "class="}) {
        EXPECT_EQ(lower.find(banned), std::string::npos) << c.sheet << " writes " << banned;
    }
    EXPECT_EQ(count(lower, "<table"), count(lower, "</table>"));
    EXPECT_EQ(count(lower, "<tr"), count(lower, "</tr>"));
    EXPECT_EQ(count(lower, "<td"), count(lower, "</td>"));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, MailableFragment,
    ::testing::Values(
        SheetCase{"invoice.xslt", "invoices.xml", "Invoice", "2484-1263499231"},
        SheetCase{"invoice.xslt", "invoices.xml", "Invoice", "24A0-1263588001"},
        SheetCase{"salesreceipt.xslt", "salesreceipts.xml", "SalesReceipt", "30-1285640333"},
        SheetCase{"estimate.xslt", "estimates.xml", "Estimate", "141CA5-1231522949"},
        SheetCase{"creditmemo.xslt", "creditmemos.xml", "CreditMemo", "25C0-1263920011"},
        SheetCase{"PurchaseOrder.xslt", "purchaseorders.xml", "PurchaseOrder", "2610-1264001122"}),
    [](const auto& info) {
        std::string name = std::string(info.param.type) + "_" + std::to_string(info.index);
        return name;
    });

}  // namespace
}  // namespace dorvane::render::test
