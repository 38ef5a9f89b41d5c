// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/testsupport.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

#include "qbsandbox/demo.h"

namespace dorvane::test {

ui::Answer ScriptedUi::messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                                  ui::Buttons buttons) {
    messages.push_back({std::string(text), std::string(title), icon, buttons});
    if (!answers.empty()) {
        auto a = answers.front();
        answers.pop_front();
        return a;
    }
    return buttons == ui::Buttons::YesNo || buttons == ui::Buttons::YesNoCancel ? ui::Answer::Yes
                                                                                : ui::Answer::Ok;
}

std::optional<std::string> ScriptedUi::inputBox(std::string_view, std::string_view,
                                                std::string_view) {
    if (inputs.empty()) {
        return std::nullopt;
    }
    auto v = inputs.front();
    inputs.pop_front();
    return v;
}

std::optional<std::string> ScriptedUi::openFileDialog(std::string_view, std::string_view) {
    if (files.empty()) {
        return std::nullopt;
    }
    auto v = files.front();
    files.pop_front();
    return v;
}

bool ScriptedUi::runDialog(ui::DialogModel& model) {
    dialogsShown.emplace_back(model.dialogName());
    if (dialogHandler) {
        return dialogHandler(model);
    }
    if (dialogAnswers.empty()) {
        return false;
    }
    bool a = dialogAnswers.front();
    dialogAnswers.pop_front();
    return a;
}

std::vector<std::string> ScriptedUi::texts() const {
    std::vector<std::string> out;
    for (const auto& m : messages) {
        out.push_back(m.text);
    }
    return out;
}

void copyDemoCompany(const std::filesystem::path& to) {
    static const TempDir folder;
    static const std::filesystem::path demo = [] {
        auto path = folder / "demo.dvq";
        qbsandbox::createDemoCompany(path, {});
        return path;
    }();
    std::filesystem::copy_file(demo, to, std::filesystem::copy_options::overwrite_existing);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

std::filesystem::path dataDir() {
    return DORVANE_TEST_DATA_DIR;
}
std::filesystem::path programSource() {
    return DORVANE_PROGRAM_SOURCE_DIR;
}

std::string qbAnswer(const std::string& responses) {
    return "<?xml version=\"1.0\" ?>\n<QBXML>\n<QBXMLMsgsRs>\n" + responses +
           "</QBXMLMsgsRs>\n</QBXML>\n";
}

std::string qbRs(const std::string& name, const std::string& content) {
    return "<" + name +
           " requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status "
           "OK\">" +
           content + "</" + name + ">";
}

void copyProgramFiles(const std::filesystem::path& to) {
    std::filesystem::create_directories(to);
    for (const auto& f : std::filesystem::directory_iterator(programSource())) {
        if (f.is_regular_file()) {
            std::filesystem::copy(f.path(), to / f.path().filename());
        }
    }
    writeFile(to / "EmailsSent.log", "");
}

int runCommand(const std::string& command, std::string* out, std::string* err) {
    TempDir dir;
    std::string full = "( " + command + " ) >" + (dir / "out").string() + " 2>" +
                       (dir / "err").string() + " </dev/null";
    int rc = std::system(full.c_str());
    if (out) {
        *out = readFile(dir / "out");
    }
    if (err) {
        *err = readFile(dir / "err");
    }
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

}  // namespace dorvane::test
