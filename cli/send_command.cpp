// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane send TYPE [--timeframe NAME] [--preview]` and `dorvane settings get|set`.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "shell/application.h"

namespace dorvane::cli {

int sendCommand(CommandContext& ctx, const Args& args) {
    static constexpr const char* kUsage =
        "Usage: dorvane send TYPE [--timeframe NAME] [--preview]\n"
        "  Lists TYPE as `dorvane list` does, then mails the checked documents (with\n"
        "  --preview: renders them into preview.htm instead). One line per document:\n"
        "  sent or failed, the row's id, name and recipient.\n";
    std::vector<std::string> rest;
    int rc = loadListFromArgs(ctx, args, kUsage, &rest);
    if (rc != kExitOk) {
        return rc;
    }
    bool preview = false;
    for (const auto& a : rest) {
        if (a == "--preview") {
            preview = true;
        } else {
            ctx.err << "dorvane: unexpected '" << a << "'\n" << kUsage;
            return kExitUsage;
        }
    }
    auto& window = ctx.app.window();
    window.setPreviewChecked(preview);
    int failed = 0;
    ctx.app.sender().onRowProcessed([&](const mail::RowOutcome& o) {
        const char* outcome = preview ? "preview" : o.sent ? "sent" : "failed";
        if (!preview && !o.sent) {
            ++failed;
        }
        ctx.out << outcome << '\t' << o.key << '\t' << o.name << '\t' << o.recipient << '\n';
    });
    ctx.app.sender().sendSelectedDocuments();
    if (!window.statusText().empty()) {
        ctx.err << window.statusText() << '\n';
    }
    return failed == 0 ? kExitOk : kExitFailed;
}

int settingsCommand(CommandContext& ctx, const Args& args) {
    static constexpr const char* kUsage =
        "Usage: dorvane settings get SECTION KEY\n"
        "       dorvane settings set SECTION KEY VALUE\n"
        "  Sections: SMTP (Hostname, Port, User, Pwd, Trace), Settings (MailOption, Test,\n"
        "  EmailAdr, Attachment, ReturnReceipt, BCC, BCCAdr, alwaysBCC, altEmail, Encrypt),\n"
        "  Import (Item, ItemGroup, Term, Account, IgnoreAuthNetCust). Keys ignore case; a\n"
        "  value never set reads as its default.\n";
    auto& store = ctx.app.settings();
    if (args.size() == 3 && args[0] == "get") {
        // A value never set reads as the default the program takes for it.
        std::optional<std::string> value = store.value(args[1], args[2]);
        if (!value) {
            ctx.err << "dorvane: " << args[1] << ' ' << args[2] << " is not set\n";
            return kExitFailed;
        }
        ctx.out << *value << '\n';
        return kExitOk;
    }
    if (args.size() == 4 && args[0] == "set") {
        Status saved = store.set(args[1], args[2], args[3]);
        if (!saved) {
            ctx.err << "Could not save " << store.file().string() << ": "
                    << saved.error().description << '\n';
            return kExitFailed;
        }
        return kExitOk;
    }
    ctx.err << kUsage;
    return kExitUsage;
}

}  // namespace dorvane::cli
