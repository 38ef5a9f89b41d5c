// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/companyfile.h"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string_view>

#include <sqlite3.h>

namespace dorvane::qbsandbox {

namespace {

using Database = std::unique_ptr<sqlite3, CloseSqlite>;
using PreparedStatement = std::unique_ptr<sqlite3_stmt, FinalizeSqlite>;

[[noreturn]] void fail(sqlite3* handle, std::string_view what) {
    throw CompanyFileError(std::string(what) + ": " + (handle ? sqlite3_errmsg(handle) : "?"));
}

// Version 1: lists, transactions and lines.
const char* const kSchemaV1 = R"(
CREATE TABLE schema_version(version INTEGER NOT NULL);
CREATE TABLE settings(key TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE lists(
  id INTEGER PRIMARY KEY, list_id TEXT NOT NULL UNIQUE, kind TEXT NOT NULL, ns TEXT NOT NULL,
  name TEXT NOT NULL, full_name TEXT NOT NULL, parent_id TEXT, sublevel INTEGER NOT NULL DEFAULT 0,
  is_active INTEGER NOT NULL DEFAULT 1, time_created INTEGER NOT NULL, time_modified INTEGER NOT NULL,
  edit_sequence TEXT NOT NULL, balance INTEGER NOT NULL DEFAULT 0, fields TEXT NOT NULL DEFAULT '');
CREATE UNIQUE INDEX lists_name ON lists(ns, full_name COLLATE NOCASE);
CREATE INDEX lists_kind ON lists(kind, full_name COLLATE NOCASE);
CREATE TABLE txns(
  id INTEGER PRIMARY KEY, txn_id TEXT NOT NULL UNIQUE, type TEXT NOT NULL, txn_number INTEGER,
  txn_date TEXT NOT NULL, ref_number TEXT, entity_id TEXT, account_id TEXT,
  time_created INTEGER NOT NULL, time_modified INTEGER NOT NULL, edit_sequence TEXT NOT NULL,
  total INTEGER NOT NULL DEFAULT 0, open_amount INTEGER NOT NULL DEFAULT 0,
  fields TEXT NOT NULL DEFAULT '');
CREATE INDEX txns_date ON txns(type, txn_date, id);
CREATE INDEX txns_ref ON txns(type, ref_number COLLATE NOCASE);
CREATE INDEX txns_entity ON txns(entity_id);
CREATE TABLE lines(
  id INTEGER PRIMARY KEY, txn INTEGER NOT NULL, seq INTEGER NOT NULL, parent_seq INTEGER NOT NULL,
  kind TEXT NOT NULL, line_id TEXT NOT NULL, fields TEXT NOT NULL DEFAULT '');
CREATE INDEX lines_txn ON lines(txn, seq);
)";

// Version 2: applied amounts in their own column, and the log of balance changes that lets
// a transaction be deleted cleanly.
const char* const kMigrateV1toV2 = R"(
ALTER TABLE txns ADD COLUMN applied INTEGER NOT NULL DEFAULT 0;
UPDATE txns SET applied = open_amount - total WHERE type = 'Invoice';
CREATE TABLE effects(
  txn INTEGER NOT NULL, target TEXT NOT NULL, target_id TEXT NOT NULL,
  delta INTEGER NOT NULL, delta_applied INTEGER NOT NULL DEFAULT 0);
CREATE INDEX effects_txn ON effects(txn);
)";

const char kFieldSep = '\x1f';
const char kRecordSep = '\x1e';

}  // namespace

const char* const kListSelect =
    "SELECT id, list_id, kind, name, full_name, parent_id, sublevel, is_active, time_created, "
    "time_modified, edit_sequence, balance, fields FROM lists";
const char* const kTxnSelect =
    "SELECT id, txn_id, type, txn_number, txn_date, ref_number, entity_id, account_id, "
    "time_created, time_modified, edit_sequence, total, open_amount, applied, fields FROM txns";
const char* const kLineSelect =
    "SELECT seq, parent_seq, kind, line_id, fields FROM lines WHERE txn = ? ORDER BY seq";

