// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — a scripted person, temporary folders and fixture paths.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tempfolder.h"
#include "ui/uiport.h"

namespace dorvane::test {

// A UI port that records everything shown and answers from scripts.
class ScriptedUi : public ui::UiPort {
public:
    struct Message {
        std::string text;
        std::string title;
        ui::Icon icon;
        ui::Buttons buttons;
    };

    std::vector<Message> messages;
    std::vector<std::string> opened;                // paths given to openWithDesktop
    std::deque<ui::Answer> answers;                 // for messageBox; Ok/Yes when empty
    std::deque<std::optional<std::string>> inputs;  // for inputBox; nullopt when empty
    std::deque<std::optional<std::string>> files;   // for openFileDialog
    std::deque<bool> dialogAnswers;                 // for runDialog; false when empty
    // When set, runDialog hands the model to it (to fill a dialog's fields and press OK).
    std::function<bool(ui::DialogModel&)> dialogHandler;
    std::vector<std::string> dialogsShown;
    std::string clipboard;
    int beeps = 0;
    int busyDepth = 0;
    int yields = 0;

    ui::Answer messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                          ui::Buttons buttons) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view preset) override;
    std::optional<std::string> openFileDialog(std::string_view title,
                                              std::string_view filter) override;
    void openWithDesktop(std::string_view path) override { opened.emplace_back(path); }
    std::string clipboardText() override { return clipboard; }
    void beep() override { ++beeps; }
    void setBusy(bool busy) override { busyDepth += busy ? 1 : -1; }
    void yield() override { ++yields; }
    bool runDialog(ui::DialogModel& model) override;

    // The texts of all messages shown, in order.
    std::vector<std::string> texts() const;
};

// A fresh folder below the system's temporary folder, removed with the object.
using TempDir = testkit::TempFolder;

// Copies the demo company to `to`. The demo is generated once per test program, with the
// DORVANE_TODAY of that moment, in a temporary folder removed when the program ends.
void copyDemoCompany(const std::filesystem::path& to);

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& text);
std::filesystem::path dataDir();        // tests/data
std::filesystem::path programSource();  // program/ in the source tree

// A QuickBooks answer: the message around its response elements.
std::string qbAnswer(const std::string& responses);
// A response element `name` ("InvoiceQueryRs") with status 0 around `content`.
std::string qbRs(const std::string& name, const std::string& content);
// Fills `to` (created if need be) with the shipped program files and an empty sent log.
void copyProgramFiles(const std::filesystem::path& to);

// Runs a command through the shell; answers its exit status and fills the captured output.
int runCommand(const std::string& command, std::string* out = nullptr, std::string* err = nullptr);

}  // namespace dorvane::test
