// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — one company file: an SQLite database (WAL) with a versioned schema.
//
// Lists (accounts, names, items, terms, payroll items) and transactions with their lines are
// stored as a few indexed columns (what filters need) plus the remaining qbXML fields, keyed by
// their element path ("BillAddress/City", "CustomerRef"). Balances are kept in cents and every
// change a transaction makes to another record is logged, so deleting the transaction undoes
// it. Opening a file migrates an older schema in place. Failures inside throw CompanyFileError;
// the request processor turns them into QuickBooks' error codes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qbsandbox/values.h"

struct sqlite3;
struct sqlite3_stmt;

namespace dorvane::qbsandbox {

class CompanyFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// qbXML fields of a record in element order, keyed by path below the record.
using Fields = std::vector<std::pair<std::string, std::string>>;
const std::string* findField(const Fields& fields, std::string_view key);
std::string fieldOr(const Fields& fields, std::string_view key, std::string fallback = {});
void setField(Fields& fields, std::string_view key, std::string value);
std::string encodeFields(const Fields& fields);
Fields decodeFields(std::string_view text);

struct ListRecord {
    std::int64_t rowid = 0;
    std::string listId;
    std::string kind;  // Customer, Vendor, Account, ItemService, StandardTerms, ...
    std::string name;
    std::string fullName;
    std::string parentId;
    int sublevel = 0;
    bool active = true;
    std::int64_t created = 0;
    std::int64_t modified = 0;
    std::string editSequence;
    std::int64_t balanceCents = 0;
    Fields fields;
};

struct LineRecord {
    std::string kind;  // InvoiceLineRet, ItemGroupLineRet, AppliedToTxnRet, ...
    std::string lineId;
    int seq = 0;
    int parentSeq = -1;  // the group line holding this one
    Fields fields;
};

struct TxnRecord {
    std::int64_t rowid = 0;
    std::string txnId;
    std::string type;  // Invoice, Bill, ...
    std::int64_t txnNumber = 0;
    Date txnDate;
    std::string refNumber;
    std::string entityId;   // customer, vendor, payee or time-tracking entity
    std::string accountId;  // the account the transaction posts to (AR, AP, bank, card)
    std::int64_t created = 0;
    std::int64_t modified = 0;
    std::string editSequence;
    std::int64_t totalCents = 0;
    std::int64_t openCents = 0;     // balance remaining / open amount / unused amount
    std::int64_t appliedCents = 0;  // payments and credits applied (invoices)
    Fields fields;
    std::vector<LineRecord> lines;
};

// The name space a kind's names must be unique in: customers, vendors, employees and other
// names share one, all items share one.
std::string nameSpaceOf(std::string_view kind);

// Owners of SQLite's handles: the connection is closed, the statement finalised.
struct CloseSqlite {
    void operator()(sqlite3* db) const;
};
struct FinalizeSqlite {
    void operator()(sqlite3_stmt* stmt) const;
};

class CompanyFile {
public:
    static constexpr int kSchemaVersion = 2;

    // Opens (and migrates) an existing company file, or creates an empty one. A file that is
    // not a company file is refused (CompanyFileError) and left exactly as it was.
    static std::unique_ptr<CompanyFile> open(const std::filesystem::path& path);
    // Whether `path` holds a company file, looked at without writing to it.
    static bool isCompanyFile(const std::filesystem::path& path);
    static std::unique_ptr<CompanyFile> create(const std::filesystem::path& path);
    ~CompanyFile();
    CompanyFile(const CompanyFile&) = delete;
    CompanyFile& operator=(const CompanyFile&) = delete;

    int schemaVersion();
    const std::filesystem::path& path() const { return m_path; }

    // A prepared statement; columns and parameters count from 0 and 1 as in SQLite.
    class Statement {
    public:
        Statement& bind(int index, std::string_view text);
        Statement& bind(int index, std::int64_t value);
        Statement& bindNull(int index);
        bool step();  // true while a row is available
        void reset();
        std::string text(int column) const;
        std::int64_t integer(int column) const;
        bool isNull(int column) const;

    private:
        friend class CompanyFile;
        Statement(sqlite3_stmt* stmt, sqlite3* db) : m_stmt(stmt), m_db(db) {}
        std::unique_ptr<sqlite3_stmt, FinalizeSqlite> m_stmt;
        sqlite3* m_db;  // for the error messages
    };
    Statement prepare(std::string_view sql);
    void exec(std::string_view sql);

    // Rolls back on destruction unless committed.
    class Transaction {
    public:
        explicit Transaction(CompanyFile& file);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void commit();

    private:
        CompanyFile& m_file;
        bool m_done = false;
    };

    // Unix time used for new records; the demo generator fixes it.
    std::int64_t now() const {
        return m_clock ? m_clock() : static_cast<std::int64_t>(std::time(nullptr));
    }
    void setClock(std::function<std::int64_t()> clock) { m_clock = std::move(clock); }

    std::string setting(std::string_view key, std::string fallback = {});
    void setSetting(std::string_view key, std::string_view value);
    // The settings below a prefix ("Company/", "Preferences/") with the prefix removed.
    Fields settingsUnder(std::string_view prefix);

    std::string newListId(std::int64_t when);
    std::string newTxnId(std::int64_t when);
    std::int64_t newTxnNumber();

    // Inserts the record, minting ListID, times and EditSequence when empty.
    void insertList(ListRecord& record);
    std::optional<ListRecord> listById(std::string_view listId);
    // By full name within a kind, or within the kind's name space when `kind` is a space
    // ("entity", "item", "account", "terms"). Case-insensitive, as QuickBooks compares names.
    std::optional<ListRecord> listByName(std::string_view kindOrSpace, std::string_view fullName);
    std::optional<ListRecord> firstListOfKind(std::string_view kind, std::string_view field = {},
                                              std::string_view value = {});

    void insertTxn(TxnRecord& record);
    std::optional<TxnRecord> txnById(std::string_view txnId, bool withLines = true);
    void loadLines(TxnRecord& record);
    void updateTxnFields(const TxnRecord& record);

    // Balance changes a transaction makes elsewhere; logged against `byTxn` for undo.
    void adjustListBalance(std::string_view listId, std::int64_t deltaCents, std::int64_t byTxn);
    void adjustTxnOpen(std::string_view txnId, std::int64_t deltaOpen, std::int64_t deltaApplied,
                       std::int64_t byTxn);
    // Deletes the transaction of that type and undoes its balance changes; false when absent.
    bool deleteTxn(std::string_view type, std::string_view txnId);

private:
    CompanyFile(std::filesystem::path path, std::unique_ptr<sqlite3, CloseSqlite> db);
    void migrate();
    std::int64_t counter(std::string_view key, std::int64_t first);

    std::filesystem::path m_path;
    std::unique_ptr<sqlite3, CloseSqlite> m_db;
    std::function<std::int64_t()> m_clock;
};

// The schema of a given version, for tests of the migrations.
std::string schemaSql(int version);

// The columns every reader of the lists, transactions and lines selects, and the readers of
// one row selected with them.
extern const char* const kListSelect;  // "SELECT <columns> FROM lists"
extern const char* const kTxnSelect;   // "SELECT <columns> FROM txns"
extern const char* const kLineSelect;  // "SELECT <columns> FROM lines WHERE txn = ? ORDER BY seq"
ListRecord readList(CompanyFile::Statement& s);
TxnRecord readTxn(CompanyFile::Statement& s);
LineRecord readLine(CompanyFile::Statement& s);

}  // namespace dorvane::qbsandbox
