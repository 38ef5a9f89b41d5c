// SPDX-License-Identifier: GPL-3.0-or-later
// DateMacro ranges at week, month, quarter and year boundaries.
#include "qbsandbox/datemacro.h"

#include <gtest/gtest.h>

#include "qbsandbox/companyfile.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

using qbsandbox::Date;
using qbsandbox::dateMacroRange;

std::string range(std::string_view macro, const char* today, int firstFiscalMonth = 1) {
    auto r = dateMacroRange(macro, *Date::parse(today), firstFiscalMonth);
    return (r.from ? r.from->text() : "-") + ".." + (r.to ? r.to->text() : "-");
}

TEST(DateMacro, WeeksRunSundayToSaturday) {
    // 2026-11-15 is a Sunday, 2026-11-21 a Saturday.
    EXPECT_EQ(range("ThisWeekToDate", "2026-11-18"), "2026-11-15..2026-11-18");
    EXPECT_EQ(range("ThisWeekToDate", "2026-11-15"), "2026-11-15..2026-11-15");
    EXPECT_EQ(range("ThisWeek", "2026-11-21"), "2026-11-15..2026-11-21");
    EXPECT_EQ(range("LastWeek", "2026-11-15"), "2026-11-08..2026-11-14");
    EXPECT_EQ(range("LastWeekToDate", "2026-11-18"), "2026-11-08..2026-11-11");
    EXPECT_EQ(range("NextWeek", "2026-11-21"), "2026-11-22..2026-11-28");
    EXPECT_EQ(range("NextFourWeeks", "2026-11-18"), "2026-11-22..2026-12-19");
    // Across a year end.
    EXPECT_EQ(range("ThisWeekToDate", "2027-01-01"), "2026-12-27..2027-01-01");
}

TEST(DateMacro, MonthsAndCalendarPeriods) {
    EXPECT_EQ(range("ThisMonthToDate", "2026-11-01"), "2026-11-01..2026-11-01");
    EXPECT_EQ(range("ThisMonth", "2028-02-10"), "2028-02-01..2028-02-29");
    EXPECT_EQ(range("LastMonth", "2026-01-15"), "2025-12-01..2025-12-31");
    EXPECT_EQ(range("LastMonthToDate", "2026-03-31"), "2026-02-01..2026-02-28");
    EXPECT_EQ(range("NextMonth", "2026-12-31"), "2027-01-01..2027-01-31");
    EXPECT_EQ(range("ThisCalendarQuarter", "2026-11-18"), "2026-10-01..2026-12-31");
    EXPECT_EQ(range("LastCalendarQuarter", "2026-01-01"), "2025-10-01..2025-12-31");
    EXPECT_EQ(range("ThisCalendarYearToDate", "2026-11-18"), "2026-01-01..2026-11-18");
    EXPECT_EQ(range("LastCalendarYear", "2026-11-18"), "2025-01-01..2025-12-31");
    EXPECT_EQ(range("Today", "2026-11-18"), "2026-11-18..2026-11-18");
    EXPECT_EQ(range("Yesterday", "2026-03-01"), "2026-02-28..2026-02-28");
    EXPECT_EQ(range("All", "2026-11-18"), "-..-");
}

TEST(DateMacro, FiscalQuartersAndYearsFollowTheFirstFiscalMonth) {
    // Fiscal year starting in July: Q1 Jul-Sep, Q2 Oct-Dec, Q3 Jan-Mar, Q4 Apr-Jun.
    EXPECT_EQ(range("ThisFiscalQuarterToDate", "2026-11-18", 7), "2026-10-01..2026-11-18");
    EXPECT_EQ(range("ThisFiscalQuarter", "2026-09-30", 7), "2026-07-01..2026-09-30");
    EXPECT_EQ(range("ThisFiscalQuarter", "2026-10-01", 7), "2026-10-01..2026-12-31");
    EXPECT_EQ(range("LastFiscalQuarter", "2026-01-05", 7), "2025-10-01..2025-12-31");
    EXPECT_EQ(range("ThisFiscalYearToDate", "2026-06-30", 7), "2025-07-01..2026-06-30");
    EXPECT_EQ(range("ThisFiscalYear", "2026-07-01", 7), "2026-07-01..2027-06-30");
    EXPECT_EQ(range("LastFiscalYear", "2026-07-01", 7), "2025-07-01..2026-06-30");
    EXPECT_EQ(range("NextFiscalYear", "2026-06-30", 7), "2026-07-01..2027-06-30");
    // A February fiscal year: quarters Feb-Apr, May-Jul, Aug-Oct, Nov-Jan.
    EXPECT_EQ(range("ThisFiscalQuarter", "2027-01-31", 2), "2026-11-01..2027-01-31");
    EXPECT_EQ(range("ThisFiscalYearToDate", "2027-01-31", 2), "2026-02-01..2027-01-31");
    EXPECT_EQ(range("ThisFiscalYear", "2026-11-18", 1), "2026-01-01..2026-12-31");
}

