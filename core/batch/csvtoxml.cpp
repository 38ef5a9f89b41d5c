// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/csvtoxml.h"

#include <algorithm>
#include <unordered_map>

#include <libxml/tree.h>

namespace dorvane::batch {
namespace {

constexpr char kQuote = '"';
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A header name becomes an element only when it is a valid element name without a prefix.
bool isElementName(const std::string& name) {
    return !name.empty() &&
           xmlValidateNCName(reinterpret_cast<const xmlChar*>(name.c_str()), 0) == 0;
}

// The element that value i of a line goes to: the first element of field name i, counted
// among the elements the record has; -1 for a name that makes no element. Names past
// kMaxFields make none either.
std::vector<int> fieldTargets(const Fields& names, std::vector<std::string>& elements) {
    std::vector<int> targets;
    std::unordered_map<std::string_view, int> first;
    const std::size_t n = std::min(names.size(), kMaxFields);
    targets.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const std::string& name = names[i];
        if (!isElementName(name)) {
            targets.push_back(-1);
            continue;
        }
        const int at = static_cast<int>(elements.size());
        targets.push_back(first.try_emplace(name, at).first->second);
        elements.push_back(name);
    }
    return targets;
}

// Whether a line holds nothing but blanks: it makes no record.
bool isBlank(std::string_view line) {
    return line.find_first_not_of(" \t") == std::string_view::npos;
}

class RecordWriter {
public:
    RecordWriter(const Fields& names, std::string_view recordTag, std::string_view rootTag,
                 std::string_view delimiter, const CsvOptions& options)
        : m_document(xml::Document::withRoot(rootTag)),
          m_recordTag(recordTag),
          m_delimiter(delimiter),
          m_options(options) {
        m_targets = fieldTargets(names, m_elements);
        m_values.resize(m_elements.size());
    }

    void add(std::string_view line) {
        if (isBlank(line)) {
            return;
        }
        bool cut = false;
        std::optional<Fields> values =
            m_options.quoting == FieldQuoting::Rfc4180
                ? splitQuotedCsvLine(line, m_delimiter, nullptr, kMaxFields)
                : splitCsvLine(line, m_delimiter, &cut, kMaxFields);
        if (cut && m_options.cutRecords) {
            m_options.cutRecords->push_back(m_count);
        }
        ++m_count;
        std::fill(m_values.begin(), m_values.end(), std::string_view());
        if (values) {
            // Surplus values have no field; a later value of a repeated name replaces the earlier.
            const std::size_t n = std::min(values->size(), m_targets.size());
            for (std::size_t i = 0; i < n; ++i) {
                if (m_targets[i] >= 0) {
                    m_values[static_cast<std::size_t>(m_targets[i])] = (*values)[i];
                }
            }
        }
        xml::Node record = m_document.root().appendElement(m_recordTag);
        for (std::size_t k = 0; k < m_elements.size(); ++k) {
            record.appendElement(m_elements[k], m_values[k]);
        }
    }

    xml::Document take() { return std::move(m_document); }

private:
    xml::Document m_document;
    std::string m_recordTag;
    std::string m_delimiter;
    const CsvOptions& m_options;
    std::vector<int> m_targets;
    std::vector<std::string> m_elements;
    std::vector<std::string_view> m_values;
    std::size_t m_count = 0;
};

}  // namespace

