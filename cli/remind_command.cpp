// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane remind [--days D1,D2,D3] [--preview] [--yes]`: the overdue reminders due now.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "platform/programfolder.h"
#include "remind/reminderlog.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

int checkRemindArgs(Invocation& args, std::ostream& err) {
    if (auto days = args.value("--days"); days && !platform::parseDayList(*days)) {
        return usageError(args.path,
                          "--days takes three increasing numbers of days separated with commas "
                          "(1,15,30), not '" +
                              *days + "'",
                          err);
    }
    return kExitOk;
}

// customer, stage, invoices, total, recipient: the start of a message's line.
void printMessage(std::ostream& out, const remind::PlannedReminder& message,
                  const std::string& recipient) {
    out << message.customer << '\t' << message.stage << ' ' << remind::stageName(message.stage)
        << '\t';
    for (std::size_t i = 0; i < message.invoices.size(); ++i) {
        out << (i == 0 ? "" : ",") << message.invoices[i].refNumber;
    }
    out << '\t' << message.total << '\t' << (recipient.empty() ? "-" : recipient) << '\t';
}

int remind(CommandContext& ctx, const Invocation& args) {
    auto& reminders = ctx.app.reminders();
    std::optional<remind::ReminderDays> days;
    if (auto text = args.value("--days")) {
        days = platform::parseDayList(*text);
    }
    switch (reminders.plan(days)) {
        case remind::PlanResult::Unreachable:
            return reportUnreachable(ctx);
        case remind::PlanResult::Refused:
            ctx.err << "dorvane: " << reminders.problem() << '\n';
            return kExitFailed;
        case remind::PlanResult::Planned:
            break;
    }
    const auto& plan = reminders.planned();
    if (plan.empty()) {
        ctx.err << "Nothing to remind: no open invoice is due for a reminder it has not had.\n";
        return kExitOk;
    }
    if (args.has("--preview")) {
        const bool previewed = reminders.preview();
        for (const remind::PlannedReminder& message : plan) {
            printMessage(ctx.out, message, message.email);
            ctx.out << "preview\n";
        }
        if (!previewed) {
            ctx.err << "dorvane: " << reminders.problem() << '\n';
            return kExitFailed;
        }
        ctx.err << plan.size() << " reminders previewed in "
                << ctx.app.folder().filePath("preview.htm") << "; nothing was sent.\n";
        return kExitOk;
    }
    int sent = 0, tests = 0, failed = 0;
    reminders.onMessage([&](const remind::ReminderOutcome& o) {
        printMessage(ctx.out, plan[o.index], o.recipient);
        if (o.sent) {
            ctx.out << (o.test ? "test" : "sent") << '\n';
            (o.test ? tests : sent) += 1;
        } else {
            ctx.out << "not sent: " << o.why << '\n';
            ++failed;
        }
    });
    const bool ran = reminders.send(!args.has("--yes"));
    reminders.onMessage({});
    if (!ran && sent + tests + failed == 0) {
        ctx.err << "Nothing sent: " << reminders.problem()
                << (reminders.problem() == "sending was not confirmed"
                        ? " (answer the question on a terminal, or give --yes)"
                        : "")
                << ".\n";
        return kExitFailed;
    }
    const int notTried = static_cast<int>(plan.size()) - sent - tests - failed;
    ctx.err << sent << " sent, " << failed << " not sent";
    if (tests > 0) {
        ctx.err << ", " << tests << " sent to the test address only";
    }
    if (notTried > 0) {
        ctx.err << ", " << notTried << " not tried";
    }
    ctx.err << "; noted in " << ctx.app.folder().filePath(remind::kReminderLogFile) << '\n';
    if (tests > 0) {
        ctx.err << "Test mode: the customers get their reminders from a run with test mode off "
                   "(dorvane settings set Settings Test 0).\n";
    }
    return ran && failed == 0 && notTried == 0 ? kExitOk : kExitFailed;
}

constexpr Option kRemindOptions[] = {
    {"--days", 0, "D1,D2,D3",
     "the days past due of the friendly, firm and final\nreminder for this run (default: "
     "Reminders Days)"},
    {"--preview", 0, "", "render the reminders into preview.htm instead of\nmailing them"},
    {"--yes", 'y', "", "send without asking first"},
};

}  // namespace

constexpr Command kRemindCommand{
    .name = "remind",
    .synopsis = "[--days D1,D2,D3] [--preview] [--yes]",
    .summary = "mail reminders of overdue invoices, one per customer\nand stage",
    .details =
        "  Asks QuickBooks for the open invoices and reminds each customer of those past\n"
        "  due: at D1 days a friendly reminder, at D2 a firm one, at D3 the final one\n"
        "  (Reminders Days, default 1,15,30). An invoice gets each stage once (Reminders.log\n"
        "  in the program folder) and only the stage it is at. Asks before sending unless\n"
        "  --yes is given. One line per message: customer, stage, invoices, total,\n"
        "  recipient, and sent, test (test mode: to the test address only) or not sent with\n"
        "  the reason; then the counts. Exit status 1 when a reminder did not go out.\n",
    .options = kRemindOptions,
    .needs = Needs::QuickBooks,
    .check = checkRemindArgs,
    .run = remind,
    .notDone = "No reminder was sent.",
};

}  // namespace dorvane::cli
