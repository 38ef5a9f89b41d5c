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

constexpr const char* kUsage =
    "usage: dorvane sandbox COMMAND\n"
    "  status                      what the sandbox QuickBooks is doing\n"
    "  open FILE                   start QuickBooks with this company file open\n"
    "  close                       keep QuickBooks running with no company file open\n"
    "  stop                        QuickBooks not running (connections fail)\n"
    "  new FILE [--demo] [--customers N] [--invoices N] [--force]\n"
    "                              create a company file (empty, or the demo company) and open\n"
    "                              it; an existing company file is replaced only with --force,\n"
    "                              any other file never\n"
    "  load RESPONSE.xml           add the records of a captured qbXML response to the open "
    "company\n"
    "  fail OPERATION N CODE [--delay MS]\n"
    "                              the next N calls of OPERATION fail with CODE (e.g. 0x80040408)\n"
    "  delay OPERATION N MS        the next N calls of OPERATION answer after MS milliseconds\n"
    "  fail clear                  drop every injected failure\n"
    "OPERATION is OpenConnection, BeginSession, GetCurrentCompanyFileName, ProcessRequest,\n"
    "EndSession or CloseConnection. The state lives in $DORVANE_SANDBOX_DIR, else\n"
    "$XDG_DATA_HOME/dorvane/sandbox.\n";

int usage(std::ostream& err) {
    err << kUsage;
    return kExitUsage;
}

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

int openCompany(const fs::path& folder, const std::string& file, std::ostream& out,
                std::ostream& err) {
    fs::path path = fs::absolute(file);
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

int newCompany(const fs::path& folder, const std::vector<std::string>& args, std::ostream& out,
               std::ostream& err) {
    std::string file;
    bool demo = false;
    bool force = false;
    sb::DemoOptions options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--demo") {
            demo = true;
        } else if (a == "--force") {
            force = true;
        } else if ((a == "--customers" || a == "--invoices") && i + 1 < args.size()) {
            int n = 0;
            if (!parseCount(args[++i], n) || n < 1) {
                err << a << " needs a positive number\n";
                return kExitUsage;
            }
            (a == "--customers" ? options.customers : options.invoices) = n;
            demo = true;
        } else if (!a.empty() && a[0] != '-' && file.empty()) {
            file = a;
        } else {
            return usage(err);
        }
    }
    if (file.empty()) {
        return usage(err);
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
    return openCompany(folder, path.string(), out, err);
}

int load(const fs::path& folder, const std::string& file, std::ostream& out, std::ostream& err) {
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

int inject(const fs::path& folder, const std::vector<std::string>& args, bool delayOnly,
           std::ostream& out, std::ostream& err) {
    if (!delayOnly && args.size() == 1 && args[0] == "clear") {
        if (auto w = sb::writeFaults(folder, {}); !w) {
            err << w.error().description << "\n";
            return kExitFailed;
        }
        out << "No failures injected.\n";
        return kExitOk;
    }
    if (args.size() < 3 || !knownOperation(args[0])) {
        return usage(err);
    }
    sb::Fault fault;
    fault.operation = args[0];
    if (!parseCount(args[1], fault.remaining) || fault.remaining < 1) {
        return usage(err);
    }
    if (delayOnly) {
        if (!parseCount(args[2], fault.delayMs) || args.size() != 3) {
            return usage(err);
        }
    } else {
        char* end = nullptr;
        unsigned long code = std::strtoul(args[2].c_str(), &end, 0);
        if (*end != '\0' || code == 0 || code > 0xFFFFFFFFul) {
            err << "CODE must be a number such as 0x80040408\n";
            return kExitUsage;
        }
        fault.code = static_cast<std::uint32_t>(code);
        if (args.size() == 5 && args[3] == "--delay") {
            if (!parseCount(args[4], fault.delayMs)) {
                return usage(err);
            }
        } else if (args.size() != 3) {
            return usage(err);
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

}  // namespace

int sandboxCommand(const Args& args, std::ostream& out, std::ostream& err) {
    if (args.empty()) {
        return usage(err);
    }
    const std::string& command = args[0];
    std::vector<std::string> rest(args.begin() + 1, args.end());
    fs::path folder = sb::stateFolder();
    if (command == "help" || command == "--help") {
        out << kUsage;
        return kExitOk;
    }
    if (command == "status" && rest.empty()) {
        return status(folder, out, err);
    }
    if (command == "open" && rest.size() == 1) {
        return openCompany(folder, rest[0], out, err);
    }
    // Closing or stopping keeps which company file was open, for the messages that say how to
    // open it again.
    auto last = [&] {
        const auto state = sb::readState(folder);
        return !state ? fs::path() : state->company.empty() ? state->last : state->company;
    };
    if (command == "close" && rest.empty()) {
        int rc = save(folder, {true, {}, last()}, err);
        if (rc == kExitOk) {
            out << "QuickBooks is running with no company file open.\n";
        }
        return rc;
    }
    if (command == "stop" && rest.empty()) {
        int rc = save(folder, {false, {}, last()}, err);
        if (rc == kExitOk) {
            out << "QuickBooks is not running.\n";
        }
        return rc;
    }
    if (command == "new") {
        return newCompany(folder, rest, out, err);
    }
    if (command == "load" && rest.size() == 1) {
        return load(folder, rest[0], out, err);
    }
    if (command == "fail") {
        return inject(folder, rest, false, out, err);
    }
    if (command == "delay") {
        return inject(folder, rest, true, out, err);
    }
    return usage(err);
}

}  // namespace dorvane::cli
