// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/historywindow.h"

namespace dorvane::history {

std::vector<std::string> historyCells(const Event& e) {
    return {e.when, e.event, e.type, e.number, e.amount, e.party, e.address, e.outcome};
}

HistoryWindow::HistoryWindow(const platform::ProgramFolder& folder)
    : ui::WindowModel(kHistoryWindowControls, "History"), m_folder(folder) {
    std::vector<ui::ListColumn> columns;
    for (const char* caption : kHistoryColumns) {
        columns.push_back({caption});
    }
    m_list.setColumns(std::move(columns));
}

void HistoryWindow::reload() {
    m_events = joinHistory(readLogs(m_folder));
    show();
}

bool HistoryWindow::setFilter(Filter filter) {
    for (const std::string* date : {&filter.since, &filter.until}) {
        if (!date->empty() && !isIsoDate(*date)) {
            setStatusText("\"" + *date + "\" is not a date: write it as YYYY-MM-DD, e.g. " +
                          "2026-11-18");
            return false;
        }
    }
    m_filter = std::move(filter);
    show();
    return true;
}

void HistoryWindow::show() {
    const std::vector<const Event*> shown = filterHistory(m_events, m_filter);
    std::vector<ui::ListRow> rows;
    rows.reserve(shown.size());
    for (const Event* e : shown) {
        rows.push_back({.cells = historyCells(*e), .key = e->txnId});
    }
    m_list.setRows(std::move(rows));
    m_counts = summaryText(shown);
    if (shown.size() != m_events.size()) {
        m_counts += " (of " + std::to_string(m_events.size()) + ")";
    }
    notify(kCountsLabel);
    setStatusText(m_events.empty() ? "Nothing went out or came in yet" : "");
}

}  // namespace dorvane::history
