// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane import FILE [--vendor NAME] [--account NAME] [--again]` and
// `dorvane import --receipt FILE|- [--customer NAME] [--again]`: the import window's Import,
// headless.
#include <fstream>
#include <iostream>
#include <iterator>
#include <ostream>
#include <sstream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "cli/terminalui.h"
#include "common/text.h"
#include "import/importwindow.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

struct ImportArgs {
    std::string file;
    bool receipt = false;
    std::optional<std::string> vendor;
    std::optional<std::string> account;
    std::optional<std::string> customer;
    bool again = false;
};

ImportArgs importArgs(const Invocation& args) {
    ImportArgs parsed;
    parsed.receipt = args.has("--receipt");
    parsed.file = parsed.receipt ? *args.value("--receipt") : args.operands.at(0);
    parsed.vendor = args.value("--vendor");
    parsed.account = args.value("--account");
    parsed.customer = args.value("--customer");
    parsed.again = args.has("--again");
    return parsed;
}

std::optional<std::string> readReceipt(const std::string& file, std::ostream& err) {
    std::ostringstream text;
    if (file == "-") {
        text << std::cin.rdbuf();
        return text.str();
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        err << "Cannot read " << file << '\n';
        return std::nullopt;
    }
    text << in.rdbuf();
    return text.str();
}

std::optional<std::size_t> indexNamed(const std::vector<std::string>& names,
                                      std::string_view wanted) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (text::equalsIgnoreCase(names[i], wanted)) {
            return i;
        }
    }
    return std::nullopt;
}

// What a missing record needs, as one line: what QuickBooks lacks and what to set instead.
std::string whatToSet(const imports::MissingRecord& missing) {
    std::string line = imports::describeMissing(missing) + ": ";
    if (missing.settingKey.empty()) {
        return line + (missing.name.empty() ? "add one in QuickBooks"
                                            : "name a bank or credit-card account with --account");
    }
    const std::string value = missing.settingKey == imports::kAccountKey ? "'[TYPE] NAME'" : "NAME";
    return line + "choose one with `dorvane settings set " + imports::kImportSection + " " +
           missing.settingKey + " " + value + "`, or add it in QuickBooks";
}

// Whom the document went to, and how that one was found.
void printCounterpart(imports::ImportWindow& window, const ImportArgs& args,
                      const std::string& sender, std::ostream& out) {
    for (const imports::AddedRecord& added : window.lastReport().added) {
        if (added.noun == "vendor" || added.noun == "customer") {
            out << (added.noun == "vendor" ? "Vendor: " : "Customer: ") << added.name
                << " (created)\n";
            return;
        }
    }
    const imports::CounterpartList& list = window.counterparts();
    if (!args.receipt) {
        if (!list.selected) {
            return;
        }
        const std::string& vendor = list.items[*list.selected];
        out << "Vendor: " << vendor;
        if (args.vendor) {
            out << " (chosen with --vendor)\n";
        } else if (text::equalsIgnoreCase(vendor, sender)) {
            out << " (found)\n";
        } else {
            out << " (found for the sender " << sender << ")\n";
        }
        return;
    }
    const std::string name(text::trim(window.nameText()));
    const auto found = list.findWholeWord(name);
    if (window.importSettings().ignoreAuthNetCustomer || name.empty()) {
        out << "Customer: none\n";
    } else if (found) {
        out << "Customer: " << list.items[*found]
            << (args.customer ? " (named with --customer)\n" : " (found)\n");
    }
}

// "Booked the check 1041 on Checking to Harbor Lane Landscaping, total 45.00".
void printBooked(const imports::AddedRecord& booked, std::ostream& out) {
    out << "Booked the " << booked.noun;
    if (!booked.refNumber.empty()) {
        out << ' ' << booked.refNumber;
    }
    if (!booked.account.empty()) {
        out << " on " << booked.account;
    }
    if (!booked.party.empty()) {
        const bool paid = booked.noun == "check" || booked.noun == "card charge";
        out << (paid                             ? " to "
                : booked.noun == "sales receipt" ? " for "
                                                 : " from ")
            << booked.party;
    }
    if (!booked.total.empty()) {
        out << ", total " << booked.total;
    }
    out << '\n';
}

