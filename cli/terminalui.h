// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the terminal's answer to what core asks of a person.
//
// Message boxes go to the error stream. A question is answered from the options (--yes) or,
// on a terminal, by the person at the keyboard; anywhere else it is answered Cancel/No and an
// input box answers nothing, so a script never hangs on a question. With --yes an input box
// answers its preset, as OK pressed on the unchanged box would.
#pragma once

#include <functional>
#include <iosfwd>
#include <istream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ui/uiport.h"

namespace dorvane::cli {

class TerminalUi final : public ui::UiPort {
public:
    TerminalUi(std::ostream& err, bool assumeYes, bool interactive, std::istream* in = nullptr);

    ui::Answer messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                          ui::Buttons buttons) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view preset) override;
    std::optional<std::string> openFileDialog(std::string_view title,
                                              std::string_view filter) override;
    void openWithDesktop(std::string_view path) override;
    std::string clipboardText() override { return {}; }
    void beep() override {}
    void setBusy(bool) override {}
    void yield() override {}
    bool runDialog(ui::DialogModel& model) override;

    // While `down` answers true, QuickBooks cannot be reached: the first message of such a
    // spell is shown, the ones that merely follow from it are held back.
    void holdBackWhile(std::function<bool()> down) { m_down = std::move(down); }

    // How many message boxes were shown (the commands' exit status looks at it).
    int messagesShown() const { return m_messages; }

    // Answers for the company editor (Dialog2), as `dorvane company set` gives them: each
    // named text box gets its value, the others keep what the dialog shows, and OK is
    // pressed. Without answers the editor is refused: it needs the window.
    using FieldValues = std::vector<std::pair<std::string, std::string>>;
    void answerCompanyEditor(FieldValues values) { m_companyValues = std::move(values); }
    // How often the company editor came up, and whether OK went through the last time.
    int companyEditorShown() const { return m_companyEditorShown; }
    bool companyEditorAccepted() const { return m_companyEditorAccepted; }

private:
    std::optional<std::string> ask(std::string_view prompt);

    std::ostream& m_err;
    bool m_assumeYes;
    bool m_interactive;
    std::istream* m_in;
    int m_messages = 0;
    std::function<bool()> m_down;
    bool m_downSaid = false;
    std::optional<FieldValues> m_companyValues;
    int m_companyEditorShown = 0;
    bool m_companyEditorAccepted = false;
};

}  // namespace dorvane::cli
