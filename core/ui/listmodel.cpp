// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/listmodel.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "common/memory.h"

namespace dorvane::ui {
namespace {

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

void ListModel::clear() {
    m_columns.clear();
    m_rows.clear();
    notifyReset();
}

void ListModel::setRows(std::vector<ListRow> rows) {
    memory::disposeLater(std::exchange(m_rows, std::move(rows)));
    for (ListRow& r : m_rows) {
        if (r.cells.size() < m_columns.size()) {
            r.cells.resize(m_columns.size());
        }
        applyFilter(r);
    }
    if (m_sorted) {
        applySort();
    }
    notifyReset();
}

void ListModel::setColumns(std::vector<ListColumn> columns) {
    m_columns = std::move(columns);
    notifyReset();
}

int ListModel::addRow(ListRow row) {
    row.cells.resize(std::max(row.cells.size(), m_columns.size()));
    applyFilter(row);
    auto at = m_rows.end();
    if (m_sorted) {
        const auto col = static_cast<std::size_t>(m_sortColumn);
        const std::string& key = col < row.cells.size() ? row.cells[col] : std::string();
        auto cell = [col](const ListRow& r) {
            return col < r.cells.size() ? std::string_view(r.cells[col]) : std::string_view();
        };
        at = m_sortOrder == SortOrder::Ascending
                 ? std::upper_bound(m_rows.begin(), m_rows.end(), key,
                                    [&](const std::string& k, const ListRow& r) {
                                        return std::string_view(k) < cell(r);
                                    })
                 : std::upper_bound(m_rows.begin(), m_rows.end(), key,
                                    [&](const std::string& k, const ListRow& r) {
                                        return cell(r) < std::string_view(k);
                                    });
    }
    int index = static_cast<int>(at - m_rows.begin());
    m_rows.insert(at, std::move(row));
    if (m_observer) {
        m_observer->rowAdded(index);
    }
    return index;
}

void ListModel::setChecked(int row, bool checked) {
    auto& r = m_rows.at(static_cast<std::size_t>(row));
    if (r.checked != checked) {
        r.checked = checked;
        if (m_observer) {
            m_observer->rowChanged(row);
        }
    }
}

void ListModel::setIcon(int row, int icon) {
    m_rows.at(static_cast<std::size_t>(row)).icon = icon;
    if (m_observer) {
        m_observer->rowChanged(row);
    }
}

void ListModel::setCell(int row, int column, std::string text) {
    auto& r = m_rows.at(static_cast<std::size_t>(row));
    if (column < 0) {
        return;
    }
    if (static_cast<std::size_t>(column) >= r.cells.size()) {
        r.cells.resize(static_cast<std::size_t>(column) + 1);
    }
    r.cells[static_cast<std::size_t>(column)] = std::move(text);
    applyFilter(r);
    if (m_observer) {
        m_observer->rowChanged(row);
    }
}

void ListModel::setFilter(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), asciiLower);
    if (text == m_filter) {
        return;
    }
    m_filter = std::move(text);
    for (ListRow& r : m_rows) {
        applyFilter(r);
    }
    notifyReset();
}

int ListModel::shownCount() const {
    return static_cast<int>(
        std::count_if(m_rows.begin(), m_rows.end(), [](const ListRow& r) { return !r.hidden; }));
}

void ListModel::applyFilter(ListRow& row) const {
    // The search text is lower case already: each cell is compared without a copy.
    auto same = [](char cell, char wanted) { return asciiLower(cell) == wanted; };
    row.hidden = !m_filter.empty() &&
                 std::none_of(row.cells.begin(), row.cells.end(), [&](const std::string& c) {
                     return std::search(c.begin(), c.end(), m_filter.begin(), m_filter.end(),
                                        same) != c.end();
                 });
}

void ListModel::sortByColumn(int column) {
    if (column != m_sortColumn) {
        m_sortColumn = column;
        m_sortOrder = SortOrder::Ascending;
    } else {
        m_sortOrder =
            m_sortOrder == SortOrder::Ascending ? SortOrder::Descending : SortOrder::Ascending;
    }
    m_sorted = true;
    applySort();
    notifyReset();
}

void ListModel::applySort() {
    const auto col = static_cast<std::size_t>(m_sortColumn);
    auto cell = [col](const ListRow& r) -> const std::string& {
        static const std::string empty;
        return col < r.cells.size() ? r.cells[col] : empty;
    };
    if (m_sortOrder == SortOrder::Ascending) {
        std::stable_sort(m_rows.begin(), m_rows.end(),
                         [&](const ListRow& a, const ListRow& b) { return cell(a) < cell(b); });
    } else {
        std::stable_sort(m_rows.begin(), m_rows.end(),
                         [&](const ListRow& a, const ListRow& b) { return cell(b) < cell(a); });
    }
}

void ListModel::notifyReset() {
    if (m_observer) {
        m_observer->listReset();
    }
}

}  // namespace dorvane::ui
