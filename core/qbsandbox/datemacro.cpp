// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/datemacro.h"

#include <algorithm>
#include <string>

#include "qbsandbox/companyfile.h"

namespace dorvane::qbsandbox {

namespace {

const char* const kMonths[] = {"January",   "February", "March",    "April",
                               "May",       "June",     "July",     "August",
                               "September", "October",  "November", "December"};

bool endsWith(std::string_view s, std::string_view tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

// A period of `months` months starting on `start`, shifted by `shift` periods.
DateRange monthPeriod(Date start, int months, int shift) {
    Date from = addMonths(start, months * shift);
    return {from, addMonths(from, months).plusDays(-1)};
}

}  // namespace

int monthNumber(std::string_view name) {
    for (int i = 0; i < 12; ++i) {
        if (name == kMonths[i]) {
            return i + 1;
        }
    }
    return 0;
}

int fiscalYearStartMonth(CompanyFile& file) {
    int m = monthNumber(file.setting("Company/FirstMonthFiscalYear", "January"));
    return m == 0 ? 1 : m;
}

DateRange dateMacroRange(std::string_view macro, Date today, int firstFiscalMonth) {
    if (macro == "All") {
        return {};
    }
    if (macro == "Today") {
        return {today, today};
    }
    if (macro == "Yesterday") {
        return {today.plusDays(-1), today.plusDays(-1)};
    }
    int y, m, d;
    today.ymd(y, m, d);

    std::string_view rest = macro;
    int shift = 0;
    if (rest.substr(0, 4) == "This") {
        rest.remove_prefix(4);
    } else if (rest.substr(0, 4) == "Last") {
        shift = -1;
        rest.remove_prefix(4);
    } else if (rest.substr(0, 4) == "Next") {
        shift = 1;
        rest.remove_prefix(4);
    } else {
        return {};
    }
    bool toDate = endsWith(rest, "ToDate");
    if (toDate) {
        rest.remove_suffix(6);
    }

    if (rest == "Week" || rest == "FourWeeks") {
        Date weekStart = today.plusDays(-today.weekday());
        Date from = weekStart.plusDays(7 * shift);
        Date to = from.plusDays(rest == "FourWeeks" ? 27 : 6);
        if (toDate) {
            to = today.plusDays(7 * shift);
        }
        return {from, to};
    }

    Date start;
    int months = 0;
    if (rest == "Month") {
        start = Date::fromYmd(y, m, 1);
        months = 1;
    } else if (rest == "CalendarQuarter") {
        start = Date::fromYmd(y, (m - 1) / 3 * 3 + 1, 1);
        months = 3;
    } else if (rest == "FiscalQuarter") {
        int offset = (m - firstFiscalMonth + 12) % 12;
        start = addMonths(Date::fromYmd(y, m, 1), -(offset % 3));
        months = 3;
    } else if (rest == "CalendarYear") {
        start = Date::fromYmd(y, 1, 1);
        months = 12;
    } else if (rest == "FiscalYear") {
        start = Date::fromYmd(m >= firstFiscalMonth ? y : y - 1, firstFiscalMonth, 1);
        months = 12;
    } else {
        return {};
    }
    DateRange range = monthPeriod(start, months, shift);
    if (toDate) {
        Date sameDay = addMonths(today, months * shift);
        range.to = std::min(sameDay, *range.to);
    }
    return range;
}

}  // namespace dorvane::qbsandbox
