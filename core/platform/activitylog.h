// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — "Activity.log": the details of what went out and came in, for the history.
//
// The sent log, the reminder log and the import log say only which transaction and when; this
// log says the rest: the number, the amount, the other party, the address and the outcome. It
// is written beside them, one record per event the moment it happens:
//   Activity<TAB>event=sent<TAB>when=2026-11-18 10:00:00<TAB>type=Invoice<TAB>txn=…<TAB>…
// CR LF after each, one line. Values are escaped (backslash, tab, CR and LF as \\, \t, \r and
// \n), so no value can end a record or forge a field. Unknown fields are kept out of the way;
// lines that are not records are skipped.
//
// It is best effort: a record that cannot be written is lost, and never stops a send or an
// import nor changes what the other logs get.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorvane::platform {

class ProgramFolder;

inline constexpr const char* kActivityLogFile = "Activity.log";

// The events recorded (the `event` field).
inline constexpr std::string_view kActivitySent = "sent";        // a document went out
inline constexpr std::string_view kActivityTest = "test";        // a test copy went out
inline constexpr std::string_view kActivityImport = "import";    // an exchange file was booked
inline constexpr std::string_view kActivityReceipt = "receipt";  // a pasted receipt was booked
inline constexpr std::string_view kActivityBatch = "batch";  // the batch import booked a receipt

struct Activity {
    std::string event{};
    std::string when{};  // clock::localDateTimeText; filled in when written without
    std::string kind{};  // an import's: the kind of document that came in ("Invoice")
    std::string type{};  // the document's type; an import's: what it was booked as ("Bill")
    std::string txnId{};
    std::string number{};
    std::string amount{};
    std::string party{};  // customer or vendor
    std::string address{};
    std::string outcome{};
};

// One record, line break included.
std::string activityRecord(const Activity& activity);

// Every record of a log text, in file order; lines without an event are skipped.
std::vector<Activity> parseActivityLog(std::string_view text);

// Appends one record (its `when` now when empty); a failure is swallowed.
void noteActivity(const ProgramFolder& folder, Activity activity);

}  // namespace dorvane::platform
