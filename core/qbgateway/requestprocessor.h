// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the QuickBooks request processor as the gateway sees it.
//
// Exactly the six operations the gateway uses, each answering a value or a failure that
// carries QuickBooks' 32-bit error code (an HRESULT such as 0x80040416) and its description.
// The embedded sandbox, a real QuickBooks connection and the tests' doubles implement it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "common/result.h"

namespace dorvane::qbgateway {

// BeginSession's open modes.
enum class FileMode : int { SingleUser = 0, MultiUser = 1, DoNotCare = 2 };

// Request-processor error codes the program itself tells apart.
inline constexpr std::uint32_t kErrParse = 0x80040400;
inline constexpr std::uint32_t kErrCouldNotStart = 0x80040408;
inline constexpr std::uint32_t kErrTicket = 0x8004040D;
inline constexpr std::uint32_t kErrNoCompanyFile = 0x80040416;
inline constexpr std::uint32_t kErrVersion = 0x80040423;

inline Error processorError(std::uint32_t code, std::string description) {
    return Error{static_cast<std::int32_t>(code), std::move(description)};
}

class RequestProcessor {
public:
    virtual ~RequestProcessor() = default;

    virtual Status openConnection(const std::string& appId, const std::string& appName) = 0;
    virtual Result<std::string> beginSession(const std::string& companyFile, FileMode mode) = 0;
    virtual Result<std::string> getCurrentCompanyFileName(const std::string& ticket) = 0;
    virtual Result<std::string> processRequest(const std::string& ticket,
                                               const std::string& request) = 0;
    virtual Status endSession(const std::string& ticket) = 0;
    virtual Status closeConnection() = 0;
};

// Makes a new request processor; the gateway calls it once per exchange. It fails when no
// processor can be had (the error then reads as a failed exchange).
using ProcessorFactory = std::function<Result<std::unique_ptr<RequestProcessor>>()>;

}  // namespace dorvane::qbgateway
