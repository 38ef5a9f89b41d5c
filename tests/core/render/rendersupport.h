// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — running the shipped style sheets and reading what they wrote.
#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::render::test {

using dorvane::test::dataDir;
using dorvane::test::programSource;

inline xml::Document loadFixture(const std::string& name) {
    auto doc = xml::Document::load(dataDir() / "render" / name);
    EXPECT_TRUE(doc.ok()) << name << ": " << (doc.ok() ? "" : doc.error().description);
    return doc.ok() ? std::move(doc).value() : xml::Document();
}

// The program's style sheet `sheet` applied to `node`, as the program does it.
inline std::string render(const std::string& sheet, xml::Node node,
                          const xml::Variables& params = {}) {
    EXPECT_TRUE(node) << sheet << ": no node to render";
    auto s = xml::Stylesheet::load(programSource() / sheet);
    EXPECT_TRUE(s.ok()) << sheet << ": " << (s.ok() ? "" : s.error().description);
    if (!s.ok()) {
        return {};
    }
    auto out = s->transformNode(node, params);
    EXPECT_TRUE(out.ok()) << sheet << ": " << (out.ok() ? "" : out.error().description);
    return out.ok() ? *out : std::string();
}

// Entities and character references decoded to UTF-8; a no-break space reads as a blank.
inline std::string decodeEntities(std::string s) {
    std::string out;
    for (size_t pos = 0; pos < s.size();) {
        size_t end = s[pos] == '&' ? s.find(';', pos) : std::string::npos;
        if (end == std::string::npos) {
            out += s[pos++];
            continue;
        }
        const std::string name = s.substr(pos + 1, end - pos - 1);
        const std::pair<std::string, std::string> entities[] = {
            {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"amp", "&"}, {"nbsp", " "}};
        std::string decoded;
        for (const auto& [entity, text] : entities) {
            if (name == entity) {
                decoded = text;
            }
        }
        if (decoded.empty() && name.size() > 1 && name[0] == '#') {
            auto ref = xml::Document::parse("<c>&" + name + ";</c>");
            decoded = ref.ok() ? ref->root().text() : "";
        }
        if (decoded.empty()) {
            out += s[pos++];
            continue;
        }
        out += decoded;
        pos = end + 1;
    }
    for (size_t pos = 0; (pos = out.find("\xC2\xA0", pos)) != std::string::npos; ++pos) {
        out.replace(pos, 2, " ");
    }
    return out;
}

// The text a reader sees in a piece of HTML: tags dropped, entities decoded, line breaks
// (<br>, block starts and ends) kept as "\n", blanks collapsed, empty lines dropped.
inline std::string visibleText(const std::string& html) {
    std::string raw;
    for (size_t i = 0; i < html.size();) {
        if (html[i] == '<') {
            size_t end = html.find('>', i);
            if (end == std::string::npos) {
                break;
            }
            std::string tag = html.substr(i + 1, end - i - 1);
            std::transform(tag.begin(), tag.end(), tag.begin(), ::tolower);
            if (tag.rfind("br", 0) == 0 || tag.rfind("div", 0) == 0 || tag.rfind("/div", 0) == 0) {
                raw += '\n';
            }
            i = end + 1;
        } else {
            raw += html[i++];
        }
    }
    raw = decodeEntities(raw);
    std::string out;
    std::string line;
    auto flush = [&] {
        while (!line.empty() && line.back() == ' ') {
            line.pop_back();
        }
        if (!line.empty()) {
            if (!out.empty()) {
                out += '\n';
            }
            out += line;
        }
        line.clear();
    };
    for (char c : raw) {
        if (c == '\n') {
            flush();
        } else if (c == ' ' || c == '\t' || c == '\r') {
            if (!line.empty() && line.back() != ' ') {
                line += ' ';
            }
        } else {
            line += c;
        }
    }
    flush();
    return out;
}

using Row = std::vector<std::string>;

// The rows of the innermost tables, each as the visible text of its cells: the way a
// reader lines the values up.
inline std::vector<Row> tableRows(const std::string& html) {
    std::vector<Row> rows;
    size_t pos = 0;
    while ((pos = html.find("<tr", pos)) != std::string::npos) {
        size_t end = html.find("</tr>", pos);
        size_t inner = html.find("<tr", pos + 3);
        if (end == std::string::npos) {
            break;
        }
        if (inner != std::string::npos && inner < end) {
            pos = inner;
            continue;
        }
        std::string row = html.substr(pos, end - pos);
        Row cells;
        size_t cell = 0;
        while ((cell = row.find("<td", cell)) != std::string::npos) {
            size_t open = row.find('>', cell);
            size_t close = row.find("</td>", open);
            if (close == std::string::npos) {
                close = row.size();
            }
            cells.push_back(visibleText(row.substr(open + 1, close - open - 1)));
            cell = close;
        }
        rows.push_back(cells);
        pos = end;
    }
    return rows;
}

inline bool hasRow(const std::vector<Row>& rows, const Row& wanted) {
    return std::find(rows.begin(), rows.end(), wanted) != rows.end();
}

// The first row whose first non-empty cell is `label`.
inline Row rowLabelled(const std::vector<Row>& rows, const std::string& label) {
    for (const Row& r : rows) {
        auto first =
            std::find_if(r.begin(), r.end(), [](const std::string& c) { return !c.empty(); });
        if (first != r.end() && *first == label) {
            return Row(first, r.end());
        }
    }
    return {};
}

// The last such row: the totals at the foot of a document.
inline Row lastRowLabelled(const std::vector<Row>& rows, const std::string& label) {
    return rowLabelled(std::vector<Row>(rows.rbegin(), rows.rend()), label);
}

inline size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t pos = 0; (pos = text.find(what, pos)) != std::string::npos; pos += what.size()) {
        ++n;
    }
    return n;
}

inline std::string rowsText(const std::vector<Row>& rows) {
    std::string s;
    for (const Row& r : rows) {
        s += "|";
        for (const std::string& c : r) {
            s += c + "|";
        }
        s += "\n";
    }
    return s;
}

}  // namespace dorvane::render::test
