// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane list TYPE [--timeframe NAME]` and `dorvane company`: the window's list and company
// label, printed.
#include <ostream>

#include "browser/documenttypes.h"
#include "browser/loaders.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "cli/terminalui.h"
#include "common/text.h"
#include "company/companyeditor.h"
#include "qbgateway/templates.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

// The window's company label, line by line, without the blanks it pads its lines with.
std::vector<std::string> companyLines(CommandContext& ctx) {
    std::string company = text::replaceAll(ctx.app.window().companyText(), "\r\n", "\n");
    std::vector<std::string> lines;
    for (std::string_view line : text::split(text::trim(company), '\n')) {
        lines.emplace_back(text::trim(line));
    }
    return lines;
}

void printCompany(CommandContext& ctx, std::ostream& to) {
    for (const std::string& line : companyLines(ctx)) {
        to << line << '\n';
    }
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

int checkListArgs(Invocation& args, std::ostream& err) {
    const std::optional<std::string> type = documentTypeNamed(args.operands[0]);
    if (!type) {
        return usageError(args.path, "unknown document type '" + args.operands[0] + "'", err);
    }
    args.operands[0] = *type;
    const std::string timeframe = args.value("--timeframe").value_or("ThisWeekToDate");
    const std::optional<std::string> canonical = timeframeNamed(timeframe);
    if (!canonical) {
        std::string known;
        for (std::string_view t : qbgateway::kTimeframes) {
            known += " " + std::string(t);
        }
        return usageError(args.path, "unknown timeframe '" + timeframe + "'; one of:" + known, err);
    }
    args.given.emplace_back("--timeframe", *canonical);
    return kExitOk;
}

int loadList(CommandContext& ctx, const Invocation& args) {
    auto& window = ctx.app.window();
    // --open and --unpaid add to the settings' view, for this run only.
    browser::ListView view = window.listView();
    view.openBalances = view.openBalances || args.has("--open");
    view.unpaidOnly = view.unpaidOnly || args.has("--unpaid");
    window.setListView(view);
    window.selectTimeframe(std::string_view(*args.value("--timeframe")));
    window.selectDocumentType(args.operands[0]);
    printCompany(ctx, ctx.err);
    if (window.listDocument().empty()) {
        return ctx.app.gateway().unreachable() ? reportUnreachable(ctx) : kExitGateway;
    }
    return kExitOk;
}

void printList(const ui::ListModel& list, std::ostream& out) {
    out << "Checked";
    for (const ui::ListColumn& column : list.columns()) {
        out << '\t' << column.caption;
    }
    out << '\n';
    for (const auto& row : list.rows()) {
        out << (row.checked ? "[x]" : "[ ]");
        for (const auto& cell : row.cells) {
            out << '\t' << cell;
        }
        out << '\n';
    }
}

namespace {

// The list for a script: what it is, its columns, and per row its cells, check and status.
Json listJson(CommandContext& ctx, const Invocation& args) {
    const ui::ListModel& list = ctx.app.window().list();
    const browser::DocumentType& type = *browser::findDocumentType(args.operands[0]);
    const bool extra = ctx.app.window().listView().extraColumns();
    const std::size_t own = browser::columnCount(type);
    Json doc{{"company", companyLines(ctx)},
             {"type", args.operands[0]},
             {"timeframe", *args.value("--timeframe")},
             {"columns", Json::array()},
             {"rows", Json::array()}};
    for (const ui::ListColumn& column : list.columns()) {
        doc["columns"].push_back(column.caption);
    }
    for (const ui::ListRow& row : list.rows()) {
        Json entry{{"key", row.key},
                   {"checked", row.checked},
                   {"state", browser::rowStatus(type, row)},
                   {"cells", row.cells}};
        if (extra && row.cells.size() >= own + 2) {
            entry["number"] = row.cells[own];
            entry["openBalance"] = row.cells[own + 1];
        }
        doc["rows"].push_back(std::move(entry));
    }
    return doc;
}

int list(CommandContext& ctx, const Invocation& args) {
    int rc = loadList(ctx, args);
    if (rc == kExitOk && args.has("--json")) {
        printJson(listJson(ctx, args), ctx.out);
    } else if (rc == kExitOk) {
        printList(ctx.app.window().list(), ctx.out);
    }
    return rc;
}

int company(CommandContext& ctx, const Invocation& args) {
    auto& company = ctx.app.company();
    company.retrieveCompanyInfo();
    if (!quickBooksReached(ctx)) {
        return reportUnreachable(ctx);
    }
    if (args.has("--json")) {
        printJson(Json{{"company", companyLines(ctx)}}, ctx.out);
    } else {
        printCompany(ctx, ctx.out);
    }
    return company.companyNode() ? kExitOk : kExitFailed;
}

int checkCompanyFields(Invocation& args, std::ostream& err) {
    for (std::size_t i = 0; i < args.operands.size(); i += 2) {
        if (!company::editorField(args.operands[i])) {
            return usageError(args.path, "unknown field '" + args.operands[i] + "'", err);
        }
        if (i + 1 == args.operands.size()) {
            return usageError(args.path, "no VALUE for FIELD '" + args.operands[i] + "'", err);
        }
    }
    return kExitOk;
}

int companySet(CommandContext& ctx, const Invocation& args) {
    auto& company = ctx.app.company();
    TerminalUi::FieldValues values;
    for (std::size_t i = 0; i + 1 < args.operands.size(); i += 2) {
        values.emplace_back(args.operands[i], args.operands[i + 1]);
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

}  // namespace

constexpr Option kListOptions[] = {
    kTimeframeOption,
    {"--open", 0, "",
     "add each document's number (No.) and open balance\n(Open Balance) after the status"},
    {"--unpaid", 0, "", "leave out the documents with nothing open (implies\n--open)"},
    kJsonOption,
};
constexpr Option kCompanyOptions[] = {kJsonOption};

constexpr Command kListCommand{
    .name = "list",
    .synopsis = "TYPE [--timeframe NAME] [--open] [--unpaid] [--json]",
    .summary =
        "list the documents of a type as the window does (Invoice,\n"
        "Estimate, CreditMemo, SalesReceipt, PurchaseOrder, Statement,\n"
        "Timesheet, TimesheetA); NAME is one of the window's timeframes\n"
        "(ThisWeekToDate by default, ..., ALL); both in any case",
    .details =
        "  TYPE: Invoice, Estimate, CreditMemo, SalesReceipt, PurchaseOrder, Statement,\n"
        "        Timesheet (by customer) or TimesheetA (by entity), in any case\n"
        "  Prints a header line, then one line per document: [x] or [ ], the cells\n"
        "  separated by tabs, the status last. The company goes to standard error.\n"
        "  --open (or View OpenBalances 1 in the settings): after the status, the number\n"
        "  and the open balance; estimates, purchase orders and timesheets have none.\n"
        "  --unpaid (or View UnpaidOnly 1): only documents with something open.\n"
        "  --json: the company, TYPE, the timeframe, the columns and per row its key,\n"
        "  check, status and cells (with --open also its number and openBalance).\n",
    .options = kListOptions,
    .minOperands = 1,
    .maxOperands = 1,
    .operandNames = "TYPE",
    .needs = Needs::StartUp,
    .check = checkListArgs,
    .run = list,
};

constexpr Command kCompanySubcommands[] = {
    {.name = "set",
     .synopsis = "FIELD VALUE [FIELD VALUE ...]",
     .summary = "enter or correct the company's record where Dorvane keeps\n"
                "it (the window's company editor)",
     .details =
         "  FIELD: CompanyName, Addr1, Addr2, City, State, Zip, Country, Phone, Fax, Email,\n"
         "  Website (any case). Only Addr2, Fax and Website may stay empty.\n",
     .minOperands = 1,
     .maxOperands = kAnyNumber,
     .operandNames = "FIELD VALUE",
     .needs = Needs::Application,
     .check = checkCompanyFields,
     .run = companySet},
};

constexpr Command kCompanyCommand{
    .name = "company",
    .synopsis = "[--json]",
    .summary = "print the company's name and address",
    .details =
        "  Without a command: the company's name and address, as the window shows them\n"
        "  (--json: as a list of lines).\n",
    .options = kCompanyOptions,
    .needs = Needs::Application,
    .run = company,
    .subcommands = kCompanySubcommands,
    .overview = "company [--json] | company set FIELD VALUE ...",
};

}  // namespace dorvane::cli
