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
#include <string>
#include <string_view>

#include "common/clock.h"

namespace dorvane::imports {

inline constexpr const char* kBatchLogFile = "BatchImport.log";

// One record, line break included.
std::string importLogRecord(std::string_view txnId,
                            std::chrono::system_clock::time_point when = clock::now());

// Whether the log text holds "<TxnID>" + id.
bool importLogHolds(std::string_view log, std::string_view txnId);

// The RecordDate of the first record that matches as importLogHolds does; nullopt when none
// does.
std::optional<std::string> importLogDate(std::string_view log, std::string_view txnId);

}  // namespace dorvane::imports
