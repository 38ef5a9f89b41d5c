// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the per-user settings store and the mail settings of a send run.
//
// Values are text below an application name, a section and a key; keys and sections compare
// without regard to case ("Pwd" and "pwd" name one value). A missing value is never an
// error: the caller's default stands. The store is one file per user,
// $XDG_CONFIG_HOME/dorvane/<application>.ini (~/.config when the variable is unset), created
// with mode 0600 because it holds the mail password, and replaced atomically on every write.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/result.h"

namespace dorvane::platform {

inline constexpr const char* kApplicationKey = "DV01";

// What a setting holds. checkSetting refuses a value of another kind; the store itself reads
// whatever the file says.
enum class SettingType {
    Text,       // any text
    Secret,     // any text, never shown (a password, a token)
    Flag,       // 0 off, 1 on
    Choice,     // one of the row's choices
    Number,     // a whole number from low to high
    Seconds,    // a whole number of seconds from low to high
    Port,       // a TCP port, low to high
    Path,       // an absolute path; empty for none
    Url,        // an http:// or https:// address; empty for none
    Email,      // one e-mail address; empty for none
    EmailList,  // e-mail addresses separated with ';'; empty for none
    HostName,   // a host name or IP address; empty for none
    Account,    // "[TYPE] NAME", as the import preferences list QuickBooks' accounts
    Guid,       // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}; empty until the program makes one
    Hash,       // a password's hash, written only by the command that takes the password
    DayList,    // three increasing whole numbers of days, separated with commas
};

struct SettingChoice {
    const char* value;
    const char* meaning;
};

// A value the program reads: its type, what it takes when the value was never stored, what it
// means and, for a choice or a number, what is allowed.
struct KnownSetting {
    const char* section;
    const char* key;
    SettingType type;
    const char* defaultValue;
    const char* meaning;
    std::span<const SettingChoice> choices = {};
    long low = 0;
    long high = 0;

