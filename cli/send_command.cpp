// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane send TYPE [--only ID ...] [--again] [--timeframe NAME] [--preview] [--pdf]` and
// `dorvane pdf TYPE ID`.
#include <algorithm>
#include <filesystem>
#include <ostream>

#include "browser/documenttypes.h"
#include "browser/loaders.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "common/files.h"
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

struct SendCounts {
    int sent = 0, failed = 0, noAddress = 0, already = 0, tests = 0, notTried = 0;
};

// The rows --only and --again chose, and what became of them.
struct Choice {
    bool only = false;  // the other rows do not count
    std::vector<shell::ChosenRow> rows;

    const shell::ChosenRow* of(int row) const {
        auto found = std::find_if(rows.begin(), rows.end(),
                                  [row](const shell::ChosenRow& c) { return c.row == row; });
        return found == rows.end() ? nullptr : &*found;
    }
    bool again(int row) const {
        const shell::ChosenRow* c = of(row);
        return c && c->outcome == shell::ChosenRow::Outcome::Again;
    }
};

SendCounts countSend(const browser::DocumentType& type, const ui::ListModel& list,
                     const std::vector<mail::RowOutcome>& outcomes, const Choice& choice) {
    SendCounts n;
    for (const mail::RowOutcome& o : outcomes) {
        (o.test ? n.tests : o.sent ? n.sent : n.failed) += 1;
    }
    for (int r = 0; r < list.rowCount(); ++r) {
        const ui::ListRow& row = list.row(r);
        if (row.checked || processed(outcomes, r) || (choice.only && !choice.of(r))) {
            continue;
        }
        const std::string& status = browser::rowStatus(type, row);
        n.noAddress += status == browser::kMissingEmail ? 1 : 0;
        n.already += status == browser::kAlreadySent ? 1 : 0;
    }
    n.notTried = untried(list, outcomes);
    return n;
}

const char* outcomeName(const mail::RowOutcome& o, bool preview, const Choice& choice) {
    return preview                         ? "preview"
           : o.test                        ? "test"
           : o.sent && choice.again(o.row) ? "sent again"
           : o.sent                        ? "sent"
                                           : "failed";
}

// The run for a script: per document its outcome, then the counts the summary says.
void printSendJson(CommandContext& ctx, const Invocation& args,
                   const std::vector<mail::RowOutcome>& outcomes, bool preview,
                   const Choice& choice) {
    Json doc{{"type", args.operands[0]},
             {"timeframe", *args.value("--timeframe")},
             {"preview", preview},
             {"documents", Json::array()}};
    for (const mail::RowOutcome& o : outcomes) {
        Json row{{"outcome", outcomeName(o, preview, choice)},
                 {"key", o.key},
                 {"name", o.name},
                 {"recipient", o.recipient}};
        if (choice.again(o.row)) {
            row["again"] = true;
        }
        if (!preview && !o.sent) {
            row["why"] = o.why.empty() ? "not sent" : o.why;
        }
        doc["documents"].push_back(std::move(row));
    }
    if (!preview) {
        const SendCounts n = countSend(*browser::findDocumentType(args.operands[0]),
                                       ctx.app.window().list(), outcomes, choice);
        doc["counts"] = {{"sent", n.sent},           {"failed", n.failed},
                         {"noAddress", n.noAddress}, {"alreadySent", n.already},
                         {"test", n.tests},          {"notTried", n.notTried}};
    }
    printJson(doc, ctx.out);
}

