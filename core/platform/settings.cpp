// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "common/files.h"
#include "common/text.h"

namespace dorvane::platform {
namespace {

// Values are kept on one line: backslash, CR and LF are written as escapes.
std::string escape(std::string_view in) {
    std::string out;
    for (char c : in) {
        switch (c) {
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string unescape(std::string_view in) {
    std::string out;
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (in[i] == '\\' && i + 1 < in.size()) {
            char n = in[++i];
            out += n == 'n' ? '\n' : n == 'r' ? '\r' : n;
        } else {
            out += in[i];
        }
    }
    return out;
}

// The distance between two names: the fewest letters to insert, delete or replace (case
// ignored).
std::size_t editDistance(std::string_view a, std::string_view b) {
    const std::string x = text::toLower(a), y = text::toLower(b);
    std::vector<std::size_t> row(y.size() + 1);
    for (std::size_t j = 0; j <= y.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= x.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= y.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (x[i - 1] != y[j - 1])});
            diagonal = above;
        }
    }
    return row[y.size()];
}

std::string fullName(std::string_view section, std::string_view key) {
    return std::string(section) + " " + std::string(key);
}

bool isWholeNumberIn(std::string_view value, long low, long high) {
    const std::string_view t = text::trim(value);
    if (t.empty() || t.size() > 9 ||
        !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return false;
    }
    const long n = std::stol(std::string(t));
    return n >= low && n <= high;
}

bool hasSpace(std::string_view value) {
    return std::any_of(value.begin(), value.end(),
                       [](unsigned char c) { return std::isspace(c) || std::iscntrl(c); });
}

bool isEmailAddress(std::string_view value) {
    const std::size_t at = value.find('@');
    return at != std::string_view::npos && at > 0 && at + 1 < value.size() &&
           value.find_first_of("@;,<>", at + 1) == std::string_view::npos && !hasSpace(value);
}

bool isEmailList(std::string_view value) {
    const std::vector<std::string> parts = text::split(value, ';');
    return std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
        const std::string_view address = text::trim(part);
        return address.empty() || isEmailAddress(address);
    });
}

