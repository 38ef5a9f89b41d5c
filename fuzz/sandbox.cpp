// SPDX-License-Identifier: GPL-3.0-or-later
// A qbXML request file as `dorvane request FILE` sends it: through the gateway (its traces in
// the program folder) to the sandbox QuickBooks, which answers it against the demo company it
// makes for a new user.
//
// Every input meets the company as it was made. The demo company is made once and copied into
// memory; after an input that changed the file (SQLite's data_version tells), the copy is
// written back over it through SQLite's backup API. The sandbox keeps its own connection to the
// file open between requests and sees the restored company as it sees another process's
// change. Today is fixed, so the company and the date macros are the same on every run.
#include "qbsandbox/sandbox.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <sqlite3.h>

#include "fuzzkit.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbsandbox/state.h"
#include "quietui.h"

using namespace dorvane;

namespace {

struct CloseDatabase {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

[[noreturn]] void fail(const std::string& what, sqlite3* db) {
    std::fprintf(stderr, "%s: %s\n", what.c_str(), db ? sqlite3_errmsg(db) : "out of memory");
    std::abort();
}

Database openDatabase(const std::string& path) {
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    Database db(raw);
    if (rc != SQLITE_OK) {
        fail("cannot open " + path, db.get());
    }
    sqlite3_busy_timeout(db.get(), 5000);
    return db;
}

void exec(sqlite3* db, const char* sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(sql, db);
    }
}

sqlite3_int64 dataVersion(sqlite3* db) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, "PRAGMA data_version", -1, &stmt, nullptr) != SQLITE_OK ||
        sqlite3_step(stmt) != SQLITE_ROW) {
        sqlite3_finalize(stmt);
        fail("PRAGMA data_version", db);
    }
    const sqlite3_int64 version = sqlite3_column_int64(stmt, 0);
    sqlite3_finalize(stmt);
    return version;
}

void copyDatabase(sqlite3* to, sqlite3* from) {
    sqlite3_backup* backup = sqlite3_backup_init(to, "main", from, "main");
    if (backup == nullptr) {
        fail("backup", to);
    }
    const int stepped = sqlite3_backup_step(backup, -1);
    if (sqlite3_backup_finish(backup) != SQLITE_OK || stepped != SQLITE_DONE) {
        fail("backup", to);
    }
}

class Fixture {
public:
    Fixture() {
        ::setenv("DORVANE_TODAY", "2026-11-18", 1);
        ::setenv("DORVANE_SANDBOX_DIR", (fuzz::scratch() / "sandbox").c_str(), 1);
        ::unsetenv("DORVANE_SANDBOX_FAULTS");
        m_sandbox = qbsandbox::stateFolder();
        // The first request makes the demo company and opens it, as for a new user.
        (void)answer(
            "<?xml version=\"1.0\" ?><?qbxml version=\"13.0\"?><QBXML><QBXMLMsgsRq "
            "onError=\"stopOnError\"><HostQueryRq/></QBXMLMsgsRq></QBXML>");
        const auto state = qbsandbox::readState(m_sandbox);
        if (!state || state->company.empty()) {
            std::fprintf(stderr, "the sandbox made no demo company\n");
            std::abort();
        }
        m_company = openDatabase(state->company);
        // This connection only puts the company back: a checkpoint of its own need not wait
        // for the disk.
        exec(m_company.get(), "PRAGMA synchronous=OFF");
        m_pristine = openDatabase(":memory:");
        copyDatabase(m_pristine.get(), m_company.get());
        m_version = dataVersion(m_company.get());
        restore();
    }

    std::string answer(const std::string& request) {
        qbgateway::Gateway gateway(m_folder, m_ui, qbsandbox::processorFactory());
        return gateway.processRequest(request);
    }

    // The company as it was made, and no log of refused requests left over.
    void restore() {
        if (dataVersion(m_company.get()) != m_version) {
            copyDatabase(m_company.get(), m_pristine.get());
            exec(m_company.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
            m_version = dataVersion(m_company.get());
        }
        std::error_code ignored;
        std::filesystem::remove(m_sandbox / "qbsdklog.txt", ignored);
    }

private:
    platform::ProgramFolder m_folder{fuzz::programFolder()};
    testkit::QuietUi m_ui{0};
    std::filesystem::path m_sandbox;
    Database m_company;
    Database m_pristine;
    sqlite3_int64 m_version = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fixture fixture;
    (void)fixture.answer(std::string(fuzz::text(data, size)));
    fixture.restore();
    return 0;
}
