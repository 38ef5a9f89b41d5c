// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — the element order of every request and answer the sandbox knows.
//
// One table describes each aggregate: its children in schema order, their value types,
// cardinality, the qbXML version that introduced them and mutually exclusive branches. The
// request validator rejects unknown, misplaced and repeated elements (the whole message then
// fails with 0x80040400) and reports bad values and missing elements as status codes; the
// answer writer walks the same tables, so answers come out in schema order by construction.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xml/xml.h"

namespace dorvane::qbsandbox {

// qbXML versions as major*10 + minor: 1.0 = 10, 2.1 = 21, 13.0 = 130.
using Version = int;
std::optional<Version> parseVersion(std::string_view text);
std::string versionText(Version v);

enum class ValueType {
    Aggregate,
    Id,
    Str,
    Date,
    DateTime,
    Amount,
    Price,
    Quantity,
    Percent,
    Bool,
    Int,
    Duration,
    Guid,
    Ref,      // {ListID?, FullName?}
    Address,  // {Addr1?, ..., Country?, Note?}
    Enum,
};

struct ElementRule {
    std::string name;
    ValueType type = ValueType::Aggregate;
    std::string enumName;  // for Enum
    int maxLength = 0;     // for Str; 0 = unlimited
    bool required = true;
    bool repeats = false;
    Version since = 10;
    Version until = 0;  // first version without the element; 0 = still present
    char group = 0;     // elements sharing a group are alternatives, by branch
    int branch = 0;
    bool groupRequired = false;

    bool availableIn(Version v) const { return v >= since && (until == 0 || v < until); }
};

struct AggregateRule {
    std::string name;
    std::vector<ElementRule> children;
};

// The rule for an aggregate by element name; null when the sandbox does not know it.
const AggregateRule* findAggregate(std::string_view name);
// True when `value` belongs to the enumeration at this version.
bool enumAllows(std::string_view enumName, std::string_view value, Version version);

// Checking one request element against its rule.
struct Validation {
    // A structural fault: the whole message fails with 0x80040400. `detail` names the
    // offending element and where it stands.
    std::optional<std::string> fault;
    // The first bad value or missing element: the request answers with this status.
    int statusCode = 0;
    std::string statusMessage;
};
Validation validateRequest(const xml::Node& request, Version version);
// Checks any element (a Ret, for instance) against the rule of its own name.
Validation validateElement(const xml::Node& element, Version version);

// The sub-elements of an Address aggregate, in order, with the version that added each.
struct AddressPart {
    const char* name;
    Version since;
    int maxLength;
};
const std::vector<AddressPart>& addressParts();

}  // namespace dorvane::qbsandbox
