// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the program folder: templates, style sheets, logs, traces and temporaries.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "common/files.h"

namespace dorvane::platform {

class ProgramFolder {
public:
    explicit ProgramFolder(std::filesystem::path folder);

    // The folder itself, without a trailing separator.
    const std::string& path() const { return m_folder; }

    // Joins a program-file name to the folder with "/". Names written with a leading "/" or
    // "\" (the old program's habit, e.g. "\DorvaneHelp.htm") and names using "\" between
    // folders join the same way.
    std::string filePath(std::string_view name) const;

    // Reads the file line by line and answers the lines joined with nothing between them. The
    // error of a file that cannot be read carries errno and says "Could not open file <path>
    // (<errno>)".
    Result<std::string> readProgramFile(std::string_view name) const;

    // Replaces the file with `text` followed by CR LF, atomically; by default also flushed to
    // the disk. The error's code is errno.
    Status writeProgramFile(std::string_view text, std::string_view name,
                            files::Durability durability = files::Durability::Flushed) const;

    // Adds `text` at the end of the file (creating it) in one write, so that a program killed
    // at any moment leaves the file with or without the whole text. The error's code is errno.
    Status appendProgramFile(std::string_view text, std::string_view name) const;

private:
    std::string m_folder;
};

}  // namespace dorvane::platform
