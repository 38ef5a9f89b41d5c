// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the History window: renders core's HistoryWindow (the list of what went out and came
// in, its filter and counts) and hands the filter to it.
#pragma once

#include <memory>
#include <string_view>

#include <QMainWindow>

#include "history/historywindow.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTreeWidget;

namespace dorvane::gui {

class WindowBinding;

class HistoryWindowView final : public QMainWindow {
    Q_OBJECT

public:
    explicit HistoryWindowView(history::HistoryWindow& window, QWidget* parent = nullptr);
    ~HistoryWindowView() override;

    // Reads the logs again and shows the window.
    void reloadAndShow();

private:
    void changed(std::string_view what);
    void renderList();
    void applyFilter();

    history::HistoryWindow& m_window;
    std::unique_ptr<WindowBinding> m_binding;
    QTreeWidget* m_list = nullptr;
    QComboBox* m_type = nullptr;
    QLineEdit* m_since = nullptr;
    QLineEdit* m_until = nullptr;
    QLineEdit* m_customer = nullptr;
    QLabel* m_counts = nullptr;
    QLabel* m_statusPanel = nullptr;
};

}  // namespace dorvane::gui
