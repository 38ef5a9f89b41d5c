// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/schema.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <unordered_map>

#include "qbsandbox/schematable.h"
#include "qbsandbox/values.h"

namespace dorvane::qbsandbox {

namespace {

struct Tables {
    std::unordered_map<std::string, AggregateRule> aggregates;
    std::unordered_map<std::string, std::set<std::string, std::less<>>> enums;
};

// Joins continuation lines (starting with blanks) to their definition.
std::vector<std::string> definitions(const std::string& text) {
    std::vector<std::string> defs;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty()) {
            continue;
        }
        if ((line[0] == ' ' || line[0] == '\t') && !defs.empty()) {
            defs.back() += ' ';
            defs.back() += line;
        } else {
            defs.push_back(line);
        }
    }
    return defs;
}

ElementRule parseEntry(std::string token) {
    ElementRule rule;
    auto takeSuffix = [&](char marker) -> std::string {
        auto at = token.find(marker);
        if (at == std::string::npos) {
            return {};
        }
        std::size_t end = at + 1;
        while (end < token.size() && std::isalnum(static_cast<unsigned char>(token[end]))) {
            ++end;
        }
        std::string value = token.substr(at + 1, end - at - 1);
        token.erase(at, end - at);
        return value;
    };
    bool interleave = false;
    if (auto at = token.find('~'); at != std::string::npos) {
        interleave = true;
        token.erase(at, 1);
    }
    if (std::string g = takeSuffix('#'); !g.empty()) {
        rule.group = static_cast<char>(std::tolower(static_cast<unsigned char>(g[0])));
        rule.groupRequired = std::isupper(static_cast<unsigned char>(g[0])) != 0;
        rule.branch = std::stoi(g.substr(1));
    }
    if (std::string s = takeSuffix('@'); !s.empty()) {
        rule.since = std::stoi(s);
    }
    if (std::string u = takeSuffix('!'); !u.empty()) {
        rule.until = std::stoi(u);
    }
    if (!token.empty() && (token.back() == '?' || token.back() == '*' || token.back() == '+')) {
        char c = token.back();
        token.pop_back();
        rule.required = c == '+';
        rule.repeats = c != '?';
    }
    if (interleave) {
        rule.required = false;
        rule.repeats = true;
        rule.group = '~';
    }
    std::string type;
    if (auto colon = token.find(':'); colon != std::string::npos) {
        type = token.substr(colon + 1);
        token.resize(colon);
    }
    rule.name = token;
    if (type.empty()) {
        rule.type = ValueType::Aggregate;
    } else if (type == "id") {
        rule.type = ValueType::Id;
    } else if (type[0] == 's' &&
               (type.size() == 1 || std::isdigit(static_cast<unsigned char>(type[1])))) {
        rule.type = ValueType::Str;
        rule.maxLength = type.size() > 1 ? std::stoi(type.substr(1)) : 0;
    } else if (type == "date") {
        rule.type = ValueType::Date;
    } else if (type == "dt") {
        rule.type = ValueType::DateTime;
    } else if (type == "amt") {
        rule.type = ValueType::Amount;
    } else if (type == "price") {
        rule.type = ValueType::Price;
    } else if (type == "qty") {
        rule.type = ValueType::Quantity;
    } else if (type == "pct") {
        rule.type = ValueType::Percent;
    } else if (type == "bool") {
        rule.type = ValueType::Bool;
    } else if (type == "int") {
        rule.type = ValueType::Int;
    } else if (type == "dur") {
        rule.type = ValueType::Duration;
    } else if (type == "guid") {
        rule.type = ValueType::Guid;
    } else if (type == "ref") {
        rule.type = ValueType::Ref;
    } else if (type == "addr") {
        rule.type = ValueType::Address;
    } else if (type.rfind("e.", 0) == 0) {
        rule.type = ValueType::Enum;
        rule.enumName = type.substr(2);
    }
    return rule;
}

const Tables& tables() {
    static const Tables t = [] {
        Tables t;
        for (const std::string& def : definitions(schemaTableText())) {
            std::istringstream in(def);
            std::string name, eq, token;
            in >> name >> eq;
            AggregateRule rule{name, {}};
            while (in >> token) {
                rule.children.push_back(parseEntry(token));
            }
            t.aggregates[name] = std::move(rule);
        }
        for (const std::string& def : definitions(schemaEnumText())) {
            std::istringstream in(def);
            std::string name, eq, token;
            in >> name >> eq;
            auto& values = t.enums[name];
            while (in >> token) {
                values.insert(token);
            }
        }
        return t;
    }();
    return t;
}

struct Validator {
    Version version;
    Validation result;

    void fault(std::string detail) {
        if (!result.fault) {
            result.fault = std::move(detail);
        }
    }
    void status(int code, std::string message) {
        if (result.statusCode == 0) {
            result.statusCode = code;
            result.statusMessage = std::move(message);
        }
    }
    void missing(const std::string& name) {
        status(3150, "There is a missing element: \"" + name + "\".");
    }

