// SPDX-License-Identifier: GPL-3.0-or-later
// Timesheets: a customer record with its time entries and a print date, rendered by
// timesheet.xslt.
#include <gtest/gtest.h>

#include "rendersupport.h"

namespace dorvane::render::test {
namespace {

// Composes the timesheet node the way the mail run does: the customer selected by its full
// name, every time entry for that name appended in document order, then the print date.
xml::Node composeTimesheet(xml::Document& doc, const std::string& fullName,
                           const std::string& printDate) {
    const std::string quoted = "\"" + fullName + "\"";
    xml::Node customer =
        doc.selectOne("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[FullName =" + quoted + "]");
    for (xml::Node entry : doc.selectAll(
             "/QBXML/QBXMLMsgsRs/TimeTrackingQueryRs/TimeTrackingRet[CustomerRef/FullName =" +
             quoted + "]")) {
        customer.appendChild(entry);
    }
    customer.appendElement("PrintDate", printDate);
    return customer;
}

TEST(TimesheetSheet, ShowsEachEntryInDateOrderAndTheTotalTime) {
    auto doc = loadFixture("timesheets.xml");
    std::string html =
        render("timesheet.xslt", composeTimesheet(doc, "Smith & <Sons> Plumbing", "2026-11-21"));
    auto rows = tableRows(html);
    EXPECT_TRUE(hasRow(rows, {"Date", "Worked By", "Service", "Notes", "Hours"})) << rowsText(rows);
    const Row rosa{"Nov 16, 2026", "Rosa Kim", "Installation", "Rough-in plumbing, kitchen",
                   "1:30"};
    const Row tom{"Nov 17, 2026", "Tom O'Neil", "Installation", "Pressure test & sign-off", "0:45"};
    auto at = [&](const Row& r) { return std::find(rows.begin(), rows.end(), r) - rows.begin(); };
    ASSERT_TRUE(hasRow(rows, rosa)) << rowsText(rows);
    ASSERT_TRUE(hasRow(rows, tom)) << rowsText(rows);
    EXPECT_EQ(at(tom), at(rosa) + 1);  // QuickBooks listed Tom's entry first
    EXPECT_EQ(rowLabelled(rows, "Total Time"), (Row{"Total Time", "2:15"}));
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "Nov 21, 2026"}));
    EXPECT_TRUE(
        hasRow(rows, {"To\nSmith & <Sons> Plumbing\n1200 Water Street\nBayshore, CA 94326"}));
    // the other customer's entry is not on this sheet
    EXPECT_EQ(html.find("Oven hood vent"), std::string::npos);
    EXPECT_NE(html.find("Smith &amp; &lt;Sons&gt; Plumbing"), std::string::npos);
    EXPECT_NE(html.find("Pressure test &amp; sign-off"), std::string::npos);
    EXPECT_EQ(html.find("<Sons>"), std::string::npos);
}

TEST(TimesheetSheet, CustomerWithoutEntriesShowsZeroTime) {
    auto doc = loadFixture("timesheets.xml");
    xml::Node customer = doc.selectOne(
        "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[FullName =\"Ortega Bakery\"]");
    customer.appendElement("PrintDate", "11/21/2026");
    auto rows = tableRows(render("timesheet.xslt", customer));
    EXPECT_EQ(rowLabelled(rows, "Total Time"), (Row{"Total Time", "0:00"})) << rowsText(rows);
    EXPECT_TRUE(hasRow(rows, {"To\nOrtega Bakery"}));
    EXPECT_EQ(rowLabelled(rows, "Date"), (Row{"Date", "11/21/2026"}));
}

// Durations in the forms QuickBooks writes, each alone and all added up.
TEST(TimesheetSheet, DurationsInEveryFormAddUp) {
    const std::pair<const char*, const char*> cases[] = {
        {"PT2H30M", "2:30"},   {"PT2H0M0S", "2:00"}, {"PT45M", "0:45"},      {"PT3H", "3:00"},
        {"PT0H5M30S", "0:06"}, {"PT12H", "12:00"},   {"PT1H59M40S", "2:00"},
    };
    std::string text =
        "<CustomerRet><ListID>80000099-1200000099</ListID><Name>Test</Name>"
        "<FullName>Test</FullName>";
    int n = 0;
    for (const auto& [duration, shown] : cases) {
        const std::string number = std::to_string(++n);
        text += "<TimeTrackingRet><TxnID>" + number + "-1264500001</TxnID><TxnDate>2026-11-0" +
                number + "</TxnDate><EntityRef><FullName>Worker " + number +
                "</FullName></EntityRef><CustomerRef><FullName>Test</FullName></CustomerRef>"
                "<ItemServiceRef><FullName>Labor</FullName></ItemServiceRef><Duration>" +
                duration + "</Duration></TimeTrackingRet>";
    }
    text += "<PrintDate>2026-11-21</PrintDate></CustomerRet>";
    auto doc = xml::Document::parse(text);
    ASSERT_TRUE(doc.ok());
    auto rows = tableRows(render("timesheet.xslt", doc->root()));
    n = 0;
    for (const auto& [duration, shown] : cases) {
        Row r = rowLabelled(rows, "Nov " + std::to_string(++n) + ", 2026");
        ASSERT_FALSE(r.empty()) << duration << "\n" << rowsText(rows);
        EXPECT_EQ(r.back(), shown) << duration;
    }
    // 2:30 + 2:00 + 0:45 + 3:00 + 0:05:30 + 12:00 + 1:59:40 = 22:20:10
    EXPECT_EQ(rowLabelled(rows, "Total Time"), (Row{"Total Time", "22:20"}));
}

}  // namespace
}  // namespace dorvane::render::test
