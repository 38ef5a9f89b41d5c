// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane history`: what went out and came in, one line per event of the logs.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "history/history.h"
#include "history/historywindow.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

history::Filter filterOf(const Invocation& args) {
    return {.type = args.value("--type").value_or(""),
            .since = args.value("--since").value_or(""),
            .until = args.value("--until").value_or(""),
            .customer = args.value("--customer").value_or("")};
}

int checkHistoryArgs(Invocation& args, std::ostream& err) {
    for (const char* option : {"--since", "--until"}) {
        const auto date = args.value(option);
        if (date && !history::isIsoDate(*date)) {
            return usageError(
                args.path,
                std::string(option) + " takes a date written YYYY-MM-DD, not '" + *date + "'", err);
        }
    }
    return kExitOk;
}

// A cell on one line of its column: a log may hold tabs and line breaks in a value.
std::string oneLine(std::string cell) {
    for (char& c : cell) {
        if (c == '\t' || c == '\r' || c == '\n') {
            c = ' ';
        }
    }
    return cell;
}

int history(CommandContext& ctx, const Invocation& args) {
    const std::vector<history::Event> all =
        history::joinHistory(history::readLogs(ctx.app.folder()));
    const std::vector<const history::Event*> shown = history::filterHistory(all, filterOf(args));
    if (args.has("--json")) {
        Json doc = Json::array();
        for (const history::Event* event : shown) {
            const history::Event& e = *event;
            doc.push_back({{"when", e.when},
                           {"event", e.event},
                           {"type", e.type},
                           {"number", e.number},
                           {"amount", e.amount},
                           {"party", e.party},
                           {"address", e.address},
                           {"outcome", e.outcome},
                           {"txnId", e.txnId}});
        }
        printJson(doc, ctx.out);
        return kExitOk;
    }
    if (shown.empty()) {
        ctx.out << (all.empty() ? "Nothing went out or came in yet.\n"
                                : "No event matches; the history holds " +
                                      history::summaryText(all) + ".\n");
        return kExitOk;
    }
    const char* sep = "";
    for (const char* caption : history::kHistoryColumns) {
        ctx.out << sep << caption;
        sep = "\t";
    }
    ctx.out << '\n';
    for (const history::Event* e : shown) {
        sep = "";
        for (std::string& cell : history::historyCells(*e)) {
            ctx.out << sep << oneLine(std::move(cell));
            sep = "\t";
        }
        ctx.out << '\n';
    }
    ctx.out << history::summaryText(shown) << '\n';
    return kExitOk;
}

constexpr Option kHistoryOptions[] = {
    {"--type", 0, "TYPE",
     "only this document type (Invoice, Bill, ...) or event\n(sent, test, reminder, import, "
     "receipt, batch ...)"},
    {"--since", 0, "DATE", "only events on or after DATE (YYYY-MM-DD)"},
    {"--until", 0, "DATE", "only events on or before DATE (YYYY-MM-DD)"},
    {"--customer", 0, "NAME", "only events whose party's name contains NAME"},
    kJsonOption,
};

}  // namespace

constexpr Command kHistoryCommand{
    .name = "history",
    .synopsis = "[--type TYPE] [--since DATE] [--until DATE] [--customer NAME] [--json]",
    .summary = "list what went out and came in: documents sent,\nreminders, imports",
    .details =
        "  One line per event, oldest first: When, Event (sent, sent again, test, reminder 1\n"
        "  to 3, test reminder, import, receipt import, batch import, or receipt or batch\n"
        "  import when the log cannot tell), Type, Number, Amount, Party, Address and\n"
        "  Outcome, then the count of each kind of event. Read from the sent log, the\n"
        "  reminder log, the import log and the activity log in the program folder. Names\n"
        "  and types match in any case. An event whose date the log does not give as a date\n"
        "  is left out when --since or --until is given.\n"
        "  --json: an array of one object per event (when, event, type, number, amount,\n"
        "  party, address, outcome, txnId).\n",
    .options = kHistoryOptions,
    .needs = Needs::Application,
    .check = checkHistoryArgs,
    .run = history,
};

}  // namespace dorvane::cli
