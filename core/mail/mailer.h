// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the mail transports: the SMTP server, direct delivery and Outlook.
//
// One `Mailer` lives as long as the main window and owns the SMTP client. A send run builds
// a `MailContext` (the run's settings and the window's ports), opens the transport once with
// `openMailTransport`, delivers each document with `composeAndSendSmtp` (SMTP server) or
// `deliverDirect` (direct delivery), and ends with `disconnect`.
//
// What the person sees:
// - status texts "Connecting to SMTP", "Connected", "Query SMTP Server", "Trying to send";
// - "Cannot connect to SMTP Server  " + number (message box and status text) when the
//   connection fails; the run still goes on and each message then fails on its own;
// - "Please enter a vaild email address for testing" when a run in test mode has no test
//   address (once per connection);
// - for a refused message: the result number, the server's or libcurl's text and the
//   envelope recipients, separated by blanks; when there is no connection, the text says
//   what is missing or wrong (no server set, name unknown, nothing answering, certificate
//   not trusted, login refused) and where to put it right;
// - "Could not connect to Outlook 2000 or 2002" for the Outlook transport, which this system
//   does not have.
//
// Files in the program folder: "themail.txt" (the last message, kept), the exchange file
// (written, attached, deleted), "smtptrace.txt" (with Trace 1: the last connection's
// conversation, login data redacted).
//
// Tests point direct delivery elsewhere with $DORVANE_DNS_SERVER (mxresolver.h) and
// $DORVANE_DIRECT_SMTP_PORT (the port used instead of 25).
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "mail/mimecompose.h"
#include "mail/mimemessage.h"
#include "mail/smtpclient.h"

namespace dorvane::platform {
class ProgramFolder;
class SettingsStore;
struct MailSettings;
}  // namespace dorvane::platform

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::mail {

inline constexpr const char* kDirectPortVariable = "DORVANE_DIRECT_SMTP_PORT";
inline constexpr const char* kMessageFile = "themail.txt";
inline constexpr const char* kTraceFile = "smtptrace.txt";

// What the transports need from the window for one send run.
struct MailContext {
    ui::UiPort& ui;
    const platform::ProgramFolder& folder;
    // Panel 1 of the main window's status bar.
    std::function<void(const std::string&)> setStatusText;
    // The settings loaded at the start of the run.
    const platform::MailSettings& settings;
    // The main window's "preview" box.
    bool preview = false;

    void status(const std::string& text) const {
        if (setStatusText) {
            setStatusText(text);
        }
    }
};

// What connecting to an SMTP server found. The connection is made as a send run makes it
// (the same name resolution, TLS rules and login), then closed; nothing is sent and nothing
// is shown.
struct SmtpProbe {
    int result = 0;       // 0 connected (and logged in, where the server asks for a login)
    std::string problem;  // what is missing or wrong, for people, when result is not 0
    SmtpClient::SessionFacts facts;
};
SmtpProbe probeSmtpServer(std::string_view host, std::string_view port, std::string_view user,
                          std::string_view password);

class Mailer final {
public:
    Mailer();
    ~Mailer();
    Mailer(const Mailer&) = delete;
    Mailer& operator=(const Mailer&) = delete;

    // The step before a run's first message, by MailOption: 0 connects to the server named
    // by "Hostname", "Port" (default "25"), "User" and "pwd" of section "SMTP", read now;
    // 1 connects to Outlook; 2 has nothing to connect. Answers 0 (ready): the connection
    // steps report their own failures.
    int openMailTransport(const MailContext& context, const platform::SettingsStore& store);

    // Connects the SMTP client (disconnecting first); starts "smtptrace.txt" afresh when
    // Trace is 1; warns about a missing test address unless previewing; requests return
    // receipts when ReturnReceipt is set. Always answers 0.
    int openSmtpConnection(const MailContext& context, std::string_view port, std::string_view host,
                           std::string_view user, std::string_view password);

    // Composes the document mail (writing the exchange file for a non-empty attachment
    // text), saves it as "themail.txt" and sends it over the open connection to the
    // recipient and the blind copies (";"-separated). Blind copies are envelope recipients
    // only, never headers. True when the server accepted the message.
    bool composeAndSendSmtp(const MailContext& context, std::string_view sender,
                            std::string_view recipient, std::string_view subject,
                            std::string_view html, std::string_view attachmentText,
                            std::string_view bccAddresses, const MessageExtras& extras = {});

    // Delivers to the mail exchanger of the recipient's domain (the text after the first
    // "@") on port 25, without login, over a connection of its own.
    bool deliverDirect(const MailContext& context, std::string_view sender,
                       std::string_view recipient, std::string_view subject, std::string_view html,
                       std::string_view attachmentText, const MessageExtras& extras = {});

    // Outlook is not available on this system: shows "Could not connect to Outlook 2000 or
    // 2002" and answers false.
    bool connectOutlook(const MailContext& context);
    // Whether the run's `connectOutlook` reached Outlook.
    bool outlookConnected() const { return m_outlookConnected; }
    // Hands a message to Outlook; without Outlook nothing is sent and the answer is false.
    bool sendViaOutlook(const MailContext& context, std::string_view sender,
                        std::string_view recipient, std::string_view subject, std::string_view html,
                        std::string_view attachmentText, std::string_view bccAddresses);

    // Hands one message to the transport the run's settings name (MailOption), with the blind
    // copies the settings ask for (BCC, BCCAdr). True when it went out; otherwise `whyNot` says
    // why when the transport did not (lastFailure has what it said).
    bool deliver(const MailContext& context, std::string_view sender, std::string_view recipient,
                 std::string_view subject, std::string_view html, std::string_view attachmentText,
                 const MessageExtras& extras, std::string& whyNot);

    // Ends the run's connection.
    void disconnect();

    // Why the last message handed over did not go out (what the person was shown); empty
    // when it went out.
    const std::string& lastFailure() const { return m_lastFailure; }

    SmtpClient& smtpClient() { return m_smtp; }

private:
    // `openSmtpConnection`; `directRecipient` names the recipient in direct delivery, so
    // that a failure is explained in its terms.
    int connectTo(const MailContext& context, std::string_view port, std::string_view host,
                  std::string_view user, std::string_view password,
                  std::string_view directRecipient);

    SmtpClient m_smtp;
    MimeMessage m_message;
    bool m_outlookConnected = false;
    // Why the last connection failed, in the person's words; empty when it did not.
    std::string m_connectionProblem;
    std::string m_lastFailure;
};

}  // namespace dorvane::mail
