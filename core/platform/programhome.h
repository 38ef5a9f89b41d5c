// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — where the program's files live, and how a user's program folder is kept in step
// with the files a Dorvane release ships.
//
// Two kinds of files are kept apart. Shipped files (request templates, style sheets, icons,
// the help page, the company record's template) are installed read-only under
// `<prefix>/share/dorvane`; in a build tree they are the sources' `program/` folder. The
// user's program folder (`$XDG_DATA_HOME/dorvane`, or `--home DIR` / `$DORVANE_HOME`) is what
// the program reads its templates and sheets from and writes its logs, traces and records
// into. On every start the user's folder is seeded with the shipped files it lacks; a shipped
// file the user never changed follows the release, one the user changed is kept and the
// release's version is put beside it as `NAME.new`. A manifest in the folder remembers which
// version of each shipped file was put there, which is how the two cases are told apart.
// Files the program writes are never replaced by seeding.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace dorvane::platform {

// The manifest of the shipped versions, inside the program folder: one line per file, the
// SHA-256 of the version last seeded, two blanks, the file's path relative to the folder.
inline constexpr const char* kShippedManifest = ".shipped-files";

// The folder of the shipped files: $DORVANE_SHARE_DIR, else `share/dorvane` beside the
// executable's `bin/`, else (a build tree) the sources' `program/` folder. Empty when none
// exists.
std::filesystem::path locateShippedFiles();

// The user's program folder: `--home DIR`, else $DORVANE_HOME, else $XDG_DATA_HOME/dorvane,
// else ~/.local/share/dorvane. Always absolute.
std::filesystem::path locateProgramHome(const std::string& homeOption);

// What preparing the folder did, in lines for the person (standard error or the status bar).
struct HomeReport {
    std::vector<std::string> notices;
    // Set when the folder could not be created or written; the program goes on, and the first
    // read or write of a file there reports the file itself.
    std::string error;
};

// Creates the folder (mode 0700); moves the records and logs of `legacy` (the executable's
// folder, which earlier builds used as the program folder) into it, once, where it has none of
// its own; seeds it from `shipped`; creates an empty sent log when there is none. An empty
// `shipped` or `legacy` is skipped.
HomeReport prepareProgramHome(const std::filesystem::path& home,
                              const std::filesystem::path& shipped,
                              const std::filesystem::path& legacy = {});

// How the program folder stands against the shipped files, found without changing anything.
struct HomeInspection {
    std::vector<std::string> missing;  // shipped files the folder lacks
    // Shipped files the user changed (kept by seeding); those with this release's own version
    // beside them as NAME.new are also in `newBeside`.
    std::vector<std::string> changed;
    std::vector<std::string> newBeside;
};
HomeInspection inspectProgramHome(const std::filesystem::path& home,
                                  const std::filesystem::path& shipped);

// What a front end does on start, before anything reads the folder: finds the program folder
// for `--home` (empty: the default), and prepares it with this release's shipped files. The
// default folder also takes over the records that earlier builds kept in the executable's own
// folder.
HomeReport setUpProgramHome(const std::string& homeOption);

}  // namespace dorvane::platform
