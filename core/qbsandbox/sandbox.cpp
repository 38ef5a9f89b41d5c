// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/sandbox.h"

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <random>
#include <sys/stat.h>
#include <thread>

#include "qbsandbox/companyfile.h"
#include "qbsandbox/engine.h"
#include "qbsandbox/state.h"

namespace dorvane::qbsandbox {

namespace {

using qbgateway::processorError;

Error fault(std::uint32_t code) {
    return processorError(code, hresultText(code));
}

std::string newTicket() {
    std::random_device rd;
    std::mt19937_64 gen((static_cast<std::uint64_t>(rd()) << 32) ^ rd());
    std::uniform_int_distribution<unsigned> hex(0, 15);
    std::string t = "{";
    for (int i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20) {
            t += '-';
        }
        t += "0123456789ABCDEF"[hex(gen)];
    }
    return t + "}";
}

// One connection to the open company file per process: closing the last connection of a WAL
// database checkpoints it with two disk flushes, which would dominate every request. The
// connection is opened again when another file appears at the path (a new company).
class CompanyCache {
public:
    template <class Fn>
    auto with(const std::filesystem::path& path, Fn&& fn) {
        std::lock_guard guard(m_mutex);
        struct stat st {};
        if (::stat(path.c_str(), &st) != 0) {
            m_file.reset();
            throw CompanyFileError("no company file at " + path.string());
        }
        if (!m_file || m_path != path || st.st_ino != m_inode || st.st_dev != m_device) {
            m_file.reset();
            m_file = CompanyFile::open(path);
            m_path = path;
            m_inode = st.st_ino;
            m_device = st.st_dev;
        }
        return fn(*m_file);
    }

private:
    std::mutex m_mutex;
    std::unique_ptr<CompanyFile> m_file;
    std::filesystem::path m_path;
    ino_t m_inode = 0;
    dev_t m_device = 0;
};

CompanyCache& companyCache() {
    static CompanyCache cache;
    return cache;
}

class SandboxProcessor final : public qbgateway::RequestProcessor {
public:
    explicit SandboxProcessor(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    Status openConnection(const std::string&, const std::string&) override {
        if (auto f = injected("OpenConnection")) {
            return *f;
        }
        auto state = currentState(m_folder);
        if (!state) {
            logToSdkLog(m_folder, state.error().description);
            return fault(0x80040408);
        }
        if (!state->running) {
            return fault(qbgateway::kErrCouldNotStart);
        }
        m_connected = true;
        return {};
    }

    Result<std::string> beginSession(const std::string& companyFile, qbgateway::FileMode) override {
        if (auto f = injected("BeginSession")) {
            return *f;
        }
        if (!m_connected) {
            return fault(0x80040401);
        }
        auto state = currentState(m_folder);
        if (!state) {
            return fault(0x80040401);
        }
        SandboxState s = *state;
        if (!s.running) {
            return fault(qbgateway::kErrCouldNotStart);
        }
        std::filesystem::path wanted =
            companyFile.empty() ? std::filesystem::path() : std::filesystem::absolute(companyFile);
        if (s.company.empty()) {
            if (wanted.empty()) {
                return fault(qbgateway::kErrNoCompanyFile);
            }
            if (!usable(wanted)) {
                return fault(0x80040403);
            }
            s.company = wanted;
            (void)writeState(m_folder, s);
        } else if (!wanted.empty() && wanted != s.company) {
            return fault(0x8004040A);
        }
        if (!usable(s.company)) {
            return fault(0x80040403);
        }
        m_company = s.company;
        m_ticket = newTicket();
        return m_ticket;
    }

    Result<std::string> getCurrentCompanyFileName(const std::string& ticket) override {
        if (auto f = injected("GetCurrentCompanyFileName")) {
            return *f;
        }
        if (!validTicket(ticket)) {
            return fault(qbgateway::kErrTicket);
        }
        return m_company.string();
    }

    Result<std::string> processRequest(const std::string& ticket,
                                       const std::string& request) override {
        if (auto f = injected("ProcessRequest")) {
            return *f;
        }
        if (!validTicket(ticket)) {
            return fault(qbgateway::kErrTicket);
        }
        try {
            std::string trace;
            auto answer = companyCache().with(
                m_company, [&](CompanyFile& file) { return answerMessage(file, request, &trace); });
            if (!answer) {
                logToSdkLog(m_folder, answer.error().description + " " + trace);
            } else if (!trace.empty()) {
                logToSdkLog(m_folder, trace);
            }
            return answer;
        } catch (const std::exception& e) {
            logToSdkLog(m_folder, e.what());
            return fault(0x80040402);
        }
    }

    Status endSession(const std::string& ticket) override {
        if (auto f = injected("EndSession")) {
            return *f;
        }
        if (!validTicket(ticket)) {
            return fault(qbgateway::kErrTicket);
        }
        m_ticket.clear();
        return {};
    }

    Status closeConnection() override {
        if (auto f = injected("CloseConnection")) {
            return *f;
        }
        m_connected = false;
        m_ticket.clear();
        return {};
    }

private:
    std::optional<Error> injected(const std::string& operation) {
        auto f = takeFault(m_folder, operation);
        if (!f) {
            return std::nullopt;
        }
        if (f->delayMs > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(f->delayMs));
        }
        if (f->code == 0) {
            return std::nullopt;
        }
        return processorError(f->code, hresultText(f->code));
    }

    bool validTicket(const std::string& ticket) const {
        return m_connected && !m_ticket.empty() && ticket == m_ticket;
    }

    static bool usable(const std::filesystem::path& company) {
        try {
            return companyCache().with(company, [](CompanyFile&) { return true; });
        } catch (const std::exception&) {
            return false;
        }
    }

    std::filesystem::path m_folder;
    std::filesystem::path m_company;
    std::string m_ticket;
    bool m_connected = false;
};

}  // namespace

std::filesystem::path stateFolder() {
    if (const char* dir = std::getenv("DORVANE_SANDBOX_DIR"); dir && *dir) {
        return dir;
    }
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) {
        return std::filesystem::path(data) / "dorvane" / "sandbox";
    }
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home ? home : ".") / ".local" / "share" / "dorvane" / "sandbox";
}

qbgateway::ProcessorFactory processorFactory() {
    return []() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
        return std::unique_ptr<qbgateway::RequestProcessor>(new SandboxProcessor(stateFolder()));
    };
}

qbgateway::ProcessorFactory processorFactory(std::filesystem::path folder) {
    return [folder = std::move(folder)]() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
        return std::unique_ptr<qbgateway::RequestProcessor>(new SandboxProcessor(folder));
    };
}

}  // namespace dorvane::qbsandbox
