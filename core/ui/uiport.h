// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what core asks of a person, and of the desktop around it.
//
// Core never shows anything itself. Whatever needs a person (a message box, a question, an
// input box, a file to choose, a modal dialog) or the desktop (opening a file with its
// program, the clipboard, the pointer, the event loop) goes through this one interface. The
// Qt window, the terminal front end and the tests each implement it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::ui {

enum class Icon { None, Information, Exclamation, Critical, Question };

enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };

enum class Answer { Ok, Cancel, Yes, No, Retry };

// The title every box carries unless a caller names another.
inline constexpr std::string_view kProgramTitle = "Dorvane";

// A modal dialog's own state. Later subsystems derive their dialogs' models from it; a front
// end recognises them by `dialogName()` (the dialog's control name, e.g. "Dialog2") and
// answers whether the person confirmed (OK) or not.
class DialogModel {
public:
    virtual ~DialogModel() = default;
    virtual std::string_view dialogName() const = 0;
};

class UiPort {
public:
    virtual ~UiPort() = default;

    virtual Answer messageBox(std::string_view text, std::string_view title = kProgramTitle,
                              Icon icon = Icon::None, Buttons buttons = Buttons::Ok) = 0;
    // nullopt when the person cancelled.
    virtual std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                                std::string_view preset) = 0;
    // filter as "Description (*.ext)"; nullopt when cancelled.
    virtual std::optional<std::string> openFileDialog(std::string_view title,
                                                      std::string_view filter) = 0;
    // Opens a file with the program the desktop associates with it; the result is not checked.
    virtual void openWithDesktop(std::string_view path) = 0;
    virtual std::string clipboardText() = 0;
    virtual void beep() = 0;
    // The hourglass pointer on (true) or off.
    virtual void setBusy(bool busy) = 0;
    // Lets the event loop run, so a long job keeps the window painted and responsive.
    virtual void yield() = 0;
    // Shows a modal dialog for `model`; true when it was closed with OK.
    virtual bool runDialog(DialogModel& model) = 0;
};

// Shows the busy pointer for the life of a scope.
class BusyScope {
public:
    explicit BusyScope(UiPort& ui) : m_ui(ui) { m_ui.setBusy(true); }
    ~BusyScope() { m_ui.setBusy(false); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    UiPort& m_ui;
};

// The text a step read, or "" once the step's error has been shown in a message box.
inline std::string textOrShown(Result<std::string> text, UiPort& ui) {
    if (!text) {
        ui.messageBox(text.error().description);
        return {};
    }
    return std::move(text).value();
}

}  // namespace dorvane::ui
