// SPDX-License-Identifier: GPL-3.0-or-later
// The download converter: the splitter's exact rules, the header's names and delimiter, the
// values that fall away, the cut-quote note, RFC 4180 reading and the encodings.
#include "batch/csvtoxml.h"

#include <gtest/gtest.h>

#include "support/testsupport.h"

namespace dorvane::batch {
namespace {

struct SplitCase {
    const char* line;
    const char* delimiter;
    std::optional<Fields> exported;
    bool cut;
    std::optional<Fields> rfc4180;
};

TEST(CsvSplit, ExportedAndRfc4180Rules) {
    const SplitCase cases[] = {
        {"", ",", std::nullopt, false, std::nullopt},
        {"a,b", ",", Fields{"a", "b"}, false, Fields{"a", "b"}},
        {"a,,b", ",", Fields{"a", "", "b"}, false, Fields{"a", "", "b"}},
        {"a,b,", ",", Fields{"a", "b"}, false, Fields{"a", "b", ""}},
        {"\"x y\",z", ",", Fields{"x y", "z"}, false, Fields{"x y", "z"}},
        // A quoted delimiter is not protected: the pieces keep their quotes.
        {"\"x,y\",z", ",", Fields{"\"x", "y\"", "z"}, true, Fields{"x,y", "z"}},
        // A doubled quote is no escape.
        {"\"a\"\"b\",c", ",", Fields{"a", "b\"", "c"}, false, Fields{"a\"b", "c"}},
        {"1,\"1,234.50\",USD", ",", Fields{"1", "\"1", "234.50\"", "USD"}, true,
         Fields{"1", "1,234.50", "USD"}},
        // A quote inside a value does not open one.
        {"12\" pipe,x", ",", Fields{"12\" pipe", "x"}, false, Fields{"12\" pipe", "x"}},
        {"a\tb;c\td", "\t", Fields{"a", "b;c", "d"}, false, Fields{"a", "b;c", "d"}},
    };
    for (const SplitCase& c : cases) {
        SCOPED_TRACE(c.line);
        bool cut = false;
        EXPECT_EQ(splitCsvLine(c.line, c.delimiter, &cut), c.exported);
        EXPECT_EQ(cut, c.cut);
        EXPECT_EQ(splitQuotedCsvLine(c.line, c.delimiter), c.rfc4180);
    }
    bool open = false;
    splitQuotedCsvLine("a,\"first line", ",", &open);
    EXPECT_TRUE(open);
    // Past the fields a caller wants, a line is not split; whether a quote is left open still
    // counts the whole line.
    EXPECT_EQ(splitCsvLine("a,b,c,d", ",", nullptr, 2), (Fields{"a", "b"}));
    EXPECT_EQ(splitQuotedCsvLine("a,b,c,d", ",", nullptr, 2), (Fields{"a", "b"}));
    EXPECT_EQ(splitQuotedCsvLine("a,b", ",", nullptr, 0), Fields{});
    EXPECT_EQ(splitQuotedCsvLine("a,b,\"c", ",", &open, 1), (Fields{"a"}));
    EXPECT_TRUE(open);
}

TEST(CsvHeader, StripsNamesAndChoosesTheDelimiter) {
    EXPECT_EQ(stripHeaderNames("Cust.-No/Ref\\ID"), "CustNoRefID");
    struct Case {
        const char* header;
        const char* chosen;
    } cases[] = {
        {"a\tb,c", ","}, {"a\tb;c", ";"}, {"a;b,c", ","}, {"a\tb", "\t"}, {"a b|c", "|"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(chooseDelimiter(c.header, "|"), c.chosen) << c.header;
    }
}

// Writes `text` to a file and converts it.
xml::Document convert(const test::TempDir& dir, const std::string& text, std::string& delimiter,
                      const CsvOptions& options = {}) {
    const auto file = dir / "download.csv";
    test::writeFile(file, text);
    return csvFileToXml(file, "AuthNetRecord", "AuthNetFile", delimiter, options);
}

TEST(CsvFile, RecordsCarryEveryHeaderFieldInOrder) {
    test::TempDir dir;
    std::string delimiter = ",";
    auto doc = convert(
        dir, "Transaction ID,Authorization Code,Total Amount\r\n1234,ABC123,10.00\r\n", delimiter);
    EXPECT_EQ(delimiter, ",");
    EXPECT_EQ(doc.toString(false),
              "<AuthNetFile><AuthNetRecord><TransactionID>1234</TransactionID>"
              "<AuthorizationCode>ABC123</AuthorizationCode><TotalAmount>10.00</TotalAmount>"
              "</AuthNetRecord></AuthNetFile>\n");

    // Invalid names are dropped with their column, surplus values fall away, missing ones
    // leave their fields empty, a repeated name takes the later value in its first element,
    // a blank line makes no record, markup is escaped.
    delimiter = ",";
    doc = convert(dir,
                  "Name,2nd,A#B,Amount,Name\n"
                  "a<&>,x,y,1.00,b,surplus\n"
                  "\n"
                  " \t \n"
                  "c\n",
                  delimiter);
    EXPECT_EQ(doc.toString(false),
              "<AuthNetFile>"
              "<AuthNetRecord><Name>b</Name><Amount>1.00</Amount><Name/></AuthNetRecord>"
              "<AuthNetRecord><Name>c</Name><Amount/><Name/></AuthNetRecord>"
              "</AuthNetFile>\n");

    // A tab header, and a file that cannot be opened.
    delimiter = ",";
    doc = convert(dir, "A\tB\n1\t2,3\n", delimiter);
    EXPECT_EQ(delimiter, "\t");
    EXPECT_EQ(doc.valueOf("//B"), "2,3");
    delimiter = ",";
    auto none = csvFileToXml(dir / "missing.csv", "R", "Root", delimiter);
    EXPECT_EQ(none.toString(false), "<Root/>\n");
}

TEST(CsvFile, NotesCutQuotesAndReadsRfc4180WhenAsked) {
    test::TempDir dir;
    const std::string text =
        "Company,Total Amount,City\n"
        "\"O'Brien Mechanical, Inc.\",\"1,234.50\",Astoria\n"
        "Plain Co,10.00,Salem\n"
        "\"Note \"\"A\"\"\",5.00,\"Two\nlines\"\n";
    std::vector<std::size_t> cut;
    std::string delimiter = ",";
    auto doc = convert(dir, text, delimiter, {FieldQuoting::Exported, &cut});
    // The value running over the line end opens with a quote that never closes: cut too.
    EXPECT_EQ(cut, (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(doc.valueOf("//AuthNetRecord[1]/TotalAmount"), " Inc.\"");

    cut.clear();
    delimiter = ",";
    doc = convert(dir, text, delimiter, {FieldQuoting::Rfc4180, &cut});
    EXPECT_TRUE(cut.empty());
    const auto records = doc.selectAll("//AuthNetRecord");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].valueOf("Company"), "O'Brien Mechanical, Inc.");
    EXPECT_EQ(records[0].valueOf("TotalAmount"), "1,234.50");
    EXPECT_EQ(records[0].valueOf("City"), "Astoria");
    EXPECT_EQ(records[2].valueOf("Company"), "Note \"A\"");
    EXPECT_EQ(records[2].valueOf("City"), "Two\nlines");
}

TEST(CsvFile, ReadsLatin1AndUtf8Downloads) {
    struct Case {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"Latin-1", "Company\r\nM\xFCller Gartenbau\r\n"},
        {"UTF-8", "Company\r\nM\xC3\xBCller Gartenbau\r\n"},
        {"UTF-8 with BOM",
         "\xEF\xBB\xBF"
         "Company\nM\xC3\xBCller Gartenbau\n"},
    };
    test::TempDir dir;
    for (const Case& c : cases) {
        std::string delimiter = ",";
        auto doc = convert(dir, c.bytes, delimiter);
        EXPECT_EQ(doc.valueOf("//Company"), "M\xC3\xBCller Gartenbau") << c.name;
    }
    // The shipped samples: both layouts, both encodings.
    std::string delimiter = ",";
    auto expanded = csvFileToXml(test::dataDir() / "batch" / "expanded-latin1.csv", "AuthNetRecord",
                                 "AuthNetFile", delimiter);
    EXPECT_EQ(expanded.valueOf("//AuthNetRecord[1]/CustomerLastName"), "M\xC3\xBCller");
    EXPECT_EQ(expanded.valueOf("//AuthNetRecord[1]/ShipToCity"), "Portland");
    EXPECT_EQ(expanded.valueOf("//AuthNetRecord[1]/L2Tax"), "14.40");
    delimiter = ",";
    auto standard = csvFileToXml(test::dataDir() / "batch" / "standard-utf8.txt", "AuthNetRecord",
                                 "AuthNetFile", delimiter);
    EXPECT_EQ(delimiter, "\t");
    EXPECT_EQ(standard.valueOf("//AuthNetRecord[1]/ResponseCode"), "1");
    EXPECT_EQ(standard.valueOf("//AuthNetRecord[1]/CustomerFirstName"), "S\xC3\xB8ren");
    EXPECT_EQ(standard.valueOf("//AuthNetRecord[1]/TotalAmount"), "1,250.00");
}

TEST(CsvLines, ConvertGivenLinesWithGivenNames) {
    const Fields names{"TransactionID", "Company"};
    std::vector<std::size_t> cut;
    auto doc = csvLinesToXml(names, {"1;A", "2;\"B;C\""}, "AuthNetRecord", "AuthNetFile", ";",
                             {FieldQuoting::Exported, &cut});
    EXPECT_EQ(doc.selectAll("//AuthNetRecord").size(), 2u);
    EXPECT_EQ(doc.valueOf("//AuthNetRecord[2]/Company"), "\"B");
    EXPECT_EQ(cut, std::vector<std::size_t>{1});
    EXPECT_EQ(csvLinesToXml(names, {}, "R", "Root", ";").toString(false), "<Root/>\n");
}

// A file shaped to make records huge makes small ones: blank lines make no record, and a
// header names at most kMaxFields columns, however many it repeats.
TEST(CsvFile, HoldsLittleWhateverTheShape) {
    test::TempDir dir;
    std::string names;
    for (int i = 0; i < 3000; ++i) {
        names += (i % 2 ? "n" + std::to_string(i) : std::string("Same")) + ",";
    }
    std::string delimiter = ",";
    auto doc = convert(dir, names + "\n" + std::string(8000, '\n'), delimiter);
    EXPECT_EQ(doc.toString(false), "<AuthNetFile/>\n");

    doc = convert(dir, names + "\na,x," + std::string(5000, ',') + "\"late\n", delimiter);
    const auto records = doc.selectAll("//AuthNetRecord");
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].selectAll("*").size(), kMaxFields);
    EXPECT_EQ(records[0].valueOf("n1"), "x");
    EXPECT_EQ(records[0].valueOf("n1023"), "");
    EXPECT_TRUE(records[0].selectAll("n1025").empty());
}

}  // namespace
}  // namespace dorvane::batch
