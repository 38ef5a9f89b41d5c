// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/state.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

#include "common/fd.h"
#include "common/files.h"
#include "common/text.h"
#include "qbsandbox/demo.h"

namespace dorvane::qbsandbox {

namespace {

std::filesystem::path statePath(const std::filesystem::path& folder) {
    return folder / "state.ini";
}
std::filesystem::path faultsPath(const std::filesystem::path& folder) {
    return folder / "faults.ini";
}

// Serialises read-modify-write of the folder's files across processes.
class FolderLock {
public:
    explicit FolderLock(const std::filesystem::path& folder) {
        std::error_code ec;
        std::filesystem::create_directories(folder, ec);
        m_fd.reset(::open((folder / ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        if (m_fd) {
            ::flock(m_fd.get(), LOCK_EX);
        }
    }
    ~FolderLock() {
        if (m_fd) {
            ::flock(m_fd.get(), LOCK_UN);
        }
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    UniqueFd m_fd;
};

}  // namespace

std::optional<SandboxState> readState(const std::filesystem::path& folder) {
    auto text = files::readAll(statePath(folder));
    if (!text) {
        return std::nullopt;
    }
    SandboxState state;
    for (const auto& line : text::split(*text, '\n')) {
        auto eq = line.find('=');
        if (eq == std::string::npos) {
            continue;
        }
        std::string key(text::trim(line.substr(0, eq)));
        std::string value(text::trim(line.substr(eq + 1)));
        if (key == "running") {
            state.running = value == "true";
        } else if (key == "company") {
            state.company = value;
        } else if (key == "last") {
            state.last = value;
        }
    }
    return state;
}

Status writeState(const std::filesystem::path& folder, const SandboxState& state) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    const std::filesystem::path& last = state.company.empty() ? state.last : state.company;
    std::string text = "[QuickBooks]\nrunning=" + std::string(state.running ? "true" : "false") +
                       "\ncompany=" + state.company.string() + "\nlast=" + last.string() + "\n";
    return files::writeAtomically(statePath(folder), text);
}

std::filesystem::path demoCompanyPath(const std::filesystem::path& folder) {
    return folder / "Demo Company.dvq";
}

Result<SandboxState> currentState(const std::filesystem::path& folder) {
    if (auto state = readState(folder)) {
        return *state;
    }
    FolderLock lock(folder);
    if (auto state = readState(folder)) {
        return *state;
    }
    try {
        DemoOptions options;
        createDemoCompany(demoCompanyPath(folder), options);
    } catch (const std::exception& e) {
        return Error{-1, std::string("Could not create the demo company: ") + e.what()};
    }
    SandboxState state{true, demoCompanyPath(folder), demoCompanyPath(folder)};
    if (auto written = writeState(folder, state); !written) {
        return written.error();
    }
    return state;
}

void logToSdkLog(const std::filesystem::path& folder, const std::string& line) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    std::ofstream log(folder / "qbsdklog.txt", std::ios::app);
    std::time_t now = std::time(nullptr);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d.%H%M%S", std::localtime(&now));
    log << stamp << "\tERROR\t" << line << "\n";
}

std::vector<Fault> parseFaults(const std::string& text) {
    std::vector<Fault> faults;
    for (const auto& item : text::split(text, ',')) {
        auto parts = text::split(std::string(text::trim(item)), ':');
        if (parts.size() < 3 || parts[0].empty()) {
            continue;
        }
        Fault f;
        f.operation = parts[0];
        f.remaining = std::atoi(parts[1].c_str());
        const std::string& what = parts[2];
        if (what.rfind("delay=", 0) == 0) {
            f.delayMs = std::atoi(what.c_str() + 6);
        } else {
            f.code = static_cast<std::uint32_t>(std::strtoul(what.c_str(), nullptr, 0));
        }
        if (parts.size() > 3 && parts[3].rfind("delay=", 0) == 0) {
            f.delayMs = std::atoi(parts[3].c_str() + 6);
        }
        if (f.remaining > 0) {
            faults.push_back(f);
        }
    }
    return faults;
}

std::vector<Fault> readFaults(const std::filesystem::path& folder) {
    auto text = files::readAll(faultsPath(folder));
    if (!text) {
        return {};
    }
    std::string joined;
    for (const auto& line : text::split(*text, '\n')) {
        if (!text::trim(line).empty()) {
            joined += std::string(text::trim(line)) + ",";
        }
    }
    return parseFaults(joined);
}

Status writeFaults(const std::filesystem::path& folder, const std::vector<Fault>& faults) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    std::ostringstream out;
    for (const auto& f : faults) {
        if (f.remaining <= 0) {
            continue;
        }
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", f.code);
        out << f.operation << ":" << f.remaining << ":"
            << (f.code ? std::string(code) : "delay=" + std::to_string(f.delayMs));
        if (f.code && f.delayMs) {
            out << ":delay=" << f.delayMs;
        }
        out << "\n";
    }
    return files::writeAtomically(faultsPath(folder), out.str());
}

std::optional<Fault> takeFault(const std::filesystem::path& folder, const std::string& operation) {
    if (const char* env = std::getenv("DORVANE_SANDBOX_FAULTS"); env && *env) {
        static std::mutex mutex;
        static std::map<std::string, std::vector<Fault>> perText;
        std::lock_guard guard(mutex);
        auto [it, inserted] = perText.try_emplace(env);
        if (inserted) {
            it->second = parseFaults(env);
        }
        for (auto& f : it->second) {
            if (f.operation == operation && f.remaining > 0) {
                --f.remaining;
                return f;
            }
        }
    }
    if (!std::filesystem::exists(faultsPath(folder))) {
        return std::nullopt;
    }
    FolderLock lock(folder);
    auto faults = readFaults(folder);
    for (auto& f : faults) {
        if (f.operation == operation && f.remaining > 0) {
            Fault taken = f;
            --f.remaining;
            (void)writeFaults(folder, faults);
            return taken;
        }
    }
    return std::nullopt;
}

std::string hresultText(std::uint32_t code) {
    static const std::map<std::uint32_t, const char*> texts = {
        {0x80040400, "QuickBooks found an error when parsing the provided XML text stream."},
        {0x80040401, "Could not access QuickBooks."},
        {0x80040402,
         "Unexpected error. Check the qbsdklog.txt file for possible, additional information."},
        {0x80040403, "Could not open the specified QuickBooks company data file."},
        {0x80040408, "Could not start QuickBooks."},
        {0x8004040A,
         "QuickBooks company data file is already open and it is different from the one "
         "requested."},
        {0x8004040D, "The ticket parameter is invalid."},
        {0x80040410,
         "The QuickBooks company data file is currently open in a mode other than the one "
         "specified by your application."},
        {0x80040414,
         "A modal dialog box is showing in the QuickBooks user interface. Your application cannot "
         "access QuickBooks until the user dismisses the dialog box."},
        {0x80040416,
         "If the QuickBooks company data file is not open, a call to the \"BeginSession\" method "
         "must include the name of the data file."},
        {0x80040418,
         "This application has not accessed this QuickBooks company data file before. Only the "
         "QuickBooks administrator can grant an application permission to access a QuickBooks "
         "company data file for the first time."},
        {0x8004041A,
         "This application does not have permission to access this QuickBooks company data file. "
         "The QuickBooks administrator can grant access permission through the Integrated "
         "Application preferences."},
        {0x8004041B,
         "Unable to lock the necessary information to allow this application to access this "
         "company data file. Try again later."},
        {0x8004041C,
         "An internal QuickBooks error occurred while trying to access the QuickBooks company data "
         "file."},
        {0x80040420, "The QuickBooks user has denied access."},
        {0x80040422,
         "This application requires Single User file access mode and there is already another "
         "application sharing data with this QuickBooks company data file."},
        {0x80040423, "The version of QBXML that was requested is not supported or is unknown."},
        {0x80040424, "QuickBooks did not finish its initialization. Please try again later."},
    };
    auto it = texts.find(code);
    return it == texts.end() ? "Unexpected error." : it->second;
}

}  // namespace dorvane::qbsandbox