    // Shown as set or unset only, never as the value.
    bool hidden() const { return type == SettingType::Secret || type == SettingType::Hash; }
};

inline constexpr std::span<const SettingChoice> kNoChoices;
inline constexpr SettingChoice kFlagChoices[] = {{"0", "off"}, {"1", "on"}};
inline constexpr SettingChoice kMailOptionChoices[] = {
    {"0", "the SMTP server: SMTP Hostname, Port, User, Pwd"},
    {"1", "Outlook, which Linux lacks: nothing is sent"},
    {"2", "direct delivery to each recipient's mail server"},
};
inline constexpr SettingChoice kConnectionChoices[] = {
    {"sandbox", "the embedded sandbox company"},
    {"webconnector", "QuickBooks on a Windows PC, through its Web Connector"},
};

inline constexpr SettingChoice kPageSizeChoices[] = {
    {"auto", "Letter in the US, Canada or with no country; A4 elsewhere"},
    {"Letter", "8.5 x 11 inches"},
    {"A4", "210 x 297 mm"},
};

inline constexpr KnownSetting kKnownSettings[] = {
    {"SMTP", "Hostname", SettingType::HostName, "", "the SMTP server (Settings MailOption 0)"},
    {"SMTP", "Port", SettingType::Port, "25", "the SMTP server's port", kNoChoices, 1, 65535},
    {"SMTP", "User", SettingType::Text, "", "the SMTP user name; empty sends without logging in"},
    {"SMTP", "Pwd", SettingType::Secret, "", "the SMTP password"},
    {"SMTP", "Trace", SettingType::Flag, "0", "trace the SMTP conversation into a file",
     kFlagChoices},
    {"Settings", "MailOption", SettingType::Choice, "0", "how documents are mailed",
     kMailOptionChoices},
    {"Settings", "Test", SettingType::Flag, "0",
     "test mode: every document goes to the test address (EmailAdr) only", kFlagChoices},
    {"Settings", "EmailAdr", SettingType::Email, "", "the test address"},
    {"Settings", "Attachment", SettingType::Flag, "0",
     "attach the exchange file (.dvx) the recipient's Dorvane imports", kFlagChoices},
    {"Settings", "ReturnReceipt", SettingType::Flag, "0", "ask for delivery receipts",
     kFlagChoices},
    {"Settings", "BCC", SettingType::Flag, "0", "send a blind copy to BCCAdr", kFlagChoices},
    {"Settings", "BCCAdr", SettingType::EmailList, "", "the blind-copy addresses"},
    {"Settings", "alwaysBCC", SettingType::Flag, "0",
     "send the blind copy of a document without an address too", kFlagChoices},
    {"Settings", "altEmail", SettingType::Flag, "0", "ask for each document's address",
     kFlagChoices},
    {"Settings", "Encrypt", SettingType::Flag, "0",
     "the preferences' \"Encrypt with Digital Envelope\" box (kept, not acted on)", kFlagChoices},
    {"Documents", "AttachPdf", SettingType::Flag, "0",
     "attach a PDF copy of every mailed document (send --pdf for one run)", kFlagChoices},
    {"Documents", "PageSize", SettingType::Choice, "auto", "the PDF copy's page size",
     kPageSizeChoices},
    {"Documents", "MarginPoints", SettingType::Number, "36",
     "the PDF copy's margin on every side, in points (72 to the inch)", kNoChoices, 18, 144},
    {"Documents", "PayLink", SettingType::Url, "",
     "the pay-now link of invoices and statements, with {number}, {balance}, {currency} and "
     "{customer} filled in; empty: no link"},
    {"View", "OpenBalances", SettingType::Flag, "0",
     "the document lists show each document's number and open balance after their own columns "
     "(list --open for one run)",
     kFlagChoices},
    {"View", "UnpaidOnly", SettingType::Flag, "0",
     "the document lists leave out documents with nothing open, so they are not sent either "
     "(list --unpaid for one run)",
     kFlagChoices},
    {"Import", "Item", SettingType::Text, "Uncategorized Expenses",
     "the item an imported document's lines are booked to"},
    {"Import", "ItemGroup", SettingType::Text, "Uncategorized Expense Group",
     "the item group an imported document's groups are booked to"},
    {"Import", "Term", SettingType::Text, "Net 30", "the terms an imported document gets"},
    {"Import", "Account", SettingType::Account, "[Expense] Uncategorized Expenses",
     "the account imported expenses and deposits are booked to"},
    {"Import", "IgnoreAuthNetCust", SettingType::Flag, "0",
     "book Authorize.Net receipts without looking for their customer", kFlagChoices},
    {"Import", "QuotedFields", SettingType::Flag, "0",
     "Authorize.Net downloads keep values in double quotes whole", kFlagChoices},
    {"Handheld", "DeviceFolder", SettingType::Path, "",
     "the handheld's folder ($DORVANE_DEVICE_DIR wins)"},
    {"Web", "UpdateURL", SettingType::Url, "", "the web site webupdate publishes items to"},
    {"Web", "Token", SettingType::Secret, "", "the bearer token webupdate sends to the web site"},
    {"Web", "Timeout", SettingType::Seconds, "30", "how long webupdate waits for the web site",
     kNoChoices, 1, 32767},
    {"QuickBooks", "Connection", SettingType::Choice, "sandbox",
     "where QuickBooks is ($DORVANE_PROCESSOR wins)", kConnectionChoices},
    {"WebConnector", "Port", SettingType::Port, "8438",
     "the port the Web Connector service listens on", kNoChoices, 1, 65535},
    {"WebConnector", "Host", SettingType::HostName, "",
     "the name the Web Connector's PC reaches this computer by; empty: this computer's name"},
    {"WebConnector", "Certificate", SettingType::Path, "",
     "the service's HTTPS certificate (PEM); without it, plain HTTP on this computer only"},
    {"WebConnector", "Key", SettingType::Path, "", "the certificate's private key (PEM)"},
    {"WebConnector", "WaitSeconds", SettingType::Seconds, "120",
     "how long a request waits for the Web Connector to call", kNoChoices, 1, 86400},
    {"WebConnector", "AnswerSeconds", SettingType::Seconds, "600",
     "how long a request waits for QuickBooks' answer once the Web Connector took it", kNoChoices,
     1, 86400},
    {"WebConnector", "MaxRequestMB", SettingType::Number, "10",
     "the largest message the service takes, in MB", kNoChoices, 1, 1024},
    {"WebConnector", "UserName", SettingType::Text, "",
     "the user the Web Connector logs in as (dorvane webconnector user NAME)"},
    {"WebConnector", "PasswordHash", SettingType::Hash, "",
     "that user's password, hashed (dorvane webconnector user NAME)"},
    {"WebConnector", "OwnerID", SettingType::Guid, "", "the .qwc file's OwnerID, made once"},
    {"WebConnector", "FileID", SettingType::Guid, "", "the .qwc file's FileID, made once"},
    {"WebConnector", "AppName", SettingType::Text, "Dorvane",
     "the name the Web Connector shows for this program"},
    {"WebConnector", "CompanyFile", SettingType::Text, "",
     "the company file the Web Connector opens; empty: the one open in QuickBooks"},
    {"Window", "Width", SettingType::Number, "0",
     "the main window's width in pixels as it was closed; 0: the width of the first start",
     kNoChoices, 0, 10000},
    {"Window", "Height", SettingType::Number, "0",
     "the main window's height in pixels as it was closed; 0: the height of the first start",
     kNoChoices, 0, 10000},
    {"Window", "Columns", SettingType::Text, "",
     "the column widths each document list had, as TYPE:WIDTH,WIDTH,...;TYPE:...; a type "
     "without them gets the list's own"},
    {"Reminders", "Days", SettingType::DayList, "1,15,30",
     "days past the due date at which the friendly, the firm and the final reminder of an open "
     "invoice are due (remind --days for one run)"},
    {"Reminders", "FriendlySubject", SettingType::Text, "Payment reminder - invoice no. {number}",
     "the friendly reminder's subject; {number}, {customer}, {company}, {total}, {currency}"},
    {"Reminders", "FirmSubject", SettingType::Text, "Second reminder - invoice no. {number}",
     "the firm reminder's subject, as FriendlySubject"},
    {"Reminders", "FinalSubject", SettingType::Text, "Final notice - invoice no. {number}",
     "the final reminder's subject, as FriendlySubject"},
    {"Reminders", "FriendlyText", SettingType::Text, "",
     "the friendly reminder's opening words; empty: those of reminder-friendly.xslt"},
    {"Reminders", "FirmText", SettingType::Text, "",
     "the firm reminder's opening words; empty: those of reminder-firm.xslt"},
    {"Reminders", "FinalText", SettingType::Text, "",
     "the final reminder's opening words; empty: those of reminder-final.xslt"},
};

// Section and key names compare without regard to ASCII case, as the store does.
constexpr bool sameSettingName(std::string_view a, std::string_view b) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) {
            return false;
        }
    }
    return true;
}

