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
    port = store.value("SMTP", "Port").value_or("");
    trace = store.intValue("SMTP", "Trace") == 1;
    test = store.intValue("Settings", "Test") == 1;
    testAddress = store.get("Settings", "EmailAdr");
    const int option = store.intValue("Settings", "MailOption");
    if (platform::checkSetting("Settings", "MailOption", std::to_string(option))) {
        mailOption = option;
    }
    returnReceipt = store.intValue("Settings", "ReturnReceipt") == 1;
    bcc = store.intValue("Settings", "BCC") == 1;
    bccAddresses = store.get("Settings", "BCCAdr");
    alwaysBcc = store.intValue("Settings", "alwaysBCC") == 1;
    altEmail = store.intValue("Settings", "altEmail") == 1;
    encrypt = store.intValue("Settings", "Encrypt") == 1;
    attachment = store.intValue("Settings", "Attachment") == 1;
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
