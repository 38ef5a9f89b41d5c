// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the window front end.
#pragma once

#include <string>

namespace dorvane::gui {

// Opens the main window and runs the event loop; answers the exit status.
// `args` are the global options already taken (e.g. --home).
int runWindow(int argc, char** argv, const std::string& home);

}  // namespace dorvane::gui
