// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the sent log: which documents went out already.
//
// "EmailsSent.log" in the program folder is a run of records
// "<Type><TxnID>id</TxnID><SentDate>when</SentDate></Type>" CR LF. It is searched as text,
// never parsed: a document counts as sent when the text holds "<TxnID>" directly followed by
// its TxnID, so an identifier that begins a logged one matches too.
//
// A copy that test mode sent to the test address is noted as
// "<TestType><TestTxnID>id</TestTxnID><SentTo>address</SentTo><SentDate>when</SentDate>
// </TestType>" CR LF: on record, but never "<TxnID>", so the document still reads as not sent
// and its customer gets it from the next run outside test mode.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "common/clock.h"

namespace dorvane::browser {

inline constexpr const char* kSentLogFile = "EmailsSent.log";

// One record for a document that went out, line break included.
std::string sentRecord(std::string_view txnId, std::string_view type,
                       std::chrono::system_clock::time_point when = clock::now());

// One record for a copy that test mode sent to `testAddress` instead of the recipient, line
// break included. Identifier and address are escaped, so no text inside can read as a record.
std::string testSentRecord(std::string_view txnId, std::string_view type,
                           std::string_view testAddress,
                           std::chrono::system_clock::time_point when = clock::now());

// Appends one record for a document that went out.
void appendSentRecord(std::string& sentLog, std::string_view txnId, std::string_view type,
                      std::chrono::system_clock::time_point when = clock::now());

// The date and time of a record: the local short date, a blank and the long time.
std::string sentDateText(std::chrono::system_clock::time_point when);

// Answers "does the log hold '<TxnID>' + id?" for many ids in O(log n) each, with the same
// answers as a plain substring search of the text.
class SentLogIndex {
public:
    explicit SentLogIndex(std::string_view sentLog);
    bool contains(std::string_view txnId) const;

private:
    std::string_view m_log;
    std::vector<std::string_view> m_suffixes;  // text after each "<TxnID>", sorted
};

}  // namespace dorvane::browser
