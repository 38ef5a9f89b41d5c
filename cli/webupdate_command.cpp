// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane webupdate KIND [--only LISTID ...]`: the window's web item update, headless.
#include <algorithm>
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/terminalui.h"
#include "shell/application.h"
#include "webupdate/webupdate.h"

namespace dorvane::cli {

namespace {

int checkWebupdateArgs(Invocation& args, std::ostream& err) {
    if (!webupdate::itemKindNamed(args.operands[0])) {
        return usageError(args.path, "unknown item kind '" + args.operands[0] + "'", err);
    }
    if (args.operands.size() > 1 && !args.has("--only")) {
        return usageError(args.path, "extra argument '" + args.operands[1] + "'", err);
    }
    return kExitOk;
}

int publish(CommandContext& ctx, const Invocation& args) {
    const webupdate::ItemKind* kind = webupdate::itemKindNamed(args.operands[0]);
    const bool onlyGiven = args.has("--only");
    // --only A B C: the ListIDs after KIND belong to --only.
    std::vector<std::string> only(args.operands.begin() + 1, args.operands.end());
    for (const auto& [option, value] : args.given) {
        only.push_back(value);
    }
    webupdate::WebUpdater& updater = ctx.app.webUpdater();
    if (!updater.listItems(*kind)) {
        return kExitGateway;
    }
    ui::ListModel& list = ctx.app.window().list();
    if (onlyGiven) {
        for (int r = 0; r < list.rowCount(); ++r) {
            const bool wanted = std::find(only.begin(), only.end(), list.row(r).key) != only.end();
            list.setChecked(r, wanted);
        }
    }
    printList(list, ctx.out);
    const bool noSite = webupdate::siteAddress(ctx.app.settings()).empty();
    updater.onItemDone([&](int row, bool accepted, const std::string& why) {
        const ui::ListRow& item = list.row(row);
        ctx.out << (!accepted ? "not taken"
                    : noSite  ? "converted"
                              : "published")
                << '\t' << item.key << '\t' << (item.cells.size() > 2 ? item.cells[2] : "")
                << (accepted ? "" : "\t" + why) << '\n';
    });
    const webupdate::UpdateReport report = updater.updateItems();
    ctx.err << ctx.app.window().statusText() << '\n';
    for (const std::string& note : report.notes()) {
        ctx.err << note << '\n';
    }
    return report.sheetMissing || report.failed > 0 ? kExitFailed : kExitOk;
}

}  // namespace

constexpr Option kWebupdateOptions[] = {
    {"--only", 0, "LISTID",
     "publish only the items of these ListIDs (more may follow:\n--only ID1 ID2 ...)"},
};

constexpr Command kWebupdateCommand{
    .name = "webupdate",
    .synopsis = "KIND [--only LISTID ...]",
    .summary =
        "list the Service, Inventory or NonInventory items and publish\n"
        "them to the web site set in the settings (Web UpdateURL)",
    .details =
        "  Lists the company's items of KIND (Service, Inventory or NonInventory, any case) as\n"
        "  the window's Web-Update menu does, then publishes them (with --only, just the items\n"
        "  of those ListIDs) to the web site in the settings (Web UpdateURL, Token, Timeout).\n"
        "  One line per item: published, or not taken and why. Exit status 0 when the site\n"
        "  took every item, 1 otherwise, 2 when QuickBooks could not be reached.\n",
    .options = kWebupdateOptions,
    .minOperands = 1,
    .maxOperands = kAnyNumber,
    .operandNames = "KIND",
    .needs = Needs::QuickBooks,
    .check = checkWebupdateArgs,
    .run = publish,
};

}  // namespace dorvane::cli
