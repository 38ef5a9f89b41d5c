// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane list TYPE [--timeframe NAME]` and `dorvane company`: the window's list and company
// label, printed.
#include <ostream>

#include "browser/documenttypes.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/terminalui.h"
#include "common/text.h"
#include "company/companyeditor.h"
#include "qbgateway/templates.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

void printCompany(CommandContext& ctx, std::ostream& to) {
    std::string company = text::replaceAll(ctx.app.window().companyText(), "\r\n", "\n");
    to << text::trim(company) << '\n';
}

// The timeframe a command-line word names (any case), e.g. "lastmonth" → "LastMonth".
std::optional<std::string> timeframeNamed(std::string_view name) {
    for (std::string_view t : qbgateway::kTimeframes) {
        if (text::equalsIgnoreCase(name, t)) {
            return std::string(t);
        }
    }
    return std::nullopt;
}

// QuickBooks answered the company request: the gateway noted the open company file.
bool quickBooksReached(CommandContext& ctx) {
    return !ctx.app.gateway().currentCompanyFile().empty();
}

}  // namespace

std::optional<std::string> documentTypeNamed(std::string_view name) {
    for (const browser::DocumentType& type : browser::kDocumentTypes) {
        if (text::equalsIgnoreCase(name, type.name)) {
            return std::string(type.name);
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
    // The whole command line is checked before start-up talks to QuickBooks.
    const std::optional<std::string> canonical = timeframeNamed(timeframe);
    if (!canonical) {
        ctx.err << "dorvane: unknown timeframe '" << timeframe << "'; one of:";
        for (std::string_view t : qbgateway::kTimeframes) {
            ctx.err << ' ' << t;
        }
        ctx.err << '\n';
        return kExitUsage;
    }
    auto& window = ctx.app.window();
    window.startUp();
    window.selectTimeframe(std::string_view(*canonical));
    window.selectDocumentType(*type);
    printCompany(ctx, ctx.err);
    if (window.listDocument().empty()) {
        return ctx.app.gateway().unreachable() ? reportUnreachable(ctx) : kExitGateway;
    }
    return kExitOk;
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
        "        LastFiscalYear or ALL (TYPE and NAME in any case)\n";
    int rc = loadListFromArgs(ctx, args, kUsage, nullptr);
    if (rc == kExitOk) {
        printList(ctx.app.window().list(), ctx.out);
    }
    return rc;
}

int companyCommand(CommandContext& ctx, const Args& args) {
    static constexpr const char* kUsage =
        "Usage: dorvane company\n"
        "       dorvane company set FIELD VALUE [FIELD VALUE ...]\n"
        "  FIELD: CompanyName, Addr1, Addr2, City, State, Zip, Country, Phone, Fax, Email,\n"
        "  Website (any case). Only Addr2, Fax and Website may stay empty.\n";
    auto& company = ctx.app.company();
    if (args.empty()) {
        company.retrieveCompanyInfo();
        if (!quickBooksReached(ctx)) {
            return reportUnreachable(ctx);
        }
        printCompany(ctx, ctx.out);
        return company.companyNode() ? kExitOk : kExitFailed;
    }
    if (args[0] != "set" || args.size() < 3 || args.size() % 2 == 0) {
        ctx.err << kUsage;
        return kExitUsage;
    }
    TerminalUi::FieldValues values;
    for (std::size_t i = 1; i + 1 < args.size(); i += 2) {
        if (!company::editorField(args[i])) {
            ctx.err << "dorvane: unknown field '" << args[i] << "'\n" << kUsage;
            return kExitUsage;
        }
        values.emplace_back(args[i], args[i + 1]);
    }
    // The editor comes up where the window brings it up: when the open company file has no
    // record yet, or through "&Edit Company Info" where the window enables that entry.
    ctx.ui.answerCompanyEditor(std::move(values));
    company.retrieveCompanyInfo();
    if (!quickBooksReached(ctx)) {
        return kExitGateway;
    }
    if (ctx.ui.companyEditorShown() == 0) {
        if (company.companyNode() && !ctx.app.window().control("editcompanyinfo").enabled) {
            ctx.err << "QuickBooks supplies this company's information; change it in QuickBooks.\n";
            return kExitFailed;
        }
        company.editCompanyInfo();
        if (ctx.ui.companyEditorShown() == 0) {
            return kExitFailed;
        }
        company.retrieveCompanyInfo();
    }
    if (!ctx.ui.companyEditorAccepted()) {
        return kExitFailed;
    }
    printCompany(ctx, ctx.out);
    return kExitOk;
}

}  // namespace dorvane::cli