ListRecord readList(CompanyFile::Statement& s) {
    ListRecord r;
    r.rowid = s.integer(0);
    r.listId = s.text(1);
    r.kind = s.text(2);
    r.name = s.text(3);
    r.fullName = s.text(4);
    r.parentId = s.text(5);
    r.sublevel = static_cast<int>(s.integer(6));
    r.active = s.integer(7) != 0;
    r.created = s.integer(8);
    r.modified = s.integer(9);
    r.editSequence = s.text(10);
    r.balanceCents = s.integer(11);
    r.fields = decodeFields(s.text(12));
    return r;
}

TxnRecord readTxn(CompanyFile::Statement& s) {
    TxnRecord r;
    r.rowid = s.integer(0);
    r.txnId = s.text(1);
    r.type = s.text(2);
    r.txnNumber = s.integer(3);
    r.txnDate = Date::parse(s.text(4)).value_or(Date{});
    r.refNumber = s.text(5);
    r.entityId = s.text(6);
    r.accountId = s.text(7);
    r.created = s.integer(8);
    r.modified = s.integer(9);
    r.editSequence = s.text(10);
    r.totalCents = s.integer(11);
    r.openCents = s.integer(12);
    r.appliedCents = s.integer(13);
    r.fields = decodeFields(s.text(14));
    return r;
}

LineRecord readLine(CompanyFile::Statement& s) {
    LineRecord l;
    l.seq = static_cast<int>(s.integer(0));
    l.parentSeq = static_cast<int>(s.integer(1));
    l.kind = s.text(2);
    l.lineId = s.text(3);
    l.fields = decodeFields(s.text(4));
    return l;
}

const std::string* findField(const Fields& fields, std::string_view key) {
    for (const auto& [k, v] : fields) {
        if (k == key) {
            return &v;
        }
    }
    return nullptr;
}

std::string fieldOr(const Fields& fields, std::string_view key, std::string fallback) {
    const std::string* v = findField(fields, key);
    return v ? *v : std::move(fallback);
}

void setField(Fields& fields, std::string_view key, std::string value) {
    for (auto& [k, v] : fields) {
        if (k == key) {
            v = std::move(value);
            return;
        }
    }
    fields.emplace_back(std::string(key), std::move(value));
}

std::string encodeFields(const Fields& fields) {
    std::string out;
    for (const auto& [k, v] : fields) {
        out += k;
        out += kFieldSep;
        for (char c : v) {
            out += (c == kFieldSep || c == kRecordSep) ? ' ' : c;
        }
        out += kRecordSep;
    }
    return out;
}

