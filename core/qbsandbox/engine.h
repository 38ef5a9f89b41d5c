// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — answering one qbXML message against a company file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/result.h"
#include "qbsandbox/companyfile.h"
#include "qbsandbox/schema.h"
#include "xml/xml.h"

namespace dorvane::qbsandbox {

// The size past which an answer takes no further request: one query answers a whole list, so a
// short message of many queries could otherwise ask for gigabytes. The request that passes it
// is answered in full; the later ones are not processed, as after an error with stopOnError.
inline constexpr std::size_t kMaxAnswerBytes = std::size_t{32} << 20;

// Answers a whole request message. A message that does not parse, announces no or an unknown
// qbXML version, or breaks the schema fails with the request processor's HRESULT; `trace`
// then receives the details (the offending element and where it stands). An answer cut at
// kMaxAnswerBytes succeeds and `trace` says where it was cut.
Result<std::string> answerMessage(CompanyFile& file, std::string_view request, std::string* trace);

// --- shared by the request handlers ----------------------------------------------------------

struct RsStatus {
    int code = 0;
    std::string severity = "Info";
    std::string message = "Status OK";
    static RsStatus error(int code, std::string message) {
        return {code, "Error", std::move(message)};
    }
    static RsStatus warn(int code, std::string message) {
        return {code, "Warn", std::move(message)};
    }
};

// A business-rule failure inside a handler: answered as this status, nothing is saved.
struct StatusFailure {
    RsStatus status;
};

struct RequestContext {
    CompanyFile& file;
    Version version;
    Date today;
    std::unordered_map<std::string, std::string> fullNames;
    bool fullNamesLoaded = false;
    std::set<std::string, std::less<>> includeRet;  // IncludeRetElement of the current request

    const std::string* fullNameOf(const std::string& listId);
    void forgetNames() { fullNamesLoaded = false; }
};

// Writes `retName` with its fields in schema order; `lines` are the record's lines.
struct WriteOptions {
    bool lineItems = true;
    bool linkedTxns = false;
};
void writeRet(RequestContext& ctx, std::string& out, const std::string& retName,
              const Fields& fields, const std::vector<LineRecord>* lines, WriteOptions options);

// The fields a Ret shows from a stored record (columns, balances and stored fields).
Fields listRetFields(RequestContext& ctx, ListRecord& record,
                     const std::unordered_map<std::string, std::int64_t>* totals);
Fields txnRetFields(TxnRecord& record);

// Handlers: each answers the body (Ret elements) and status of one request.
RsStatus handleQuery(RequestContext& ctx, const xml::Node& rq, const std::string& base,
                     std::string& body);
RsStatus handleAdd(RequestContext& ctx, const xml::Node& rq, const std::string& base,
                   std::string& body);
RsStatus handleTxnDel(RequestContext& ctx, const xml::Node& rq, std::string& body);

bool preferenceOn(CompanyFile& file, std::string_view key, bool fallback);
bool timeTrackingOn(CompanyFile& file);

inline constexpr const char* kNoMatch =
    "A query request did not find a matching object in QuickBooks";

}  // namespace dorvane::qbsandbox
