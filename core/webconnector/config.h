// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Web Connector connection's settings, its .qwc file and its log.
//
// Settings: QuickBooks/Connection ("sandbox" or "webconnector"; $DORVANE_PROCESSOR wins);
// WebConnector/Port, Host, Certificate, Key, WaitSeconds, AnswerSeconds, MaxRequestMB,
// UserName, PasswordHash, OwnerID, FileID, AppName, CompanyFile.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/result.h"
#include "platform/settings.h"

namespace dorvane::webconnector {

inline constexpr const char* kSection = "WebConnector";
inline constexpr const char* kServicePath = "/qbwc";
inline constexpr const char* kSupportPath = "/support";
inline constexpr const char* kLogFile = "WebConnector.log";

enum class Connection { Sandbox, WebConnector, ResponseFolder };

// Which request processor the program uses: $DORVANE_PROCESSOR ("sandbox", "webconnector" or
// "responses:DIR") when set, else the QuickBooks/Connection setting; anything else is the
// sandbox. `folder` receives DIR for a response folder.
Connection chosenConnection(const platform::SettingsStore& store, std::string* folder = nullptr);

// A default ServiceSettings holds the settings' defaults.
struct ServiceSettings {
    int port = static_cast<int>(platform::settingDefaultNumber(kSection, "Port"));
    std::string host;  // the name the Web Connector's PC reaches this computer by
    std::string certificate;
    std::string key;
    std::chrono::seconds waitSeconds{platform::settingDefaultNumber(kSection, "WaitSeconds")};
    std::chrono::seconds answerSeconds{platform::settingDefaultNumber(kSection, "AnswerSeconds")};
    std::size_t maxRequestBytes =
        static_cast<std::size_t>(platform::settingDefaultNumber(kSection, "MaxRequestMB")) * 1024 *
        1024;
    std::string userName;
    std::string passwordHash;
    std::string appName = platform::settingDefault(kSection, "AppName");
    std::string companyFile;
    std::string ownerId;
    std::string fileId;

    // With a certificate and a key the service speaks HTTPS on every address; without, plain
    // HTTP on this computer's loopback only.
    bool secure() const { return !certificate.empty() && !key.empty(); }
    // The service's address as the Web Connector calls it.
    std::string appUrl() const;
    std::string supportUrl() const;
    // Where the service listens, for people: "https://0.0.0.0:8438/qbwc".
    std::string listenText() const;

    static ServiceSettings load(const platform::SettingsStore& store);
};

// This computer's fully qualified name, for the .qwc when no Host is set.
std::string thisHostName();

// Makes OwnerID and FileID once and keeps them in the settings.
Status ensureIds(platform::SettingsStore& store);

// Sets the Web Connector user: the name and a salted slow hash of the password.
Status setUser(platform::SettingsStore& store, const std::string& name,
               const std::string& password);

// The .qwc file to add to the Web Connector. Needs a user (else fails with the reason);
// makes the GUIDs when they are missing.
Result<std::string> qwcText(platform::SettingsStore& store);
Status writeQwc(platform::SettingsStore& store, const std::filesystem::path& file);

// Appends one event to the service's log: "YYYY-MM-DD HH:MM:SS keyword: text".
void logEvent(const std::filesystem::path& log, const std::string& keyword,
              const std::string& text);

// What the log tells about the service, for `dorvane webconnector status`.
struct LogSummary {
    std::optional<std::string> lastConnected;  // "2026-11-24 10:02:11 user office from 10.0.0.5"
    std::optional<std::string> lastRefused;
    std::optional<std::string> lastError;
    std::optional<std::string> clientVersion;
    std::optional<std::string> companyFile;
    std::optional<std::string> servingSince;  // set when a living process serves now
    long servingPid = 0;
};
LogSummary summarizeLog(const std::filesystem::path& log);

}  // namespace dorvane::webconnector

namespace dorvane::webconnector {

// The preferences window's "QuickBooks connection" page: what it shows and what OK writes.
struct ConnectionPreferences {
    bool webConnector = false;  // QuickBooks/Connection: webconnector, else sandbox
    std::string port;
    std::string host;
    std::string certificate;
    std::string key;
    std::string waitSeconds;
    std::string userName;
    // A new password for the user; empty keeps the stored one.
    std::string newPassword;

    static ConnectionPreferences load(const platform::SettingsStore& store);
    // Checks the values and writes them; the password only as its hash. A value that does
    // not make sense (a port that is no number, a user without a password) fails with a
    // sentence for the person and writes nothing.
    Status save(platform::SettingsStore& store) const;
};

}  // namespace dorvane::webconnector
