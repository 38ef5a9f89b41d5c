// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/history.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>

#include "browser/sentlog.h"
#include "common/files.h"
#include "common/text.h"
#include "import/importlog.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "remind/reminderlog.h"
#include "xml/xml.h"

namespace dorvane::history {
namespace {

// ---- the records of the sent log and the import log --------------------------------------

// One "<Name><Tag>text</Tag>…</Name>" record: its name and the texts of its children.
struct RawRecord {
    std::string_view name;
    std::vector<std::pair<std::string_view, std::string_view>> fields;

    std::string_view field(std::string_view tag) const {
        for (const auto& [t, value] : fields) {
            if (t == tag) {
                return value;
            }
        }
        return {};
    }
};

// A record has a handful of children; more is not a record of ours, and is not kept.
constexpr std::size_t kMaxFields = 8;

// Reads the records of a log in one pass: every step moves on to the next "<", so a text of
// any shape costs time in proportion to its length. Line breaks between records (or written
// into one) do not matter.
class RecordReader {
public:
    explicit RecordReader(std::string_view text) : m_text(text) {}

    bool next(RawRecord& record) {
        for (;;) {
            m_at = m_text.find('<', m_at);
            if (m_at == std::string_view::npos) {
                return false;
            }
            const auto name = tag();
            if (name.empty() || name.starts_with('/')) {
                continue;
            }
            record.name = name;
            record.fields.clear();
            readFields(record);
            if (!record.fields.empty()) {
                return true;
            }
        }
    }

private:
    // The tag at m_at (a "<"), moving past its ">"; "" (at the next "<") when none closes it.
    std::string_view tag() {
        if (m_at >= m_text.size()) {
            return {};
        }
        const std::size_t from = m_at + 1;
        std::size_t p = from;
        while (p < m_text.size() && m_text[p] != '>' && m_text[p] != '<') {
            ++p;
        }
        if (p == m_text.size() || m_text[p] == '<') {
            m_at = p;
            return {};
        }
        m_at = p + 1;
        return m_text.substr(from, p - from);
    }

    // The text up to the next "<" (or the end).
    std::string_view text() {
        const std::size_t from = m_at;
        m_at = std::min(m_text.find('<', from), m_text.size());
        return m_text.substr(from, m_at - from);
    }

    void readFields(RawRecord& record) {
        while (m_at < m_text.size() && m_text[m_at] == '<') {
            const std::size_t start = m_at;
            const auto child = tag();
            if (child.empty() || child.starts_with('/')) {
                if (child.size() > 1 && child.substr(1) == record.name) {
                    return;  // the record's end
                }
                m_at = start;
                return;
            }
            const auto value = text();
            const auto close = tag();
            if (close.empty()) {
                if (m_at == m_text.size()) {
                    addField(record, child, value);  // the log's last record, cut off
                }
                return;
            }
            if (close.size() != child.size() + 1 || !close.starts_with('/') ||
                close.substr(1) != child) {
                // Not a child of ours: perhaps the start of the next record.
                m_at = start;
                return;
            }
            addField(record, child, value);
        }
    }

