// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the per-user settings store and the mail settings of a send run.
//
// Values are text below an application name, a section and a key; keys and sections compare
// without regard to case ("Pwd" and "pwd" name one value). A missing value is never an
// error: the caller's default stands. The store is one file per user,
// $XDG_CONFIG_HOME/dorvane/<application>.ini (~/.config when the variable is unset), created
// with mode 0600 because it holds the mail password, and replaced atomically on every write.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"

namespace dorvane::platform {

inline constexpr const char* kApplicationKey = "DV01";

// A value the program reads, and what it takes when the value was never stored.
struct SettingDefault {
    const char* section;
    const char* key;
    const char* value;
};
inline constexpr SettingDefault kSettingDefaults[] = {
    {"SMTP", "Hostname", ""},
    {"SMTP", "Port", "25"},
    {"SMTP", "User", ""},
    {"SMTP", "Pwd", ""},
    {"SMTP", "Trace", "0"},
    {"Settings", "MailOption", "0"},
    {"Settings", "Test", "0"},
    {"Settings", "EmailAdr", ""},
    {"Settings", "Attachment", "0"},
    {"Settings", "ReturnReceipt", "0"},
    {"Settings", "BCC", "0"},
    {"Settings", "BCCAdr", ""},
    {"Settings", "alwaysBCC", "0"},
    {"Settings", "altEmail", "0"},
    {"Settings", "Encrypt", "0"},
    {"Import", "Item", "Uncategorized Expenses"},
    {"Import", "ItemGroup", "Uncategorized Expense Group"},
    {"Import", "Term", "Net 30"},
    {"Import", "Account", "[Expense] Uncategorized Expenses"},
    {"Import", "IgnoreAuthNetCust", "0"},
    {"Import", "QuotedFields", "0"},
    {"Handheld", "DeviceFolder", ""},
    {"Web", "UpdateURL", ""},
    {"Web", "Token", ""},
    {"Web", "Timeout", "30"},
    {"QuickBooks", "Connection", "sandbox"},
    {"WebConnector", "Port", "8438"},
    {"WebConnector", "Host", ""},
    {"WebConnector", "Certificate", ""},
    {"WebConnector", "Key", ""},
    {"WebConnector", "WaitSeconds", "120"},
    {"WebConnector", "AnswerSeconds", "600"},
    {"WebConnector", "MaxRequestMB", "10"},
    {"WebConnector", "UserName", ""},
    {"WebConnector", "PasswordHash", ""},
    {"WebConnector", "OwnerID", ""},
    {"WebConnector", "FileID", ""},
    {"WebConnector", "AppName", "Dorvane"},
    {"WebConnector", "CompanyFile", ""},
};
// The default of a value the program reads (section and key in any case); null for a value
// it does not know.
const SettingDefault* settingDefault(std::string_view section, std::string_view key);

class SettingsStore {
public:
    // Opens the store in `file`; a missing or unreadable file is an empty store.
    explicit SettingsStore(std::filesystem::path file);
    // The per-user store of `application` under $XDG_CONFIG_HOME.
    static SettingsStore forUser(std::string_view application = kApplicationKey);
    static std::filesystem::path userFile(std::string_view application);

    const std::filesystem::path& file() const { return m_file; }

    std::string get(std::string_view section, std::string_view key,
                    std::string_view fallback = {}) const;
    // The value read as a 16-bit integer; the default when missing or not a number.
    std::int16_t getInt(std::string_view section, std::string_view key,
                        std::int16_t fallback) const;
    bool contains(std::string_view section, std::string_view key) const;
    // The stored value, else the program's default for it (kSettingDefaults); nullopt for a
    // value neither stored nor known.
    std::optional<std::string> value(std::string_view section, std::string_view key) const;

    // Writes one value and saves the file.
    Status set(std::string_view section, std::string_view key, std::string_view value);
    // Writes several values of one section in the given order and saves once.
    Status setAll(std::string_view section,
                  const std::vector<std::pair<std::string, std::string>>& values);

    struct Change {
        std::string section;
        std::string key;
        std::string value;
    };
    // Writes values of any sections in the given order and saves once.
    Status setEntries(const std::vector<Change>& changes);
    // Every stored value, in the order of the file.
    std::vector<Change> entries() const;

    // Reads the file again (another process may have written it).
    void reload();

private:
    struct Entry {
        std::string key;  // as first written
        std::string value;
    };
    struct Section {
        std::string name;
        std::vector<Entry> entries;
    };
    Section* findSection(std::string_view name);
    const Section* findSection(std::string_view name) const;
    void put(std::string_view section, std::string_view key, std::string_view value);
    Status save() const;

    std::filesystem::path m_file;
    std::vector<Section> m_sections;
};

// The mail settings of one send run.
struct MailSettings {
    int test = 0;
    int trace = 0;
    int mailOption = 0;  // 0 SMTP server, 1 Outlook, 2 direct delivery
    int attachment = 0;
    int returnReceipt = 0;
    int bcc = 0;
    int alwaysBcc = 0;
    int altEmail = 0;
    int encrypt = 0;
    std::string emailAdr;
    std::string bccAdr;
};

// Reads the mail settings, with their defaults, in the order a send run reads them.
MailSettings loadMailSettings(const SettingsStore& store);

}  // namespace dorvane::platform