    void checkValue(const ElementRule& rule, const xml::Node& node, const std::string& path) {
        if (node.firstChildElement()) {
            fault("element \"" + node.firstChildElement().name() + "\" is not allowed inside \"" +
                  rule.name + "\" (" + path + ")");
            return;
        }
        std::string value = node.text();
        const std::string& f = rule.name;
        auto convert = [&](int code, const char* what) {
            status(code, std::string("There was an error when converting the ") + what + " \"" +
                             value + "\" in the field \"" + f + "\".");
        };
        switch (rule.type) {
            case ValueType::Id: {
                auto dash = value.find('-');
                bool ok =
                    !value.empty() && value.size() <= 36 && dash != std::string::npos && dash > 0 &&
                    dash + 1 < value.size() &&
                    std::all_of(
                        value.begin(), value.begin() + static_cast<long>(dash),
                        [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }) &&
                    std::all_of(value.begin() + static_cast<long>(dash) + 1, value.end(),
                                [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
                if (!ok) {
                    status(3000, "The given object ID \"" + value + "\" in the field \"" + f +
                                     "\" is invalid.");
                }
                break;
            }
            case ValueType::Str:
                // QuickBooks counts letters, not the bytes of their UTF-8 form.
                if (rule.maxLength > 0 && std::count_if(value.begin(), value.end(), [](char c) {
                                              return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
                                          }) > rule.maxLength) {
                    status(3070,
                           "The string \"" + value + "\" in the field \"" + f + "\" is too long.");
                }
                break;
            case ValueType::Date:
                if (!value.empty() && !Date::parse(value)) {
                    convert(3020, "date value");
                }
                break;
            case ValueType::DateTime:
                if (!value.empty() && !parseDateTime(value)) {
                    convert(3020, "date value");
                }
                break;
            case ValueType::Amount:
                if (!Decimal::parse(value, 2)) {
                    convert(3040, "amount");
                }
                break;
            case ValueType::Price:
                if (!Decimal::parse(value, 5)) {
                    convert(3045, "price");
                }
                break;
            case ValueType::Percent:
                if (!Decimal::parse(value, 5)) {
                    convert(3050, "percent");
                }
                break;
            case ValueType::Quantity:
                if (!Decimal::parse(value, 5)) {
                    convert(3060, "quantity");
                }
                break;
            case ValueType::Int:
                if (value.empty() || value.size() > 9 ||
                    !std::all_of(value.begin(), value.end(), [](char c) {
                        return std::isdigit(static_cast<unsigned char>(c));
                    })) {
                    convert(3040, "number");
                }
                break;
            case ValueType::Bool:
                if (!value.empty() && !parseBool(value)) {
                    convert(3010, "boolean value");
                }
                break;
            case ValueType::Duration:
                if (!value.empty() && !parseDuration(value)) {
                    status(3035, "There was an error when converting the time interval \"" + value +
                                     "\" in the field \"" + f + "\".");
                }
                break;
            case ValueType::Enum:
                // An empty DateMacro is read as "no date filter", as Dorvane's templates send it.
                if (!(value.empty() && rule.enumName == "DateMacro") &&
                    !enumAllows(rule.enumName, value, version)) {
                    fault("\"" + value + "\" is not a valid value of \"" + f + "\" (" + path + ")");
                }
                break;
            default:
                break;
        }
    }

    void checkRef(const xml::Node& node, const std::string& path) {
        static const AggregateRule rule{"Ref",
                                        {parseEntry("ListID:id?"), parseEntry("FullName:s209?")}};
        checkChildren(node, rule, path);
    }

    void checkAddress(const xml::Node& node, const std::string& path) {
        static const AggregateRule rule = [] {
            AggregateRule r{"Address", {}};
            for (const auto& part : addressParts()) {
                ElementRule e;
                e.name = part.name;
                e.type = ValueType::Str;
                e.maxLength = part.maxLength;
                e.required = false;
                e.since = part.since;
                r.children.push_back(e);
            }
            return r;
        }();
        checkChildren(node, rule, path);
    }

    void checkChildren(const xml::Node& node, const AggregateRule& rule, const std::string& path) {
        const auto& entries = rule.children;
        std::vector<int> counts(entries.size(), 0);
        std::map<char, int> branchUsed;
        std::size_t pos = 0;
        for (xml::Node child = node.firstChildElement(); child;
             child = child.nextSiblingElement()) {
            if (result.fault) {
                return;
            }
            std::string name = child.name();
            std::string childPath = path + "/" + name;
            std::size_t start = pos;
            while (start > 0 && entries[start].group == '~' && entries[start - 1].group == '~') {
                --start;
            }
            std::size_t j = start;
            while (j < entries.size() &&
                   !(entries[j].name == name && entries[j].availableIn(version))) {
                ++j;
            }
            if (j == entries.size()) {
                bool known = std::any_of(entries.begin(), entries.end(), [&](const ElementRule& e) {
                    return e.name == name && e.availableIn(version);
                });
                fault(known ? "element \"" + name + "\" is out of order in \"" + rule.name +
                                  "\" (" + childPath + ")"
                            : "element \"" + name + "\" is not allowed in \"" + rule.name + "\" (" +
                                  childPath + ")");
                return;
            }
            const ElementRule& e = entries[j];
            if (counts[j] > 0 && !e.repeats) {
                fault("element \"" + name + "\" appears more than once in \"" + rule.name + "\" (" +
                      childPath + ")");
                return;
            }
            for (std::size_t k = pos; k < j; ++k) {
                if (entries[k].required && counts[k] == 0 && entries[k].group == 0 &&
                    entries[k].availableIn(version)) {
                    missing(entries[k].name);
                }
            }
            if (e.group && e.group != '~') {
                auto [it, inserted] = branchUsed.emplace(e.group, e.branch);
                if (!inserted && it->second != e.branch) {
                    fault("element \"" + name +
                          "\" cannot be combined with the elements before it in \"" + rule.name +
                          "\" (" + childPath + ")");
                    return;
                }
            }
            ++counts[j];
            pos = j;
            checkElement(e, child, childPath);
        }
        for (std::size_t k = pos; k < entries.size(); ++k) {
            if (entries[k].required && counts[k] == 0 && entries[k].group == 0 &&
                entries[k].availableIn(version)) {
                missing(entries[k].name);
            }
        }
        for (const auto& e : entries) {
            if (e.groupRequired && e.availableIn(version) && !branchUsed.count(e.group)) {
                missing(e.name);
                break;
            }
        }
    }

    void checkElement(const ElementRule& rule, const xml::Node& node, const std::string& path) {
        switch (rule.type) {
            case ValueType::Aggregate: {
                const AggregateRule* agg = findAggregate(rule.name);
                if (!agg) {
                    fault("element \"" + rule.name + "\" is not supported (" + path + ")");
                    return;
                }
                checkChildren(node, *agg, path);
                break;
            }
            case ValueType::Ref:
                checkRef(node, path);
                break;
            case ValueType::Address:
                checkAddress(node, path);
                break;
            default:
                checkValue(rule, node, path);
        }
    }
};

}  // namespace

std::optional<Version> parseVersion(std::string_view text) {
    static const std::map<std::string, Version, std::less<>> known = {
        {"1.0", 10},   {"1.1", 11},   {"2.0", 20},   {"2.1", 21},  {"3.0", 30}, {"4.0", 40},
        {"4.1", 41},   {"5.0", 50},   {"6.0", 60},   {"7.0", 70},  {"8.0", 80}, {"9.0", 90},
        {"10.0", 100}, {"11.0", 110}, {"12.0", 120}, {"13.0", 130}};
    auto it = known.find(text);
    if (it == known.end()) {
        return std::nullopt;
    }
    return it->second;
}

std::string versionText(Version v) {
    return std::to_string(v / 10) + "." + std::to_string(v % 10);
}

const AggregateRule* findAggregate(std::string_view name) {
    const auto& all = tables().aggregates;
    auto it = all.find(std::string(name));
    return it == all.end() ? nullptr : &it->second;
}

bool enumAllows(std::string_view enumName, std::string_view value, Version version) {
    if (enumName == "DateMacro") {
        auto macros = dateMacros(version);
        return std::find(macros.begin(), macros.end(), value) != macros.end();
    }
    const auto& all = tables().enums;
    auto it = all.find(std::string(enumName));
    return it != all.end() && it->second.count(value) > 0;
}

const std::vector<AddressPart>& addressParts() {
    static const std::vector<AddressPart> parts = {
        {"Addr1", 10, 41},   {"Addr2", 10, 41}, {"Addr3", 10, 41}, {"Addr4", 20, 41},
        {"Addr5", 60, 41},   {"City", 10, 31},  {"State", 10, 21}, {"PostalCode", 10, 13},
        {"Country", 10, 31}, {"Note", 60, 41}};
    return parts;
}

Validation validateRequest(const xml::Node& request, Version version) {
    Validator v{version, {}};
    std::string name = request.name();
    const AggregateRule* rule = findAggregate(name);
    if (!rule || name.size() < 3 || name.compare(name.size() - 2, 2, "Rq") != 0) {
        v.fault("element \"" + name + "\" is not allowed in \"QBXMLMsgsRq\" (QBXML/QBXMLMsgsRq/" +
                name + ")");
        return v.result;
    }
    for (const auto& [attr, value] : request.attributes()) {
        if (attr == "requestID") {
            if (value.size() > 50) {
                v.status(1060, "The requestID \"" + value + "\" is invalid.");
            }
        } else if ((attr == "metaData" && version >= 40) ||
                   ((attr == "iterator" || attr == "iteratorID") && version >= 50)) {
            continue;
        } else {
            v.fault("attribute \"" + attr + "\" is not allowed on \"" + name + "\"");
        }
    }
    v.checkChildren(request, *rule, "QBXML/QBXMLMsgsRq/" + name);
    return v.result;
}

Validation validateElement(const xml::Node& element, Version version) {
    Validator v{version, {}};
    std::string name = element.name();
    if (const AggregateRule* rule = findAggregate(name)) {
        v.checkChildren(element, *rule, name);
    } else {
        v.fault("element \"" + name + "\" has no rule");
    }
    return v.result;
}

}  // namespace dorvane::qbsandbox
