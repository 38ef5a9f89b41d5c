// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/activitylog.h"

#include "common/clock.h"
#include "platform/programfolder.h"

namespace dorvane::platform {
namespace {

constexpr std::string_view kRecordTag = "Activity";

// The fields in the order written.
constexpr std::pair<std::string_view, std::string Activity::*> kFields[] = {
    {"event", &Activity::event},     {"when", &Activity::when},   {"kind", &Activity::kind},
    {"type", &Activity::type},       {"txn", &Activity::txnId},   {"number", &Activity::number},
    {"amount", &Activity::amount},   {"party", &Activity::party}, {"address", &Activity::address},
    {"outcome", &Activity::outcome},
};

void escapeInto(std::string& out, std::string_view value) {
    for (char c : value) {
        switch (c) {
            case '\\':
                out += "\\\\";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\n':
                out += "\\n";
                break;
            default:
                out += c;
        }
    }
}

std::string unescape(std::string_view value) {
    std::string out;
    out.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const char next = value[++i];
        out += next == 't' ? '\t' : next == 'r' ? '\r' : next == 'n' ? '\n' : next;
    }
    return out;
}

}  // namespace

std::string activityRecord(const Activity& activity) {
    std::string out(kRecordTag);
    for (const auto& [name, member] : kFields) {
        out += '\t';
        out += name;
        out += '=';
        escapeInto(out, activity.*member);
    }
    out += "\r\n";
    return out;
}

std::vector<Activity> parseActivityLog(std::string_view text) {
    std::vector<Activity> records;
    while (!text.empty()) {
        const std::size_t eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!line.starts_with(kRecordTag) || line.substr(kRecordTag.size()).find('\t') != 0) {
            continue;
        }
        line.remove_prefix(kRecordTag.size() + 1);
        Activity a;
        while (!line.empty()) {
            const std::size_t tab = line.find('\t');
            const std::string_view field = line.substr(0, tab);
            line = tab == std::string_view::npos ? std::string_view{} : line.substr(tab + 1);
            const std::size_t eq = field.find('=');
            if (eq == std::string_view::npos) {
                continue;
            }
            for (const auto& [name, member] : kFields) {
                if (field.substr(0, eq) == name) {
                    a.*member = unescape(field.substr(eq + 1));
                    break;
                }
            }
        }
        if (!a.event.empty()) {
            records.push_back(std::move(a));
        }
    }
    return records;
}

void noteActivity(const ProgramFolder& folder, Activity activity) {
    if (activity.when.empty()) {
        activity.when = clock::localDateTimeText(clock::now());
    }
    // Best effort: the history loses the details of this event, nothing else does.
    [[maybe_unused]] const Status written =
        folder.appendProgramFile(activityRecord(activity), kActivityLogFile);
}

}  // namespace dorvane::platform
