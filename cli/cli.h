// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the headless front end: `dorvane <command>`.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace dorvane::cli {

// Exit codes shared by the commands.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;   // the job ran, and something in it failed
inline constexpr int kExitGateway = 2;  // QuickBooks could not be reached
inline constexpr int kExitUsage = 64;
inline constexpr int kExitData = 65;     // the input is there but unusable (empty, wrong layout)
inline constexpr int kExitNoInput = 66;  // the input file is missing, a folder or unreadable

// Runs one command line (without the program name). Output goes to `out`, messages that
// the window would show in boxes go to `err`.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// True when the arguments name a command (as opposed to only global options).
bool hasCommand(const std::vector<std::string>& args);

// Global options taken off the front of the arguments.
struct GlobalOptions {
    std::string home;
    bool yes = false;  // answer questions with Yes/OK
    std::vector<std::string> rest;
};
GlobalOptions parseGlobalOptions(const std::vector<std::string>& args);

}  // namespace dorvane::cli
