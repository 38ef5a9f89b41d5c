// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/receipt.h"

#include <cctype>
#include <vector>

#include "xml/xml.h"

namespace dorvane::imports {
namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

// The length of a blank at the start of `s` (0 for none).
std::size_t leadingBlank(std::string_view s) {
    if (s.empty()) {
        return 0;
    }
    if (s[0] == ' ' || s[0] == '\t' || s[0] == '\v' || s[0] == '\f') {
        return 1;
    }
    return s.substr(0, 2) == kNoBreakSpace ? 2 : 0;
}

std::size_t trailingBlank(std::string_view s) {
    if (s.empty()) {
        return 0;
    }
    const char c = s.back();
    if (c == ' ' || c == '\t' || c == '\v' || c == '\f') {
        return 1;
    }
    return s.size() >= 2 && s.substr(s.size() - 2) == kNoBreakSpace ? 2 : 0;
}

std::string_view trimBlanks(std::string_view s) {
    while (std::size_t n = leadingBlank(s)) {
        s.remove_prefix(n);
    }
    while (std::size_t n = trailingBlank(s)) {
        s.remove_suffix(n);
    }
    return s;
}

// The label with every "/" and every blank taken out.
std::string elementName(std::string_view label) {
    std::string out;
    while (!label.empty()) {
        if (std::size_t n = leadingBlank(label)) {
            label.remove_prefix(n);
        } else {
            if (label[0] != '/') {
                out += label[0];
            }
            label.remove_prefix(1);
        }
    }
    return out;
}

// The first `count` characters of UTF-8 text (a byte that is not valid UTF-8 counts as one).
std::string_view firstCharacters(std::string_view s, std::size_t count) {
    std::size_t at = 0;
    for (std::size_t n = 0; n < count && at < s.size(); ++n) {
        ++at;
        while (at < s.size() && (static_cast<unsigned char>(s[at]) & 0xC0) == 0x80) {
            ++at;
        }
    }
    return s.substr(0, at);
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || text[i] == '\r') {
            lines.push_back(text.substr(start, i - start));
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
                ++i;
            }
            start = i + 1;
        }
    }
    lines.push_back(text.substr(start));
    return lines;
}

// The pieces between the first and second ":", or nothing for a line without ":".
bool secondPart(std::string_view line, std::string_view& label, std::string_view& value) {
    const std::size_t first = line.find(':');
    if (first == std::string_view::npos) {
        return false;
    }
    label = line.substr(0, first);
    const std::size_t second = line.find(':', first + 1);
    value = line.substr(
        first + 1, second == std::string_view::npos ? std::string_view::npos : second - first - 1);
    return true;
}

std::string upperAscii(std::string_view s) {
    std::string out(s);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return out;
}

void appendValue(std::string& out, std::string_view value, bool escape) {
    out += escape ? xml::escapeText(value) : std::string(value);
}

void appendElement(std::string& out, std::string_view name, std::string_view value, bool escape) {
    out += '<';
    out += name;
    out += '>';
    appendValue(out, value, escape);
    out += "</";
    out += name;
    out += ">\r\n";
}

}  // namespace

std::string receiptToXml(std::string_view text, bool escapeValues) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") {
        text.remove_prefix(3);
    }
    std::string body = "<AuthorizeNet>";
    std::string section;
    for (std::string_view line : splitLines(text)) {
        if (trimBlanks(line).empty()) {
            continue;
        }
        std::string_view label;
        std::string_view value;
        if (line.substr(0, 9) == "Date/Time") {
            if (secondPart(line, label, value)) {
                appendElement(body, "DateTime", firstCharacters(trimBlanks(value), 11),
                              escapeValues);
            }
        } else if (line[0] == '=') {
            const std::string upper = upperAscii(line);
            if (!section.empty()) {
                body += "</" + section + ">";
            }
            if (upper.find("CUSTOMER BILLING") != std::string::npos) {
                section = "Billing";
            } else if (upper.find("CUSTOMER SHIPPING") != std::string::npos) {
                section = "Shipping";
            } else {
                section.clear();
            }
            if (!section.empty()) {
                body += "<" + section + ">";
            }
        } else if (secondPart(line, label, value)) {
            appendElement(body, elementName(label), trimBlanks(value), escapeValues);
        }
    }
    body += "</AuthorizeNet>";
    return "<?xml version=\"1.0\" ?>" + body;
}

}  // namespace dorvane::imports
