// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests, benchmarks and fuzzing — a front end without a person: boxes are answered
// with their default (Yes where there is one), the event loop has nothing to run.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ui/uiport.h"

namespace dorvane::testkit {

class QuietUi final : public ui::UiPort {
public:
    // The first `echo` message boxes are printed to stderr.
    explicit QuietUi(int echo = 5) : m_echo(echo) {}

    ui::Answer messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                          ui::Buttons buttons) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view preset) override;
    std::optional<std::string> openFileDialog(std::string_view, std::string_view) override {
        return std::nullopt;
    }
    void openWithDesktop(std::string_view) override {}
    std::string clipboardText() override { return m_clipboard; }
    void beep() override {}
    void setBusy(bool) override {}
    void yield() override {}
    bool runDialog(ui::DialogModel&) override { return false; }

    int messages() const { return m_messages; }
    void setClipboard(std::string text) { m_clipboard = std::move(text); }

private:
    int m_echo;
    int m_messages = 0;
    std::string m_clipboard;
};

}  // namespace dorvane::testkit
