// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Reminders window: renders core's RemindersWindow and forwards its commands.
//
// The list of planned reminders, its ticks, the Preview and Send buttons, the caption and the
// status line all come from core; a tick set by the person goes back to it. Commands run
// through the runner the main window hands in, so that the windows never start work inside
// each other.
#pragma once

#include <functional>
#include <memory>

#include <QMainWindow>

#include "remind/reminderswindow.h"
#include "ui/listmodel.h"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace dorvane::gui {

class WindowBinding;

class RemindersWindowView final : public QMainWindow, private ui::ListObserver {
    Q_OBJECT

public:
    using CommandRunner = std::function<void(const std::function<void()>&)>;

    RemindersWindowView(remind::RemindersWindow& window, QWidget* parent, CommandRunner runner);
    ~RemindersWindowView() override;

private:
    void listReset() override;
    void rowChanged(int row) override;
    void renderRow(QTreeWidgetItem* item, const ui::ListRow& row);
    void onItemChanged(QTreeWidgetItem* item, int column);

    remind::RemindersWindow& m_window;
    CommandRunner m_runner;
    std::unique_ptr<WindowBinding> m_binding;
    QTreeWidget* m_list = nullptr;
    QLabel* m_statusPanel = nullptr;
    bool m_rendering = false;
};

}  // namespace dorvane::gui
