// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/importlog.h"

#include <algorithm>

#include "common/text.h"

namespace dorvane::imports {
namespace {

constexpr std::string_view kTxnTag = "<TxnID>";
constexpr std::string_view kDateTag = "<RecordDate>";
constexpr std::string_view kDateEnd = "</RecordDate>";

// No transaction is known by a blank ID: one logged by an older version must not make every
// transaction look imported.
bool blank(std::string_view txnId) {
    return text::trim(txnId).empty();
}

std::string::size_type findRecord(std::string_view log, std::string_view txnId) {
    if (blank(txnId)) {
        return std::string_view::npos;
    }
    const std::string key = std::string(kTxnTag) + std::string(txnId);
    return log.find(key);
}

}  // namespace

std::string importLogRecord(std::string_view txnId, std::chrono::system_clock::time_point when) {
    std::string record = "<AuthNetBatchImport><TxnID>";
    record += txnId;
    record += "</TxnID><RecordDate>";
    record += clock::localDateTimeText(when);
    record += "</RecordDate></AuthNetBatchImport>\r\n";
    return record;
}

bool importLogHolds(std::string_view log, std::string_view txnId) {
    return findRecord(log, txnId) != std::string_view::npos;
}

std::optional<std::string> importLogDate(std::string_view log, std::string_view txnId) {
    const auto at = findRecord(log, txnId);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const auto date = log.find(kDateTag, at);
    const auto end = date == std::string_view::npos ? date : log.find(kDateEnd, date);
    if (end == std::string_view::npos) {
        return std::string();
    }
    const auto from = date + kDateTag.size();
    return std::string(log.substr(from, end - from));
}

void ImportLogIndex::add(std::string_view text) {
    for (char c : text) {
        if (c != '\r' && c != '\n') {
            m_text += c;
        }
    }
    m_open.reset();
    for (;;) {
        const auto tag = m_text.find(kTxnTag, m_scanFrom);
        if (tag == std::string::npos) {
            // A tag may still be completed by text yet to come.
            m_scanFrom =
                std::max(m_scanFrom, m_text.size() - std::min(m_text.size(), kTxnTag.size() - 1));
            return;
        }
        const auto from = tag + kTxnTag.size();
        const auto end = m_text.find('<', from);
        if (end == std::string::npos) {
            m_open = m_text.substr(from);
            m_scanFrom = tag;
            return;
        }
        m_ids.emplace(m_text, from, end - from);
        m_scanFrom = end;
    }
}

bool ImportLogIndex::holds(std::string_view txnId) const {
    if (blank(txnId)) {
        return false;
    }
    if (txnId.find('<') != std::string_view::npos) {
        // The ID runs past the end of a logged one: only the text can say.
        return importLogHolds(m_text, txnId);
    }
    // An ID without "<" begins the text after a tag exactly when it begins the part of that
    // text before the next "<"; those sort at or right after the ID itself.
    const auto it = m_ids.lower_bound(txnId);
    return (it != m_ids.end() && it->starts_with(txnId)) || (m_open && m_open->starts_with(txnId));
}

bool ImportLogIndex::holdsExactly(std::string_view txnId) const {
    if (blank(txnId)) {
        return false;
    }
    return m_ids.contains(txnId) || (m_open && *m_open == txnId);
}

}  // namespace dorvane::imports
