// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the mail preferences dialog (Dialog): what it shows and what OK writes.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "mail/documentextras.h"
#include "platform/settings.h"
#include "ui/uiport.h"

namespace dorvane::mail {

// The dialog's controls: name, kind and caption (or hint), in the order a front end lays
// them out.
struct PreferenceControl {
    enum Kind { Text, Password, Check, Option, Frame };
    const char* name;
    Kind kind;
    const char* caption;
    const char* hint = "";
};

inline constexpr PreferenceControl kPreferenceControls[] = {
    {"smtpservertext", PreferenceControl::Text, "SMTP Server Name"},
    {"SmtpUsername", PreferenceControl::Text, "SMTP User Name"},
    {"SMTPPassword", PreferenceControl::Password, "SMTP Password"},
    {"SMTPPort", PreferenceControl::Text, "SMTP Port"},
    {"tracecheck", PreferenceControl::Check, "Trace"},
    {"testEmailCheck", PreferenceControl::Check, "Test Email"},
    {"testAdrText", PreferenceControl::Text, "enter your test email address"},
    {"Frame1", PreferenceControl::Frame, "Mail Options"},
    {"useSMTPOption", PreferenceControl::Option, "use SMTP"},
    {"useOutlookOption", PreferenceControl::Option, "use Outlook"},
    {"directdeliveryoption", PreferenceControl::Option, "direct delivery"},
    {"returnReceiptCheck", PreferenceControl::Check, "RequestDeliveryReceipts"},
    {"bccCheck", PreferenceControl::Check, "Send BCC to:"},
    {"bcctext", PreferenceControl::Text, "enter your BCC email address",
     "BCC addresses separated with ;"},
    {"alwayssendBCC", PreferenceControl::Check, "Always send BCC"},
    {"altEmailCheck", PreferenceControl::Check, "Choose Alternate Email Address"},
    {"EncryptCheck", PreferenceControl::Check, "Encrypt with Digital Envelope"},
    {"attachCheck", PreferenceControl::Check, "SendXMLAttachments"},
};

class MailPreferencesModel final : public ui::DialogModel {
public:
    // Fills every control from the store, with the defaults where nothing is stored.
    explicit MailPreferencesModel(const platform::SettingsStore& store);

    std::string_view dialogName() const override { return "Dialog"; }

    std::string hostname;
    std::string user;
    std::string password;
    std::string port;
    bool trace = false;
    bool test = false;
    std::string testAddress;
    // Which of the three option buttons is set; none when the stored value is not 0, 1 or 2.
    std::optional<int> mailOption;
    bool returnReceipt = false;
    bool bcc = false;
    std::string bccAddresses;
    bool alwaysBcc = false;
    bool altEmail = false;
    bool encrypt = false;
    bool attachment = false;

    // What OK writes, in the order it writes it. With no option button set, MailOption is
    // left as it was.
    std::vector<platform::SettingsStore::Change> changes() const;
    // OK: writes every value. Cancel writes nothing (the front end just closes).
    Status save(platform::SettingsStore& store) const;
};

// The preferences' "Documents" page: the PDF copy, the pay-now link and, per document type
// that is mailed, the sender's own subject and cover text. OK writes only what changed, so a
// person who never opens the page leaves the settings as they were.
class DocumentOptionsModel final {
public:
    // Reads the settings and the own words ("documenttexts.xml"; a file that cannot be read
    // leaves them empty and `loadProblem` says why).
    DocumentOptionsModel(const platform::SettingsStore& store,
                         const platform::ProgramFolder& folder);

    bool attachPdf = false;
    std::string pageSize;  // "auto", "Letter" or "A4"
    std::string marginPoints;
    std::string payLink;
    // Keyed by document type name ("Invoice"): the types "Send Email" mails.
    std::map<std::string, OwnWords> words;
    std::string loadProblem;

    // The types whose words can be set, in menu order.
    static std::vector<std::string> typesWithWords();

    // Where `pageSize` stands in the setting's choices (platform::kPageSizeChoices, letter
    // case aside); -1 for a stored value
    // that is none of them, which stays as it is until a choice is made.
    int pageSizeIndex() const;
    void choosePageSize(int index);

    // What is wrong with the values, in words for the person; empty when OK may write them.
    std::string problem() const;
    std::vector<platform::SettingsStore::Change> changes() const;
    Status save(platform::SettingsStore& store) const;

private:
    const platform::ProgramFolder& m_folder;
    platform::MailSettings m_loaded;
    DocumentTexts m_texts;
};

}  // namespace dorvane::mail