// The end of a send run: the window's closing status when something went out (or the run
// says why it stopped), then the counts, the reason of each failure and a test run's note.
void printSendSummary(CommandContext& ctx, const Invocation& args,
                      const std::vector<mail::RowOutcome>& outcomes, const Choice& choice) {
    const auto [sent, failed, noAddress, already, tests, notTried] = countSend(
        *browser::findDocumentType(args.operands[0]), ctx.app.window().list(), outcomes, choice);
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
    if (args.operands.size() > 1 && !args.has("--only")) {
        return usageError(args.path, "extra argument '" + args.operands[1] + "'", err);
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

// --only ID ... and --again: ticks the rows they name, or every already-sent one; says what stays
// and why. An ID that names no row stops the run before anything is sent (false).
bool chooseRows(CommandContext& ctx, const Invocation& args, Choice& choice) {
    choice.only = args.has("--only");
    if (!choice.only && !args.has("--again")) {
        return true;
    }
    // --only A B C: the IDs after TYPE belong to --only.
    std::vector<std::string> ids(args.operands.begin() + 1, args.operands.end());
    for (const auto& [option, value] : args.given) {
        if (option == "--only") {
            ids.push_back(value);
        }
    }
    shell::MainWindow& window = ctx.app.window();
    shell::RowChoice chosen = window.chooseRows(ids, args.has("--again"));
    const std::string& type = args.operands[0];
    if (!chosen.unknown.empty()) {
        for (const std::string& id : chosen.unknown) {
            ctx.err << "No " << type << " '" << id << "' in the list of "
                    << *args.value("--timeframe") << ".\n";
        }
        ctx.err << "Nothing was sent. `dorvane list " << type
                << " --timeframe ALL` shows them all; give a number or ID of the list (or pick "
                   "the timeframe with --timeframe).\n";
        return false;
    }
    const std::size_t nameCell = browser::findDocumentType(type)->cells.name;
    for (const shell::ChosenRow& c : chosen.rows) {
        const ui::ListRow& row = window.list().row(c.row);
        const std::string name =
            nameCell < row.cells.size() ? " (" + row.cells[nameCell] + ")" : "";
        if (c.outcome == shell::ChosenRow::Outcome::SentBefore) {
            ctx.err << type << " " << c.id << name
                    << " was sent before and is not sent now; --again sends it again.\n";
        } else if (c.outcome == shell::ChosenRow::Outcome::NoAddress) {
            ctx.err << type << " " << c.id << name
                    << " was sent before and has no e-mail address now: not sent again.\n";
        }
    }
    choice.rows = std::move(chosen.rows);
    return true;
}

int send(CommandContext& ctx, const Invocation& args) {
    int rc = loadList(ctx, args);
    if (rc != kExitOk) {
        return rc;
    }
    Choice choice;
    if (!chooseRows(ctx, args, choice)) {
        return kExitFailed;
    }
    const bool preview = args.has("--preview");
    auto& window = ctx.app.window();
    window.setPreviewChecked(preview);
    auto& sender = ctx.app.sender();
    if (args.has("--pdf")) {
        sender.setPdfOverride(true);
    }
    std::vector<mail::RowOutcome> outcomes;
    const bool json = args.has("--json");
    sender.onRowProcessed([&](const mail::RowOutcome& o) {
        if (!json) {
            ctx.out << outcomeName(o, preview, choice) << '\t' << o.key << '\t' << o.name << '\t'
                    << o.recipient << '\n';
        }
        outcomes.push_back(o);
    });
    sender.sendSelectedDocuments();
    if (json) {
        printSendJson(ctx, args, outcomes, preview, choice);
    }
    if (preview) {
        if (!window.statusText().empty()) {
            ctx.err << window.statusText() << '\n';
        }
        return kExitOk;
    }
    printSendSummary(ctx, args, outcomes, choice);
    const bool allWent = std::all_of(outcomes.begin(), outcomes.end(),
                                     [](const mail::RowOutcome& o) { return o.sent; });
    return allWent && untried(ctx.app.window().list(), outcomes) == 0 ? kExitOk : kExitFailed;
}

}  // namespace

int checkPdfArgs(Invocation& args, std::ostream& err) {
    if (!args.value("--timeframe")) {
        args.given.emplace_back("--timeframe", "ALL");
    }
    const std::string id = args.operands[1];
    args.operands.resize(1);
    const int rc = checkSendArgs(args, err);
    args.operands.push_back(id);
    return rc;
}

int writePdf(CommandContext& ctx, const Invocation& args) {
    if (const int rc = loadList(ctx, args); rc != kExitOk) {
        return rc;
    }
    const browser::DocumentType& type = *browser::findDocumentType(args.operands[0]);
    const int row = ctx.app.window().rowOfDocument(args.operands[1]);
    if (row < 0) {
        ctx.err << "No " << type.name << " '" << args.operands[1] << "' in the list of "
                << *args.value("--timeframe") << " (`dorvane list " << type.name
                << " --timeframe ALL` shows them all; give its number or ID).\n";
        return kExitData;
    }
    auto file = ctx.app.sender().documentPdf(row);
    if (!file) {
        ctx.err << "The PDF could not be made: " << file.error().description << '\n';
        return kExitFailed;
    }
    const std::string target = args.value("--output").value_or(file->name);
    if (target == "-") {
        ctx.out << file->bytes;
        return kExitOk;
    }
    if (Status written = files::writeAtomically(target, {file->bytes}, 0644u); !written) {
        ctx.err << "Cannot write " << target << ": " << written.error().description << '\n';
        return kExitFailed;
    }
    ctx.err << "Wrote " << std::filesystem::absolute(target).string() << '\n';
    return kExitOk;
}

constexpr Option kSendOptions[] = {
    {"--only", 0, "ID",
     "send only these documents, each by its number or TxnID (a\nstatement's or timesheet's "
     "customer: name or ListID; more\nmay follow: --only ID1 ID2 ...)"},
    {"--again", 0, "",
     "send documents that were sent before once more (with\n--only: those named; without: every "
     "one of the list)"},
    kTimeframeOption,
    {"--preview", 0, "", "render the documents into preview.htm instead of mailing\nthem"},
    {"--pdf", 0, "",
     "attach a PDF copy of each document (with --preview: write\npreview.pdf too), whatever "
     "Documents AttachPdf says"},
    kJsonOption,
};

constexpr Option kPdfOptions[] = {
    {"--output", 'o', "FILE",
     "where to write it (- for standard output); default\nTYPE-NUMBER.pdf here"},
    {"--timeframe", 0, "NAME", "the list to look in, as for list; default ALL"},
};

constexpr Command kSendCommand{
    .name = "send",
    .synopsis = "TYPE [--only ID ...] [--again] [--timeframe NAME] [--preview] [--pdf] [--json]",
    .summary =
        "list as above, then mail the checked documents (or render them\n"
        "into preview.htm); exit status 1 when one did not go out",
    .details =
        "  Lists TYPE as `dorvane list` does, then mails the checked documents (with\n"
        "  --preview: renders them into preview.htm instead). One line per document: sent,\n"
        "  failed, or test (test mode: to the test address only), the row's id, name and\n"
        "  recipient; then the counts. Exit status 1 when a document did not go out; 64\n"
        "  for TimesheetA, which has no document to mail. --json: per document its outcome,\n"
        "  id, name, recipient (and why it failed), then the counts. --pdf attaches a PDF\n"
        "  copy of each document for this run (Documents AttachPdf 1 does for every run).\n"
        "  --only sends just the documents named (an already-sent one only with --again,\n"
        "  which says so); exit status 1, with nothing sent, when an ID is not in the list.\n"
        "  --again sends documents that were sent before once more: their line says\n"
        "  \"sent again\", and the sent log gets one more record for each.\n",
    .options = kSendOptions,
    .minOperands = 1,
    .maxOperands = kAnyNumber,
    .operandNames = "TYPE",
    .needs = Needs::StartUp,
    .check = checkSendArgs,
    .run = send,
};

constexpr Command kPdfCommand{
    .name = "pdf",
    .synopsis = "TYPE ID [-o FILE] [--timeframe NAME]",
    .summary = "write one document's PDF copy, for printing or filing",
    .details =
        "  Writes the PDF copy of one document, as `send --pdf` attaches it: the company\n"
        "  header, the document and, for an invoice or statement with Documents PayLink\n"
        "  set, its pay-now link. ID is a transaction's number or TxnID, or a statement's or\n"
        "  timesheet's customer (name or ListID). Page size and margin come from Documents\n"
        "  PageSize and MarginPoints. Exit status 65 when the list has no such document.\n",
    .options = kPdfOptions,
    .minOperands = 2,
    .maxOperands = 2,
    .operandNames = "TYPE ID",
    .needs = Needs::StartUp,
    .check = checkPdfArgs,
    .run = writePdf,
};

}  // namespace dorvane::cli
