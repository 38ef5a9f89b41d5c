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

int webupdateCommand(CommandContext& ctx, const Args& args) {
    static constexpr const char* kUsage =
        "Usage: dorvane webupdate KIND [--only LISTID ...]\n"
        "  Lists the company's items of KIND (Service, Inventory or NonInventory, any case) as\n"
        "  the window's Web-Update menu does, then publishes them (with --only, just the items\n"
        "  of those ListIDs) to the web site in the settings (Web UpdateURL, Token, Timeout).\n"
        "  One line per item: published, or not taken and why. Exit status 0 when the site\n"
        "  took every item, 1 otherwise, 2 when QuickBooks could not be reached.\n";
    const webupdate::ItemKind* kind = nullptr;
    std::vector<std::string> only;
    bool onlyGiven = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--only") {
            onlyGiven = true;
            while (i + 1 < args.size() && !args[i + 1].starts_with("--")) {
                only.push_back(args[++i]);
            }
        } else if (!kind && !args[i].starts_with("--")) {
            kind = webupdate::itemKindNamed(args[i]);
            if (!kind) {
                ctx.err << "dorvane: unknown item kind '" << args[i] << "'\n" << kUsage;
                return kExitUsage;
            }
        } else {
            ctx.err << "dorvane: unexpected '" << args[i] << "'\n" << kUsage;
            return kExitUsage;
        }
    }
    if (!kind || (onlyGiven && only.empty())) {
        ctx.err << kUsage;
        return kExitUsage;
    }
    if (!startUp(ctx)) {
        return kExitGateway;
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

}  // namespace dorvane::cli