Fields decodeFields(std::string_view text) {
    Fields fields;
    while (!text.empty()) {
        auto end = text.find(kRecordSep);
        std::string_view record = text.substr(0, end);
        auto sep = record.find(kFieldSep);
        if (sep != std::string_view::npos) {
            fields.emplace_back(std::string(record.substr(0, sep)),
                                std::string(record.substr(sep + 1)));
        }
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
    return fields;
}

std::string nameSpaceOf(std::string_view kind) {
    if (kind == "Customer" || kind == "Vendor" || kind == "Employee" || kind == "OtherName") {
        return "entity";
    }
    if (kind.rfind("Item", 0) == 0) {
        return "item";
    }
    if (kind == "StandardTerms" || kind == "DateDrivenTerms") {
        return "terms";
    }
    if (kind == "Account") {
        return "account";
    }
    return std::string(kind);
}

std::string schemaSql(int version) {
    std::string sql = kSchemaV1;
    if (version >= 2) {
        sql += kMigrateV1toV2;
    }
    return sql;
}

void CloseSqlite::operator()(sqlite3* db) const {
    sqlite3_close_v2(db);
}

void FinalizeSqlite::operator()(sqlite3_stmt* stmt) const {
    sqlite3_finalize(stmt);
}

// --- Statement -------------------------------------------------------------------------------

CompanyFile::Statement& CompanyFile::Statement::bind(int index, std::string_view text) {
    if (sqlite3_bind_text(m_stmt.get(), index, text.data(), static_cast<int>(text.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        fail(m_db, "bind");
    }
    return *this;
}

CompanyFile::Statement& CompanyFile::Statement::bind(int index, std::int64_t value) {
    if (sqlite3_bind_int64(m_stmt.get(), index, value) != SQLITE_OK) {
        fail(m_db, "bind");
    }
    return *this;
}

CompanyFile::Statement& CompanyFile::Statement::bindNull(int index) {
    sqlite3_bind_null(m_stmt.get(), index);
    return *this;
}

bool CompanyFile::Statement::step() {
    int rc = sqlite3_step(m_stmt.get());
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc == SQLITE_DONE) {
        return false;
    }
    fail(m_db, "step");
}

void CompanyFile::Statement::reset() {
    sqlite3_reset(m_stmt.get());
    sqlite3_clear_bindings(m_stmt.get());
}

std::string CompanyFile::Statement::text(int column) const {
    const unsigned char* t = sqlite3_column_text(m_stmt.get(), column);
    if (!t) {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(t),
                       static_cast<std::size_t>(sqlite3_column_bytes(m_stmt.get(), column)));
}

std::int64_t CompanyFile::Statement::integer(int column) const {
    return sqlite3_column_int64(m_stmt.get(), column);
}

bool CompanyFile::Statement::isNull(int column) const {
    return sqlite3_column_type(m_stmt.get(), column) == SQLITE_NULL;
}

// --- Transaction -----------------------------------------------------------------------------

CompanyFile::Transaction::Transaction(CompanyFile& file) : m_file(file) {
    m_file.exec("BEGIN IMMEDIATE");
}

CompanyFile::Transaction::~Transaction() {
    if (!m_done) {
        sqlite3_exec(m_file.m_db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void CompanyFile::Transaction::commit() {
    m_file.exec("COMMIT");
    m_done = true;
}

// --- CompanyFile -----------------------------------------------------------------------------

CompanyFile::CompanyFile(std::filesystem::path path, Database db)
    : m_path(std::move(path)), m_db(std::move(db)) {}

CompanyFile::~CompanyFile() = default;

namespace {

Database openHandle(const std::filesystem::path& path, int flags) {
    sqlite3* raw = nullptr;
    int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
    Database handle(raw);  // SQLite hands out a connection to close even when it fails
    if (rc != SQLITE_OK) {
        std::string message = handle ? sqlite3_errmsg(handle.get()) : "out of memory";
        throw CompanyFileError("cannot open " + path.string() + ": " + message);
    }
    sqlite3_busy_timeout(handle.get(), 5000);

    sqlite3_exec(handle.get(), "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", nullptr,
                 nullptr, nullptr);
    return handle;
}

}  // namespace

bool CompanyFile::isCompanyFile(const std::filesystem::path& path) {
    // SQLite takes an empty file for an empty database and would write into it: only a file
    // that starts as a database is opened at all, and then read-only.
    constexpr std::string_view kMagic("SQLite format 3\0", 16);
    std::ifstream in(path, std::ios::binary);
    char head[16] = {};
    if (!in.read(head, sizeof head) || std::string_view(head, sizeof head) != kMagic) {
        return false;
    }
    sqlite3* raw = nullptr;
    int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
    Database handle(raw);
    if (rc != SQLITE_OK) {
        return false;
    }
    sqlite3_stmt* prepared = nullptr;
    rc = sqlite3_prepare_v2(handle.get(),
                            "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = "
                            "'schema_version'",
                            -1, &prepared, nullptr);
    PreparedStatement s(prepared);
    return rc == SQLITE_OK && sqlite3_step(s.get()) == SQLITE_ROW;
}

std::unique_ptr<CompanyFile> CompanyFile::open(const std::filesystem::path& path) {
    if (!std::filesystem::exists(path)) {
        throw CompanyFileError("no company file at " + path.string());
    }
    if (!isCompanyFile(path)) {
        throw CompanyFileError(path.string() + " is not a Dorvane company file");
    }
    std::unique_ptr<CompanyFile> file(
        new CompanyFile(path, openHandle(path, SQLITE_OPEN_READWRITE)));
    file->migrate();
    return file;
}

std::unique_ptr<CompanyFile> CompanyFile::create(const std::filesystem::path& path) {
    std::error_code ec;
    std::filesystem::remove(path, ec);
    std::filesystem::remove(path.string() + "-wal", ec);
    std::filesystem::remove(path.string() + "-shm", ec);
    std::unique_ptr<CompanyFile> file(
        new CompanyFile(path, openHandle(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)));
    Transaction t(*file);
    file->exec(schemaSql(kSchemaVersion));
    file->exec("INSERT INTO schema_version(version) VALUES (" + std::to_string(kSchemaVersion) +
               ")");
    t.commit();
    return file;
}

int CompanyFile::schemaVersion() {
    auto s = prepare("SELECT version FROM schema_version");
    return s.step() ? static_cast<int>(s.integer(0)) : 0;
}

void CompanyFile::migrate() {
    int version = 0;
    try {
        version = schemaVersion();
    } catch (const CompanyFileError&) {
        throw CompanyFileError(m_path.string() + " is not a Dorvane company file");
    }
    if (version == kSchemaVersion) {
        return;
    }
    if (version < 1 || version > kSchemaVersion) {
        throw CompanyFileError(m_path.string() + " has an unknown schema version " +
                               std::to_string(version));
    }
    Transaction t(*this);
    if (version < 2) {
        exec(kMigrateV1toV2);
    }
    exec("UPDATE schema_version SET version = " + std::to_string(kSchemaVersion));
    t.commit();
}

CompanyFile::Statement CompanyFile::prepare(std::string_view sql) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(m_db.get(), sql.data(), static_cast<int>(sql.size()), &stmt, nullptr) !=
        SQLITE_OK) {
        fail(m_db.get(), "prepare");
    }
    return Statement(stmt, m_db.get());
}

void CompanyFile::exec(std::string_view sql) {
    std::string text(sql);
    char* message = nullptr;
    if (sqlite3_exec(m_db.get(), text.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
        std::string reason = message ? message : "?";
        sqlite3_free(message);
        throw CompanyFileError("SQL failed: " + reason);
    }
}

std::string CompanyFile::setting(std::string_view key, std::string fallback) {
    auto s = prepare("SELECT value FROM settings WHERE key = ?");
    s.bind(1, key);
    return s.step() ? s.text(0) : std::move(fallback);
}

void CompanyFile::setSetting(std::string_view key, std::string_view value) {
    auto s = prepare(
        "INSERT INTO settings(key, value) VALUES (?, ?) "
        "ON CONFLICT(key) DO UPDATE SET value = excluded.value");
    s.bind(1, key).bind(2, value);
    s.step();
}

Fields CompanyFile::settingsUnder(std::string_view prefix) {
    auto s = prepare("SELECT key, value FROM settings WHERE substr(key, 1, ?) = ? ORDER BY rowid");
    s.bind(1, static_cast<std::int64_t>(prefix.size())).bind(2, prefix);
    Fields out;
    while (s.step()) {
        out.emplace_back(s.text(0).substr(prefix.size()), s.text(1));
    }
    return out;
}

std::int64_t CompanyFile::counter(std::string_view key, std::int64_t first) {
    std::int64_t value = std::stoll(setting(key, std::to_string(first)));
    setSetting(key, std::to_string(value + 1));
    return value;
}

std::string CompanyFile::newListId(std::int64_t when) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%08llX-%lld",
                  static_cast<unsigned long long>(counter("counter/list", 0x80000001LL)),
                  static_cast<long long>(when));
    return buf;
}

std::string CompanyFile::newTxnId(std::int64_t when) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%llX-%lld",
                  static_cast<unsigned long long>(counter("counter/txn", 1)),
                  static_cast<long long>(when));
    return buf;
}

