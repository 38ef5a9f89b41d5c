// SPDX-License-Identifier: GPL-3.0-or-later
// The history: every record of the logs once, joined with its details when they match, in
// order of time; filters; the window's list.
#include "history/history.h"

#include <gtest/gtest.h>

#include "browser/sentlog.h"
#include "history/historywindow.h"
#include "import/importlog.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "remind/reminderlog.h"
#include "support/testsupport.h"

namespace dorvane::history {
namespace {

using platform::Activity;

std::string detail(Activity a) {
    return platform::activityRecord(a);
}

// The logs of a small office: an invoice sent twice, a test copy, a reminder, an exchange file
// booked and one refused, a pasted receipt and a batch receipt, old date shapes and junk.
LogTexts craftedLogs() {
    LogTexts logs;
    logs.sent = std::string(
        "<Invoice><TxnID>T-1</TxnID><SentDate>11/03/2026 9:05:00 PM</SentDate></Invoice>"
        "junk <Invoice><TxnID>T-2</TxnID><SentDate>2026-11-02 08:00:00</SentDate>"
        "</Invoice>\r\n<Estimate><TxnID>T-3</TxnID><SentDate>yesterday</SentDate>"
        "</Estimate>\r\n"
        "<TestInvoice><TestTxnID>T-&lt;4&gt;</TestTxnID><SentTo>test@example.com"
        "</SentTo><SentDate>2026-11-03 09:00:00</SentDate></TestInvoice>\r\n"
        "<Invoice><TxnID>T-1</TxnID><SentDate>2026-11-05 10:00:00</SentDate></Invoice>"
        "<Invoice><TxnID>T-9</TxnID><Sent");
    remind::ReminderRecord r;
    r.txnId = "T-2";
    r.stage = 2;
    r.refNumber = "1002";
    r.customer = "Dunn & Co";
    r.balance = "80.00";
    r.sentTo = "ap@dunn.example";
    r.sentDate = "2026-11-06T09:00:00";
    logs.reminders = remind::reminderRecord(r);
    logs.imports =
        "<AuthNetBatchImport><TxnID>A-1</TxnID><RecordDate>2026-11-07 12:00:00"
        "</RecordDate></AuthNetBatchImport>\r\n"
        "<AuthNetBatchImport><TxnID>A-2</TxnID><RecordDate>18.11.2026 13:00"
        "</RecordDate></AuthNetBatchImport>\r\n"
        "<AuthNetBatchImport><TxnID>A-3</TxnID><RecordDate>2026-11-08 12:00:00"
        "</RecordDate></AuthNetBatchImport>\r\n";
    logs.activity =
        detail({.event = "sent",
                .when = "x",
                .type = "Invoice",
                .txnId = "T-1",
                .number = "1001",
                .amount = "50.00",
                .party = "Tab\tby\\ \"Name\"\r\nActivity\tevent=import",
                .address = "a@x.example",
                .outcome = "sent"}) +
        "not a record\r\nActivity\tno fields\r\n" +
        detail({.event = "sent",
                .when = "x",
                .type = "Invoice",
                .txnId = "T-1",
                .number = "1001b",
                .party = "Second"}) +
        detail({.event = "test",
                .type = "Invoice",
                .txnId = "T-<4>",
                .number = "1004",
                .party = "Tester"}) +
        detail({.event = "import",
                .when = "2026-11-09 10:00:00",
                .kind = "Invoice",
                .type = "Bill",
                .number = "77",
                .amount = "12.50",
                .party = "Vendor Ltd",
                .outcome = "booked"}) +
        detail({.event = "import",
                .when = "2026-11-10 10:00:00",
                .kind = "Estimate",
                .type = "PurchaseOrder",
                .number = "78",
                .outcome = "refused: no vendor"}) +
        detail({.event = "batch", .txnId = "A-1", .amount = "20.00", .party = "Buyer One"}) +
        detail({.event = "receipt", .txnId = "A-3", .amount = "30.00", .party = "Buyer Two"}) +
        detail({.event = "sent", .txnId = "T-never", .party = "not in the sent log"});
    return logs;
}

TEST(History, JoinsEveryLogRecordWithItsDetailsInOrderOfTime) {
    const std::vector<Event> events = joinHistory(craftedLogs());
    std::vector<std::string> seen;
    for (const Event& e : events) {
        seen.push_back(e.event + "|" + e.type + "|" + e.number + "|" + e.amount + "|" + e.party +
                       "|" + e.address + "|" + e.outcome);
    }
    const std::vector<std::string> expected = {
        "sent|Invoice|||||sent",  // T-2: no details
        // "yesterday" keeps its place after the record before it in its log
        "sent|Estimate|||||sent",
        "test|Invoice|1004||Tester|test@example.com|test copy",
        "sent|Invoice|1001|50.00|Tab\tby\\ \"Name\"\r\nActivity\tevent=import|a@x.example|sent",
        "sent again|Invoice|1001b||Second||sent",
        "sent|Invoice|||||sent",  // T-9, cut off: no date, stays after its log's record before
        "reminder 2|Invoice|1002|80.00|Dunn & Co|ap@dunn.example|sent",
        "batch import|SalesReceipt|A-1|20.00|Buyer One||booked",
        "receipt import|SalesReceipt|A-3|30.00|Buyer Two||booked",
        "import|Invoice → Bill|77|12.50|Vendor Ltd||booked",
        "import|Estimate → PurchaseOrder|78||||refused: no vendor",
        "receipt or batch import|SalesReceipt|A-2||||booked",
    };
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(events[0].when, "2026-11-02 08:00:00");
    EXPECT_EQ(events[1].when, "yesterday");
    EXPECT_FALSE(events[1].dated);
    EXPECT_EQ(events[2].txnId, "T-<4>");
    EXPECT_EQ(events[3].sortKey, "2026-11-03 21:05:00");
    EXPECT_EQ(events[11].sortKey, "2026-11-18 13:00:00");
    EXPECT_EQ(summaryText(events),
              "12 events: 4 sent, 1 sent again, 1 test, 1 reminder 2, 2 import, 1 receipt "
              "import, 1 batch import, 1 receipt or batch import");
    EXPECT_EQ(summaryText(std::span<const Event>{}), "No events");
}

TEST(History, HostileLogsNeverBreakTheRecordsAround) {
    LogTexts logs;
    logs.sent = std::string(100000, '<') +
                "<a><b><Invoice><TxnID>OK</TxnID><SentDate>"
                "2026-11-01 10:00:00</SentDate></Invoice>" +
                std::string(50000, '>') + "<Invoice><TxnID>" + std::string(3, '\0') + "<";
    logs.imports = "<x><TxnID>";
    logs.activity = "Activity\tevent=sent\ttxn=OK\tparty=\\";
    const auto events = joinHistory(logs);
    ASSERT_EQ(events.size(), 2u);  // a blank ID is no transaction
    EXPECT_EQ(events[0].txnId, "OK");
    EXPECT_EQ(events[0].party, "\\");
    EXPECT_EQ(events[1].txnId, std::string(3, '\0'));
}

TEST(History, DatesOfEveryShapeSortAsTime) {
    const std::pair<const char*, const char*> cases[] = {
        {"2026-11-18 10:00:00", "2026-11-18 10:00:00"},
        {"2026-11-18T07:08:09", "2026-11-18 07:08:09"},
        {"11/18/2026 12:30:00 AM", "2026-11-18 00:30:00"},
        {"1/2/26 1:02 pm", "2026-01-02 13:02:00"},
        {"18.11.2026 23:59", "2026-11-18 23:59:00"},
        {"2024-02-29", "2024-02-29 00:00:00"},
        {"2026-02-29", ""},
        {"2026-11-18 24:00:00", ""},
        {"13/01/2026 10:00:00", ""},
        {"11/18/2026 13:00 PM", ""},
        {"2026-11-18 10:00 tomorrow", ""},
        {"20261118", ""},
        {"", ""},
    };
    for (const auto& [when, key] : cases) {
        EXPECT_EQ(sortableDate(when), key) << when;
    }
    EXPECT_TRUE(isIsoDate("2026-11-18"));
    EXPECT_FALSE(isIsoDate("2026-11-31"));
    EXPECT_FALSE(isIsoDate("2026-11-18 10:00"));
    EXPECT_FALSE(isIsoDate("18.11.2026"));
}

TEST(History, FiltersByTypeDatesAndParty) {
    const std::vector<Event> events = joinHistory(craftedLogs());
    auto count = [&](Filter f) { return filterHistory(events, f).size(); };
    const std::pair<Filter, std::size_t> cases[] = {
        {{}, 12},
        {{.type = "INVOICE"}, 7},  // sent and reminded invoices, and the booked one
        {{.type = "sent"}, 5},     // "sent again" too
        {{.type = "sent again"}, 1},
        {{.type = "reminder"}, 1},
        {{.type = "bill"}, 1},
        {{.type = "test"}, 1},
        {{.since = "2026-11-05", .until = "2026-11-09"}, 5},
        {{.since = "2026-11-18"}, 1},  // undated events are left out
        {{.until = "2026-11-02"}, 1},
        {{.customer = "BUYER"}, 2},
        {{.type = "salesreceipt", .customer = "two"}, 1},
    };
    for (const auto& [filter, n] : cases) {
        EXPECT_EQ(count(filter), n)
            << filter.type << " " << filter.since << " " << filter.until << " " << filter.customer;
    }
}

TEST(History, WindowListsFiltersAndCounts) {
    test::TempDir temp;
    const platform::ProgramFolder folder(temp.path());
    HistoryWindow window(folder);
    window.reload();
    EXPECT_EQ(window.list().rowCount(), 0);
    EXPECT_EQ(window.statusText(), "Nothing went out or came in yet");
    EXPECT_EQ(window.list().columns().size(), std::size(kHistoryColumns));

    const LogTexts logs = craftedLogs();
    ASSERT_TRUE(folder.appendProgramFile(logs.sent, browser::kSentLogFile));
    ASSERT_TRUE(folder.appendProgramFile(logs.imports, imports::kBatchLogFile));
    ASSERT_TRUE(folder.appendProgramFile(logs.activity, platform::kActivityLogFile));
    window.reload();
    EXPECT_EQ(window.list().rowCount(), 11);
    EXPECT_EQ(window.list().row(0).cells[0], "2026-11-02 08:00:00");

    EXPECT_TRUE(window.setFilter({.type = "import"}));
    EXPECT_EQ(window.list().rowCount(), 2);
    EXPECT_EQ(window.countsText(), "2 events: 2 import (of 11)");
    EXPECT_EQ(window.list().row(1).cells[7], "refused: no vendor");

    EXPECT_FALSE(window.setFilter({.since = "18.11.2026"}));
    EXPECT_EQ(window.list().rowCount(), 2);
    EXPECT_NE(window.statusText().find("YYYY-MM-DD"), std::string::npos);
}

}  // namespace
}  // namespace dorvane::history
