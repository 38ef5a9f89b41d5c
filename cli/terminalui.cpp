// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/terminalui.h"

#include <cstdlib>
#include <iostream>
#include <ostream>
#include <string>
#include <utility>

#include "common/text.h"
#include "company/companyeditor.h"

namespace dorvane::cli {

TerminalUi::TerminalUi(std::ostream& err, bool assumeYes, bool interactive, std::istream* in)
    : m_err(err), m_assumeYes(assumeYes), m_interactive(interactive), m_in(in ? in : &std::cin) {}

ui::Answer TerminalUi::messageBox(std::string_view text, std::string_view title, ui::Icon,
                                  ui::Buttons buttons) {
    ++m_messages;
    if (m_down && m_down() && buttons == ui::Buttons::Ok) {
        if (std::exchange(m_downSaid, true)) {
            return ui::Answer::Ok;
        }
    } else {
        m_downSaid = false;
    }
    std::string shown = text::replaceAll(text, "\r\n", "\n");
    if (title != ui::kProgramTitle) {
        m_err << title << ": ";
    }
    m_err << shown << '\n';
    using ui::Answer;
    using ui::Buttons;
    if (buttons == Buttons::Ok) {
        return Answer::Ok;
    }
    const bool yesNo = buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel;
    if (m_assumeYes) {
        return yesNo ? Answer::Yes : buttons == Buttons::RetryCancel ? Answer::Retry : Answer::Ok;
    }
    if (m_interactive) {
        auto reply = ask(yesNo ? "[y/n] " : "[o]k/[c]ancel ");
        if (reply && !reply->empty()) {
            char c = static_cast<char>(std::tolower(static_cast<unsigned char>((*reply)[0])));
            if (yesNo) {
                return c == 'y' ? Answer::Yes : Answer::No;
            }
            if (c == 'o' || c == 'y' || c == 'r') {
                return buttons == Buttons::RetryCancel ? Answer::Retry : Answer::Ok;
            }
        }
    }
    return yesNo && buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
}

std::optional<std::string> TerminalUi::inputBox(std::string_view prompt, std::string_view title,
                                                std::string_view preset) {
    if (m_assumeYes) {
        // --yes presses OK on the box as it comes up, preset and all.
        return std::string(preset);
    }
    if (!m_interactive) {
        return std::nullopt;
    }
    m_err << title << ": " << prompt;
    if (!preset.empty()) {
        m_err << " [" << preset << "]";
    }
    auto reply = ask(" ");
    if (reply && reply->empty()) {
        return std::string(preset);
    }
    return reply;
}

std::optional<std::string> TerminalUi::openFileDialog(std::string_view title,
                                                      std::string_view filter) {
    if (!m_interactive) {
        return std::nullopt;
    }
    m_err << title << " (" << filter << ")";
    auto reply = ask(": ");
    if (!reply || reply->empty()) {
        return std::nullopt;
    }
    return reply;
}

void TerminalUi::openWithDesktop(std::string_view path) {
    m_err << "Open: " << path << '\n';
}

bool TerminalUi::runDialog(ui::DialogModel& model) {
    if (auto* editor = dynamic_cast<company::CompanyEditorModel*>(&model)) {
        ++m_companyEditorShown;
        if (!m_companyValues) {
            m_err << "No company information is kept for this company file yet; enter it with\n"
                     "  dorvane company set CompanyName NAME Addr1 STREET City CITY State STATE"
                     " Zip ZIP\n"
                     "      Country COUNTRY Phone PHONE Email ADDRESS [Addr2 ..] [Fax ..]"
                     " [Website ..]\n";
            return false;
        }
        for (const auto& [control, value] : *m_companyValues) {
            editor->setValue(control, value);
        }
        m_companyEditorAccepted = editor->accept();
        return m_companyEditorAccepted;
    }
    m_err << "The dialog " << model.dialogName() << " needs the window.\n";
    return false;
}

std::optional<std::string> TerminalUi::ask(std::string_view prompt) {
    m_err << prompt << std::flush;
    std::string line;
    if (!std::getline(*m_in, line)) {
        return std::nullopt;
    }
    return std::string(text::trim(line));
}

}  // namespace dorvane::cli
