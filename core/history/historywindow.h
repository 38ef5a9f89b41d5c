// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the History window's logic: the events of the logs in a list, the filter above it
// and the counts below.
#pragma once

#include <string>
#include <vector>

#include "history/history.h"
#include "ui/listmodel.h"
#include "ui/windowmodel.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::history {

inline constexpr const char* kHistoryList = "HistoryList";
inline constexpr const char* kTypeFilter = "TypeFilter";
inline constexpr const char* kSinceFilter = "SinceFilter";
inline constexpr const char* kUntilFilter = "UntilFilter";
inline constexpr const char* kCustomerFilter = "CustomerFilter";
inline constexpr const char* kCountsLabel = "CountsLabel";

inline constexpr const char* kHistoryWindowControls[] = {
    kHistoryList, kTypeFilter, kSinceFilter, kUntilFilter, kCustomerFilter, kCountsLabel,
};

// The columns of the list and of `dorvane history`.
inline constexpr const char* kHistoryColumns[] = {
    "When", "Event", "Type", "Number", "Amount", "Party", "Address", "Outcome",
};

// The cells of one event, in kHistoryColumns order.
std::vector<std::string> historyCells(const Event& event);

class HistoryWindow : public ui::WindowModel {
public:
    explicit HistoryWindow(const platform::ProgramFolder& folder);

    // Reads the logs again and shows what passes the filter.
    void reload();
    // Shows what passes `filter`. A date that is not YYYY-MM-DD leaves the list as it was and
    // says so in the status bar; answers whether the filter was taken.
    bool setFilter(Filter filter);
    const Filter& filter() const { return m_filter; }

    ui::ListModel& list() { return m_list; }
    // kCountsLabel's text: the events shown, by kind.
    const std::string& countsText() const { return m_counts; }

private:
    void show();

    const platform::ProgramFolder& m_folder;
    std::vector<Event> m_events;
    Filter m_filter;
    ui::ListModel m_list;
    std::string m_counts;
};

}  // namespace dorvane::history
