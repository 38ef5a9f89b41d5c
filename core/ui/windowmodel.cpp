// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windowmodel.h"

#include <algorithm>

namespace dorvane::ui {

WindowModel::WindowModel(std::span<const char* const> controls, std::string caption)
    : m_table(controls), m_caption(std::move(caption)) {}

bool WindowModel::keepsControl(std::string_view name) const {
    return m_controls.contains(name) ||
           std::ranges::any_of(m_table, [name](const char* c) { return name == c; });
}

ControlState WindowModel::control(std::string_view name) const {
    auto it = m_controls.find(name);
    return it == m_controls.end() ? ControlState{} : it->second;
}

ControlState& WindowModel::slot(std::string_view name) {
    auto it = m_controls.find(name);
    if (it == m_controls.end()) {
        it = m_controls.emplace(std::string(name), ControlState{}).first;
    }
    return it->second;
}

void WindowModel::setControlVisible(std::string_view name, bool visible) {
    slot(name).visible = visible;
    notify(name);
}

void WindowModel::setControlEnabled(std::string_view name, bool enabled) {
    slot(name).enabled = enabled;
    notify(name);
}

void WindowModel::setCaption(std::string caption) {
    m_caption = std::move(caption);
    notify(kCaption);
}

void WindowModel::setStatusText(std::string text) {
    m_statusText = std::move(text);
    notify(kStatusBar);
}

void WindowModel::notify(std::string_view what) {
    if (m_observer) {
        m_observer->changed(what);
    }
}

}  // namespace dorvane::ui