std::optional<Fields> splitCsvLine(std::string_view line, std::string_view delimiter,
                                   bool* cutQuoted, std::size_t maxFields) {
    if (line.empty()) {
        return std::nullopt;
    }
    if (delimiter.empty()) {
        return Fields{std::string(line)};
    }
    std::string s(line);
    if (!s.ends_with(delimiter)) {
        s += delimiter;
    }
    Fields fields;
    std::size_t pos = 0;  // where the remaining text R begins
    std::size_t q1 = 0;   // the first quote at or after pos, kept so no text is searched twice
    bool looked = false;
    while (fields.size() < maxFields) {
        const std::size_t p = s.find(delimiter, pos);
        if (p == std::string::npos) {
            break;
        }
        if (!looked || (q1 != std::string::npos && q1 < pos)) {
            q1 = s.find(kQuote, pos);
            looked = true;
        }
        if (q1 == std::string::npos || q1 >= p) {
            fields.emplace_back(s, pos, p - pos);
            pos = p + delimiter.size();
            continue;
        }
        const std::size_t q2 = s.find(kQuote, q1 + 1);
        if (q2 != std::string::npos && q2 < p) {
            // R's characters 2 to Q2-1; R loses its first Q2+1 characters.
            const std::size_t last = q2 - pos;
            fields.emplace_back(s, pos + 1, last - 1);
            pos += last + 2;
            continue;
        }
        if (q1 == pos && cutQuoted) {
            *cutQuoted = true;
        }
        fields.emplace_back(s, pos, p - pos);
        pos = p + delimiter.size();
    }
    if (pos < s.size() && fields.size() < maxFields) {
        fields.emplace_back(s, pos);
    }
    return fields;
}

std::optional<Fields> splitQuotedCsvLine(std::string_view line, std::string_view delimiter,
                                         bool* open, std::size_t maxFields) {
    if (open) {
        *open = false;
    }
    if (line.empty()) {
        return std::nullopt;
    }
    Fields fields;
    std::string field;
    bool atStart = true;
    bool quoted = false;
    std::size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (quoted) {
            if (c == kQuote) {
                if (i + 1 < line.size() && line[i + 1] == kQuote) {
                    field += kQuote;
                    i += 2;
                    continue;
                }
                quoted = false;
            } else {
                field += c;
            }
            ++i;
        } else if (!delimiter.empty() && line.compare(i, delimiter.size(), delimiter) == 0) {
            if (fields.size() < maxFields) {
                fields.push_back(std::move(field));
            }
            if (fields.size() >= maxFields && !open) {
                return fields;  // the rest would be surplus
            }
            field.clear();
            atStart = true;
            i += delimiter.size();
        } else {
            if (c == kQuote && atStart) {
                quoted = true;
            } else {
                field += c;
            }
            atStart = false;
            ++i;
        }
    }
    if (fields.size() < maxFields) {
        fields.push_back(std::move(field));
    }
    if (open) {
        *open = quoted;
    }
    return fields;
}

std::string stripHeaderNames(std::string_view header) {
    std::string stripped(header);
    for (std::string_view strip : kNameStrippingSet) {
        std::erase(stripped, strip.front());
    }
    return stripped;
}

std::string chooseDelimiter(std::string_view strippedHeader, std::string delimiter) {
    if (strippedHeader.find('\t') != std::string_view::npos) {
        delimiter = "\t";
    }
    if (strippedHeader.find(';') != std::string_view::npos) {
        delimiter = ";";
    }
    if (strippedHeader.find(',') != std::string_view::npos) {
        delimiter = ",";
    }
    return delimiter;
}

Fields headerFieldNames(std::string_view header, std::string& delimiter, FieldQuoting quoting) {
    const std::string stripped = stripHeaderNames(header);
    delimiter = chooseDelimiter(stripped, delimiter);
    auto names = quoting == FieldQuoting::Rfc4180
                     ? splitQuotedCsvLine(stripped, delimiter, nullptr, kMaxFields)
                     : splitCsvLine(stripped, delimiter, nullptr, kMaxFields);
    return names ? std::move(*names) : Fields{};
}

// ---- encodings --------------------------------------------------------------------------

