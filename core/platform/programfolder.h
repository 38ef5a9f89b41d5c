// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the program folder: templates, style sheets, logs, traces and temporaries.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "common/files.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::platform {

// Thrown by writeProgramFile when the file cannot be written; the caller's own error
// handling decides what the person is told. `code` is the errno value.
class FileWriteError : public std::exception {
public:
    FileWriteError(int code, std::string description)
        : m_code(code), m_description(std::move(description)) {}
    int code() const { return m_code; }
    const std::string& description() const { return m_description; }
    const char* what() const noexcept override { return m_description.c_str(); }

private:
    int m_code;
    std::string m_description;
};

class ProgramFolder {
public:
    ProgramFolder(std::filesystem::path folder, ui::UiPort& ui);

    // The folder itself, without a trailing separator.
    const std::string& path() const { return m_folder; }

    // Joins a program-file name to the folder with "/". Names written with a leading "/" or
    // "\" (the old program's habit, e.g. "\DorvaneHelp.htm") and names using "\" between
    // folders join the same way.
    std::string filePath(std::string_view name) const;

    // Reads the file line by line and answers the lines joined with nothing between them. A
    // file that cannot be read shows "Could not open file <path> (<errno>)" and answers "".
    std::string readProgramFile(std::string_view name) const;

    // Replaces the file with `text` followed by CR LF, atomically; by default also flushed to
    // the disk. Throws FileWriteError.
    void writeProgramFile(std::string_view text, std::string_view name,
                          files::Durability durability = files::Durability::Flushed) const;

    // Adds `text` at the end of the file (creating it) in one write, so that a program killed
    // at any moment leaves the file with or without the whole text. Throws FileWriteError.
    void appendProgramFile(std::string_view text, std::string_view name) const;

private:
    std::string m_folder;
    ui::UiPort& m_ui;
};

}  // namespace dorvane::platform
