// SPDX-License-Identifier: GPL-3.0-or-later
#include "browser/sentlog.h"

#include <algorithm>
#include <ctime>

#include "xml/xml.h"

namespace dorvane::browser {
namespace {
constexpr std::string_view kTxnTag = "<TxnID>";
}

std::string sentDateText(std::chrono::system_clock::time_point when) {
    return clock::localDateTimeText(when);
}

std::string sentRecord(std::string_view txnId, std::string_view type,
                       std::chrono::system_clock::time_point when) {
    std::string record = "<";
    record += type;
    record += "><TxnID>";
    record += txnId;
    record += "</TxnID><SentDate>";
    record += sentDateText(when);
    record += "</SentDate></";
    record += type;
    record += ">\r\n";
    return record;
}

std::string testSentRecord(std::string_view txnId, std::string_view type,
                           std::string_view testAddress,
                           std::chrono::system_clock::time_point when) {
    // Escaped as element text: '<' never reaches the file, so neither "<TxnID>" nor a record
    // of any kind can hide in the pieces.
    std::string record = "<Test";
    record += type;
    record += "><TestTxnID>";
    record += xml::escapeText(txnId);
    record += "</TestTxnID><SentTo>";
    record += xml::escapeText(testAddress);
    record += "</SentTo><SentDate>";
    record += sentDateText(when);
    record += "</SentDate></Test";
    record += type;
    record += ">\r\n";
    return record;
}

void appendSentRecord(std::string& sentLog, std::string_view txnId, std::string_view type,
                      std::chrono::system_clock::time_point when) {
    sentLog += sentRecord(txnId, type, when);
}

SentLogIndex::SentLogIndex(std::string_view sentLog) : m_log(sentLog) {
    for (std::size_t p = sentLog.find(kTxnTag); p != std::string_view::npos;
         p = sentLog.find(kTxnTag, p + 1)) {
        m_suffixes.push_back(sentLog.substr(p + kTxnTag.size()));
    }
    std::sort(m_suffixes.begin(), m_suffixes.end());
}

bool SentLogIndex::contains(std::string_view txnId) const {
    // Suffixes that start with the id sort right at or after the id itself.
    auto it = std::lower_bound(m_suffixes.begin(), m_suffixes.end(), txnId);
    return it != m_suffixes.end() && it->starts_with(txnId);
}

}  // namespace dorvane::browser
