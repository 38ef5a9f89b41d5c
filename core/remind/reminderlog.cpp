// SPDX-License-Identifier: GPL-3.0-or-later
#include "remind/reminderlog.h"

#include <charconv>
#include <ctime>

#include "xml/xml.h"

namespace dorvane::remind {
namespace {

void field(std::string& out, std::string_view tag, std::string_view value) {
    out += '<';
    out += tag;
    out += '>';
    out += xml::escapeText(value);
    out += "</";
    out += tag;
    out += '>';
}

// The text of <tag>...</tag> inside one record line, unescaped; "" when absent.
std::string valueOf(std::string_view line, std::string_view tag) {
    const std::string open = "<" + std::string(tag) + ">";
    const std::string close = "</" + std::string(tag) + ">";
    const std::size_t from = line.find(open);
    if (from == std::string_view::npos) {
        return {};
    }
    const std::size_t start = from + open.size();
    const std::size_t end = line.find(close, start);
    if (end == std::string_view::npos) {
        return {};
    }
    return xml::unescapeText(line.substr(start, end - start));
}

}  // namespace

std::string reminderDateText(std::chrono::system_clock::time_point when) {
    const std::time_t t = std::chrono::system_clock::to_time_t(when);
    std::tm local{};
    localtime_r(&t, &local);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%S", &local);
    return buf;
}

std::string reminderRecord(const ReminderRecord& r) {
    const std::string_view root = r.test ? "TestReminder" : "Reminder";
    std::string out = "<" + std::string(root) + ">";
    field(out, "TxnID", r.txnId);
    field(out, "Stage", std::to_string(r.stage));
    field(out, "RefNumber", r.refNumber);
    field(out, "Customer", r.customer);
    field(out, "TxnDate", r.txnDate);
    field(out, "DueDate", r.dueDate);
    field(out, "Balance", r.balance);
    field(out, "SentTo", r.sentTo);
    field(out, "SentDate", r.sentDate);
    out += "</" + std::string(root) + ">\r\n";
    return out;
}

std::vector<ReminderRecord> parseReminderLog(std::string_view text) {
    // Records are found by their tags, not by line: a log read as a program file has lost its
    // line breaks. Values are escaped, so a tag inside a record is always the record's own.
    constexpr std::string_view kOpen = "<Reminder>", kTestOpen = "<TestReminder>";
    std::vector<ReminderRecord> records;
    std::size_t pos = 0;
    // The next start of each kind, searched again only once passed: one pass over the text.
    std::size_t plain = text.find(kOpen), test = text.find(kTestOpen);
    while (pos < text.size()) {
        if (plain < pos) {
            plain = text.find(kOpen, pos);
        }
        if (test < pos) {
            test = text.find(kTestOpen, pos);
        }
        if (plain == std::string_view::npos && test == std::string_view::npos) {
            break;
        }
        ReminderRecord r;
        r.test = test < plain;
        const std::size_t from = r.test ? test : plain;
        const std::string_view close = r.test ? "</TestReminder>" : "</Reminder>";
        std::size_t to = text.find(close, from);
        to = to == std::string_view::npos ? text.size() : to + close.size();
        const std::string_view record = text.substr(from, to - from);
        pos = to;
        r.txnId = valueOf(record, "TxnID");
        const std::string stage = valueOf(record, "Stage");
        std::from_chars(stage.data(), stage.data() + stage.size(), r.stage);
        if (r.txnId.empty() || r.stage < 1) {
            continue;
        }
        r.refNumber = valueOf(record, "RefNumber");
        r.customer = valueOf(record, "Customer");
        r.txnDate = valueOf(record, "TxnDate");
        r.dueDate = valueOf(record, "DueDate");
        r.balance = valueOf(record, "Balance");
        r.sentTo = valueOf(record, "SentTo");
        r.sentDate = valueOf(record, "SentDate");
        records.push_back(std::move(r));
    }
    return records;
}

void ReminderLogIndex::add(std::string_view text) {
    for (ReminderRecord& r : parseReminderLog(text)) {
        if (!r.test) {
            m_sent.emplace(std::move(r.txnId), r.stage);
        }
    }
}

bool ReminderLogIndex::reminded(std::string_view txnId, int stage) const {
    return stageOf(txnId) >= stage;
}

int ReminderLogIndex::stageOf(std::string_view txnId) const {
    // The pairs of one invoice sort together, by stage; the last is the latest stage.
    auto it = m_sent.lower_bound(std::pair<std::string, int>(std::string(txnId), 1 << 30));
    if (it == m_sent.begin()) {
        return 0;
    }
    --it;
    return it->first == txnId ? it->second : 0;
}

}  // namespace dorvane::remind