    static void addField(RawRecord& record, std::string_view tag, std::string_view value) {
        if (record.fields.size() < kMaxFields) {
            record.fields.emplace_back(tag, value);
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

// ---- dates -----------------------------------------------------------------------------

// Reads an unsigned number of 1 to `maxDigits` digits at `p`.
bool readNumber(std::string_view s, std::size_t& p, int maxDigits, int& value) {
    const std::size_t from = p;
    value = 0;
    while (p < s.size() && p - from < static_cast<std::size_t>(maxDigits) && s[p] >= '0' &&
           s[p] <= '9') {
        value = value * 10 + (s[p++] - '0');
    }
    return p > from && (p == s.size() || s[p] < '0' || s[p] > '9');
}

bool validDate(int year, int month, int day) {
    return year >= 1 &&
           std::chrono::year_month_day{std::chrono::year{year},
                                       std::chrono::month{static_cast<unsigned>(month)},
                                       std::chrono::day{static_cast<unsigned>(day)}}
               .ok();
}

// ---- the join ----------------------------------------------------------------------------

// The details of each transaction's events, in file order, taken one by one as the events of
// the other logs come.
class Details {
public:
    explicit Details(std::vector<platform::Activity> records) : m_records(std::move(records)) {
        for (std::size_t i = 0; i < m_records.size(); ++i) {
            const auto& a = m_records[i];
            if (a.event != platform::kActivityImport) {
                m_queues[key(group(a.event), a.txnId)].records.push_back(i);
            }
        }
    }

    const platform::Activity* take(std::string_view event, std::string_view txnId) {
        const auto found = m_queues.find(key(group(event), txnId));
        if (found == m_queues.end() || found->second.empty()) {
            return nullptr;
        }
        return &m_records[found->second.take()];
    }

    const std::vector<platform::Activity>& records() const { return m_records; }

private:
    // A pasted receipt and the batch import write the same import-log record.
    static std::string_view group(std::string_view event) {
        return event == platform::kActivityBatch ? platform::kActivityReceipt : event;
    }
    static std::string key(std::string_view event, std::string_view txnId) {
        std::string k(event);
        k += '\t';
        k += txnId;
        return k;
    }

    // The records of one transaction's events, in file order, and how many were taken. A
    // transaction mostly has one, so a vector (not a deque, which takes a block each) holds them.
    struct Queue {
        std::vector<std::size_t> records;
        std::size_t taken = 0;
        bool empty() const { return taken == records.size(); }
        std::size_t take() { return records[taken++]; }
    };

    std::vector<platform::Activity> m_records;
    std::unordered_map<std::string, Queue> m_queues;
};

void fillFrom(Event& e, const platform::Activity& a) {
    e.number = a.number;
    e.amount = a.amount;
    e.party = a.party;
    e.address = a.address;
    if (!a.outcome.empty()) {
        e.outcome = a.outcome;
    }
}

// Dates the events of one log, from `from` on, in file order: an event whose date does not read
// sorts with the one before it.
void dateAll(std::vector<Event>& events, std::size_t from) {
    std::string previous;
    for (std::size_t i = from; i < events.size(); ++i) {
        Event& e = events[i];
        e.sortKey = sortableDate(e.when);
        e.dated = !e.sortKey.empty();
        if (e.dated) {
            // Every log's dates read alike: "YYYY-MM-DD HH:MM:SS".
            previous = e.when = e.sortKey;
        } else {
            e.sortKey = previous;
        }
    }
}

std::vector<Event> sentEvents(std::string_view log, Details& details) {
    std::vector<Event> events;
    std::unordered_set<std::string> sentBefore;
    RecordReader reader(log);
    RawRecord r;
    while (reader.next(r)) {
        Event e;
        const bool test = r.name.starts_with("Test") && !text::trim(r.field("TestTxnID")).empty();
        if (test) {
            e.txnId = xml::unescapeText(r.field("TestTxnID"));
            e.type = std::string(r.name.substr(4));
            e.address = xml::unescapeText(r.field("SentTo"));
            e.event = "test";
            e.outcome = "test copy";
        } else if (!text::trim(r.field("TxnID")).empty()) {
            e.txnId = std::string(r.field("TxnID"));
            e.type = std::string(r.name);
            e.event = sentBefore.insert(e.txnId).second ? "sent" : "sent again";
            e.outcome = "sent";
        } else {
            continue;
        }
        e.when = std::string(r.field("SentDate"));
        if (const auto* a =
                details.take(test ? platform::kActivityTest : platform::kActivitySent, e.txnId)) {
            const std::string address = e.address;
            fillFrom(e, *a);
            if (e.address.empty()) {
                e.address = address;
            }
        }
        events.push_back(std::move(e));
    }
    return events;
}

std::vector<Event> importLogEvents(std::string_view log, Details& details) {
    std::vector<Event> events;
    RecordReader reader(log);
    RawRecord r;
    while (reader.next(r)) {
        if (text::trim(r.field("TxnID")).empty()) {
            continue;  // no transaction is known by a blank ID
        }
        Event e;
        e.txnId = std::string(r.field("TxnID"));
        e.number = e.txnId;
        e.when = std::string(r.field("RecordDate"));
        e.type = "SalesReceipt";
        e.event = "receipt or batch import";
        e.outcome = "booked";
        if (const auto* a = details.take(platform::kActivityReceipt, e.txnId)) {
            fillFrom(e, *a);
            e.number = e.txnId;
            e.event = a->event == platform::kActivityBatch ? "batch import" : "receipt import";
        }
        events.push_back(std::move(e));
    }
    return events;
}

std::vector<Event> reminderEvents(std::string_view log) {
    std::vector<Event> events;
    for (remind::ReminderRecord& r : remind::parseReminderLog(log)) {
        Event e;
        e.when = std::move(r.sentDate);
        e.event = r.test ? "test reminder" : "reminder " + std::to_string(std::min(r.stage, 3));
        e.type = "Invoice";
        e.number = std::move(r.refNumber);
        e.amount = std::move(r.balance);
        e.party = std::move(r.customer);
        e.address = std::move(r.sentTo);
        e.outcome = r.test ? "test copy" : "sent";
        e.txnId = std::move(r.txnId);
        events.push_back(std::move(e));
    }
    return events;
}

std::vector<Event> exchangeImportEvents(const Details& details) {
    std::vector<Event> events;
    for (const platform::Activity& a : details.records()) {
        if (a.event != platform::kActivityImport) {
            continue;
        }
        Event e;
        e.when = a.when;
        e.event = "import";
        e.type = a.kind.empty() ? a.type : a.type.empty() ? a.kind : a.kind + " → " + a.type;
        e.txnId = a.txnId;
        fillFrom(e, a);
        events.push_back(std::move(e));
    }
    return events;
}

bool containsIgnoringCase(std::string_view haystack, std::string_view needle) {
    const auto it = std::search(
        haystack.begin(), haystack.end(), needle.begin(), needle.end(),
        [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
    return it != haystack.end() || needle.empty();
}

}  // namespace

LogTexts readLogs(const platform::ProgramFolder& folder) {
    auto read = [&](std::string_view name) {
        auto text = files::readAll(folder.filePath(name));
        return text ? std::move(text).value() : std::string();
    };
    return {read(browser::kSentLogFile), read(remind::kReminderLogFile),
            read(imports::kBatchLogFile), read(platform::kActivityLogFile)};
}

std::vector<Event> joinHistory(const LogTexts& logs) {
    std::vector<Event> events;
    auto add = [&events](std::vector<Event> more) {
        const std::size_t from = events.size();
        events.insert(events.end(), std::make_move_iterator(more.begin()),
                      std::make_move_iterator(more.end()));
        dateAll(events, from);
    };
    {
        // The details are needed only while the logs' records are read.
        Details details(platform::parseActivityLog(logs.activity));
        events = sentEvents(logs.sent, details);
        dateAll(events, 0);
        add(reminderEvents(logs.reminders));
        add(importLogEvents(logs.imports, details));
        add(exchangeImportEvents(details));
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.sortKey < b.sortKey; });
    return events;
}

std::string sortableDate(std::string_view when) {
    when = text::trim(when);
    std::size_t p = 0;
    int a = 0;
    int b = 0;
    int c = 0;
    if (!readNumber(when, p, 4, a) || p == when.size()) {
        return {};
    }
    const char sep = when[p++];
    if ((sep != '-' && sep != '/' && sep != '.') || !readNumber(when, p, 4, b) ||
        p == when.size() || when[p++] != sep || !readNumber(when, p, 4, c)) {
        return {};
    }
    int year = a;
    int month = b;
    int day = c;
    if (sep == '/') {  // month/day/year
        year = c;
        month = a;
        day = b;
    } else if (sep == '.') {  // day.month.year
        year = c;
        month = b;
        day = a;
    }
    if (year < 100 && sep != '-') {
        year += 2000;
    }
    if (!validDate(year, month, day)) {
        return {};
    }
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (p < when.size()) {
        if (when[p] != ' ' && when[p] != 'T') {
            return {};
        }
        ++p;
        if (!readNumber(when, p, 2, hour) || p == when.size() || when[p++] != ':' ||
            !readNumber(when, p, 2, minute)) {
            return {};
        }
        if (p < when.size() && when[p] == ':') {
            ++p;
            if (!readNumber(when, p, 2, second)) {
                return {};
            }
        }
        const std::string_view rest = text::trim(when.substr(p));
        const bool pm = text::equalsIgnoreCase(rest, "PM");
        if (!rest.empty() && !pm && !text::equalsIgnoreCase(rest, "AM")) {
            return {};
        }
        if (!rest.empty()) {
            if (hour < 1 || hour > 12) {
                return {};
            }
            hour = hour % 12 + (pm ? 12 : 0);
        }
        if (hour > 23 || minute > 59 || second > 60) {
            return {};
        }
    }
    char buf[80];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute,
                  second);
    return buf;
}

bool isIsoDate(std::string_view date) {
    return date.size() == 10 && date[4] == '-' && date[7] == '-' &&
           sortableDate(date).starts_with(date);
}

std::vector<const Event*> filterHistory(std::span<const Event> events, const Filter& filter) {
    const std::string type = text::toLower(text::trim(filter.type));
    const std::string customer(text::trim(filter.customer));
    auto typeMatches = [&](const Event& e) {
        if (type.empty()) {
            return true;
        }
        const std::string_view event(e.event);
        const std::string_view firstWord = event.substr(0, event.find(' '));
        if (type == event || type == firstWord || text::equalsIgnoreCase(type, e.type)) {
            return true;
        }
        // An import's type names what came in and what it was booked as.
        const auto arrow = e.type.find(" → ");
        return arrow != std::string::npos &&
               (text::equalsIgnoreCase(type, std::string_view(e.type).substr(0, arrow)) ||
                text::equalsIgnoreCase(type, std::string_view(e.type).substr(arrow + 5)));
    };
    std::vector<const Event*> out;
    for (const Event& e : events) {
        const std::string_view day = std::string_view(e.sortKey).substr(0, 10);
        if ((!filter.since.empty() || !filter.until.empty()) && !e.dated) {
            continue;
        }
        if ((!filter.since.empty() && day < filter.since) ||
            (!filter.until.empty() && day > filter.until) || !typeMatches(e) ||
            !containsIgnoringCase(e.party, customer)) {
            continue;
        }
        out.push_back(&e);
    }
    return out;
}

std::string summaryText(std::span<const Event* const> events) {
    if (events.empty()) {
        return "No events";
    }
    std::array<std::size_t, kEventNames.size()> counts{};
    for (const Event* e : events) {
        const auto it = std::find(kEventNames.begin(), kEventNames.end(), e->event);
        if (it != kEventNames.end()) {
            ++counts[static_cast<std::size_t>(it - kEventNames.begin())];
        }
    }
    std::string out = std::to_string(events.size()) + (events.size() == 1 ? " event:" : " events:");
    const char* sep = " ";
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] != 0) {
            out += sep + std::to_string(counts[i]) + " " + std::string(kEventNames[i]);
            sep = ", ";
        }
    }
    return out;
}

std::string summaryText(std::span<const Event> events) {
    std::vector<const Event*> all;
    all.reserve(events.size());
    for (const Event& e : events) {
        all.push_back(&e);
    }
    return summaryText(all);
}

}  // namespace dorvane::history
