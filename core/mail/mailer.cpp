// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mailer.h"

#include <cstdlib>
#include <filesystem>

#include <curl/curl.h>

#include "common/files.h"
#include "common/text.h"
#include "mail/mimecompose.h"
#include "mail/mxresolver.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "ui/uiport.h"

namespace dorvane::mail {
namespace {

void removeQuietly(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

// Deletes the exchange file when composing ends, however it ends.
class FileRemover {
public:
    explicit FileRemover(std::string path) : m_path(std::move(path)) {}
    ~FileRemover() {
        if (!m_path.empty()) {
            removeQuietly(m_path);
        }
    }
    FileRemover(const FileRemover&) = delete;
    FileRemover& operator=(const FileRemover&) = delete;

private:
    std::string m_path;
};

bool isCertificateTrouble(int result) {
    switch (result) {
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        case CURLE_SSL_INVALIDCERTSTATUS:
            return true;
        default:
            return false;
    }
}

// Why no connection was made, in words for the person who sends the mail: what is missing
// or wrong and where to put it right. `directRecipient` is set for direct delivery.
std::string explainConnectionFailure(int result, std::string_view host, std::string_view port,
                                     std::string_view directRecipient, std::string_view detail) {
    const bool direct = !directRecipient.empty();
    const std::string name(text::trim(host));
    if (name.empty()) {
        if (direct) {
            const auto at = directRecipient.find('@');
            if (at == std::string_view::npos || at + 1 == directRecipient.size()) {
                return "The address \"" + std::string(directRecipient) +
                       "\" has no domain (the part after \"@\"), so there is no mail server "
                       "to deliver to. Correct the e-mail address.";
            }
            return "No mail server was found for \"" + std::string(directRecipient.substr(at + 1)) +
                   "\", the domain of the address \"" + std::string(directRecipient) +
                   "\". Check the e-mail address.";
        }
        return "No SMTP server is set. Enter your mail server's name as \"SMTP Server Name\" "
               "under Preferences > Parameter, or on the command line: dorvane settings set "
               "SMTP Hostname smtp.example.com";
    }
    const std::string server = direct ? "The recipient's mail server \"" + name + "\""
                                      : "The SMTP server \"" + name + "\"";
    const std::string where =
        direct ? std::string() : " Check the settings under Preferences > Parameter.";
    if (result == kResultCouldNotResolveHost) {
        return server + " was not found: the name is unknown" +
               (direct ? "." : ". Check \"SMTP Server Name\" under Preferences > Parameter.") +
               " Is this computer connected to the network?";
    }
    if (result == kResultCouldNotConnect) {
        return server + " does not answer on port " + std::string(text::trim(port)) +
               ": the connection was refused or the server cannot be reached." +
               (direct ? " Try again later."
                       : " Check \"SMTP Server Name\" and \"SMTP Port\" under Preferences > "
                         "Parameter, and that the server is running.");
    }
    if (result == CURLE_OPERATION_TIMEDOUT) {
        return server + " did not answer in time." + where;
    }
    if (isCertificateTrouble(result)) {
        return server +
               " showed a security certificate that this computer does not trust, so nothing "
               "was sent to it. The server name must be the one the certificate was issued "
               "for; ask your mail provider for the right name.";
    }
    if (result == CURLE_LOGIN_DENIED) {
        return server + " refused the login (" + std::string(detail) +
               "). Check \"SMTP User Name\" and \"SMTP Password\" under Preferences > "
               "Parameter.";
    }
    if (result == kResultTlsRequired) {
        return std::string(detail);
    }
    return server + " could not be reached (" + std::string(detail) + ")." + where;
}

// Names the server to the client. Names are resolved here, with the same resolver as the
// mail exchangers, and the connection goes to exactly the addresses found. Names only the
// system's own resolver knows (other name services) are left to it, unless tests named a DNS
// server.
void aim(SmtpClient& client, std::string_view host, std::string_view port, std::string_view user,
         std::string_view password) {
    client.setServer(std::string(host), std::string(port), std::string(user),
                     std::string(password));
    const std::string hostName(text::trim(host));
    if (!hostName.empty() && !isAddressLiteral(hostName) && !isLoopbackHost(hostName)) {
        const MxResolver resolver = MxResolver::fromEnvironment();
        std::vector<std::string> found = resolver.addresses(hostName);
        if (!found.empty() || resolver.hasServerOverride()) {
            client.pinHostAddresses(std::move(found));
        }
    }
}

std::string directPort() {
    const char* port = std::getenv(kDirectPortVariable);
    return port && *port ? std::string(port) : std::string("25");
}

}  // namespace

SmtpProbe probeSmtpServer(std::string_view host, std::string_view port, std::string_view user,
                          std::string_view password) {
    // SmtpClient::connect is the check itself: greeting, EHLO, STARTTLS, login and a NOOP,
    // with no MAIL FROM, so no message is begun.
    SmtpClient client;
    aim(client, host, port, user, password);
    SmtpProbe probe;
    probe.result = client.connect();
    probe.facts = client.sessionFacts();
    if (probe.result != 0) {
        probe.problem =
            explainConnectionFailure(probe.result, host, port, {}, client.lastResultText());
    }
    return probe;
}

Mailer::Mailer() = default;

Mailer::~Mailer() = default;

int Mailer::openMailTransport(const MailContext& context, const platform::SettingsStore& store) {
    switch (context.settings.mailOption) {
        case 0:
            return openSmtpConnection(context, store.value("SMTP", "Port").value_or(""),
                                      store.get("SMTP", "Hostname"), store.get("SMTP", "User"),
                                      store.get("SMTP", "pwd"));
        case 1:
            (void)connectOutlook(context);
            return 0;
        default:
            return 0;
    }
}

int Mailer::openSmtpConnection(const MailContext& context, std::string_view port,
                               std::string_view host, std::string_view user,
                               std::string_view password) {
    return connectTo(context, port, host, user, password, {});
}

int Mailer::connectTo(const MailContext& context, std::string_view port, std::string_view host,
                      std::string_view user, std::string_view password,
                      std::string_view directRecipient) {
    m_connectionProblem.clear();
    if (m_smtp.connected()) {
        m_smtp.disconnect();
    }
    aim(m_smtp, host, port, user, password);

    if (context.settings.trace == 1) {
        const std::string trace = context.folder.filePath(kTraceFile);
        removeQuietly(trace);
        m_smtp.setTraceFile(trace);
    } else {
        m_smtp.setTraceFile({});
    }

    context.status("Connecting to SMTP");
    const int result = m_smtp.connect();
    if (result > 0) {
        m_connectionProblem =
            explainConnectionFailure(result, host, port, directRecipient, m_smtp.lastResultText());
        const std::string text = "Cannot connect to SMTP Server  " + std::to_string(result);
        m_lastFailure = m_connectionProblem.empty() ? text : m_connectionProblem;
        context.ui.messageBox(text);
        context.status(text);
        if (result == kResultTlsRequired) {
            context.ui.messageBox(m_connectionProblem);
        }
    }
    context.status("Connected");

    if (!context.preview && context.settings.test == 1 && context.settings.emailAdr.empty()) {
        context.ui.messageBox("Please enter a vaild email address for testing");
    }
    // The run's setting decides; a request from an earlier run does not linger.
    m_smtp.setRequestReturnReceipts(context.settings.returnReceipt > 0);
    return 0;
}

bool Mailer::composeAndSendSmtp(const MailContext& context, std::string_view sender,
                                std::string_view recipient, std::string_view subject,
                                std::string_view html, std::string_view attachmentText,
                                std::string_view bccAddresses, const MessageExtras& extras) {
    m_lastFailure.clear();
    DocumentMail mail;
    mail.extras = extras;
    mail.sender = std::string(sender);
    mail.recipient = std::string(recipient);
    mail.subject = std::string(subject);
    mail.html = std::string(html);
    mail.returnReceipt = m_smtp.requestReturnReceipts();

    std::string attachmentPath;
    if (!attachmentText.empty()) {
        const std::string name = attachmentFileName(subject);
        attachmentPath = context.folder.filePath(name);
        removeQuietly(attachmentPath);
        // A scratch file, read back at once and deleted once the message is sent.
        if (Status written =
                context.folder.writeProgramFile(attachmentText, name, files::Durability::Scratch);
            !written) {
            const Error& error = written.error();
            m_lastFailure =
                std::to_string(error.code) + " " + error.description + " " + attachmentPath;
            context.ui.messageBox(m_lastFailure);
            return false;
        }
        mail.attachment = attachmentPath;
    }
    FileRemover removeAttachment(attachmentPath);

    composeDocumentMail(mail, m_message);
    const std::string messageFile = context.folder.filePath(kMessageFile);
    // The message stays composed until the next one replaces it: composing starts afresh.
    const int saved = m_message.save(messageFile);
    if (saved != 0) {
        m_lastFailure = "the message could not be written to " + messageFile;
        return false;
    }

    const std::string recipients = envelopeRecipients(recipient, bccAddresses);
    if (recipients.empty()) {
        m_lastFailure = "no recipient address";
        return false;
    }
    const int result = m_smtp.sendFile(messageFile, sender, recipients);
    if (result != 0) {
        // Without a connection, why there is none says more than "not connected".
        const std::string& why = !m_smtp.connected() && !m_connectionProblem.empty()
                                     ? m_connectionProblem
                                     : m_smtp.lastResultText();
        m_lastFailure = std::to_string(result) + " " + why + " " + recipients;
        context.ui.messageBox(m_lastFailure);
        return false;
    }
    return true;
}

bool Mailer::deliverDirect(const MailContext& context, std::string_view sender,
                           std::string_view recipient, std::string_view subject,
                           std::string_view html, std::string_view attachmentText,
                           const MessageExtras& extras) {
    const std::vector<std::string> pieces = text::split(recipient, '@');
    const std::string domain = pieces.size() > 1 ? pieces[1] : std::string();

    m_lastFailure.clear();
    context.status("Query SMTP Server");
    const std::string exchanger =
        domain.empty() ? std::string() : MxResolver::fromEnvironment().mailExchanger(domain);

    m_smtp.reset();
    if (connectTo(context, directPort(), exchanger, "", "", recipient) != 0) {
        return false;
    }
    context.status("Trying to send");
    return composeAndSendSmtp(context, sender, recipient, subject, html, attachmentText, "",
                              extras);
}

bool Mailer::connectOutlook(const MailContext& context) {
    m_outlookConnected = false;
    context.ui.messageBox("Could not connect to Outlook 2000 or 2002");
    return false;
}

bool Mailer::sendViaOutlook(const MailContext&, std::string_view, std::string_view,
                            std::string_view, std::string_view, std::string_view,
                            std::string_view) {
    return false;
}

bool Mailer::deliver(const MailContext& context, std::string_view sender,
                     std::string_view recipient, std::string_view subject, std::string_view html,
                     std::string_view attachmentText, const MessageExtras& extras,
                     std::string& whyNot) {
    const platform::MailSettings& settings = context.settings;
    const std::string bcc =
        settings.bcc == 1 && !settings.bccAdr.empty() ? settings.bccAdr : std::string();
    switch (settings.mailOption) {
        case 1:
            if (!outlookConnected()) {
                whyNot = "Outlook could not be reached";
                return false;
            }
            context.status("Connected to Outlook");
            return sendViaOutlook(context, sender, recipient, subject, html, attachmentText, bcc);
        case 0:
            return composeAndSendSmtp(context, sender, recipient, subject, html, attachmentText,
                                      bcc, extras);
        case 2: {
            bool result =
                deliverDirect(context, sender, recipient, subject, html, attachmentText, extras);
            if (!bcc.empty()) {
                for (const std::string& copy : text::split(bcc, ';')) {
                    result =
                        deliverDirect(context, sender, copy, subject, html, attachmentText, extras);
                }
            }
            return result;
        }
        default:
            whyNot = "no mail transport is chosen (Settings MailOption " +
                     std::to_string(settings.mailOption) + ")";
            return false;
    }
}

void Mailer::disconnect() {
    m_smtp.disconnect();
}

}  // namespace dorvane::mail
