// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane import-batch FILE [--bulk] [--quoted] [--yes]`: the import window's Authorize.Net
// batch (or bulk) import, headless, one line per record.
#include <ostream>

#include "batch/batchimport.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "cli/terminalui.h"
#include "import/importwindow.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

const char* kindText(batch::RecordOutcome::Kind kind) {
    using Kind = batch::RecordOutcome::Kind;
    switch (kind) {
        case Kind::Added:
            return "added";
        case Kind::NotApproved:
            return "not approved";
        case Kind::AlreadyImported:
            return "already imported";
        case Kind::Refused:
        case Kind::NotImported:
            return "refused";
    }
    return "";
}

void printSummary(CommandContext& ctx, const batch::RunSummary& run, const std::string& status) {
    ctx.out << run.added << " added, " << run.notApproved << " not approved, "
            << run.alreadyImported << " already imported, " << run.refused << " refused";
    if (run.cancelled) {
        ctx.out << ", cancelled";
    } else if (run.unreachable) {
        ctx.out << "; stopped: QuickBooks could not be reached";
    } else if (run.stopped) {
        ctx.out << "; stopped: " << status;
    }
    ctx.out << '\n';
    if (const std::string stop = batch::stopReport(run); !stop.empty()) {
        ctx.out << stop << '\n';
    }
}

int importBatch(CommandContext& ctx, const Invocation& args) {
    const std::string& file = args.operands[0];
    const bool bulk = args.has("--bulk");
    const bool quoted = args.has("--quoted");
    const bool yes = args.has("--yes");
    const bool json = args.has("--json");
    Json records = Json::array();
    imports::ImportWindow& window = ctx.app.importWindow();
    window.open();
    batch::BatchImport& importer = ctx.app.batchImport();
    if (quoted) {
        importer.setQuotedFields(true);
    }
    importer.onRecord([&](const batch::RecordOutcome& o) {
        if (json) {
            records.push_back(Json{{"transactionId", o.transactionId},
                                   {"company", o.company},
                                   {"amount", o.amount},
                                   {"outcome", kindText(o.kind)},
                                   {"reason", o.reason}});
            return;
        }
        std::string who;
        for (const std::string* part : {&o.transactionId, &o.company, &o.amount}) {
            if (!part->empty()) {
                who += (who.empty() ? "" : " ") + *part;
            }
        }
        ctx.out << who << ": " << kindText(o.kind);
        if (!o.reason.empty()) {
            ctx.out << ": " << o.reason;
        }
        ctx.out << '\n';
    });
    if (bulk) {
        if (!yes && ctx.ui.messageBox(batch::kBulkWarning, ui::kProgramTitle, ui::Icon::None,
                                      ui::Buttons::OkCancel) != ui::Answer::Ok) {
            (json ? ctx.err : ctx.out) << "Not imported: cancelled\n";
            return kExitFailed;
        }
        importer.processAuthNetBulk(file);
    } else {
        importer.processAuthNetBatch(file);
    }
    const batch::RunSummary& run = importer.lastRun();
    if (!run.refusedFile.empty()) {
        ctx.err << run.refusedFile << '\n';
        return kExitData;
    }
    if (json) {
        printJson(Json{{"file", file},
                       {"records", std::move(records)},
                       {"added", run.added},
                       {"notApproved", run.notApproved},
                       {"alreadyImported", run.alreadyImported},
                       {"refused", run.refused},
                       {"cancelled", run.cancelled},
                       {"unreachable", run.unreachable},
                       {"stopped", run.stopped},
                       {"stoppedAt", run.stopped ? Json(run.stoppedAt) : Json()},
                       {"notTried", run.notTried},
                       {"stopReport", batch::stopReport(run)}},
                  ctx.out);
    } else {
        printSummary(ctx, run, window.statusText());
    }
    if (run.unreachable) {
        return kExitGateway;
    }
    return run.refused == 0 && !run.stopped ? kExitOk : kExitFailed;
}

}  // namespace

constexpr Option kImportBatchOptions[] = {
    {"--bulk", 0, "", "read the file in chunks, as the window's bulk import does"},
    {"--quoted", 0, "", "read values in double quotes whole"},
    {"--yes", 'y', "", "answer the bulk import's warning with OK"},
    kJsonOption,
};

constexpr Command kImportBatchCommand{
    .name = "import-batch",
    .synopsis = "FILE [--bulk] [--quoted] [--yes] [--json]",
    .summary =
        "book the approved transactions of an Authorize.Net download as\n"
        "sales receipts, each once; one line per transaction, exit status\n"
        "1 when one was refused",
    .details =
        "  Books the approved transactions of an Authorize.Net download (comma-, tab- or\n"
        "  semicolon-delimited, Latin-1 or UTF-8) as sales receipts, creating their customers\n"
        "  unless the import setting IgnoreAuthNetCust is 1, and records each one in\n"
        "  BatchImport.log, so a second run adds nothing. Prints one line per transaction (added,\n"
        "  not approved, already imported, refused: why) and a summary.\n"
        "  --bulk reads the file in chunks, as the window's bulk import does (after its warning\n"
        "  to back up the company file: --yes answers it). --quoted reads values in double quotes\n"
        "  whole (\"O'Brien, Inc.\", \"1,234.50\"), as the import setting QuotedFields does;\n"
        "  without it such a transaction is refused and nothing of it is booked.\n"
        "  --json prints the transactions and the summary as one JSON document instead.\n"
        "  A file without the columns the import reads (Transaction ID, Authorization Code, Total\n"
        "  Amount, Company, Customer First Name, Customer Last Name) is refused whole, and so is\n"
        "  a transaction without its ID.\n"
        "  Exit status: 0 nothing refused, 1 something refused, 2 QuickBooks could not be\n"
        "  reached (the run says where it stopped: the same file again goes on there), 65 the\n"
        "  file lacks a column, 66 the file cannot be read.\n",
    .options = kImportBatchOptions,
    .minOperands = 1,
    .maxOperands = 1,
    .operandNames = "FILE",
    .needs = Needs::QuickBooks,
    .check = checkFirstOperand,
    .run = importBatch,
    .notDone = "Not imported: QuickBooks could not be reached",
};

}  // namespace dorvane::cli