TEST(DateMacro, EveryMonthFallsIntoItsQuarter) {
    // Today on the 28th of each month of 2026; fiscal quarters of a year starting in
    // February: Feb-Apr, May-Jul, Aug-Oct, Nov-Jan.
    struct Row {
        const char* today;
        const char* thisCalendar;
        const char* lastCalendar;
        const char* thisFiscal;
    };
    const Row rows[] = {
        {"2026-01-28", "2026-01-01..2026-03-31", "2025-10-01..2025-12-31",
         "2025-11-01..2026-01-31"},
        {"2026-02-28", "2026-01-01..2026-03-31", "2025-10-01..2025-12-31",
         "2026-02-01..2026-04-30"},
        {"2026-03-28", "2026-01-01..2026-03-31", "2025-10-01..2025-12-31",
         "2026-02-01..2026-04-30"},
        {"2026-04-28", "2026-04-01..2026-06-30", "2026-01-01..2026-03-31",
         "2026-02-01..2026-04-30"},
        {"2026-05-28", "2026-04-01..2026-06-30", "2026-01-01..2026-03-31",
         "2026-05-01..2026-07-31"},
        {"2026-06-28", "2026-04-01..2026-06-30", "2026-01-01..2026-03-31",
         "2026-05-01..2026-07-31"},
        {"2026-07-28", "2026-07-01..2026-09-30", "2026-04-01..2026-06-30",
         "2026-05-01..2026-07-31"},
        {"2026-08-28", "2026-07-01..2026-09-30", "2026-04-01..2026-06-30",
         "2026-08-01..2026-10-31"},
        {"2026-09-28", "2026-07-01..2026-09-30", "2026-04-01..2026-06-30",
         "2026-08-01..2026-10-31"},
        {"2026-10-28", "2026-10-01..2026-12-31", "2026-07-01..2026-09-30",
         "2026-08-01..2026-10-31"},
        {"2026-11-28", "2026-10-01..2026-12-31", "2026-07-01..2026-09-30",
         "2026-11-01..2027-01-31"},
        {"2026-12-28", "2026-10-01..2026-12-31", "2026-07-01..2026-09-30",
         "2026-11-01..2027-01-31"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.today);
        EXPECT_EQ(range("ThisCalendarQuarter", r.today), r.thisCalendar);
        EXPECT_EQ(range("LastCalendarQuarter", r.today), r.lastCalendar);
        EXPECT_EQ(range("ThisFiscalQuarter", r.today, 2), r.thisFiscal);
    }
}

class DateMacroQueryTest : public SandboxTest {};

TEST_F(DateMacroQueryTest, QueriesUseTodayAndTheCompanysFiscalYear) {
    useEmptyCompany();
    ::setenv("DORVANE_TODAY", "2026-10-01", 1);
    std::string adds;
    for (const char* date : {"2026-06-30", "2026-07-01", "2026-09-30", "2026-10-01"}) {
        adds += std::string(
                    "<CheckAddRq><CheckAdd><AccountRef><FullName>Checking</FullName></"
                    "AccountRef><TxnDate>") +
                date +
                "</TxnDate><ExpenseLineAdd><AccountRef><FullName>Office "
                "Supplies</FullName></AccountRef><Amount>1.00</Amount>"
                "</ExpenseLineAdd></CheckAdd></CheckAddRq>";
    }
    ASSERT_EQ(ask(adds).selectAll("//CheckRet").size(), 4u);
    auto dates = [&](const std::string& macro, const std::string& version) {
        std::string out;
        auto doc = ask("<CheckQueryRq><TxnDateRangeFilter><DateMacro>" + macro +
                           "</DateMacro></TxnDateRangeFilter>"
                           "</CheckQueryRq>",
                       version);
        for (const auto& d : doc.selectAll("//TxnDate")) {
            out += d.text() + " ";
        }
        return out;
    };
    EXPECT_EQ(dates("ThisFiscalYearToDate", "2.0"), "2026-06-30 2026-07-01 2026-09-30 2026-10-01 ");
    EXPECT_EQ(dates("LastFiscalQuarter", "2.0"), "2026-07-01 2026-09-30 ");
    EXPECT_EQ(dates("ThisFiscalQuarterToDate", "2.0"), "2026-10-01 ");
    EXPECT_EQ(dates("Yesterday", "13.0"), "2026-09-30 ");
    {
        auto file = qbsandbox::CompanyFile::open(company());
        file->setSetting("Company/FirstMonthFiscalYear", "July");
    }
    EXPECT_EQ(dates("ThisFiscalYearToDate", "2.0"), "2026-07-01 2026-09-30 2026-10-01 ");
    EXPECT_EQ(dates("LastFiscalYear", "2.0"), "2026-06-30 ");
}

}  // namespace
}  // namespace dorvane::test
