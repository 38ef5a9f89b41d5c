// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane` opens the window; `dorvane <command>` runs the same jobs without one.
#include <cstdlib>
#include <iostream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "cli/cli.h"
#include "common/memory.h"
#if DORVANE_WITH_GUI
#include "gui/gui.h"
#endif

#if DORVANE_WITH_GUI
namespace {

bool haveDisplay() {
    for (const char* var : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (const char* v = std::getenv(var); v && *v) {
            return true;
        }
    }
    return false;
}

}  // namespace
#endif

int main(int argc, char** argv) {
    // Everything the program creates (messages, traces, logs, company records, previews)
    // holds customer data: readable by the user alone.
    ::umask(077);
    dorvane::memory::tuneForLargeDocuments();
    std::vector<std::string> args(argv + 1, argv + argc);
    if (dorvane::cli::hasCommand(args)) {
        return dorvane::cli::run(args, std::cout, std::cerr);
    }
#if DORVANE_WITH_GUI
    if (haveDisplay()) {
        auto options = dorvane::cli::parseGlobalOptions(args);
        return dorvane::gui::runWindow(argc, argv, options.home);
    }
    std::cerr << "No display to open the window on; listing this week's invoices instead.\n";
#else
    std::cerr << "This build has no window; listing this week's invoices instead.\n";
#endif
    // Without a window, the window's main job: this week's invoices and their state.
    std::vector<std::string> job = args;
    job.insert(job.end(), {"list", "Invoice"});
    return dorvane::cli::run(job, std::cout, std::cerr);
}
