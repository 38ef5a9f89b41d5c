// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/preferences.h"

namespace dorvane::mail {
namespace {

const char* flag(bool on) {
    return on ? "1" : "0";
}

}  // namespace

MailPreferencesModel::MailPreferencesModel(const platform::SettingsStore& store) {
    hostname = store.get("SMTP", "Hostname");
    user = store.get("SMTP", "User");
    password = store.get("SMTP", "Pwd");
    port = store.get("SMTP", "Port", "25");
    trace = store.getInt("SMTP", "Trace", 0) == 1;
    test = store.getInt("Settings", "Test", 0) == 1;
    testAddress = store.get("Settings", "EmailAdr");
    const int option = store.getInt("Settings", "MailOption", 0);
    if (option >= 0 && option <= 2) {
        mailOption = option;
    }
    returnReceipt = store.getInt("Settings", "ReturnReceipt", 0) == 1;
    bcc = store.getInt("Settings", "BCC", 0) == 1;
    bccAddresses = store.get("Settings", "BCCAdr");
    alwaysBcc = store.getInt("Settings", "alwaysBCC", 0) == 1;
    altEmail = store.getInt("Settings", "altEmail", 0) == 1;
    encrypt = store.getInt("Settings", "Encrypt", 0) == 1;
    attachment = store.getInt("Settings", "Attachment", 0) == 1;
}

std::vector<platform::SettingsStore::Change> MailPreferencesModel::changes() const {
    std::vector<platform::SettingsStore::Change> out = {
        {"SMTP", "Hostname", hostname},
        {"SMTP", "User", user},
        {"SMTP", "Pwd", password},
        {"SMTP", "Port", port},
        {"Settings", "Test", flag(test)},
        {"SMTP", "Trace", flag(trace)},
        {"Settings", "EmailAdr", testAddress},
    };
    if (mailOption) {
        out.push_back({"Settings", "MailOption", std::to_string(*mailOption)});
    }
    const std::vector<platform::SettingsStore::Change> rest = {
        {"Settings", "Attachment", flag(attachment)},
        {"Settings", "ReturnReceipt", flag(returnReceipt)},
        {"Settings", "BCC", flag(bcc)},
        {"Settings", "altEmail", flag(altEmail)},
        {"Settings", "alwaysBCC", flag(alwaysBcc)},
        {"Settings", "BCCAdr", bccAddresses},
        {"Settings", "Encrypt", flag(encrypt)},
    };
    out.insert(out.end(), rest.begin(), rest.end());
    return out;
}

Status MailPreferencesModel::save(platform::SettingsStore& store) const {
    return store.setEntries(changes());
}

}  // namespace dorvane::mail
