// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the rows of a list view, kept in core and rendered by a front end.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace dorvane::ui {

struct ListColumn {
    std::string caption;
    int width = 0;       // a hint in pixels; 0 lets the front end decide
    double share = 0.0;  // or a share of the list's width (1.0 / 6 for a sixth)
};

struct ListRow {
    bool checked = false;
    int icon = 0;                    // 1-based index into the window's icon list; 0 = none
    std::vector<std::string> cells;  // one per column
    std::string key;                 // the record's identifier (TxnID, ListID, ...)
    bool hidden = false;             // left out by the list's search; keeps its check mark
};

enum class SortOrder { Ascending, Descending };

// Change notifications. `listReset` follows any change of columns or of several rows;
// `rowAdded` a new row at `row` (the rows after it move down by one); `rowChanged` a change of
// one row's check, icon or cells.
class ListObserver {
public:
    virtual ~ListObserver() = default;
    virtual void listReset() = 0;
    virtual void rowAdded(int /*row*/) { listReset(); }
    virtual void rowChanged(int row) = 0;
};

class ListModel {
public:
    const std::vector<ListColumn>& columns() const { return m_columns; }
    const std::vector<ListRow>& rows() const { return m_rows; }
    int rowCount() const { return static_cast<int>(m_rows.size()); }
    const ListRow& row(int i) const { return m_rows.at(static_cast<std::size_t>(i)); }

    // Removes columns and rows. Sorting stays on once a column click switched it on: the next
    // rows come in the order of the last sort.
    void clear();
    void setColumns(std::vector<ListColumn> columns);
    // Replaces all rows at once (in their order, or in the sort order while the list is
    // sorted), with one reset for observers.
    void setRows(std::vector<ListRow> rows);
    // Appends a row, or, while the list is sorted, inserts it at its place in the order;
    // answers the row's index.
    int addRow(ListRow row);
    void setChecked(int row, bool checked);
    void setIcon(int row, int icon);
    void setCell(int row, int column, std::string text);

    // The search: rows none of whose cells contain `text` (ignoring ASCII case) are hidden;
    // "" shows every row again, with its check mark as it was. It stays through clear() and
    // applies to the rows that come later.
    void setFilter(std::string text);
    const std::string& filter() const { return m_filter; }
    // Whether a row is shown (not hidden by the search).
    bool shown(int row) const { return !this->row(row).hidden; }
    int shownCount() const;

    // A click on a column header: a new column sorts ascending, the same column again flips
    // the order. Cells compare as text.
    void sortByColumn(int column);
    int sortColumn() const { return m_sortColumn; }
    SortOrder sortOrder() const { return m_sortOrder; }
    bool sorted() const { return m_sorted; }

    void setObserver(ListObserver* observer) { m_observer = observer; }

private:
    void applySort();
    void notifyReset();
    void applyFilter(ListRow& row) const;

    std::vector<ListColumn> m_columns;
    std::vector<ListRow> m_rows;
    int m_sortColumn = -1;  // no column yet: the first click on any column sorts ascending
    SortOrder m_sortOrder = SortOrder::Ascending;
    bool m_sorted = false;
    std::string m_filter;  // lower case
    ListObserver* m_observer = nullptr;
};

}  // namespace dorvane::ui