// The row of a value the program reads (section and key in any case); null for one it does
// not know.
constexpr const KnownSetting* knownSetting(std::string_view section, std::string_view key) {
    for (const KnownSetting& s : kKnownSettings) {
        if (sameSettingName(section, s.section) && sameSettingName(key, s.key)) {
            return &s;
        }
    }
    return nullptr;
}

// The default of a known value; "" for an unknown one.
constexpr const char* settingDefault(std::string_view section, std::string_view key) {
    const KnownSetting* s = knownSetting(section, key);
    return s ? s->defaultValue : "";
}

// The default of a known whole-number value (a flag, a choice of numbers, a port, seconds).
constexpr long settingDefaultNumber(std::string_view section, std::string_view key) {
    long n = 0;
    for (const char* c = settingDefault(section, key); *c >= '0' && *c <= '9'; ++c) {
        n = n * 10 + (*c - '0');
    }
    return n;
}

// The sections of the known values, in the table's order.
std::vector<std::string_view> settingSections();

// The known setting whose name is closest to section/key, when it is close enough to be the
// one meant; null otherwise.
const KnownSetting* nearestSetting(std::string_view section, std::string_view key);

// Whether `value` may be stored under section/key: refuses an unknown setting (naming the
// nearest known one), and a value of the wrong type or outside the allowed ones, saying what
// is allowed.
Status checkSetting(std::string_view section, std::string_view key, std::string_view value);

// "1,15,30": three whole numbers of days from 0 to 3650, each larger than the one before
// (blanks around them allowed); nullopt for anything else.
std::optional<std::array<int, 3>> parseDayList(std::string_view text);

// What `type` takes, for people: "a port from 1 to 65535", "0 (off) or 1 (on)".
std::string allowedValues(const KnownSetting& setting);

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
    // The same with the program's default for the value (kKnownSettings; 0 for an unknown one).
    std::int16_t intValue(std::string_view section, std::string_view key) const;
    bool contains(std::string_view section, std::string_view key) const;
    // The stored value, else the program's default for it (kKnownSettings); nullopt for a
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
        // Lower-cased key → its entry, so that a file of many values reads in linear time.
        std::unordered_map<std::string, std::size_t> keyIndex;
    };
    const Section* findSection(std::string_view name) const;
    // The section of that name (any case), added at the end when there is none.
    Section& sectionNamed(std::string_view name);
    const Entry* findEntry(std::string_view section, std::string_view key) const;
    static void put(Section& section, std::string_view key, std::string_view value);
    Status save() const;

    std::filesystem::path m_file;
    std::vector<Section> m_sections;
    std::unordered_map<std::string, std::size_t> m_sectionIndex;  // lower-cased name → section
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
    // The document options: a PDF copy, its page, the pay-now link pattern.
    int attachPdf = 0;
    std::string pageSize = "auto";
    int marginPoints = 36;
    std::string payLink;
};

// Reads the mail settings, with their defaults, in the order a send run reads them.
MailSettings loadMailSettings(const SettingsStore& store);

}  // namespace dorvane::platform
