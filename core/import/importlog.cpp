// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/importlog.h"

namespace dorvane::imports {
namespace {

constexpr std::string_view kTxnTag = "<TxnID>";
constexpr std::string_view kDateTag = "<RecordDate>";
constexpr std::string_view kDateEnd = "</RecordDate>";

std::string::size_type findRecord(std::string_view log, std::string_view txnId) {
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

}  // namespace dorvane::imports
