// SPDX-License-Identifier: GPL-3.0-or-later
// The reminder log: records read back as written, whatever the values hold, and the index
// answers which stage an invoice reached.
#include "remind/reminderlog.h"

#include <gtest/gtest.h>

namespace dorvane::remind {
namespace {

ReminderRecord record(std::string txnId, int stage, bool test = false) {
    ReminderRecord r;
    r.txnId = std::move(txnId);
    r.stage = stage;
    r.refNumber = "50";
    r.customer = "Smith & <Sons> \"Ltd\"\r</Customer><Stage>9";
    r.txnDate = "2026-09-01";
    r.dueDate = "2026-10-01";
    r.balance = "120.00";
    r.sentTo = "a@example.com";
    r.sentDate = "2026-11-18T10:00:00";
    r.test = test;
    return r;
}

TEST(ReminderLog, RecordsReadBackAndIndexAnswersByStage) {
    std::string log = reminderRecord(record("A-1", 1)) + "garbage line\r\n" +
                      reminderRecord(record("A-1", 2)) + reminderRecord(record("B-2", 3, true)) +
                      "<Reminder><TxnID>C-3</TxnID><Stage>x</Stage></Reminder>\r\n" +
                      reminderRecord(record("A-10", 1));
    const auto records = parseReminderLog(log);
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(records[0].customer, "Smith & <Sons> \"Ltd\"\r</Customer><Stage>9");
    EXPECT_EQ(records[1].stage, 2);
    EXPECT_TRUE(records[2].test);
    EXPECT_EQ(records[3].sentDate, "2026-11-18T10:00:00");

    std::string joined;  // as a program file reads it: no line breaks
    for (char c : log) {
        if (c != '\r' && c != '\n') {
            joined += c;
        }
    }
    EXPECT_EQ(parseReminderLog(joined).size(), 4u);

    const ReminderLogIndex index(joined);
    EXPECT_EQ(index.stageOf("A-1"), 2);
    EXPECT_TRUE(index.reminded("A-1", 1));
    EXPECT_FALSE(index.reminded("A-1", 3));
    EXPECT_EQ(index.stageOf("A-10"), 1);
    EXPECT_EQ(index.stageOf("A"), 0);    // no prefix matches
    EXPECT_EQ(index.stageOf("B-2"), 0);  // a test copy reminds nobody
    EXPECT_EQ(index.stageOf("C-3"), 0);
}

}  // namespace
}  // namespace dorvane::remind
