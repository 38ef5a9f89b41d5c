// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the history: one line per document that went out or came in, read from the logs.
//
// The sent log, the reminder log and the import log are the record of what happened; each of
// their records is one event. What they do not say (number, amount, party, address, outcome)
// comes from the activity log (platform/activitylog.h) when a record of it matches: the same
// event and transaction, the n-th record of a transaction matching the n-th. Exchange-file
// imports are in the activity log alone. A user may edit any of these files: whatever does not
// read as a record is passed over, and every value is shown as the file has it.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::history {

// The event kinds, in the order the summary counts them.
inline constexpr std::array<std::string_view, 11> kEventNames = {
    "sent",
    "sent again",
    "test",
    "reminder 1",
    "reminder 2",
    "reminder 3",
    "test reminder",
    "import",
    "receipt import",
    "batch import",
    "receipt or batch import",
};

struct Event {
    std::string when;     // YYYY-MM-DD HH:MM:SS; as the log wrote it when it does not read
    std::string sortKey;  // "YYYY-MM-DD HH:MM:SS" read from `when`; see `dated`
    bool dated = false;   // `when` read as a date; otherwise sortKey is the previous record's
    std::string event;    // one of kEventNames
    std::string type;     // the document's type; an import's "Invoice → Bill"
    std::string number;   // its number; an Authorize.Net transaction's ID
    std::string amount;
    std::string party;    // customer or vendor
    std::string address;  // where it went
    std::string outcome;
    std::string txnId;
};

// The texts of the logs (a missing file is empty).
struct LogTexts {
    std::string sent;
    std::string reminders;
    std::string imports;
    std::string activity;
};

LogTexts readLogs(const platform::ProgramFolder& folder);

// Every event of the logs, oldest first (events of the same moment in log order).
std::vector<Event> joinHistory(const LogTexts& logs);

// "YYYY-MM-DD HH:MM:SS" for a date as a log may hold it: "2026-11-18 10:00:00",
// "2026-11-18T10:00:00", "11/18/2026 10:00:00 AM", "18.11.2026 10:00"; "" when it is none.
std::string sortableDate(std::string_view when);

// Whether `date` is a real calendar date written YYYY-MM-DD.
bool isIsoDate(std::string_view date);

struct Filter {
    std::string type{};      // the event, its first word, or the document type (any case)
    std::string since{};     // YYYY-MM-DD, inclusive; empty: from the start
    std::string until{};     // YYYY-MM-DD, inclusive; empty: up to now
    std::string customer{};  // a part of the party's name (any case)
};

// The events that pass. With a date bound, an event whose date could not be read is left out.
// They stay where they are: a filter costs a pointer per event that passes.
std::vector<const Event*> filterHistory(std::span<const Event> events, const Filter& filter);

// "3 events: 2 sent, 1 import" (kinds without events left out, the others in kEventNames
// order); "No events".
std::string summaryText(std::span<const Event> events);
std::string summaryText(std::span<const Event* const> events);

}  // namespace dorvane::history
