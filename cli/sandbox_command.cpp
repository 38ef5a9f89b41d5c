// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane sandbox ...`: switching the embedded QuickBooks between its states and files.
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "common/files.h"
#include "qbsandbox/companyfile.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/load.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"

namespace dorvane::cli {

namespace {

namespace sb = dorvane::qbsandbox;
namespace fs = std::filesystem;

int save(const fs::path& folder, const sb::SandboxState& state, std::ostream& err) {
    if (auto written = sb::writeState(folder, state); !written) {
        err << "Could not save the sandbox state: " << written.error().description << "\n";
        return kExitFailed;
    }
    return kExitOk;
}

bool parseCount(const std::string& text, int& value) {
    char* end = nullptr;
    long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || v < 0 || v > 10000000) {
        return false;
    }
    value = static_cast<int>(v);
    return true;
}

const char* const kOperations[] = {"OpenConnection", "BeginSession", "GetCurrentCompanyFileName",
                                   "ProcessRequest", "EndSession",   "CloseConnection"};

bool knownOperation(const std::string& op) {
    for (const char* o : kOperations) {
        if (op == o) {
            return true;
        }
    }
    return false;
}

int status(const fs::path& folder, std::ostream& out, std::ostream& err) {
    auto state = sb::currentState(folder);
    if (!state) {
        err << state.error().description << "\n";
        return kExitFailed;
    }
    out << "QuickBooks: " << (state->running ? "running" : "not running") << "\n";
    if (state->running) {
        out << "Company file: "
            << (state->company.empty() ? std::string("(none open)") : state->company.string())
            << "\n";
    }
    out << "State folder: " << folder.string() << "\n";
    for (const auto& f : sb::readFaults(folder)) {
        out << "Injected: next " << f.remaining << " " << f.operation;
        if (f.code) {
            char code[16];
            std::snprintf(code, sizeof code, "0x%08X", f.code);
            out << " fail with " << code;
        }
        if (f.delayMs) {
            out << " after " << f.delayMs << " ms";
        }
        out << "\n";
    }
    return kExitOk;
}

int openCompany(const fs::path& folder, const fs::path& path, std::ostream& out,
                std::ostream& err) {
    try {
        sb::CompanyFile::open(path);
    } catch (const std::exception& e) {
        err << "Could not open the company file: " << e.what() << "\n";
        return kExitFailed;
    }
    int rc = save(folder, {true, path, path}, err);
    if (rc == kExitOk) {
        out << "QuickBooks is running with " << path.string() << " open.\n";
    }
    return rc;
}

int newCompany(const Invocation& args, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    const std::string& file = args.operands[0];
    bool demo = args.has("--demo");
    const bool force = args.has("--force");
    sb::DemoOptions options;
    for (const auto& [option, value] : args.given) {
        if (option != "--customers" && option != "--invoices") {
            continue;
        }
        int n = 0;
        if (!parseCount(value, n) || n < 1) {
            err << option << " needs a positive number\n";
            return kExitUsage;
        }
        (option == "--customers" ? options.customers : options.invoices) = n;
        demo = true;
    }
    fs::path path = fs::absolute(file);
    std::error_code ec;
    if (fs::exists(fs::symlink_status(path, ec)) || fs::exists(path, ec)) {
        if (!sb::CompanyFile::isCompanyFile(path)) {
            err << path.string()
                << " exists and is not a company file: it is left as it is. Choose another "
                   "name.\n";
            return kExitFailed;
        }
        if (!force) {
            err << path.string()
                << " is a company file already: `dorvane sandbox open` opens it; add --force to "
                   "replace it with a new one (its records are lost).\n";
            return kExitFailed;
        }
    }
    try {
        if (demo) {
            sb::createDemoCompany(path, options);
        } else {
            sb::createEmptyCompany(path, path.stem().string());
        }
    } catch (const std::exception& e) {
        err << "Could not create the company file: " << e.what() << "\n";
        return kExitFailed;
    }
    out << "Created " << path.string() << (demo ? " (demo company)" : "") << ".\n";
    return openCompany(folder, path, out, err);
}

int load(const Invocation& args, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    const std::string& file = args.operands[0];
    if (const int rc = checkInputFile(file, err); rc != kExitOk) {
        return rc;
    }
    auto state = sb::currentState(folder);
    if (!state || !state->running || state->company.empty()) {
        err << "No company file is open; open one with `dorvane sandbox open FILE` first.\n";
        return kExitFailed;
    }
    auto text = files::readAll(file);
    if (!text) {
        err << "Cannot read " << file << ": " << text.error().description << "\n";
        return kExitNoInput;
    }
    try {
        auto company = sb::CompanyFile::open(state->company);
        auto report = sb::loadResponse(*company, *text);
        if (!report) {
            err << report.error().description << "\n";
            return kExitFailed;
        }
        out << "Loaded " << report->lists << " list entries and " << report->transactions
            << " transactions into " << state->company.string();
        if (report->skipped) {
            out << " (" << report->skipped << " already present or not understood, skipped)";
        }
        out << ".\n";
    } catch (const std::exception& e) {
        err << "Could not load the response: " << e.what() << "\n";
        return kExitFailed;
    }
    return kExitOk;
}

int inject(const Invocation& invocation, bool delayOnly, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    const Args& args = invocation.operands;
    auto usage = [&](std::string message) { return usageError(invocation.path, message, err); };
    if (!delayOnly && args.size() == 1 && args[0] == "clear") {
        if (auto w = sb::writeFaults(folder, {}); !w) {
            err << w.error().description << "\n";
            return kExitFailed;
        }
        out << "No failures injected.\n";
        return kExitOk;
    }
    if (!knownOperation(args[0])) {
        return usage("unknown OPERATION '" + args[0] + "'");
    }
    if (args.size() < 3) {
        const char* missing = delayOnly ? "MS" : "CODE";
        return usage(std::string("missing ") + (args.size() == 1 ? "N " : "") + missing);
    }
    sb::Fault fault;
    fault.operation = args[0];
    if (!parseCount(args[1], fault.remaining) || fault.remaining < 1) {
        return usage("N must be a positive number");
    }
    if (delayOnly) {
        if (!parseCount(args[2], fault.delayMs)) {
            return usage("MS must be a number of milliseconds");
        }
    } else {
        char* end = nullptr;
        unsigned long code = std::strtoul(args[2].c_str(), &end, 0);
        if (*end != '\0' || code == 0 || code > 0xFFFFFFFFul) {
            err << "CODE must be a number such as 0x80040408\n";
            return kExitUsage;
        }
        fault.code = static_cast<std::uint32_t>(code);
        if (const auto delay = invocation.value("--delay");
            delay && !parseCount(*delay, fault.delayMs)) {
            return usage("--delay needs a number of milliseconds");
        }
    }
    auto faults = sb::readFaults(folder);
    faults.push_back(fault);
    if (auto w = sb::writeFaults(folder, faults); !w) {
        err << w.error().description << "\n";
        return kExitFailed;
    }
    out << "The next " << fault.remaining << " " << fault.operation << " call"
        << (fault.remaining == 1 ? "" : "s") << (fault.code ? " will fail." : " will be delayed.")
        << "\n";
    return kExitOk;
}

// A company file named without a folder is looked for here, then where the sandbox keeps its
// company files.
int openNamed(const Invocation& args, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    const fs::path named = args.operands[0];
    std::error_code ec;
    fs::path path = fs::absolute(named);
    if (!fs::exists(path, ec) && named.is_relative()) {
        for (const fs::path& candidate : {folder / named, folder / (named.string() + ".dvq")}) {
            if (fs::exists(candidate, ec)) {
                path = candidate;
                break;
            }
        }
    }
    if (!fs::exists(path, ec)) {
        err << "dorvane sandbox open: no company file '" << named.string() << "' in "
            << fs::absolute(named).parent_path().string()
            << (named.is_relative() ? " nor in " + folder.string() : std::string())
            << "; `dorvane sandbox new FILE` creates one\n";
        return kExitNoInput;
    }
    return openCompany(folder, path, out, err);
}

int showStatus(const Invocation&, std::ostream& out, std::ostream& err) {
    return status(sb::stateFolder(), out, err);
}

// Closing or stopping keeps which company file was open, for the messages that say how to
// open it again.
fs::path lastCompany(const fs::path& folder) {
    const auto state = sb::readState(folder);
    return !state ? fs::path() : state->company.empty() ? state->last : state->company;
}

int closeCompany(const Invocation&, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    int rc = save(folder, {true, {}, lastCompany(folder)}, err);
    if (rc == kExitOk) {
        out << "QuickBooks is running with no company file open.\n";
    }
    return rc;
}

int stopQuickBooks(const Invocation&, std::ostream& out, std::ostream& err) {
    const fs::path folder = sb::stateFolder();
    int rc = save(folder, {false, {}, lastCompany(folder)}, err);
    if (rc == kExitOk) {
        out << "QuickBooks is not running.\n";
    }
    return rc;
}

int injectFailure(const Invocation& args, std::ostream& out, std::ostream& err) {
    return inject(args, false, out, err);
}

int injectDelay(const Invocation& args, std::ostream& out, std::ostream& err) {
    return inject(args, true, out, err);
}

constexpr Option kNewOptions[] = {
    {"--demo", 0, "", "the demo company instead of an empty one"},
    {"--customers", 0, "N", "the demo company's number of customers"},
    {"--invoices", 0, "N", "the demo company's number of invoices"},
    {"--force", 0, "", "replace a company file of that name (its records are lost)"},
};

constexpr Option kFailOptions[] = {
    {"--delay", 0, "MS", "and answer after MS milliseconds"},
};

constexpr const char* kOperationsText =
    "  OPERATION is OpenConnection, BeginSession, GetCurrentCompanyFileName,\n"
    "  ProcessRequest, EndSession or CloseConnection.\n";

constexpr Command kSandboxSubcommands[] = {
    {.name = "status", .summary = "what the sandbox QuickBooks is doing", .runAlone = showStatus},
    {.name = "open",
     .synopsis = "FILE",
     .summary = "start QuickBooks with this company file open",
     .details =
         "  A FILE not in the current folder is looked for in the sandbox's folder (with or\n"
         "  without .dvq).\n",
     .minOperands = 1,
     .maxOperands = 1,
     .operandNames = "FILE",
     .runAlone = openNamed},
    {.name = "close",
     .summary = "keep QuickBooks running with no company file open",
     .runAlone = closeCompany},
    {.name = "stop",
     .summary = "QuickBooks not running (connections fail)",
     .runAlone = stopQuickBooks},
    {.name = "new",
     .synopsis = "FILE [--demo] [--customers N] [--invoices N] [--force]",
     .summary = "create a company file (empty, or the demo company) and open\n"
                "it; an existing company file is replaced only with --force,\n"
                "any other file never",
     .options = kNewOptions,
     .minOperands = 1,
     .maxOperands = 1,
     .operandNames = "FILE",
     .runAlone = newCompany},
    {.name = "load",
     .synopsis = "RESPONSE.xml",
     .summary = "add the records of a captured qbXML response to the open\ncompany",
     .minOperands = 1,
     .maxOperands = 1,
     .operandNames = "RESPONSE.xml",
     .runAlone = load},
    {.name = "fail",
     .synopsis = "OPERATION N CODE [--delay MS] | clear",
     .summary = "the next N calls of OPERATION fail with CODE (e.g.\n"
                "0x80040408); clear drops every injected failure",
     .details = kOperationsText,
     .options = kFailOptions,
     .minOperands = 1,
     .maxOperands = 3,
     .operandNames = "OPERATION N CODE",
     .runAlone = injectFailure},
    {.name = "delay",
     .synopsis = "OPERATION N MS",
     .summary = "the next N calls of OPERATION answer after MS milliseconds",
     .details = kOperationsText,
     .minOperands = 3,
     .maxOperands = 3,
     .operandNames = "OPERATION N MS",
     .runAlone = injectDelay},
};

}  // namespace

constexpr Command kSandboxCommand{
    .name = "sandbox",
    .summary =
        "the embedded QuickBooks: status | open FILE | close | stop |\n"
        "new FILE [--demo] [--customers N] [--invoices N] | load FILE.xml\n"
        "(dorvane sandbox help tells more)",
    .details =
        "  The state lives in $DORVANE_SANDBOX_DIR, else $XDG_DATA_HOME/dorvane/sandbox,\n"
        "  beside the demo company's file.\n",
    .subcommands = kSandboxSubcommands,
    .overview = "sandbox ...",
};

}  // namespace dorvane::cli
