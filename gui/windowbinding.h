// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a core window model bound to the widgets of its window.
//
// The caption becomes the window's title, the status text the text of a label in its status
// bar, and the visibility and enabled state of each control the state of the child whose
// objectName is the control's name: a menu's through its menu action (showing the QMenu
// itself would pop it up), else a widget's, else an action's. The controls of the model's
// table are looked up once, when bound, so that a dialog open over the window with controls
// of the same names is never taken for them; other names are looked up as they change. After
// the state, every change goes on to the view, which renders what the control shows.
#pragma once

#include <functional>
#include <string_view>

#include <QHash>
#include <QString>

#include "ui/windowmodel.h"

class QLabel;
class QObject;
class QTreeWidget;
class QWidget;

namespace dorvane::ui {
class ListModel;
}

namespace dorvane::gui {

class WindowBinding final : private ui::WindowObserver {
public:
    using ChangeHandler = std::function<void(std::string_view what)>;

    // `window` and `statusPanel` must outlive the binding; the window's widgets must be there.
    WindowBinding(ui::WindowModel& model, QWidget& window, QLabel& statusPanel,
                  ChangeHandler onChange);
    ~WindowBinding() override;
    WindowBinding(const WindowBinding&) = delete;
    WindowBinding& operator=(const WindowBinding&) = delete;

    // The caption, the status text and the state of every control of the table.
    void renderAll();

private:
    void changed(std::string_view what) override;
    void renderState(std::string_view name);
    QObject* find(const QString& name) const;

    ui::WindowModel& m_model;
    QWidget& m_window;
    QLabel& m_statusPanel;
    ChangeHandler m_onChange;
    QHash<QString, QObject*> m_controls;  // the table's, by name
};

// Empties a list view and gives it the list model's columns (one blank one when the model has
// none, so that the header stays).
void resetListColumns(QTreeWidget& view, const ui::ListModel& list);

}  // namespace dorvane::gui
