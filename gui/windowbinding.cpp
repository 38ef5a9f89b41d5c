// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/windowbinding.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QTreeWidget>
#include <QWidget>

#include "gui/qtstrings.h"
#include "ui/listmodel.h"

namespace dorvane::gui {

WindowBinding::WindowBinding(ui::WindowModel& model, QWidget& window, QLabel& statusPanel,
                             ChangeHandler onChange)
    : m_model(model),
      m_window(window),
      m_statusPanel(statusPanel),
      m_onChange(std::move(onChange)) {
    for (const char* control : m_model.controls()) {
        const QString name = QString::fromUtf8(control);
        m_controls.insert(name, find(name));
    }
    m_model.setObserver(this);
}

WindowBinding::~WindowBinding() {
    m_model.setObserver(nullptr);
}

QObject* WindowBinding::find(const QString& name) const {
    if (auto* menu = m_window.findChild<QMenu*>(name)) {
        return menu;
    }
    if (auto* widget = m_window.findChild<QWidget*>(name)) {
        return widget;
    }
    return m_window.findChild<QAction*>(name);
}

void WindowBinding::renderAll() {
    m_window.setWindowTitle(toQString(m_model.caption()));
    m_statusPanel.setText(toQString(m_model.statusText()));
    for (const char* control : m_model.controls()) {
        renderState(control);
    }
}

void WindowBinding::changed(std::string_view what) {
    if (what == ui::kCaption) {
        m_window.setWindowTitle(toQString(m_model.caption()));
        return;
    }
    if (m_model.keepsControl(what)) {
        renderState(what);
    }
    if (what == ui::kStatusBar) {
        m_statusPanel.setText(toQString(m_model.statusText()));
    }
    if (m_onChange) {
        m_onChange(what);
    }
}

void WindowBinding::renderState(std::string_view name) {
    const ui::ControlState state = m_model.control(name);
    const QString objectName = toQString(name);
    const auto cached = m_controls.constFind(objectName);
    QObject* shown = cached != m_controls.cend() ? *cached : find(objectName);
    if (auto* menu = qobject_cast<QMenu*>(shown)) {
        menu->menuAction()->setVisible(state.visible);
        menu->menuAction()->setEnabled(state.enabled);
    } else if (auto* widget = qobject_cast<QWidget*>(shown)) {
        widget->setVisible(state.visible);
        widget->setEnabled(state.enabled);
    } else if (auto* action = qobject_cast<QAction*>(shown)) {
        action->setVisible(state.visible);
        action->setEnabled(state.enabled);
    }
}

void resetListColumns(QTreeWidget& view, const ui::ListModel& list) {
    view.clear();
    QStringList captions;
    for (const ui::ListColumn& column : list.columns()) {
        captions << toQString(column.caption);
    }
    if (captions.isEmpty()) {
        captions << QString();
    }
    view.setColumnCount(static_cast<int>(captions.size()));
    view.setHeaderLabels(captions);
}

}  // namespace dorvane::gui
