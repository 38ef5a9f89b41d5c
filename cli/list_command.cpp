// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane list TYPE [--timeframe NAME]` and `dorvane company`: the window's list and company
// label, printed.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "common/text.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

void printCompany(CommandContext& ctx, std::ostream& to) {
    std::string company = text::replaceAll(ctx.app.window().companyText(), "\r\n", "\n");
    to << text::trim(company) << '\n';
}

}  // namespace

std::optional<std::string> documentTypeNamed(std::string_view name) {
    for (const auto& entry : shell::kDocumentMenu) {
        if (text::equalsIgnoreCase(name, entry.type)) {
            return std::string(entry.type);
        }
    }
    return std::nullopt;
}

int loadListFromArgs(CommandContext& ctx, const Args& args, const char* usage,
                     std::vector<std::string>* rest) {
    std::optional<std::string> type;
    std::string timeframe = "ThisWeekToDate";
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--timeframe" && i + 1 < args.size()) {
            timeframe = args[++i];
        } else if (args[i].starts_with("--timeframe=")) {
            timeframe = args[i].substr(12);
        } else if (!type && !args[i].starts_with("--")) {
            type = documentTypeNamed(args[i]);
            if (!type) {
                ctx.err << "dorvane: unknown document type '" << args[i] << "'\n" << usage;
                return kExitUsage;
            }
        } else if (rest) {
            rest->push_back(args[i]);
        } else {
            ctx.err << "dorvane: unexpected '" << args[i] << "'\n" << usage;
            return kExitUsage;
        }
    }
    if (!type) {
        ctx.err << usage;
        return kExitUsage;
    }
    auto& window = ctx.app.window();
    window.startUp();
    if (!window.selectTimeframe(std::string_view(timeframe))) {
        ctx.err << "dorvane: unknown timeframe '" << timeframe << "'; one of:";
        for (const auto& t : window.timeframes()) {
            ctx.err << ' ' << t;
        }
        ctx.err << '\n';
        return kExitUsage;
    }
    window.selectDocumentType(*type);
    printCompany(ctx, ctx.err);
    return window.listDocument().empty() ? kExitGateway : kExitOk;
}

void printList(const ui::ListModel& list, std::ostream& out) {
    std::string line;
    for (std::size_t c = 0; c < list.columns().size(); ++c) {
        line += (c ? "\t" : "") + list.columns()[c].caption;
    }
    out << line << '\n';
    for (const auto& row : list.rows()) {
        out << (row.checked ? "[x]" : "[ ]");
        for (const auto& cell : row.cells) {
            out << '\t' << cell;
        }
        out << '\n';
    }
}

int listCommand(CommandContext& ctx, const Args& args) {
    static constexpr const char* kUsage =
        "Usage: dorvane list TYPE [--timeframe NAME]\n"
        "  TYPE: Invoice, Estimate, CreditMemo, SalesReceipt, PurchaseOrder, Statement,\n"
        "        Timesheet (by customer) or TimesheetA (by entity)\n"
        "  NAME: ThisWeekToDate (default), ThisMonthToDate, ThisFiscalQuarterToDate,\n"
        "        ThisFiscalYearToDate, LastWeek, LastMonth, LastFiscalQuarter,\n"
        "        LastFiscalYear or ALL\n";
    int rc = loadListFromArgs(ctx, args, kUsage, nullptr);
    if (rc == kExitOk) {
        printList(ctx.app.window().list(), ctx.out);
    }
    return rc;
}

int companyCommand(CommandContext& ctx, const Args& args) {
    if (!args.empty()) {
        ctx.err << "Usage: dorvane company\n";
        return kExitUsage;
    }
    ctx.app.company().retrieveCompanyInfo();
    printCompany(ctx, ctx.out);
    return ctx.app.company().companyNode() ? kExitOk : kExitFailed;
}

}  // namespace dorvane::cli