bool isGuid(std::string_view value) {
    constexpr std::string_view kShape = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    if (value.size() != kShape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (kShape[i] == 'X' ? !std::isxdigit(static_cast<unsigned char>(value[i]))
                             : value[i] != kShape[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<std::array<int, 3>> parseDayList(std::string_view text) {
    const std::vector<std::string> parts = text::split(text, ',');
    if (parts.size() != 3) {
        return std::nullopt;
    }
    std::array<int, 3> days{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!isWholeNumberIn(parts[i], 0, 3650)) {
            return std::nullopt;
        }
        days[i] = std::stoi(std::string(text::trim(parts[i])));
        if (i > 0 && days[i] <= days[i - 1]) {
            return std::nullopt;
        }
    }
    return days;
}

namespace {

bool isAllowed(const KnownSetting& s, std::string_view value) {
    const std::string_view t = text::trim(value);
    switch (s.type) {
        case SettingType::Text:
        case SettingType::Secret:
            return true;
        case SettingType::Flag:
        case SettingType::Choice:
            return std::any_of(s.choices.begin(), s.choices.end(), [t](const SettingChoice& c) {
                return text::equalsIgnoreCase(t, c.value);
            });
        case SettingType::Number:
        case SettingType::Seconds:
        case SettingType::Port:
            return isWholeNumberIn(value, s.low, s.high);
        case SettingType::Path:
            return t.empty() || t.front() == '/';
        case SettingType::Url: {
            const std::string lower = text::toLower(t);
            const std::size_t scheme = lower.starts_with("https://")  ? 8
                                       : lower.starts_with("http://") ? 7
                                                                      : 0;
            return t.empty() || (scheme > 0 && t.size() > scheme && !hasSpace(t));
        }
        case SettingType::Email:
            return t.empty() || isEmailAddress(t);
        case SettingType::EmailList:
            return isEmailList(t);
        case SettingType::HostName:
            return std::all_of(t.begin(), t.end(), [](unsigned char c) {
                return std::isalnum(c) || c == '.' || c == '-' || c == '_' || c == ':';
            });
        case SettingType::Account: {
            const std::size_t close = t.find("] ");
            return t.starts_with('[') && close != std::string_view::npos && close > 1 &&
                   !text::trim(t.substr(close + 2)).empty();
        }
        case SettingType::Guid:
            return t.empty() || isGuid(t);
        case SettingType::Hash:
            return false;
        case SettingType::DayList:
            return parseDayList(t).has_value();
    }
    return false;
}

}  // namespace

const KnownSetting* nearestSetting(std::string_view section, std::string_view key) {
    const std::string wanted = fullName(section, key);
    const KnownSetting* best = nullptr;
    std::size_t bestDistance = std::max<std::size_t>(2, wanted.size() / 3) + 1;
    for (const KnownSetting& s : kKnownSettings) {
        const std::size_t d = editDistance(wanted, fullName(s.section, s.key));
        if (d < bestDistance) {
            best = &s;
            bestDistance = d;
        }
    }
    return best;
}

std::vector<std::string_view> settingSections() {
    std::vector<std::string_view> sections;
    for (const KnownSetting& s : kKnownSettings) {
        if (std::find(sections.begin(), sections.end(), s.section) == sections.end()) {
            sections.push_back(s.section);
        }
    }
    return sections;
}

std::string allowedValues(const KnownSetting& s) {
    const auto range = [&s](const char* what) {
        return std::string(what) + " from " + std::to_string(s.low) + " to " +
               std::to_string(s.high);
    };
    switch (s.type) {
        case SettingType::Text:
        case SettingType::Secret:
            return "any text";
        case SettingType::Flag:
        case SettingType::Choice: {
            std::string out;
            for (std::size_t i = 0; i < s.choices.size(); ++i) {
                out += i == 0 ? "" : i + 1 == s.choices.size() ? " or " : ", ";
                out += std::string(s.choices[i].value) + " (" + s.choices[i].meaning + ")";
            }
            return out;
        }
        case SettingType::Number:
            return range("a whole number");
        case SettingType::Seconds:
            return range("a number of seconds");
        case SettingType::Port:
            return range("a port number");
        case SettingType::Path:
            return "an absolute path (starting with /), or nothing";
        case SettingType::Url:
            return "an address starting with http:// or https://, or nothing";
        case SettingType::Email:
            return "an e-mail address (name@example.com), or nothing";
        case SettingType::EmailList:
            return "e-mail addresses separated with ';', or nothing";
        case SettingType::HostName:
            return "a host name or IP address (mail.example.com), or nothing";
        case SettingType::Account:
            return "an account as [TYPE] NAME, e.g. '[Expense] Office Supplies'";
        case SettingType::Guid:
            return "a GUID as {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}, or nothing";
        case SettingType::Hash:
            return "nothing: it is written with the password it hashes";
        case SettingType::DayList:
            return "three increasing numbers of days from 0 to 3650, separated with commas "
                   "(1,15,30)";
    }
    return {};
}

Status checkSetting(std::string_view section, std::string_view key, std::string_view value) {
    const KnownSetting* s = knownSetting(section, key);
    if (!s) {
        std::string why = fullName(section, key) + ": no such setting.";
        if (const KnownSetting* near = nearestSetting(section, key)) {
            why += " Did you mean '" + fullName(near->section, near->key) + "'?";
        }
        return Error{EINVAL, why};
    }
    if (s->type == SettingType::Hash) {
        return Error{EINVAL, fullName(s->section, s->key) + ": not set by hand; it holds " +
                                 s->meaning + "."};
    }
    if (!isAllowed(*s, value)) {
        return Error{EINVAL, fullName(s->section, s->key) + ": '" + std::string(value) +
                                 "' is not allowed; give " + allowedValues(*s) + "."};
    }
    return {};
}

SettingsStore::SettingsStore(std::filesystem::path file) : m_file(std::move(file)) {
    reload();
}

std::filesystem::path SettingsStore::userFile(std::string_view application) {
    std::filesystem::path base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) {
        base = xdg;
    } else {
        const char* home = std::getenv("HOME");
        base = std::filesystem::path(home ? home : ".") / ".config";
    }
    return base / "dorvane" / (std::string(application) + ".ini");
}

SettingsStore SettingsStore::forUser(std::string_view application) {
    return SettingsStore(userFile(application));
}

void SettingsStore::reload() {
    m_sections.clear();
    m_sectionIndex.clear();
    auto content = files::readAll(m_file);
    if (!content) {
        return;
    }
    Section* current = nullptr;
    for (const std::string& raw : text::split(*content, '\n')) {
        std::string_view line = text::trim(raw);
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            continue;
        }
        if (line.front() == '[' && line.back() == ']') {
            current = &sectionNamed(text::trim(line.substr(1, line.size() - 2)));
            continue;
        }
        auto eq = line.find('=');
        if (!current || eq == std::string_view::npos) {
            continue;
        }
        std::string key(text::trim(line.substr(0, eq)));
        // The value is everything after '=' on the raw line, spaces included.
        std::string_view rawLine = raw;
        if (!rawLine.empty() && rawLine.back() == '\r') {
            rawLine.remove_suffix(1);
        }
        std::string value = unescape(rawLine.substr(rawLine.find('=') + 1));
        put(*current, key, value);
    }
}

const SettingsStore::Section* SettingsStore::findSection(std::string_view name) const {
    const auto found = m_sectionIndex.find(text::toLower(name));
    return found == m_sectionIndex.end() ? nullptr : &m_sections[found->second];
}

SettingsStore::Section& SettingsStore::sectionNamed(std::string_view name) {
    const auto [at, added] = m_sectionIndex.try_emplace(text::toLower(name), m_sections.size());
    if (added) {
        m_sections.push_back({std::string(name), {}, {}});
    }
    return m_sections[at->second];
}

const SettingsStore::Entry* SettingsStore::findEntry(std::string_view section,
                                                     std::string_view key) const {
    const Section* s = findSection(section);
    if (!s) {
        return nullptr;
    }
    const auto found = s->keyIndex.find(text::toLower(key));
    return found == s->keyIndex.end() ? nullptr : &s->entries[found->second];
}

std::vector<SettingsStore::Change> SettingsStore::entries() const {
    std::vector<Change> out;
    for (const Section& s : m_sections) {
        for (const Entry& e : s.entries) {
            out.push_back({s.name, e.key, e.value});
        }
    }
    return out;
}

bool SettingsStore::contains(std::string_view section, std::string_view key) const {
    return findEntry(section, key) != nullptr;
}

std::optional<std::string> SettingsStore::value(std::string_view section,
                                                std::string_view key) const {
    if (contains(section, key)) {
        return get(section, key);
    }
    if (const KnownSetting* s = knownSetting(section, key)) {
        return std::string(s->defaultValue);
    }
    return std::nullopt;
}

std::string SettingsStore::get(std::string_view section, std::string_view key,
                               std::string_view fallback) const {
    const Entry* e = findEntry(section, key);
    return e ? e->value : std::string(fallback);
}

std::int16_t SettingsStore::getInt(std::string_view section, std::string_view key,
                                   std::int16_t fallback) const {
    if (!contains(section, key)) {
        return fallback;
    }
    return text::toInt16(get(section, key)).value_or(fallback);
}

std::int16_t SettingsStore::intValue(std::string_view section, std::string_view key) const {
    return getInt(section, key, static_cast<std::int16_t>(settingDefaultNumber(section, key)));
}

void SettingsStore::put(Section& section, std::string_view key, std::string_view value) {
    const auto [at, added] =
        section.keyIndex.try_emplace(text::toLower(key), section.entries.size());
    if (added) {
        section.entries.push_back({std::string(key), std::string(value)});
    } else {
        section.entries[at->second].value = std::string(value);
    }
}

Status SettingsStore::set(std::string_view section, std::string_view key, std::string_view value) {
    put(sectionNamed(section), key, value);
    return save();
}

Status SettingsStore::setAll(std::string_view section,
                             const std::vector<std::pair<std::string, std::string>>& values) {
    Section& s = sectionNamed(section);
    for (const auto& [key, value] : values) {
        put(s, key, value);
    }
    return save();
}

Status SettingsStore::setEntries(const std::vector<Change>& changes) {
    for (const auto& c : changes) {
        put(sectionNamed(c.section), c.key, c.value);
    }
    return save();
}

Status SettingsStore::save() const {
    std::string out;
    for (const auto& s : m_sections) {
        out += "[" + s.name + "]\n";
        for (const auto& e : s.entries) {
            out += e.key + "=" + escape(e.value) + "\n";
        }
        out += "\n";
    }
    std::error_code ec;
    if (m_file.has_parent_path()) {
        std::filesystem::create_directories(m_file.parent_path(), ec);
        if (ec) {
            return Error{ec.value(), ec.message() + ": " + m_file.parent_path().string()};
        }
    }
    return files::writeAtomically(m_file, out, 0600);
}

MailSettings loadMailSettings(const SettingsStore& store) {
    MailSettings m;
    m.test = store.intValue("Settings", "Test");
    m.emailAdr = store.value("Settings", "EmailAdr").value_or("");
    m.mailOption = store.intValue("Settings", "MailOption");
    m.trace = store.intValue("SMTP", "Trace");
    m.bcc = store.intValue("Settings", "BCC");
    m.bccAdr = store.value("Settings", "BCCAdr").value_or("");
    m.alwaysBcc = store.intValue("Settings", "alwaysBCC");
    m.altEmail = store.intValue("Settings", "altEmail");
    m.attachment = store.intValue("Settings", "Attachment");
    m.returnReceipt = store.intValue("Settings", "ReturnReceipt");
    m.encrypt = store.intValue("Settings", "Encrypt");
    m.attachPdf = store.intValue("Documents", "AttachPdf");
    m.pageSize = store.value("Documents", "PageSize").value_or("auto");
    m.marginPoints = store.intValue("Documents", "MarginPoints");
    m.payLink = std::string(text::trim(store.value("Documents", "PayLink").value_or("")));
    return m;
}

}  // namespace dorvane::platform
