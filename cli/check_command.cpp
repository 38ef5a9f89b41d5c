// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane check`: the check-up, one line per component.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "shell/application.h"
#include "shell/checkup.h"

namespace dorvane::cli {
namespace {

int check(CommandContext& ctx, const Invocation&) {
    const auto results = shell::runCheckup(ctx.app);
    ctx.out << shell::checkupText(results);
    return shell::checkupPassed(results) ? kExitOk : kExitFailed;
}

}  // namespace

constexpr Command kCheckCommand{
    .name = "check",
    .summary = "say, component by component, what is ready and what\nto do",
    .details =
        "  One line per component (program folder, settings, QuickBooks, SMTP server, MX\n"
        "  delivery, handheld folder, web update, window): ok, PROBLEM with what to do, or not\n"
        "  configured for what is optional and unset. The SMTP server is connected to and\n"
        "  logged in to; no mail is sent. Exit status 0 when everything configured works, 1\n"
        "  otherwise.\n",
    .needs = Needs::Application,
    .run = check,
};

}  // namespace dorvane::cli
