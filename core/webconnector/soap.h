// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Web Connector's SOAP 1.1 messages (document/literal, namespace
// http://developer.intuit.com/): reading a call, writing its result or a fault.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"

namespace dorvane::webconnector {

inline constexpr const char* kServiceNamespace = "http://developer.intuit.com/";
inline constexpr const char* kSoapNamespace = "http://schemas.xmlsoap.org/soap/envelope/";

// One call: the method's element name and its parameters by element name. A parameter that
// came as an empty or nil element is "".
struct SoapCall {
    std::string method;
    std::map<std::string, std::string> params;

    const std::string& param(const std::string& name) const;
};

// Reads a call. Anything but a SOAP 1.1 envelope whose body holds one element of the
// service's namespace is refused with a reason fit for a fault; so is a document that declares
// entities. Nothing outside the message is ever read.
Result<SoapCall> parseSoapCall(std::string_view body);

// The answer to `method`: <methodResponse><methodResult>…</methodResult></methodResponse>.
std::string soapStringResult(std::string_view method, std::string_view value);
std::string soapIntResult(std::string_view method, int value);
// An ArrayOfString result: one <string> per value.
std::string soapArrayResult(std::string_view method, const std::vector<std::string>& values);
// A SOAP 1.1 fault; `code` is "Client" (the caller's message is wrong) or "Server".
std::string soapFault(std::string_view code, std::string_view text);

}  // namespace dorvane::webconnector
