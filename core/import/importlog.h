// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — "BatchImport.log": the Authorize.Net transactions already booked.
//
// The file is a run of records
// "<AuthNetBatchImport><TxnID>id</TxnID><RecordDate>when</RecordDate></AuthNetBatchImport>"
// CR LF, searched as text and never parsed. A transaction counts as imported when the text
// holds "<TxnID>" directly followed by its ID, so an ID that begins a logged one counts too.
// Receipts pasted one at a time are recorded exactly as the batch import records its own.
#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "common/clock.h"

namespace dorvane::imports {

inline constexpr const char* kBatchLogFile = "BatchImport.log";

// One record, line break included.
std::string importLogRecord(std::string_view txnId,
                            std::chrono::system_clock::time_point when = clock::now());

// Whether the log text holds "<TxnID>" + id. A blank ID is never held.
bool importLogHolds(std::string_view log, std::string_view txnId);

// The RecordDate of the first record that matches as importLogHolds does; nullopt when none
// does.
std::optional<std::string> importLogDate(std::string_view log, std::string_view txnId);

// The log's answers for many IDs against a growing log, each in O(log n), the same as
// importLogHolds gives on the whole text read so far (line breaks left out, as a program file
// is read).
class ImportLogIndex {
public:
    // Takes in more of the log, as it follows what was added before.
    void add(std::string_view text);
    // As importLogHolds: "<TxnID>" followed by `txnId` somewhere, so an ID that begins a
    // logged one counts too.
    bool holds(std::string_view txnId) const;
    // Whether a record holds exactly this ID.
    bool holdsExactly(std::string_view txnId) const;
    std::size_t size() const { return m_ids.size() + (m_open ? 1 : 0); }

private:
    std::string m_text;                        // the log without line breaks
    std::set<std::string, std::less<>> m_ids;  // text after each "<TxnID>" up to a "<"
    std::optional<std::string> m_open;         // the last one, when no "<" followed yet
    std::size_t m_scanFrom = 0;
};

}  // namespace dorvane::imports
