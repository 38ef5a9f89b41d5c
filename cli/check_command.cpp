// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane check`: the check-up, one line per component.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "shell/application.h"
#include "shell/checkup.h"

namespace dorvane::cli {

int checkCommand(CommandContext& ctx, const Args& args) {
    if (!args.empty()) {
        ctx.err << "Usage: dorvane check\n";
        return kExitUsage;
    }
    const auto results = shell::runCheckup(ctx.app);
    ctx.out << shell::checkupText(results);
    return shell::checkupPassed(results) ? kExitOk : kExitFailed;
}

}  // namespace dorvane::cli
