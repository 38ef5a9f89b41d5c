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

// What each mailed document shows, and what every one must be: an HTML fragment a mail
// client shows as it is.
struct SheetCase {
    const char* sheet;
    const char* fixture;
    const char* type;
    const char* txnId;
    std::vector<Row> labelled;               // each the first row with its label, from the label on
    std::vector<Row> rows;                   // rows as they stand
    std::vector<std::string> shown, absent;  // in the visible text, or nowhere in it
    std::vector<std::string> escaped;        // in the HTML as written
};

TEST(MailedDocuments, ShowTheirRowsAndAreMailableFragments) {
    const SheetCase cases[] = {
        {"invoice.xslt", "invoices.xml", "Invoice", "2484-1263499231", {}, {}, {}, {}, {}},
        {"invoice.xslt", "invoices.xml", "Invoice", "24A0-1263588001", {}, {}, {}, {}, {}},
        {"salesreceipt.xslt",
         "salesreceipts.xml",
         "SalesReceipt",
         "30-1285640333",
         {{"Sale No.", "3007"},
          {"Date", "Nov 9, 2026"},
          {"Subtotal", "240.00"},
          {"Sales Tax (7.75%)", "18.60"},
          {"Total", "258.60"}},
         {{"Sold To\nLee & <Park> Dental\n88 Orchard Road\nBayshore, CA 94327"},
          {"Payment Method", "Check No."},
          {"Check", "5512"},
          {"Lamp:Desk lamp", "LED desk lamp, brass", "3", "80.00", "240.00"}},
         {},
         {"Ship To"},
         {"Lee &amp; &lt;Park&gt; Dental"}},
        // without customer or tax: its group and total
        {"salesreceipt.xslt",
         "salesreceipts.xml",
         "SalesReceipt",
         "3A-1285733001",
         {{"Total", "45.00"}},
         {{"Bulb 3-pack", "Three warm white bulbs", "1", "", ""},
          {"Bulb:Warm white", "Warm white bulb, E26", "3", "15.00", "45.00"},
          {"", "Total Bulb 3-pack", "45.00"}},
         {},
         {"Sold To", "Ship To", "Sales Tax", "Payment Method", "Check No."},
         {}},
        {"estimate.xslt",
         "estimates.xml",
         "Estimate",
         "141CA5-1231522949",
         {{"Estimate No.", "E-215"},
          {"Subtotal", "2,150.00"},
          {"Sales Tax (7.75%)", "116.25"},
          {"Total", "2,266.25"}},
         {{"Estimate For\nSmith & <Sons> Plumbing\n1200 Water Street\nBayshore, CA 94326"},
          {"Pendant light", "Glass pendant over island", "3", "250.00", "750.00"},
          {"Wiring package", "Circuits and switches", "1", "", "1,400.00"}},
         {"ESTIMATE", "We look forward to working with you."},
         {"Electrician, hourly"},
         {}},
        // the credit and what remains of it; the memo is the company's own note
        {"creditmemo.xslt",
         "creditmemos.xml",
         "CreditMemo",
         "25C0-1263920011",
         {{"Credit No.", "CM-88"},
          {"Sales Tax (7.75%)", "14.72"},
          {"Total Credit", "204.71"},
          {"Remaining Credit", "104.71"}},
         {{"Hardware:Faucet", "Returned: brushed nickel faucet", "1", "189.99", "189.99"}},
         {"CREDIT MEMO"},
         {"Faucet returned, box damaged"},
         {"Smith &amp; &lt;Sons&gt; Plumbing"}},
        // addressed to the vendor
        {"PurchaseOrder.xslt",
         "purchaseorders.xml",
         "PurchaseOrder",
         "2610-1264001122",
         {{"P.O. No.", "6021"}, {"Expected", "Nov 20, 2026"}, {"Total", "1,534.00"}},
         {{"Vendor\nBrightway & <Co> Supply\n9 Foundry Street\nOakridge, OR 97463",
           "Ship To\nHarbor Light Fixtures\n450 Marina Way, Suite 2\nBayshore, CA 94326"},
          {"Hardware:Sink", "Stainless double basin sink", "2", "412.00", "824.00"},
          {"Bulb:Warm white", "Warm white bulb, E26", "150", "4.7333", "710.00"},
          {"", "Total Bulb 3-pack", "710.00"}},
         {"PURCHASE ORDER", "Please ship complete; call before delivery."},
         {"Subtotal"},
         {"Brightway &amp; &lt;Co&gt; Supply"}},
    };
    for (const SheetCase& c : cases) {
        SCOPED_TRACE(std::string(c.sheet) + " " + c.txnId);
        auto doc = loadFixture(c.fixture);
        const std::string html = render(c.sheet, documentNode(doc, c.type, c.txnId));
        ASSERT_FALSE(html.empty());
        const auto rows = tableRows(html);
        const std::string text = visibleText(html);
        for (const Row& r : c.labelled) {
            EXPECT_EQ(rowLabelled(rows, r[0]), r) << rowsText(rows);
        }
        for (const Row& r : c.rows) {
            EXPECT_TRUE(hasRow(rows, r)) << r[0] << " in\n" << rowsText(rows);
        }
        for (const std::string& t : c.shown) {
            EXPECT_NE(text.find(t), std::string::npos) << t;
        }
        for (const std::string& t : c.absent) {
            EXPECT_EQ(text.find(t), std::string::npos) << t;
        }
        for (const std::string& t : c.escaped) {
            EXPECT_NE(html.find(t), std::string::npos) << t;
        }

        EXPECT_EQ(html.rfind("<table", 0), 0u) << html.substr(0, 80);
        std::string lower = html;
        std::transform(lower.begin(), lower.end(), lower.begin(), ::tolower);
        for (const char* banned : {"<html", "<body", "<head", "<meta", "<script", "<style", "<link",
                                   "<?xml", "javascript:", "http://", "https://", "class="}) {
            EXPECT_EQ(lower.find(banned), std::string::npos) << "writes " << banned;
        }
        for (const char* tag : {"table", "tr", "td"}) {
            EXPECT_EQ(count(lower, std::string("<") + tag),
                      count(lower, std::string("</") + tag + ">"))
                << tag;
        }
    }
}

}  // namespace
}  // namespace dorvane::render::test