std::int64_t CompanyFile::newTxnNumber() {
    return counter("counter/txnNumber", 1);
}

void CompanyFile::insertList(ListRecord& r) {
    if (r.created == 0) {
        r.created = now();
    }
    if (r.modified == 0) {
        r.modified = r.created;
    }
    if (r.listId.empty()) {
        r.listId = newListId(r.created);
    }
    if (r.editSequence.empty()) {
        r.editSequence = std::to_string(r.modified);
    }
    if (r.fullName.empty()) {
        r.fullName = r.name;
    }
    auto s = prepare(
        "INSERT INTO lists(list_id, kind, ns, name, full_name, parent_id, sublevel, is_active, "
        "time_created, time_modified, edit_sequence, balance, fields) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    s.bind(1, r.listId).bind(2, r.kind).bind(3, nameSpaceOf(r.kind)).bind(4, r.name);
    s.bind(5, r.fullName);
    if (r.parentId.empty()) {
        s.bindNull(6);
    } else {
        s.bind(6, r.parentId);
    }
    s.bind(7, static_cast<std::int64_t>(r.sublevel)).bind(8, static_cast<std::int64_t>(r.active));
    s.bind(9, r.created).bind(10, r.modified).bind(11, r.editSequence).bind(12, r.balanceCents);
    s.bind(13, encodeFields(r.fields));
    s.step();
    r.rowid = sqlite3_last_insert_rowid(m_db.get());
}

std::optional<ListRecord> CompanyFile::listById(std::string_view listId) {
    auto s = prepare(std::string(kListSelect) + " WHERE list_id = ?");
    s.bind(1, listId);
    if (!s.step()) {
        return std::nullopt;
    }
    return readList(s);
}

std::optional<ListRecord> CompanyFile::listByName(std::string_view kindOrSpace,
                                                  std::string_view fullName) {
    bool space = kindOrSpace == "entity" || kindOrSpace == "item" || kindOrSpace == "account" ||
                 kindOrSpace == "terms";
    auto s = prepare(std::string(kListSelect) + " WHERE " + (space ? "ns" : "kind") +
                     " = ? AND full_name = ? COLLATE NOCASE");
    s.bind(1, kindOrSpace).bind(2, fullName);
    if (!s.step()) {
        return std::nullopt;
    }
    return readList(s);
}

std::optional<ListRecord> CompanyFile::firstListOfKind(std::string_view kind,
                                                       std::string_view field,
                                                       std::string_view value) {
    auto s = prepare(std::string(kListSelect) + " WHERE kind = ? AND is_active = 1 ORDER BY id");
    s.bind(1, kind);
    while (s.step()) {
        ListRecord r = readList(s);
        if (field.empty() || fieldOr(r.fields, field) == value) {
            return r;
        }
    }
    return std::nullopt;
}

void CompanyFile::insertTxn(TxnRecord& r) {
    if (r.created == 0) {
        r.created = now();
    }
    if (r.modified == 0) {
        r.modified = r.created;
    }
    if (r.txnId.empty()) {
        r.txnId = newTxnId(r.created);
    }
    if (r.editSequence.empty()) {
        r.editSequence = std::to_string(r.modified);
    }
    if (r.txnNumber == 0) {
        r.txnNumber = newTxnNumber();
    }
    auto s = prepare(
        "INSERT INTO txns(txn_id, type, txn_number, txn_date, ref_number, entity_id, account_id, "
        "time_created, time_modified, edit_sequence, total, open_amount, applied, fields) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    s.bind(1, r.txnId).bind(2, r.type).bind(3, r.txnNumber).bind(4, r.txnDate.text());
    if (r.refNumber.empty()) {
        s.bindNull(5);
    } else {
        s.bind(5, r.refNumber);
    }
    s.bind(6, r.entityId).bind(7, r.accountId).bind(8, r.created).bind(9, r.modified);
    s.bind(10, r.editSequence)
        .bind(11, r.totalCents)
        .bind(12, r.openCents)
        .bind(13, r.appliedCents);
    s.bind(14, encodeFields(r.fields));
    s.step();
    r.rowid = sqlite3_last_insert_rowid(m_db.get());
    auto line = prepare(
        "INSERT INTO lines(txn, seq, parent_seq, kind, line_id, fields) VALUES (?, ?, ?, ?, ?, ?)");
    for (auto& l : r.lines) {
        if (l.lineId.empty()) {
            l.lineId = newTxnId(r.created);
        }
        line.bind(1, r.rowid).bind(2, static_cast<std::int64_t>(l.seq));
        line.bind(3, static_cast<std::int64_t>(l.parentSeq)).bind(4, l.kind).bind(5, l.lineId);
        line.bind(6, encodeFields(l.fields));
        line.step();
        line.reset();
    }
}

std::optional<TxnRecord> CompanyFile::txnById(std::string_view txnId, bool withLines) {
    auto s = prepare(std::string(kTxnSelect) + " WHERE txn_id = ?");
    s.bind(1, txnId);
    if (!s.step()) {
        return std::nullopt;
    }
    TxnRecord r = readTxn(s);
    if (withLines) {
        loadLines(r);
    }
    return r;
}

void CompanyFile::loadLines(TxnRecord& r) {
    auto s = prepare(kLineSelect);
    s.bind(1, r.rowid);
    r.lines.clear();
    while (s.step()) {
        r.lines.push_back(readLine(s));
    }
}

void CompanyFile::updateTxnFields(const TxnRecord& r) {
    auto s = prepare("UPDATE txns SET fields = ? WHERE txn_id = ?");
    s.bind(1, encodeFields(r.fields)).bind(2, r.txnId);
    s.step();
}

void CompanyFile::adjustListBalance(std::string_view listId, std::int64_t deltaCents,
                                    std::int64_t byTxn) {
    if (listId.empty() || deltaCents == 0) {
        return;
    }
    auto s = prepare("UPDATE lists SET balance = balance + ? WHERE list_id = ?");
    s.bind(1, deltaCents).bind(2, listId);
    s.step();
    if (byTxn) {
        auto e =
            prepare("INSERT INTO effects(txn, target, target_id, delta) VALUES (?, 'list', ?, ?)");
        e.bind(1, byTxn).bind(2, listId).bind(3, deltaCents);
        e.step();
    }
}

void CompanyFile::adjustTxnOpen(std::string_view txnId, std::int64_t deltaOpen,
                                std::int64_t deltaApplied, std::int64_t byTxn) {
    auto s = prepare(
        "UPDATE txns SET open_amount = open_amount + ?, applied = applied + ? WHERE txn_id = ?");
    s.bind(1, deltaOpen).bind(2, deltaApplied).bind(3, txnId);
    s.step();
    if (byTxn) {
        auto e = prepare(
            "INSERT INTO effects(txn, target, target_id, delta, delta_applied) "
            "VALUES (?, 'txn', ?, ?, ?)");
        e.bind(1, byTxn).bind(2, txnId).bind(3, deltaOpen).bind(4, deltaApplied);
        e.step();
    }
}

bool CompanyFile::deleteTxn(std::string_view type, std::string_view txnId) {
    auto find = prepare("SELECT id FROM txns WHERE txn_id = ? AND type = ?");
    find.bind(1, txnId).bind(2, type);
    if (!find.step()) {
        return false;
    }
    std::int64_t rowid = find.integer(0);
    auto effects =
        prepare("SELECT target, target_id, delta, delta_applied FROM effects WHERE txn = ?");
    effects.bind(1, rowid);
    while (effects.step()) {
        if (effects.text(0) == "list") {
            adjustListBalance(effects.text(1), -effects.integer(2), 0);
        } else {
            adjustTxnOpen(effects.text(1), -effects.integer(2), -effects.integer(3), 0);
        }
    }
    for (const char* sql : {"DELETE FROM effects WHERE txn = ?", "DELETE FROM lines WHERE txn = ?",
                            "DELETE FROM txns WHERE id = ?"}) {
        auto del = prepare(sql);
        del.bind(1, rowid);
        del.step();
    }
    return true;
}

}  // namespace dorvane::qbsandbox
