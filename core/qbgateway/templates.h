// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — request templates and their placeholders.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace dorvane::qbgateway {

inline constexpr std::string_view kDateMacroPlaceholder = "<DateMacro></DateMacro>";
inline constexpr std::string_view kListIdPlaceholder = "<ListID>IDTYPE</ListID>";
inline constexpr std::string_view kFromDatePlaceholder = "TheFromDate";
inline constexpr std::string_view kFixedFromDate = "1990-12-31";

// The timeframe box's items in list order; each is the qbXML date macro it stands for, but
// "ALL", which removes the date filter.
inline constexpr std::array<std::string_view, 9> kTimeframes = {
    "ThisWeekToDate",       "ThisMonthToDate", "ThisFiscalQuarterToDate",
    "ThisFiscalYearToDate", "LastWeek",        "LastMonth",
    "LastFiscalQuarter",    "LastFiscalYear",  "ALL"};

// "<DateMacro>" + timeframe + "</DateMacro>", or "" for "ALL".
std::string buildDateMacro(std::string_view timeframe);

// The template with every date-macro placeholder replaced for the timeframe.
std::string fillDateMacro(std::string_view request, std::string_view timeframe);
// The template with every list-identifier placeholder replaced by a filter on `listId`. An
// empty id gives an empty filter, never the whole list: a lookup has nothing to ask then.
std::string fillListId(std::string_view request, std::string_view listId);
// The template with every list-identifier placeholder removed: the query asks for the whole
// list.
std::string fillWholeList(std::string_view request);

}  // namespace dorvane::qbgateway
