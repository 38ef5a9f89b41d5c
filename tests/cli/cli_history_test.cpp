// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane history` after real work: invoices mailed through an SMTP server, exchange files
// booked (and one refused) and an Authorize.Net download imported into the sandbox, each
// listed with its own number, amount and party.
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

#include "support/clirun.h"
#include "support/mailservers.h"

namespace dorvane::test {
namespace {

using Json = nlohmann::json;

std::string exchangeInvoice(const std::string& number, const std::string& date) {
    return "<?xml version=\"1.0\" ?><InvoiceRet><TxnDate>" + date + "</TxnDate><RefNumber>" +
           number +
           "</RefNumber><InvoiceLineRet><ItemRef><FullName>Design</FullName></ItemRef>"
           "<Quantity>2</Quantity><Rate>40.00</Rate><Amount>80.00</Amount></InvoiceLineRet>"
           "<CompanyRet><CompanyName>Latecomer Ltd</CompanyName></CompanyRet></InvoiceRet>";
}

TEST_F(Cli, HistoryListsWhatWentOutAndCameIn) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    ASSERT_EQ(dorvane("history", "sandbox"), 0) << err;
    EXPECT_EQ(out, "Nothing went out or came in yet.\n");

    // What the list says of each invoice: its number and amount.
    ASSERT_EQ(dorvane("list Invoice --open --json", "sandbox"), 0) << err;
    std::map<std::string, std::pair<std::string, std::string>> invoices;
    const Json list = Json::parse(out);
    for (const Json& row : list["rows"]) {
        invoices[row["key"]] = {row["number"], row["cells"][3]};
    }
    SmtpTestServer server;
    for (const std::string& s :
         {std::string("SMTP Hostname 127.0.0.1"), "SMTP Port " + server.portText()}) {
        ASSERT_EQ(dorvane("settings set " + s), 0) << err;
    }
    ASSERT_EQ(dorvane("send Invoice --json", "sandbox"), 0) << err;
    std::vector<Json> wanted;
    const Json run = Json::parse(out);
    for (const Json& d : run["documents"]) {
        if (d["outcome"] == "sent") {
            const auto& [number, amount] = invoices.at(d["key"]);
            wanted.push_back({{"event", "sent"},
                              {"type", "Invoice"},
                              {"number", number},
                              {"amount", amount},
                              {"party", d["name"]},
                              {"address", d["recipient"]},
                              {"outcome", "sent"},
                              {"txnId", d["key"]}});
        }
    }
    ASSERT_GE(wanted.size(), 2u);

    writeFile(home / "n1.dvx", exchangeInvoice("N-1", "2026-11-02"));
    writeFile(home / "late.dvx", exchangeInvoice("L-1", "2026-02-30"));
    ASSERT_EQ(
        dorvane("import " + (home / "n1.dvx").string() + " --vendor 'union hardware'", "sandbox"),
        0)
        << out << err;
    wanted.push_back({{"event", "import"},
                      {"type", "Invoice → Bill"},
                      {"number", "N-1"},
                      {"amount", "80.00"},
                      {"party", "Union Hardware"},
                      {"address", ""},
                      {"outcome", "booked"},
                      {"txnId", ""}});
    ASSERT_EQ(dorvane("--yes import " + (home / "late.dvx").string(), "sandbox"), 1) << out;

    ASSERT_EQ(
        dorvane("import-batch " + (dataDir() / "batch" / "standard-utf8.txt").string() + " --json",
                "sandbox"),
        0)
        << err;
    const Json batch = Json::parse(out);
    ASSERT_GT(batch["added"], 0) << out;
    for (const Json& r : batch["records"]) {
        if (r["outcome"] == "added") {
            wanted.push_back({{"event", "batch import"},
                              {"type", "SalesReceipt"},
                              {"number", r["transactionId"]},
                              {"amount", r["amount"]},
                              {"party", r["company"]},
                              {"address", ""},
                              {"outcome", "booked"},
                              {"txnId", r["transactionId"]}});
        }
    }

    ASSERT_EQ(dorvane("history --json", "sandbox"), 0) << err;
    Json listed = Json::parse(out);
    ASSERT_EQ(listed.size(), wanted.size() + 1) << listed.dump(1);
    Json refused;
    for (Json& e : listed) {
        EXPECT_TRUE(e["when"].get<std::string>().starts_with("2026-11-18 ")) << e;
        e.erase("when");
        if (e["number"] == "L-1") {
            refused = e;
        }
    }
    for (const Json& w : wanted) {
        EXPECT_NE(std::find(listed.begin(), listed.end(), w), listed.end()) << w;
    }
    EXPECT_EQ(refused["event"], "import");
    EXPECT_TRUE(refused["outcome"].get<std::string>().starts_with("refused: ")) << refused;

    ASSERT_EQ(dorvane("history --type bill --customer UNION", "sandbox"), 0) << err;
    EXPECT_NE(out.find("\timport\tInvoice → Bill\tN-1\t80.00\tUnion Hardware\t\tbooked\n"),
              std::string::npos)
        << out;
    EXPECT_TRUE(out.ends_with("\n1 event: 1 import\n")) << out;
    EXPECT_EQ(dorvane("history --until 2026-11-31", "sandbox"), 64);
}

}  // namespace
}  // namespace dorvane::test
