// SPDX-License-Identifier: GPL-3.0-or-later
// Output for scripts: `--json` prints one document a script can read, with the facts the text
// shows; the text list heads every column.
#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/clirun.h"

namespace dorvane::test {
namespace {

using Json = nlohmann::json;

TEST_F(Cli, JsonOutputHoldsTheFactsOfTheText) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    struct Case {
        std::string args;
        std::string pointer;  // a fact in the document
        Json value;
        int code = 0;
    };
    const std::string batch = (dataDir() / "batch" / "standard-utf8.txt").string();
    const std::string receipt = (home / "stranger.txt").string();
    writeFile(receipt, "Company : Stranger Things Ltd\r\nAmount : 5.00\r\nTransaction ID : 99\r\n");
    const Case cases[] = {
        {"list invoice --timeframe all --json", "/type", "Invoice"},
        {"list Invoice --timeframe ALL --json", "/rows/0/state", "Ready to send"},
        {"company --json", "/company/0", "Harbor Lane Landscaping"},
        {"settings list SMTP --json", "/settings/1", Json::parse(R"({"section": "SMTP",
            "key": "Port", "value": "25", "stored": false, "default": "25",
            "meaning": "the SMTP server's port", "allowed": "a port number from 1 to 65535"})")},
        {"send Invoice --timeframe ALL --preview --json", "/preview", true},
        {"webconnector status --json", "/connection", "sandbox"},
        {"handheld status --json", "/deviceFolder", nullptr, 2},
        {"import --receipt " + receipt + " --json", "/booked", false, 1},
        {"import-batch " + batch + " --json", "/records/0/outcome", "added"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        ASSERT_EQ(dorvane(c.args, "sandbox"), c.code) << err << out;
        const Json doc = Json::parse(out, nullptr, false);
        ASSERT_FALSE(doc.is_discarded()) << out;
        EXPECT_EQ(doc.value(Json::json_pointer(c.pointer), Json()), c.value) << out;
    }
}

// Every tab-separated line of `list` has as many cells as the header line.
TEST_F(Cli, ListHeadsEveryColumn) {
    ASSERT_EQ(newDemo(), 0) << err;
    ASSERT_EQ(dorvane("list Invoice --timeframe ALL", "sandbox"), 0) << err;
    std::istringstream lines(out);
    std::string header;
    std::getline(lines, header);
    EXPECT_EQ(header.rfind("Checked\t", 0), 0u) << header;
    const auto cells = [](const std::string& line) { return std::ranges::count(line, '\t'); };
    int rows = 0;
    for (std::string line; std::getline(lines, line); ++rows) {
        EXPECT_EQ(cells(line), cells(header)) << line;
        EXPECT_NE(line.back(), ' ') << line;
    }
    EXPECT_GT(rows, 0);
    EXPECT_EQ(err.find(" \n"), std::string::npos) << err;
}

// --open adds each invoice's number and open balance after the status, --unpaid leaves out the
// paid ones, and --json rows carry both.
TEST_F(Cli, ListOpenAndUnpaid) {
    ASSERT_EQ(newDemo(), 0) << err;
    ASSERT_EQ(dorvane("list Invoice --timeframe ALL --json", "sandbox"), 0) << err;
    EXPECT_FALSE(Json::parse(out)["rows"][0].contains("openBalance")) << "off by default";
    ASSERT_EQ(dorvane("list Invoice --timeframe ALL --open --json", "sandbox"), 0) << err;
    const Json open = Json::parse(out);
    ASSERT_EQ(dorvane("list Invoice --timeframe ALL --unpaid --json", "sandbox"), 0) << err;
    const Json unpaid = Json::parse(out);
    EXPECT_EQ(open["columns"].back(), "Open Balance");
    std::vector<std::string> owing;
    for (const Json& row : open["rows"]) {
        EXPECT_EQ(row["state"], row["cells"][5]) << "the status column, not the last";
        EXPECT_EQ(row["number"], row["cells"][6]);
        EXPECT_EQ(row["openBalance"], row["cells"][7]);
        if (std::stod(row["openBalance"].get<std::string>()) > 0) {
            owing.push_back(row["key"]);
        }
    }
    std::vector<std::string> listed;
    for (const Json& row : unpaid["rows"]) {
        listed.push_back(row["key"]);
    }
    EXPECT_EQ(listed, owing);
    EXPECT_LT(listed.size(), open["rows"].size()) << "the demo has paid invoices";

    ASSERT_EQ(dorvane("list Invoice --timeframe ALL --unpaid", "sandbox"), 0) << err;
    EXPECT_EQ(out.substr(0, out.find('\n')),
              "Checked\tDate\tInvoice ID\tCustomer:Job\tBalance\tEMail\tStatus\tNo.\tOpen "
              "Balance");
    EXPECT_EQ(std::ranges::count(out, '\n'), static_cast<long>(listed.size()) + 1);
}

}  // namespace
}  // namespace dorvane::test
