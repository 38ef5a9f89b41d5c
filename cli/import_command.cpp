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
#include "cli/terminalui.h"
#include "common/text.h"
#include "import/importwindow.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

constexpr const char* kUsage =
    "Usage: dorvane import FILE [--vendor NAME] [--account NAME] [--again]\n"
    "       dorvane import --receipt FILE|- [--customer NAME] [--again]\n"
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
    "  Exit status: 0 booked, 1 not booked (refused, a question unanswered, a record the\n"
    "  import preferences name missing, or already there), 2 QuickBooks could not be\n"
    "  reached.\n";

struct ImportArgs {
    std::string file;
    bool receipt = false;
    std::optional<std::string> vendor;
    std::optional<std::string> account;
    std::optional<std::string> customer;
    bool again = false;
};

// Takes "--name VALUE" and "--name=VALUE".
bool takeValue(const Args& args, std::size_t& i, std::string_view name,
               std::optional<std::string>& value) {
    const std::string& a = args[i];
    if (a == name && i + 1 < args.size()) {
        value = args[++i];
        return true;
    }
    if (a.size() > name.size() && a.starts_with(name) && a[name.size()] == '=') {
        value = a.substr(name.size() + 1);
        return true;
    }
    return false;
}

std::optional<ImportArgs> parse(const Args& args, std::ostream& err) {
    ImportArgs parsed;
    std::optional<std::string> receiptFile;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (takeValue(args, i, "--receipt", receiptFile) ||
            takeValue(args, i, "--vendor", parsed.vendor) ||
            takeValue(args, i, "--account", parsed.account) ||
            takeValue(args, i, "--customer", parsed.customer)) {
            continue;
        }
        if (a == "--again") {
            parsed.again = true;
        } else if (parsed.file.empty() && !receiptFile && (a == "-" || !a.starts_with("--"))) {
            parsed.file = a;
        } else {
            err << "dorvane: unexpected '" << a << "'\n" << kUsage;
            return std::nullopt;
        }
    }
    if (receiptFile) {
        if (!parsed.file.empty() || parsed.vendor || parsed.account) {
            err << "dorvane: --receipt takes no exchange file, --vendor or --account\n" << kUsage;
            return std::nullopt;
        }
        parsed.file = *receiptFile;
        parsed.receipt = true;
    } else if (parsed.customer) {
        err << "dorvane: --customer goes with --receipt\n" << kUsage;
        return std::nullopt;
    }
    if (parsed.file.empty()) {
        err << kUsage;
        return std::nullopt;
    }
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

}  // namespace

int importCommand(CommandContext& ctx, const Args& args) {
    const std::optional<ImportArgs> parsed = parse(args, ctx.err);
    if (!parsed) {
        return kExitUsage;
    }
    if (const int rc = checkInputFile(parsed->file, ctx.err); rc != kExitOk) {
        return rc;
    }
    std::optional<std::string> receiptText;
    if (parsed->receipt && !(receiptText = readReceipt(parsed->file, ctx.err))) {
        return kExitNoInput;
    }
    if (receiptText && text::trim(*receiptText).empty()) {
        ctx.err << "Cannot read standard input: the receipt is empty\n";
        return kExitData;
    }
    if (!startUp(ctx)) {
        ctx.out << "Not imported: QuickBooks could not be reached\n";
        return kExitGateway;
    }
    imports::ImportWindow& window = ctx.app.importWindow();
    window.setDuplicatePolicy(parsed->again ? imports::DuplicatePolicy::Allow
                                            : imports::DuplicatePolicy::Refuse);
    window.open();
    if (receiptText) {
        window.captureReceiptText(*receiptText);
    } else {
        window.openExchangeFile(parsed->file);
    }
    if (!window.control(imports::kAddItemBtn).visible ||
        !window.control(imports::kAddItemBtn).enabled) {
        ctx.out << "Not imported: the file could not be read\n";
        return kExitFailed;
    }
    if (!window.browserFile().empty()) {
        ctx.out << "Preview: " << window.browserFile() << '\n';
    }
    if (imports::recogniseKind(window.documentKind()) == imports::DocumentKind::Pda) {
        ctx.out << "Not imported: a handheld file is booked by `dorvane handheld import "
                << parsed->file << "`\n";
        return kExitFailed;
    }

    if (parsed->vendor) {
        const auto index = indexNamed(window.counterparts().items, *parsed->vendor);
        if (!index) {
            ctx.out << "Not imported: QuickBooks has no vendor named '" << *parsed->vendor << "'\n";
            return kExitFailed;
        }
        window.itemClicked(*index);
    }
    if (parsed->account) {
        std::vector<std::string> names;
        for (const auto& a : window.accounts()) {
            names.push_back(a.name);
        }
        const auto index = indexNamed(names, *parsed->account);
        if (!index) {
            ctx.out << "Not imported: no bank or credit-card account named '" << *parsed->account
                    << "'; QuickBooks has:";
            for (const auto& n : names) {
                ctx.out << " '" << n << "'";
            }
            ctx.out << '\n';
            return kExitFailed;
        }
        window.selectAccount(*index);
    }
    if (parsed->customer) {
        window.setNameText(*parsed->customer);
    }
    const std::string sender = window.exchangeDocument().valueOf("//CompanyRet/CompanyName");
    window.importSelectedDocument();
    return reportOutcome(window, *parsed, sender, ctx.out);
}

}  // namespace dorvane::cli