// The outcome line, and the exit status that goes with it.
int reportOutcome(imports::ImportWindow& window, const ImportArgs& args, const std::string& sender,
                  std::ostream& out) {
    using imports::ImportOutcome;
    const imports::ImportReport& report = window.lastReport();
    if (!report.missing.empty()) {
        for (const imports::MissingRecord& missing : report.missing) {
            out << whatToSet(missing) << '\n';
        }
        out << "Not imported: nothing was written to QuickBooks\n";
        return kExitFailed;
    }
    if (!report.declinedCreation.empty()) {
        const bool vendor = report.declinedCreation == "vendor";
        out << "Not imported: creating the " << report.declinedCreation << " '"
            << report.declinedName << "' needs confirmation: add --yes, or name a "
            << report.declinedCreation << (vendor ? " with --vendor" : " with --customer") << '\n';
        return kExitFailed;
    }
    printCounterpart(window, args, sender, out);
    std::string created;
    for (const imports::AddedRecord& added : report.added) {
        if (added.noun == "vendor" || added.noun == "customer") {
            created =
                "; the " + added.noun + " '" + added.name + "' was created and stays in QuickBooks";
        } else if (window.lastOutcome() == ImportOutcome::Added) {
            printBooked(added, out);
            return kExitOk;
        }
    }
    const std::string status = window.statusText();
    switch (window.lastOutcome()) {
        case ImportOutcome::Added:
            out << status << '\n';
            return kExitOk;
        case ImportOutcome::Refused:
            out << "Not imported: QuickBooks refused it" << created << '\n';
            return kExitFailed;
        case ImportOutcome::Unreachable:
            out << "Not imported: QuickBooks could not be reached" << created << '\n';
            return kExitGateway;
        case ImportOutcome::NotSent:
            if (imports::recogniseKind(window.documentKind()) ==
                    imports::DocumentKind::SalesReceipt &&
                !window.counterparts().selected) {
                out << "Not imported: a sales receipt is booked onto a vendor QuickBooks has: name "
                       "it with --vendor\n";
            } else if (status == "already in QuickBooks" || status == "imported before") {
                out << "Not imported: " << status << " (--again books it again)\n";
            } else {
                out << "Not imported: " << (status.empty() ? "nothing to send" : status) << created
                    << '\n';
            }
            return kExitFailed;
        case ImportOutcome::None:
            break;
    }
    out << "Not imported: the file holds no invoice, estimate, sales receipt or Authorize.Net "
           "receipt\n";
    return kExitFailed;
}

int checkImportArgs(Invocation& args, std::ostream& err) {
    if (args.has("--receipt")) {
        if (!args.operands.empty() || args.has("--vendor") || args.has("--account")) {
            return usageError(args.path, "--receipt takes no exchange file, --vendor or --account",
                              err);
        }
    } else if (args.has("--customer")) {
        return usageError(args.path, "--customer goes with --receipt", err);
    } else if (args.operands.empty()) {
        return usageError(args.path, "missing FILE (or --receipt FILE)", err);
    }
    const ImportArgs parsed = importArgs(args);
    if (const int rc = checkInputFile(parsed.file, err); rc != kExitOk) {
        return rc;
    }
    if (parsed.receipt && !(args.input = readReceipt(parsed.file, err))) {
        return kExitNoInput;
    }
    if (args.input && text::trim(*args.input).empty()) {
        err << "Cannot read standard input: the receipt is empty\n";
        return kExitData;
    }
    return kExitOk;
}

int importDocument(CommandContext& ctx, const Invocation& args, std::ostream& out) {
    const ImportArgs parsed = importArgs(args);
    const std::optional<std::string>& receiptText = args.input;
    imports::ImportWindow& window = ctx.app.importWindow();
    window.setDuplicatePolicy(parsed.again ? imports::DuplicatePolicy::Allow
                                           : imports::DuplicatePolicy::Refuse);
    window.open();
    if (receiptText) {
        window.captureReceiptText(*receiptText);
    } else {
        window.openExchangeFile(parsed.file);
    }
    if (!window.control(imports::kAddItemBtn).visible ||
        !window.control(imports::kAddItemBtn).enabled) {
        out << "Not imported: the file could not be read\n";
        return kExitFailed;
    }
    if (!window.browserFile().empty()) {
        out << "Preview: " << window.browserFile() << '\n';
    }
    if (imports::recogniseKind(window.documentKind()) == imports::DocumentKind::Pda) {
        out << "Not imported: a handheld file is booked by `dorvane handheld import " << parsed.file
            << "`\n";
        return kExitFailed;
    }

    if (parsed.vendor) {
        const auto index = indexNamed(window.counterparts().items, *parsed.vendor);
        if (!index) {
            out << "Not imported: QuickBooks has no vendor named '" << *parsed.vendor << "'\n";
            return kExitFailed;
        }
        window.itemClicked(*index);
    }
    if (parsed.account) {
        std::vector<std::string> names;
        for (const auto& a : window.accounts()) {
            names.push_back(a.name);
        }
        const auto index = indexNamed(names, *parsed.account);
        if (!index) {
            out << "Not imported: no bank or credit-card account named '" << *parsed.account
                << "'; QuickBooks has:";
            for (const auto& n : names) {
                out << " '" << n << "'";
            }
            out << '\n';
            return kExitFailed;
        }
        window.selectAccount(*index);
    }
    if (parsed.customer) {
        window.setNameText(*parsed.customer);
    }
    const std::string sender = window.exchangeDocument().valueOf("//CompanyRet/CompanyName");
    window.importSelectedDocument();
    return reportOutcome(window, parsed, sender, out);
}