bool isValidUtf8(std::string_view text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    while (p < end) {
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int more = 0;
        unsigned min = 0;
        unsigned code = 0;
        if ((c & 0xE0) == 0xC0) {
            more = 1, min = 0x80, code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            more = 2, min = 0x800, code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            more = 3, min = 0x10000, code = c & 0x07;
        } else {
            return false;
        }
        if (end - p <= more) {
            return false;
        }
        for (int k = 1; k <= more; ++k) {
            if ((p[k] & 0xC0) != 0x80) {
                return false;
            }
            code = (code << 6) | (p[k] & 0x3F);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        p += more + 1;
    }
    return true;
}

std::string latin1ToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (c < 0x80) {
            out += ch;
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

namespace {

// Reads the file once, in blocks, to learn its encoding; line ends split no character, so
// each line is checked on its own. Leaves the stream at the first line.
TextEncoding detectEncoding(std::ifstream& in) {
    char bom[3] = {};
    in.read(bom, 3);
    const bool marked = in.gcount() == 3 && std::string_view(bom, 3) == kByteOrderMark;
    in.clear();
    in.seekg(0);
    if (marked) {
        return TextEncoding::Utf8;
    }
    TextEncoding encoding = TextEncoding::Utf8;
    std::string line;
    while (std::getline(in, line)) {
        if (!isValidUtf8(line)) {
            encoding = TextEncoding::Latin1;
            break;
        }
    }
    in.clear();
    in.seekg(0);
    return encoding;
}

}  // namespace

CsvLineReader::CsvLineReader(const std::filesystem::path& file, FieldQuoting quoting)
    : m_in(file, std::ios::binary), m_quoting(quoting) {
    m_open = m_in.is_open();
    if (!m_open) {
        return;
    }
    std::error_code ec;
    m_size = std::filesystem::file_size(file, ec);
    m_encoding = detectEncoding(m_in);
    char bom[3] = {};
    m_in.read(bom, 3);
    if (!(m_in.gcount() == 3 && std::string_view(bom, 3) == kByteOrderMark)) {
        m_in.clear();
        m_in.seekg(0);
    }
}

std::optional<std::string> CsvLineReader::rawLine() {
    std::string line;
    if (!m_open || !std::getline(m_in, line)) {
        return std::nullopt;
    }
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    if (m_encoding == TextEncoding::Latin1) {
        line = latin1ToUtf8(line);
    }
    return line;
}

std::optional<std::string> CsvLineReader::next() {
    auto line = rawLine();
    if (!line || m_quoting != FieldQuoting::Rfc4180) {
        return line;
    }
    bool open = false;
    for (std::size_t joined = 1; joined < kMaxJoinedLines; ++joined) {
        // The delimiter does not matter for whether a quote is left open.
        splitQuotedCsvLine(*line, ",", &open);
        if (!open) {
            break;
        }
        auto more = rawLine();
        if (!more) {
            break;
        }
        *line += "\n";
        *line += *more;
    }
    return line;
}

std::uintmax_t CsvLineReader::position() {
    if (!m_open) {
        return 0;
    }
    const auto at = m_in.tellg();
    return at < 0 ? m_size : static_cast<std::uintmax_t>(at);
}

// ---- conversion -------------------------------------------------------------------------

xml::Document csvFileToXml(const std::filesystem::path& fileName, std::string_view recordTag,
                           std::string_view rootTag, std::string& delimiter,
                           const CsvOptions& options) {
    CsvLineReader reader(fileName, options.quoting);
    auto header = reader.next();
    if (!header) {
        return xml::Document::withRoot(rootTag);
    }
    const Fields names = headerFieldNames(*header, delimiter, options.quoting);
    RecordWriter writer(names, recordTag, rootTag, delimiter, options);
    while (auto line = reader.next()) {
        writer.add(*line);
    }
    return writer.take();
}

xml::Document csvLinesToXml(const Fields& fieldNames, const std::vector<std::string>& lines,
                            std::string_view recordTag, std::string_view rootTag,
                            std::string_view delimiter, const CsvOptions& options) {
    RecordWriter writer(fieldNames, recordTag, rootTag, delimiter, options);
    for (const std::string& line : lines) {
        writer.add(line);
    }
    return writer.take();
}

}  // namespace dorvane::batch
