// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what every window's logic keeps the same way: its caption, its status text and the
// visibility and enabled state of its controls, named as the front end names its widgets.
//
// A window model has one table of the controls whose state it keeps; a front end finds each
// of them among its widgets by that name. Any other name may be switched too: the front end
// then looks it up when it changes. Each change is told to the observer by a name: a control's
// (its state or what it shows changed), kCaption, or kStatusBar for the status text.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>

namespace dorvane::ui {

// The names changes come under that are no control of the table.
inline constexpr const char* kCaption = "caption";
inline constexpr const char* kStatusBar = "StatusBar1";

struct ControlState {
    bool visible = true;
    bool enabled = true;
};

class WindowObserver {
public:
    virtual ~WindowObserver() = default;
    // `what` is a control name, kCaption or kStatusBar.
    virtual void changed(std::string_view what) = 0;
};

class WindowModel {
public:
    // `controls` is the window's table of control names; it must outlive the model.
    WindowModel(std::span<const char* const> controls, std::string caption);
    virtual ~WindowModel() = default;
    WindowModel(const WindowModel&) = delete;
    WindowModel& operator=(const WindowModel&) = delete;

    // One observer at a time; null removes it.
    void setObserver(WindowObserver* observer) { m_observer = observer; }

    std::span<const char* const> controls() const { return m_table; }
    // Whether the model keeps a state for `name`: a control of the table, or one switched since.
    bool keepsControl(std::string_view name) const;
    // Visible and enabled unless switched.
    ControlState control(std::string_view name) const;
    void setControlVisible(std::string_view name, bool visible);
    void setControlEnabled(std::string_view name, bool enabled);

    const std::string& caption() const { return m_caption; }
    void setCaption(std::string caption);
    const std::string& statusText() const { return m_statusText; }
    void setStatusText(std::string text);

protected:
    // Tells the observer that `what` changed.
    void notify(std::string_view what);

private:
    ControlState& slot(std::string_view name);

    std::span<const char* const> m_table;
    std::map<std::string, ControlState, std::less<>> m_controls;
    std::string m_caption;
    std::string m_statusText;
    WindowObserver* m_observer = nullptr;
};

}  // namespace dorvane::ui