// The text of the run, or with --json one document: the lines the text would have, whether it
// was booked, and what was added to QuickBooks.
int import(CommandContext& ctx, const Invocation& args) {
    if (!args.has("--json")) {
        return importDocument(ctx, args, ctx.out);
    }
    std::ostringstream text;
    const int code = importDocument(ctx, args, text);
    const ImportArgs parsed = importArgs(args);
    Json lines = Json::array();
    std::istringstream in(text.str());
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    Json added = Json::array();
    for (const imports::AddedRecord& r : ctx.app.importWindow().lastReport().added) {
        added.push_back(Json{{"kind", r.noun},
                             {"name", r.name},
                             {"refNumber", r.refNumber},
                             {"account", r.account},
                             {"party", r.party},
                             {"total", r.total}});
    }
    printJson(Json{{"file", parsed.file},
                   {"receipt", parsed.receipt},
                   {"booked", code == kExitOk},
                   {"exitStatus", code},
                   {"added", std::move(added)},
                   {"lines", std::move(lines)}},
              ctx.out);
    return code;
}

}  // namespace

constexpr Option kImportOptions[] = {
    {"--vendor", 0, "NAME", "book it onto this vendor"},
    {"--account", 0, "NAME", "the bank or credit-card account that pays a sales\nreceipt"},
    {"--receipt", 0, "FILE", "book an Authorize.Net receipt's text (- for standard\ninput)"},
    {"--customer", 0, "NAME", "the receipt's customer (empty for none)"},
    {"--again", 0, "", "book it even if QuickBooks has it, or it was imported\nbefore"},
    kJsonOption,
};

constexpr Command kImportCommand{
    .name = "import",
    .synopsis =
        "FILE [--vendor NAME] [--account NAME] [--again] [--json]\n"
        "       dorvane import --receipt FILE|- [--customer NAME] [--again] [--json]",
    .summary =
        "book a received exchange file (.dvx): an invoice as a bill, an\n"
        "estimate as a purchase order, a sales receipt as a check or\n"
        "card charge; or an Authorize.Net receipt's text (--receipt) as\n"
        "a sales receipt; exit status 1 when it was not booked",
    .details =
        "  Opens an exchange file (.dvx) as the import window does, prints whom it matched, and\n"
        "  books it: an invoice as a bill, an estimate as a purchase order, a sales receipt as a\n"
        "  check (bank account) or a card charge (credit-card account). --vendor books it onto\n"
        "  that vendor; without it the matched vendor is used, or a new one is created (a\n"
        "  question: answer it with --yes). --account names the account that pays a sales\n"
        "  receipt (the first bank or card account by default).\n"
        "  --receipt reads an Authorize.Net receipt's text from FILE (- for standard input) and\n"
        "  books it as a sales receipt; --customer names the customer (created when QuickBooks\n"
        "  has none of that name; empty for none).\n"
        "  A document QuickBooks already has (same kind, number and vendor), or a receipt\n"
        "  imported before, is booked again only with --again.\n"
        "  It prints the vendor or customer used (found, chosen or created) and the document\n"
        "  booked with its number and total. Before anything is written it checks that\n"
        "  QuickBooks has the item, terms and account the import preferences name.\n"
        "  --json prints one JSON document instead: booked, what was added, and the lines.\n"
        "  Exit status: 0 booked, 1 not booked (refused, a question unanswered, a record the\n"
        "  import preferences name missing, or already there), 2 QuickBooks could not be\n"
        "  reached.\n",
    .options = kImportOptions,
    .maxOperands = 1,
    .needs = Needs::QuickBooks,
    .check = checkImportArgs,
    .run = import,
    .notDone = "Not imported: QuickBooks could not be reached",
    .overview =
        "import FILE [--vendor NAME] [--account NAME] [--again]\n"
        "  import --receipt FILE|- [--customer NAME] [--again]",
};

}  // namespace dorvane::cli
