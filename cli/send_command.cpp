// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane send TYPE [--timeframe NAME] [--preview]`.
#include <algorithm>
#include <ostream>

#include "browser/documenttypes.h"
#include "browser/loaders.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

bool processed(const std::vector<mail::RowOutcome>& outcomes, int row) {
    return std::any_of(outcomes.begin(), outcomes.end(),
                       [row](const mail::RowOutcome& o) { return o.row == row; });
}

// Rows still checked that the run never got to (it stopped before them).
int untried(const ui::ListModel& list, const std::vector<mail::RowOutcome>& outcomes) {
    int count = 0;
    for (int r = 0; r < list.rowCount(); ++r) {
        count += list.row(r).checked && !processed(outcomes, r) ? 1 : 0;
    }
    return count;
}

// The end of a send run: the window's closing status when something went out (or the run
// says why it stopped), then the counts, the reason of each failure and a test run's note.
void printSendSummary(CommandContext& ctx, const std::vector<mail::RowOutcome>& outcomes) {
    const ui::ListModel& list = ctx.app.window().list();
    int sent = 0, tests = 0, failed = 0, noAddress = 0, already = 0;
    for (const mail::RowOutcome& o : outcomes) {
        (o.test ? tests : o.sent ? sent : failed) += 1;
    }
    for (int r = 0; r < list.rowCount(); ++r) {
        const ui::ListRow& row = list.row(r);
        if (row.checked || row.cells.empty() || processed(outcomes, r)) {
            continue;
        }
        noAddress += row.cells.back() == browser::kMissingEmail ? 1 : 0;
        already += row.cells.back() == browser::kAlreadySent ? 1 : 0;
    }
    const int notTried = untried(list, outcomes);
    const std::string& status = ctx.app.window().statusText();
    const bool ranThrough = !ctx.app.sender().runEndText().empty();
    if (!status.empty() && (sent + tests > 0 || status != ctx.app.sender().runEndText())) {
        ctx.err << status << '\n';
    }
    if (outcomes.empty() && notTried == 0 && ranThrough) {
        ctx.err << "Nothing to send: ";
    }
    ctx.err << sent << " sent, " << failed << " failed, " << noAddress
            << " skipped for a missing e-mail address, " << already << " already sent";
    if (tests > 0) {
        ctx.err << ", " << tests << " sent to the test address only";
    }
    if (notTried > 0) {
        ctx.err << ", " << notTried << " not tried";
    }
    ctx.err << '\n';
    for (const mail::RowOutcome& o : outcomes) {
        if (!o.sent) {
            ctx.err << "failed " << o.key << ' ' << o.name << ": "
                    << (o.why.empty() ? "not sent" : o.why) << '\n';
        }
    }
    if (noAddress > 0) {
        ctx.err << "A document without an e-mail address is sent once the address is entered "
                   "in QuickBooks (or with Settings altEmail 1, which asks for one).\n";
    }
    if (tests > 0) {
        ctx.err << "Test mode: " << tests << " went to the test address "
                << ctx.app.sender().mailSettings().emailAdr
                << " only and are not noted as sent; their recipients get them from a run with "
                   "test mode off (dorvane settings set Settings Test 0).\n";
    }
}

// A type without a style sheet has no document to mail (TimesheetA lists time by entity only).
int checkSendArgs(Invocation& args, std::ostream& err) {
    if (const int rc = checkListArgs(args, err); rc != kExitOk) {
        return rc;
    }
    for (const browser::DocumentType& type : browser::kDocumentTypes) {
        if (type.name == args.operands[0] && type.styleSheet == nullptr) {
            return usageError(args.path,
                              std::string(type.name) +
                                  " documents cannot be mailed (there is no document to render "
                                  "for them); `dorvane list " +
                                  std::string(type.name) + "` shows them",
                              err);
        }
    }
    return kExitOk;
}

int send(CommandContext& ctx, const Invocation& args) {
    int rc = loadList(ctx, args);
    if (rc != kExitOk) {
        return rc;
    }
    const bool preview = args.has("--preview");
    auto& window = ctx.app.window();
    window.setPreviewChecked(preview);
    auto& sender = ctx.app.sender();
    std::vector<mail::RowOutcome> outcomes;
    sender.onRowProcessed([&](const mail::RowOutcome& o) {
        const char* outcome = preview ? "preview" : o.test ? "test" : o.sent ? "sent" : "failed";
        ctx.out << outcome << '\t' << o.key << '\t' << o.name << '\t' << o.recipient << '\n';
        outcomes.push_back(o);
    });
    sender.sendSelectedDocuments();
    if (preview) {
        if (!window.statusText().empty()) {
            ctx.err << window.statusText() << '\n';
        }
        return kExitOk;
    }
    printSendSummary(ctx, outcomes);
    const bool allWent = std::all_of(outcomes.begin(), outcomes.end(),
                                     [](const mail::RowOutcome& o) { return o.sent; });
    return allWent && untried(ctx.app.window().list(), outcomes) == 0 ? kExitOk : kExitFailed;
}

}  // namespace

constexpr Option kSendOptions[] = {
    kTimeframeOption,
    {"--preview", 0, "", "render the documents into preview.htm instead of mailing\nthem"},
};

constexpr Command kSendCommand{
    .name = "send",
    .synopsis = "TYPE [--timeframe NAME] [--preview]",
    .summary =
        "list as above, then mail the checked documents (or render them\n"
        "into preview.htm); exit status 1 when one did not go out",
    .details =
        "  Lists TYPE as `dorvane list` does, then mails the checked documents (with\n"
        "  --preview: renders them into preview.htm instead). One line per document: sent,\n"
        "  failed, or test (test mode: to the test address only), the row's id, name and\n"
        "  recipient; then the counts. Exit status 1 when a document did not go out; 64\n"
        "  for TimesheetA, which has no document to mail.\n",
    .options = kSendOptions,
    .minOperands = 1,
    .maxOperands = 1,
    .operandNames = "TYPE",
    .needs = Needs::StartUp,
    .check = checkSendArgs,
    .run = send,
};

}  // namespace dorvane::cli
