// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — delimited text (an Authorize.Net download) turned into an XML document: one record
// element per data line, one child element per header column, named after the header.
//
// The splitter keeps the old program's rules, which real downloads depend on: enclosing quotes
// are taken off only a value without the delimiter in it; a quoted value that holds the
// delimiter is cut there, its pieces keeping their quotes; a doubled quote is no escape. A line
// cut that way has its later values shifted, so the converter notes which records lost a
// quoted value to a cut. With quoted fields on, lines are read as RFC 4180 instead.
//
// Files are read as UTF-8 when they start with a byte-order mark or are valid UTF-8 throughout,
// otherwise as Latin-1 (the single-byte text the exports are), and converted to UTF-8 before
// anything else. Lines end at CR LF or LF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xml/xml.h"

namespace dorvane::batch {

using Fields = std::vector<std::string>;

// What header names lose before they become element names, in this order.
inline constexpr std::string_view kNameStrippingSet[] = {" ", "-", "/", "\\", "."};

// How a line is cut into values.
enum class FieldQuoting {
    Exported,  // splitCsvLine: as the exports were always read
    Rfc4180,   // a delimiter inside quotes is protected, "" inside quotes is one quote
};

// The most columns a download's header names: further columns get no element, as if their
// names were invalid. The exports have well under a hundred; the cap keeps a record, and so a
// run, small whatever a file's header holds.
inline constexpr std::size_t kMaxFields = 1024;

// One line's values, at most `maxFields` of them (the rest would be surplus); nullopt for an
// empty line. `cutQuoted` (when given) is set when a value that opens with a quote was cut at
// a delimiter inside it.
std::optional<Fields> splitCsvLine(std::string_view line, std::string_view delimiter,
                                   bool* cutQuoted = nullptr,
                                   std::size_t maxFields = static_cast<std::size_t>(-1));
// The same as RFC 4180 reads it. `open` (when given) is set when the line ends inside a quoted
// value, which then goes on in the next line.
std::optional<Fields> splitQuotedCsvLine(std::string_view line, std::string_view delimiter,
                                         bool* open = nullptr,
                                         std::size_t maxFields = static_cast<std::size_t>(-1));

// The header line without the characters of the name-stripping set.
std::string stripHeaderNames(std::string_view header);
// The delimiter a stripped header selects, starting from `delimiter`: a tab, then ";", then
// "," override in turn, so a comma wins over a semicolon, a semicolon over a tab.
std::string chooseDelimiter(std::string_view strippedHeader, std::string delimiter);

// ---- reading the file -----------------------------------------------------------------

enum class TextEncoding { Utf8, Latin1 };

// Whether `text` is well-formed UTF-8.
bool isValidUtf8(std::string_view text);
// Latin-1 bytes as UTF-8.
std::string latin1ToUtf8(std::string_view text);

// Reads a download line by line, in UTF-8, without line ends. With Rfc4180 a quoted value
// that runs over a line end is joined into one line (at most kMaxJoinedLines lines).
class CsvLineReader {
public:
    static constexpr std::size_t kMaxJoinedLines = 64;

    explicit CsvLineReader(const std::filesystem::path& file,
                           FieldQuoting quoting = FieldQuoting::Exported);
    TextEncoding encoding() const { return m_encoding; }
    // The next line; nullopt at the end of the file.
    std::optional<std::string> next();
    // How far the reading got, and the file's size, in bytes (for progress).
    std::uintmax_t position();
    std::uintmax_t size() const { return m_size; }

private:
    std::optional<std::string> rawLine();

    std::ifstream m_in;
    bool m_open = false;
    TextEncoding m_encoding = TextEncoding::Utf8;
    FieldQuoting m_quoting;
    std::uintmax_t m_size = 0;
};

// ---- conversion -------------------------------------------------------------------------

struct CsvOptions {
    FieldQuoting quoting = FieldQuoting::Exported;
    // When given, receives the indexes (0-based, in file order) of the records whose line had
    // a quoted value cut at a delimiter inside it.
    std::vector<std::size_t>* cutRecords = nullptr;
};

// The whole file: the header names the fields and selects the delimiter, which is written
// back into `delimiter`. A file that cannot be opened gives an empty root. A line with
// nothing but blanks on it makes no record, here and in csvLinesToXml. The document grows
// with the file: a run converts a chunk of lines at a time with csvLinesToXml instead.
xml::Document csvFileToXml(const std::filesystem::path& fileName, std::string_view recordTag,
                           std::string_view rootTag, std::string& delimiter,
                           const CsvOptions& options = {});

// Data lines already read, with field names already stripped and split.
xml::Document csvLinesToXml(const Fields& fieldNames, const std::vector<std::string>& lines,
                            std::string_view recordTag, std::string_view rootTag,
                            std::string_view delimiter, const CsvOptions& options = {});

// The field names a header line gives (stripped, delimiter chosen, split).
Fields headerFieldNames(std::string_view header, std::string& delimiter,
                        FieldQuoting quoting = FieldQuoting::Exported);

}  // namespace dorvane::batch
