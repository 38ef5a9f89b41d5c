// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — DateMacro values as date ranges relative to today.
//
// Weeks run Sunday to Saturday, as QuickBooks' report date presets have them. Fiscal quarters
// and years start on the first day of the company's first fiscal month. "Last...ToDate" ends on
// the same relative day of the previous period.
#pragma once

#include <optional>
#include <string_view>

#include "qbsandbox/values.h"

namespace dorvane::qbsandbox {

class CompanyFile;

struct DateRange {
    std::optional<Date> from;  // none = no lower bound
    std::optional<Date> to;    // none = no upper bound
};

// The range a DateMacro value covers; an unknown value covers every date.
DateRange dateMacroRange(std::string_view macro, Date today, int firstFiscalMonth);

// The company's first fiscal month (1-12) from its FirstMonthFiscalYear; January when unset.
int fiscalYearStartMonth(CompanyFile& file);
int monthNumber(std::string_view englishName);  // 0 when not a month name

}  // namespace dorvane::qbsandbox
