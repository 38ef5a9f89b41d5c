// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/config.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <signal.h>
#include <sstream>
#include <unistd.h>

#include "common/clock.h"
#include "common/files.h"
#include "common/text.h"
#include "platform/settings.h"
#include "webconnector/credentials.h"
#include "xml/xml.h"

namespace dorvane::webconnector {
namespace {

// `text` as a whole number from `low` to `high`; nothing when it is not one.
std::optional<int> wholeNumber(std::string_view text, long low, long high) {
    const std::string t(text::trim(text));
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(t.c_str(), &end, 10);
    if (t.empty() || errno != 0 || *end != '\0' || value < low || value > high) {
        return std::nullopt;
    }
    return static_cast<int>(value);
}

// A whole-number setting of the section, within the range the settings allow; its default
// otherwise.
int intSetting(const platform::SettingsStore& store, const char* key) {
    const platform::KnownSetting& s = *platform::knownSetting(kSection, key);
    return wholeNumber(store.value(kSection, key).value_or(""), s.low, s.high)
        .value_or(static_cast<int>(platform::settingDefaultNumber(kSection, key)));
}

// "The port must be a number from 1 to 65535.": the range as the settings allow it.
std::optional<Error> outOfRange(const std::string& value, const char* key, const char* what) {
    const platform::KnownSetting& s = *platform::knownSetting(kSection, key);
    if (wholeNumber(value, s.low, s.high)) {
        return std::nullopt;
    }
    return Error{EINVAL, std::string("The ") + what + " from " + std::to_string(s.low) + " to " +
                             std::to_string(s.high) + "."};
}

std::string hostPart(const std::string& host) {
    // An IPv6 address goes in brackets in a URL.
    return host.find(':') != std::string::npos ? "[" + host + "]" : host;
}

}  // namespace

Connection chosenConnection(const platform::SettingsStore& store, std::string* folder) {
    std::string choice;
    if (const char* env = std::getenv("DORVANE_PROCESSOR"); env && *env) {
        choice = env;
    } else {
        choice = store.value("QuickBooks", "Connection").value_or("");
    }
    constexpr std::string_view kResponses = "responses:";
    if (choice.starts_with(kResponses)) {
        if (folder != nullptr) {
            *folder = choice.substr(kResponses.size());
        }
        return Connection::ResponseFolder;
    }
    if (text::equalsIgnoreCase(text::trim(choice), "webconnector")) {
        return Connection::WebConnector;
    }
    return Connection::Sandbox;
}

std::string ServiceSettings::appUrl() const {
    if (!secure()) {
        return "http://localhost:" + std::to_string(port) + kServicePath;
    }
    return "https://" + hostPart(host.empty() ? thisHostName() : host) + ":" +
           std::to_string(port) + kServicePath;
}

std::string ServiceSettings::supportUrl() const {
    std::string url = appUrl();
    return url.substr(0, url.size() - std::strlen(kServicePath)) + kSupportPath;
}

std::string ServiceSettings::listenText() const {
    return secure() ? "https://0.0.0.0:" + std::to_string(port) + kServicePath
                    : "http://127.0.0.1:" + std::to_string(port) + kServicePath +
                          " (this computer only: no certificate is set)";
}

ServiceSettings ServiceSettings::load(const platform::SettingsStore& store) {
    ServiceSettings s;
    auto text = [&store](const char* key) {
        return std::string(text::trim(store.value(kSection, key).value_or("")));
    };
    s.port = intSetting(store, "Port");
    s.host = text("Host");
    s.certificate = text("Certificate");
    s.key = text("Key");
    s.waitSeconds = std::chrono::seconds(intSetting(store, "WaitSeconds"));
    s.answerSeconds = std::chrono::seconds(intSetting(store, "AnswerSeconds"));
    s.maxRequestBytes = static_cast<std::size_t>(intSetting(store, "MaxRequestMB")) * 1024 * 1024;
    s.userName = text("UserName");
    s.passwordHash = text("PasswordHash");
    if (const std::string name = text("AppName"); !name.empty()) {
        s.appName = name;
    }
    s.companyFile = text("CompanyFile");
    s.ownerId = text("OwnerID");
    s.fileId = text("FileID");
    return s;
}

std::string thisHostName() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') {
        return "localhost";
    }
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    addrinfo* found = nullptr;
    std::string out = name;
    if (::getaddrinfo(name, nullptr, &hints, &found) == 0 && found != nullptr) {
        if (found->ai_canonname != nullptr && std::strchr(found->ai_canonname, '.') != nullptr) {
            out = found->ai_canonname;
        }
        ::freeaddrinfo(found);
    }
    return out;
}

Status ensureIds(platform::SettingsStore& store) {
    std::vector<platform::SettingsStore::Change> changes;
    for (const char* key : {"OwnerID", "FileID"}) {
        if (text::trim(store.value(kSection, key).value_or("")).empty()) {
            changes.push_back({kSection, key, newGuid()});
        }
    }
    return changes.empty() ? Status{} : store.setEntries(changes);
}

Status setUser(platform::SettingsStore& store, const std::string& name,
               const std::string& password) {
    const std::string user(text::trim(name));
    if (user.empty()) {
        return Error{EINVAL, "The user name is empty."};
    }
    if (password.empty()) {
        return Error{EINVAL, "The password is empty."};
    }
    auto hash = hashPassword(password);
    if (!hash) {
        return hash.error();
    }
    return store.setEntries({{kSection, "UserName", user}, {kSection, "PasswordHash", *hash}});
}

