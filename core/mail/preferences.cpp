// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/preferences.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "browser/documenttypes.h"
#include "common/text.h"
#include "platform/programfolder.h"

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

DocumentOptionsModel::DocumentOptionsModel(const platform::SettingsStore& store,
                                           const platform::ProgramFolder& folder)
    : m_folder(folder), m_loaded(platform::loadMailSettings(store)) {
    attachPdf = m_loaded.attachPdf == 1;
    pageSize = m_loaded.pageSize;
    marginPoints = std::to_string(m_loaded.marginPoints);
    payLink = m_loaded.payLink;
    if (auto texts = DocumentTexts::load(folder)) {
        m_texts = std::move(texts).value();
    } else {
        loadProblem = texts.error().description;
    }
    for (const std::string& type : typesWithWords()) {
        words[type] = m_texts.words(type);
    }
}

std::vector<std::string> DocumentOptionsModel::typesWithWords() {
    std::vector<std::string> out;
    for (const browser::DocumentType& type : browser::kDocumentTypes) {
        if (type.styleSheet) {
            out.emplace_back(type.name);
        }
    }
    return out;
}

int DocumentOptionsModel::pageSizeIndex() const {
    const std::span<const platform::SettingChoice> choices(platform::kPageSizeChoices);
    const auto found = std::find_if(choices.begin(), choices.end(), [this](const auto& choice) {
        return text::equalsIgnoreCase(pageSize, choice.value);
    });
    return found == choices.end() ? -1 : static_cast<int>(found - choices.begin());
}

void DocumentOptionsModel::choosePageSize(int index) {
    if (index >= 0 && index < static_cast<int>(std::size(platform::kPageSizeChoices))) {
        pageSize = platform::kPageSizeChoices[index].value;
    }
}

std::string DocumentOptionsModel::problem() const {
    for (const platform::SettingsStore::Change& change : changes()) {
        if (Status ok = platform::checkSetting(change.section, change.key, change.value); !ok) {
            return ok.error().description;
        }
    }
    return {};
}

std::vector<platform::SettingsStore::Change> DocumentOptionsModel::changes() const {
    std::vector<platform::SettingsStore::Change> out;
    auto changed = [&](const char* key, const std::string& value, const std::string& was) {
        if (value != was) {
            out.push_back({"Documents", key, value});
        }
    };
    changed("AttachPdf", flag(attachPdf), flag(m_loaded.attachPdf == 1));
    changed("PageSize", pageSize, m_loaded.pageSize);
    changed("MarginPoints", marginPoints, std::to_string(m_loaded.marginPoints));
    changed("PayLink", std::string(text::trim(payLink)), m_loaded.payLink);
    return out;
}

Status DocumentOptionsModel::save(platform::SettingsStore& store) const {
    if (const std::string wrong = problem(); !wrong.empty()) {
        return Error{0, wrong};
    }
    if (const auto settings = changes(); !settings.empty()) {
        if (Status saved = store.setEntries(settings); !saved) {
            return saved;
        }
    }
    DocumentTexts texts = m_texts;
    bool wordsChanged = false;
    for (const auto& [type, own] : words) {
        const OwnWords before = m_texts.words(type);
        if (own.subject != before.subject || own.cover != before.cover) {
            texts.setWords(type, own);
            wordsChanged = true;
        }
    }
    return wordsChanged ? texts.save(m_folder) : Status();
}

}  // namespace dorvane::mail
