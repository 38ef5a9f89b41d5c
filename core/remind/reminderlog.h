// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — "Reminders.log": which overdue invoices were reminded at which stage.
//
// One record per invoice of a reminder message, CR LF after each:
//   <Reminder><TxnID>id</TxnID><Stage>2</Stage><RefNumber>50</RefNumber>
//   <Customer>name</Customer><TxnDate>2026-09-01</TxnDate><DueDate>2026-10-01</DueDate>
//   <Balance>120.00</Balance><SentTo>address</SentTo><SentDate>2026-11-18T10:00:00</SentDate>
//   </Reminder>
// (one line in the file). The records of one message are appended in one write the moment
// the server accepted it, so a run killed at any point never reminds an invoice twice at the
// same stage. A copy that test mode sent to the test address is a <TestReminder> record with
// the same fields: on record, but the invoice still counts as not reminded.
//
// Every value is escaped as element text, so no value can end a record early or forge one.
// The reader takes what it recognises and skips what it does not.
#pragma once

#include <chrono>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/clock.h"

namespace dorvane::remind {

inline constexpr const char* kReminderLogFile = "Reminders.log";

struct ReminderRecord {
    std::string txnId;
    int stage = 0;  // 1 friendly, 2 firm, 3 final
    std::string refNumber;
    std::string customer;
    std::string txnDate;  // YYYY-MM-DD
    std::string dueDate;  // YYYY-MM-DD
    std::string balance;  // the open balance when reminded, two decimals
    std::string sentTo;
    std::string sentDate;  // local time, YYYY-MM-DDTHH:MM:SS
    bool test = false;     // went to the test address only
};

// The local time as a record's SentDate.
std::string reminderDateText(std::chrono::system_clock::time_point when = clock::now());

// One record, line break included.
std::string reminderRecord(const ReminderRecord& record);

// Every record of a log text, in file order, with or without the line breaks between them;
// text that is not a record is skipped.
std::vector<ReminderRecord> parseReminderLog(std::string_view text);

// Which invoice went out at which stage (test copies left out).
class ReminderLogIndex {
public:
    ReminderLogIndex() = default;
    explicit ReminderLogIndex(std::string_view text) { add(text); }
    void add(std::string_view text);
    // True when a reminder of `stage` (or a later one) went out for the invoice.
    bool reminded(std::string_view txnId, int stage) const;
    // The latest stage that went out for the invoice; 0 when none did.
    int stageOf(std::string_view txnId) const;

private:
    std::set<std::pair<std::string, int>, std::less<>> m_sent;
};

}  // namespace dorvane::remind