Result<std::string> qwcText(platform::SettingsStore& store) {
    if (Status ids = ensureIds(store); !ids) {
        return ids.error();
    }
    const ServiceSettings s = ServiceSettings::load(store);
    if (s.userName.empty() || s.passwordHash.empty()) {
        return Error{EINVAL,
                     "No Web Connector user is set: run 'dorvane webconnector user NAME' first."};
    }
    xml::Document doc = xml::Document::withRoot("QBWCXML");
    xml::Node root = doc.root();
    root.appendElement("AppName", s.appName);
    root.appendElement("AppID", "");
    root.appendElement("AppURL", s.appUrl());
    root.appendElement("AppDescription",
                       "Dorvane lists, mails and imports this company's QuickBooks documents.");
    root.appendElement("AppSupport", s.supportUrl());
    root.appendElement("UserName", s.userName);
    root.appendElement("OwnerID", s.ownerId);
    root.appendElement("FileID", s.fileId);
    root.appendElement("QBType", "QBFS");
    root.appendElement("Scheduler").appendElement("RunEveryNMinutes", "1");
    root.appendElement("IsReadOnly", "false");
    return doc.toString(true, "UTF-8");
}

Status writeQwc(platform::SettingsStore& store, const std::filesystem::path& file) {
    auto text = qwcText(store);
    if (!text) {
        return text.error();
    }
    return files::writeAtomically(file, *text);
}

void logEvent(const std::filesystem::path& log, const std::string& keyword,
              const std::string& text) {
    std::string line = clock::localDateTimeText(clock::now()) + " " + keyword + ": " + text;
    for (char& c : line) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    // A log that cannot be written never stops the service.
    (void)files::append(log, line + "\n");
}

LogSummary summarizeLog(const std::filesystem::path& log) {
    LogSummary summary;
    auto text = files::readAll(log);
    if (!text) {
        return summary;
    }
    std::istringstream lines(*text);
    std::string line;
    std::optional<std::string> since;
    long pid = 0;
    while (std::getline(lines, line)) {
        // "YYYY-MM-DD HH:MM:SS keyword: text"
        if (line.size() < 21) {
            continue;
        }
        const std::string when = line.substr(0, 19);
        const std::string rest = line.substr(20);
        const auto colon = rest.find(": ");
        if (colon == std::string::npos) {
            continue;
        }
        const std::string keyword = rest.substr(0, colon);
        const std::string what = rest.substr(colon + 2);
        if (keyword == "connected") {
            summary.lastConnected = when + " " + what;
        } else if (keyword == "refused") {
            summary.lastRefused = when + " " + what;
        } else if (keyword == "error" || keyword == "late") {
            summary.lastError = when + " " + what;
        } else if (keyword == "version") {
            summary.clientVersion = what;
        } else if (keyword == "company") {
            summary.companyFile = what;
        } else if (keyword == "listening") {
            since = when + " " + what;
            const auto p = what.rfind("(process ");
            pid = p == std::string::npos ? 0 : std::strtol(what.c_str() + p + 9, nullptr, 10);
        } else if (keyword == "stopped") {
            since.reset();
            pid = 0;
        }
    }
    if (since && pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM)) {
        summary.servingSince = since;
        summary.servingPid = pid;
    }
    return summary;
}

}  // namespace dorvane::webconnector

namespace dorvane::webconnector {

ConnectionPreferences ConnectionPreferences::load(const platform::SettingsStore& store) {
    ConnectionPreferences p;
    p.webConnector = text::equalsIgnoreCase(
        text::trim(store.value("QuickBooks", "Connection").value_or("")), "webconnector");
    auto get = [&store](const char* key) { return store.value(kSection, key).value_or(""); };
    p.port = get("Port");
    p.host = get("Host");
    p.certificate = get("Certificate");
    p.key = get("Key");
    p.waitSeconds = get("WaitSeconds");
    p.userName = get("UserName");
    return p;
}

Status ConnectionPreferences::save(platform::SettingsStore& store) const {
    if (auto refused = outOfRange(port, "Port", "port must be a number")) {
        return *refused;
    }
    if (auto refused = outOfRange(waitSeconds, "WaitSeconds", "wait must be a number of seconds")) {
        return *refused;
    }
    const std::string cert(text::trim(certificate));
    const std::string keyFile(text::trim(key));
    if (cert.empty() != keyFile.empty()) {
        return Error{EINVAL, "Give both the certificate and its key, or neither."};
    }
    const std::string user(text::trim(userName));
    const bool hasHash = !store.value(kSection, "PasswordHash").value_or("").empty();
    const bool sameUser = user == store.value(kSection, "UserName").value_or("");
    if (!user.empty() && newPassword.empty() && (!hasHash || !sameUser)) {
        return Error{EINVAL, "Give the Web Connector user a password."};
    }
    std::vector<platform::SettingsStore::Change> changes = {
        {"QuickBooks", "Connection", webConnector ? "webconnector" : "sandbox"},
        {kSection, "Port", std::string(text::trim(port))},
        {kSection, "Host", std::string(text::trim(host))},
        {kSection, "Certificate", cert},
        {kSection, "Key", keyFile},
        {kSection, "WaitSeconds", std::string(text::trim(waitSeconds))},
        {kSection, "UserName", user},
    };
    if (user.empty()) {
        changes.push_back({kSection, "PasswordHash", ""});
    } else if (!newPassword.empty()) {
        auto hash = hashPassword(newPassword);
        if (!hash) {
            return hash.error();
        }
        changes.push_back({kSection, "PasswordHash", *hash});
    }
    return store.setEntries(changes);
}

}  // namespace dorvane::webconnector
