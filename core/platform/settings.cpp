// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings.h"

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

// A flag or option as a send run reads it, with the program's default.
std::int16_t flag(const SettingsStore& store, std::string_view section, std::string_view key) {
    const SettingDefault* d = settingDefault(section, key);
    return store.getInt(section, key, d ? text::toInt16(d->value).value_or(0) : 0);
}

}  // namespace

const SettingDefault* settingDefault(std::string_view section, std::string_view key) {
    for (const SettingDefault& d : kSettingDefaults) {
        if (text::equalsIgnoreCase(section, d.section) && text::equalsIgnoreCase(key, d.key)) {
            return &d;
        }
    }
    return nullptr;
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
            std::string name(text::trim(line.substr(1, line.size() - 2)));
            current = findSection(name);
            if (!current) {
                m_sections.push_back({name, {}});
                current = &m_sections.back();
            }
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
        put(current->name, key, value);
    }
}

SettingsStore::Section* SettingsStore::findSection(std::string_view name) {
    for (auto& s : m_sections) {
        if (text::equalsIgnoreCase(s.name, name)) {
            return &s;
        }
    }
    return nullptr;
}

const SettingsStore::Section* SettingsStore::findSection(std::string_view name) const {
    return const_cast<SettingsStore*>(this)->findSection(name);
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
    if (const Section* s = findSection(section)) {
        for (const auto& e : s->entries) {
            if (text::equalsIgnoreCase(e.key, key)) {
                return true;
            }
        }
    }
    return false;
}

std::optional<std::string> SettingsStore::value(std::string_view section,
                                                std::string_view key) const {
    if (contains(section, key)) {
        return get(section, key);
    }
    if (const SettingDefault* d = settingDefault(section, key)) {
        return std::string(d->value);
    }
    return std::nullopt;
}

std::string SettingsStore::get(std::string_view section, std::string_view key,
                               std::string_view fallback) const {
    if (const Section* s = findSection(section)) {
        for (const auto& e : s->entries) {
            if (text::equalsIgnoreCase(e.key, key)) {
                return e.value;
            }
        }
    }
    return std::string(fallback);
}

std::int16_t SettingsStore::getInt(std::string_view section, std::string_view key,
                                   std::int16_t fallback) const {
    if (!contains(section, key)) {
        return fallback;
    }
    return text::toInt16(get(section, key)).value_or(fallback);
}

void SettingsStore::put(std::string_view section, std::string_view key, std::string_view value) {
    Section* s = findSection(section);
    if (!s) {
        m_sections.push_back({std::string(section), {}});
        s = &m_sections.back();
    }
    for (auto& e : s->entries) {
        if (text::equalsIgnoreCase(e.key, key)) {
            e.value = std::string(value);
            return;
        }
    }
    s->entries.push_back({std::string(key), std::string(value)});
}

Status SettingsStore::set(std::string_view section, std::string_view key, std::string_view value) {
    put(section, key, value);
    return save();
}

Status SettingsStore::setAll(std::string_view section,
                             const std::vector<std::pair<std::string, std::string>>& values) {
    for (const auto& [key, value] : values) {
        put(section, key, value);
    }
    return save();
}

Status SettingsStore::setEntries(const std::vector<Change>& changes) {
    for (const auto& c : changes) {
        put(c.section, c.key, c.value);
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
    m.test = flag(store, "Settings", "Test");
    m.emailAdr = store.value("Settings", "EmailAdr").value_or("");
    m.mailOption = flag(store, "Settings", "MailOption");
    m.trace = flag(store, "SMTP", "Trace");
    m.bcc = flag(store, "Settings", "BCC");
    m.bccAdr = store.value("Settings", "BCCAdr").value_or("");
    m.alwaysBcc = flag(store, "Settings", "alwaysBCC");
    m.altEmail = flag(store, "Settings", "altEmail");
    m.attachment = flag(store, "Settings", "Attachment");
    m.returnReceipt = flag(store, "Settings", "ReturnReceipt");
    m.encrypt = flag(store, "Settings", "Encrypt");
    return m;
}

}  // namespace dorvane::platform
