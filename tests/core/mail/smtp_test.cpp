// SPDX-License-Identifier: GPL-3.0-or-later
// Sending through the configured SMTP server: a real aiosmtpd server on loopback records
// what arrives.
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

#include "common/text.h"
#include "mail/mailer.h"
#include "mail/mxresolver.h"
#include "mail/smtpclient.h"
#include "mailrun.h"
#include "support/mailservers.h"

namespace dorvane::mail {
namespace {

using test::MailRun;
using test::SmtpServerOptions;
using test::SmtpTestServer;

const std::string kSender = "billing@company.test";
const std::string kSubject = "Invoice: #1041  Date: 2002-05-01  ";

std::vector<std::string> list(std::initializer_list<const char*> items) {
    return {items.begin(), items.end()};
}

// One run's surroundings and its mailer, with the run's usual calls.
class SmtpTransport : public ::testing::Test {
protected:
    int open(const SmtpTestServer& server, const std::string& user = "",
             const std::string& password = "") {
        return mailer.openSmtpConnection(run.context(), server.portText(), "127.0.0.1", user,
                                         password);
    }
    bool send(const std::string& to, const std::string& bcc = "",
              const std::string& html = "<html><body><p>x</p></body></html>",
              const std::string& exchange = "") {
        return mailer.composeAndSendSmtp(run.context(), kSender, to, kSubject, html, exchange, bcc);
    }

    MailRun run;
    Mailer mailer;
};

TEST_F(SmtpTransport, ARunSendsEveryMessageOverOneConnection) {
    SmtpTestServer server;
    EXPECT_EQ(open(server), 0);
    EXPECT_EQ(run.statuses, list({"Connecting to SMTP", "Connected"}));
    EXPECT_TRUE(run.ui.messages.empty());
    // The connection is there before the first message.
    EXPECT_EQ(server.record().connections, 1);
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    EXPECT_EQ(server.record().sessions.at(0).ehlo, host);

    for (const char* to : {"a@example.test", "b@example.test", "c@example.test"}) {
        EXPECT_TRUE(send(to));
    }
    mailer.disconnect();

    test::SmtpRecord record = server.record();
    EXPECT_EQ(record.connections, 1);
    ASSERT_EQ(record.accepted().size(), 3u);
    for (const auto& m : record.messages) {
        EXPECT_EQ(m.session, 1);
        EXPECT_EQ(m.mailFrom, kSender);
    }
    EXPECT_EQ(record.messages[2].rcptTos, list({"c@example.test"}));
    EXPECT_EQ(mailer.smtpClient().connectionsOpened(), 1);
    EXPECT_TRUE(run.ui.messages.empty());

    // The next run connects anew.
    open(server);
    EXPECT_TRUE(send("d@example.test"));
    EXPECT_EQ(server.record().connections, 2);
}

TEST_F(SmtpTransport, BlindCopiesAreEnvelopeRecipientsOnly) {
    SmtpTestServer server;
    open(server);
    ASSERT_TRUE(send("customer@example.test", "boss@company.test;archive@company.test"));
    // Blind copies only: the recipient was left empty (e.g. no address on file).
    ASSERT_TRUE(send("", "boss@company.test;archive@company.test"));
    // Neither recipient nor blind copies: nothing to send.
    EXPECT_FALSE(send(""));

    test::SmtpRecord record = server.record();
    ASSERT_EQ(record.messages.size(), 2u);
    const auto& both = record.messages[0];
    EXPECT_EQ(both.rcptTos,
              list({"customer@example.test", "boss@company.test", "archive@company.test"}));
    EXPECT_EQ(both.mime.header("To"), "customer@example.test");
    const auto& blindOnly = record.messages[1];
    EXPECT_EQ(blindOnly.rcptTos, list({"boss@company.test", "archive@company.test"}));
    EXPECT_FALSE(blindOnly.mime.header("To").has_value());
    for (const auto& m : record.messages) {
        EXPECT_FALSE(m.mime.header("Bcc").has_value());
        EXPECT_EQ(m.data.find("boss@company.test"), std::string::npos);
        EXPECT_EQ(m.data.find("archive@company.test"), std::string::npos);
    }
    EXPECT_TRUE(run.ui.messages.empty());
}

TEST_F(SmtpTransport, TheMessageArrivesWithItsLayoutImagesAndExchangeFile) {
    SmtpTestServer server;
    // Image bytes that a newline conversion or a text encoding would spoil.
    using namespace std::string_literals;  // the bytes' own length, NULs included
    const std::string gif = "GIF89a\x01\x00\x01\x00\r\n\n\r\x00\xff\xfe.\r\n."s;
    const std::string png = "\x89PNG\r\n\x1a\n\x00\x00\x00\rIHDR"s;
    test::writeFile(run.dir / "logo.gif", gif);
    test::writeFile(run.dir / "my stamp.png", png);
    const std::string gifUrl = "file://" + (run.dir / "logo.gif").string();
    const std::string pngUrl = "file://" + (run.dir / "my%20stamp.png").string();
    const std::string html = "<html><body><img src=\"" + gifUrl + "\"><p>Invoice = due</p>" +
                             "<img src=\"images/rel.gif\"><table><tr><td background=\"" + pngUrl +
                             "\">x</td></tr></table><img src=\"" + gifUrl + "\"></body></html>";
    const std::string exchange = "<InvoiceRet><TxnID>1-2</TxnID></InvoiceRet>";

    open(server);
    ASSERT_TRUE(send("customer@example.test", "", html, exchange));

    test::SmtpRecord record = server.record();
    ASSERT_EQ(record.accepted().size(), 1u);
    const test::MimeRecord& mime = record.messages[0].mime;
    EXPECT_TRUE(mime.defects.empty());
    EXPECT_EQ(mime.contentType, "multipart/related");
    ASSERT_FALSE(mime.boundary.empty());
    // The HTML document is the root part that readers show.
    const std::string contentType = mime.header("Content-Type").value_or("");
    EXPECT_TRUE(contentType.starts_with("multipart/related; boundary=\"" + mime.boundary + "\";"))
        << contentType;
    EXPECT_NE(contentType.find("type=\"text/html\""), std::string::npos) << contentType;
    EXPECT_EQ(mime.header("From"), kSender);
    EXPECT_EQ(mime.header("To"), "customer@example.test");
    EXPECT_EQ(mime.subject, kSubject);
    EXPECT_FALSE(mime.header("Disposition-Notification-To").has_value());

    ASSERT_EQ(mime.parts.size(), 5u);
    const auto& plain = mime.parts[0];
    EXPECT_EQ(plain.headers, (test::HeaderList{{"Content-Type", "text/plain"},
                                               {"Content-Transfer-Encoding", "7bit"}}));
    EXPECT_EQ(plain.body, kSubject);

    const auto& htmlPart = mime.parts[1];
    EXPECT_EQ(htmlPart.headerNames(),
              list({"Content-Type", "Content-Transfer-Encoding", "Content-ID"}));
    EXPECT_EQ(htmlPart.header("Content-Type"), "text/html");
    EXPECT_EQ(htmlPart.header("Content-Transfer-Encoding"), "quoted-printable");
    EXPECT_NE(contentType.find("start=\"" + htmlPart.header("Content-ID").value_or("?") + "\""),
              std::string::npos)
        << contentType;
    EXPECT_EQ(htmlPart.body,
              "<html><body><img src=\"cid:1234\"><p>Invoice = due</p>"
              "<img src=\"images/rel.gif\"><table><tr><td background=\"cid:1237\">"
              "x</td></tr></table><img src=\"cid:1234\"></body></html>");

    const auto& gifPart = mime.parts[2];
    EXPECT_EQ(gifPart.headers, (test::HeaderList{{"Content-Type", "image/gif"},
                                                 {"Content-Length", "0"},
                                                 {"Content-disposition", "Inline"},
                                                 {"Content-ID", "<1234>"},
                                                 {"Content-Transfer-Encoding", "base64"}}));
    EXPECT_EQ(gifPart.body, gif);

    const auto& pngPart = mime.parts[3];
    EXPECT_EQ(pngPart.headerNames(), list({"Content-Length", "Content-disposition", "Content-ID",
                                           "Content-Transfer-Encoding"}));
    EXPECT_EQ(pngPart.header("Content-ID"), "<1237>");
    EXPECT_EQ(pngPart.body, png);

    const auto& attached = mime.parts[4];
    EXPECT_EQ(attached.filename, "Invoice-1041--Date-2002-05-01--.dvx");
    EXPECT_EQ(attached.body, exchange + "\r\n");

    // The message file stays, with CR LF line ends only, and is what the server received;
    // the exchange file is gone.
    const std::string saved = run.file("themail.txt");
    EXPECT_EQ(saved, record.messages[0].data);
    for (std::size_t i = saved.find('\n'); i != std::string::npos; i = saved.find('\n', i + 1)) {
        ASSERT_GT(i, 0u);
        ASSERT_EQ(saved[i - 1], '\r') << "bare line feed at " << i;
    }
    EXPECT_FALSE(run.exists("Invoice-1041--Date-2002-05-01--.dvx"));
}

TEST_F(SmtpTransport, SubjectsBeyondAsciiAreEncodedInTheHeader) {
    SmtpTestServer server;
    open(server);
    const std::string subject = "Rechnung: #7  Müller & Söhne – Grüße";
    ASSERT_TRUE(mailer.composeAndSendSmtp(run.context(), kSender, "kunde@example.test", subject,
                                          "<p>ä</p>", "", ""));
    const test::SmtpMessageRecord m = server.record().messages.at(0);
    EXPECT_NE(m.mime.header("Subject")->find("=?"), std::string::npos);
    EXPECT_EQ(m.mime.subject, subject);
    for (unsigned char c : m.data) {
        ASSERT_LT(c, 0x80) << "8-bit byte in the message";
    }
    EXPECT_EQ(m.mime.parts.at(0).body, subject);
}

TEST_F(SmtpTransport, ReturnReceiptsFollowTheRunsSetting) {
    SmtpTestServer server;
    run.settings.returnReceipt = 1;
    open(server);
    ASSERT_TRUE(send("a@example.test"));
    run.settings.returnReceipt = 0;
    open(server);
    ASSERT_TRUE(send("b@example.test"));
    test::SmtpRecord record = server.record();
    ASSERT_EQ(record.messages.size(), 2u);
    EXPECT_EQ(record.messages[0].mime.header("Disposition-Notification-To"), kSender);
    EXPECT_FALSE(record.messages[1].mime.header("Disposition-Notification-To").has_value());
}

TEST_F(SmtpTransport, TestModeWithoutATestAddressIsReportedOncePerConnection) {
    SmtpTestServer server;
    run.settings.test = 1;
    open(server);
    EXPECT_EQ(run.ui.texts(), list({"Please enter a vaild email address for testing"}));

    run.ui.messages.clear();
    run.preview = true;
    open(server);
    run.preview = false;
    run.settings.emailAdr = "me@company.test";
    open(server);
    EXPECT_TRUE(run.ui.messages.empty());
}

class TraceTest : public SmtpTransport, public ::testing::WithParamInterface<const char*> {};

TEST_P(TraceTest, TheTraceHoldsTheLastConversationWithoutLoginData) {
    const std::string user = "dorvane-user";
    const std::string password = "S3cret-pa55word!";
    SmtpServerOptions options;
    options.authUser = user;
    options.authPassword = password;
    options.authRequired = true;
    options.authMechanisms = {GetParam()};
    SmtpTestServer server(options);
    run.settings.trace = 1;
    open(server, user, password);
    ASSERT_TRUE(run.ui.messages.empty()) << run.ui.texts().at(0);
    ASSERT_TRUE(send("first@example.test"));
    const test::SmtpRecord record = server.record();
    ASSERT_EQ(record.sessions.at(0).auths.size(), 1u);
    EXPECT_TRUE(record.sessions[0].auths[0].success);
    EXPECT_EQ(record.sessions[0].auths[0].mechanism, GetParam());

    std::string trace = run.file("smtptrace.txt");
    EXPECT_NE(trace.find("EHLO"), std::string::npos);
    EXPECT_NE(trace.find(std::string("AUTH ") + GetParam()), std::string::npos);
    EXPECT_NE(trace.find("MAIL FROM:<billing@company.test>"), std::string::npos);
    EXPECT_NE(trace.find("first@example.test"), std::string::npos);
    for (const std::string& secret :
         {password, test::base64Encode(password), test::base64Encode(user),
          test::base64Encode(std::string(1, '\0') + user + '\0' + password),
          test::base64Encode(user + '\0' + user + '\0' + password)}) {
        EXPECT_EQ(trace.find(secret), std::string::npos) << secret;
    }

    // A new connection starts the file afresh.
    open(server, user, password);
    ASSERT_TRUE(send("second@example.test"));
    trace = run.file("smtptrace.txt");
    EXPECT_NE(trace.find("second@example.test"), std::string::npos);
    EXPECT_EQ(trace.find("first@example.test"), std::string::npos);
    EXPECT_EQ(trace.find(password), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, TraceTest, ::testing::Values("PLAIN", "LOGIN"));

// A failed message shows its box and leaves the connection usable for the next one.
TEST(SmtpServerTransport, AFailedMessageFailsAloneAndTheConnectionGoesOn) {
    struct Case {
        const char* name;
        SmtpServerOptions options;
        std::string badTo, code, text;
    };
    Case cases[] = {
        {"refused recipient",
         {},
         "nobody@example.test",
         "55",
         "550 5.1.1 <nobody@example.test>: Recipient address rejected"},
        {"refused data", {}, "someone@example.test", "8", "554 5.6.0 Message content refused"},
        {"connection lost in the data", {}, "someone@example.test", "56", ""},
    };
    cases[0].options.refuseRecipients = {"nobody@example.test"};
    cases[1].options.refuseData = 1;
    cases[2].options.dropData = 1;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SmtpTestServer server(c.options);
        MailRun run;
        Mailer mailer;
        mailer.openSmtpConnection(run.context(), server.portText(), "127.0.0.1", "", "");
        EXPECT_FALSE(mailer.composeAndSendSmtp(run.context(), kSender, c.badTo, kSubject,
                                               "<p>1</p>", "", ""));
        ASSERT_EQ(run.ui.messages.size(), 1u);
        const std::string box = run.ui.messages[0].text;
        EXPECT_TRUE(box.starts_with(c.code + " ")) << box;
        EXPECT_NE(box.find(c.text), std::string::npos) << box;
        EXPECT_TRUE(box.ends_with(" " + c.badTo)) << box;

        EXPECT_TRUE(mailer.composeAndSendSmtp(run.context(), kSender, "good@example.test", kSubject,
                                              "<p>2</p>", "", ""));
        EXPECT_EQ(run.ui.messages.size(), 1u);
        const auto accepted = server.record().accepted();
        ASSERT_EQ(accepted.size(), 1u);
        EXPECT_EQ(accepted[0].rcptTos, list({"good@example.test"}));
    }
}

// A connection that fails shows "Cannot connect to SMTP Server  " and the number; each
// message then fails, and its box says in plain words what is missing or wrong.
TEST(SmtpServerTransport, AFailedConnectionIsExplainedInPlainWords) {
    SmtpServerOptions loginOptions;
    loginOptions.authUser = "dorvane-user";
    loginOptions.authPassword = "right";
    loginOptions.authRequired = true;
    SmtpTestServer loginServer(loginOptions);

    test::TempDir certs;
    std::filesystem::path cert;
    std::filesystem::path key;
    const bool haveCertificate = test::makeSelfSignedCertificate(certs.path(), cert, key);
    SmtpServerOptions tlsOptions;
    tlsOptions.tlsCertificate = cert;
    tlsOptions.tlsKey = key;
    std::unique_ptr<SmtpTestServer> tlsServer;
    if (haveCertificate) {
        tlsServer = std::make_unique<SmtpTestServer>(tlsOptions);
    }

    test::DnsTestServer dns("other.dorvane.test. 60 IN A 127.0.0.1\n");
    test::ScopedEnvironment useDns(kDnsServerVariable, dns.address());
    const std::string closedPort = std::to_string(test::unusedLoopbackPort());

    struct Case {
        const char* name;
        std::string host, port, user, password;
        int code;
        std::string words;  // what the box must say, "|" between the pieces
    };
    std::vector<Case> cases = {
        {"no server set", "", "25", "", "", 3,
         "No SMTP server is set|Preferences > Parameter|dorvane settings set SMTP Hostname"},
        {"a name no one knows", "nowhere.dorvane.test", "25", "", "", 6,
         "\"nowhere.dorvane.test\" was not found|SMTP Server Name"},
        {"nothing listening", "127.0.0.1", closedPort, "", "", 7,
         "does not answer on port " + closedPort + "|refused|SMTP Port"},
        {"login refused", "127.0.0.1", loginServer.portText(), "dorvane-user", "wrong", 67,
         "refused the login|535|SMTP User Name|SMTP Password"},
    };
    if (tlsServer) {
        cases.push_back({"certificate not trusted", "localhost", tlsServer->portText(), "", "", 60,
                         "certificate|does not trust"});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailRun run;
        Mailer mailer;
        EXPECT_EQ(mailer.openSmtpConnection(run.context(), c.port, c.host, c.user, c.password), 0);
        const std::string first = "Cannot connect to SMTP Server  " + std::to_string(c.code);
        EXPECT_EQ(run.ui.texts(), std::vector<std::string>{first});
        EXPECT_EQ(run.statuses, list({"Connecting to SMTP", first.c_str(), "Connected"}));
        EXPECT_FALSE(mailer.smtpClient().connected());

        EXPECT_FALSE(mailer.composeAndSendSmtp(run.context(), kSender, "a@example.test", kSubject,
                                               "<p>a</p>", "", ""));
        ASSERT_EQ(run.ui.messages.size(), 2u);
        const std::string box = run.ui.texts()[1];
        EXPECT_TRUE(box.starts_with(std::to_string(c.code) + " ")) << box;
        EXPECT_TRUE(box.ends_with(" a@example.test")) << box;
        for (const std::string& word : text::split(c.words, '|')) {
            EXPECT_NE(box.find(word), std::string::npos) << word << " in: " << box;
        }
        for (const char* raw : {"URL", "curl", "Not connected"}) {
            EXPECT_EQ(box.find(raw), std::string::npos) << raw << " in: " << box;
        }
    }
    EXPECT_FALSE(loginServer.record().sessions.at(0).auths.at(0).success);
    if (tlsServer) {
        const test::SmtpRecord record = tlsServer->record();
        EXPECT_TRUE(record.sessions.at(0).startTls);
        EXPECT_TRUE(record.messages.empty());
    } else {
        std::printf("openssl is not available: the certificate case was left out\n");
    }
}

TEST_F(SmtpTransport, LoginDataForAnotherMachineNeedsEncryption) {
    // "smtp.dorvane.test" is resolved by the test's DNS server to this machine's loopback
    // address, but as a name it is another machine: a login needs TLS, which this server
    // does not offer, so the client stops before AUTH.
    SmtpServerOptions options;
    options.authUser = "dorvane-user";
    options.authPassword = "S3cret";
    SmtpTestServer server(options);
    test::DnsTestServer dns("smtp.dorvane.test. 60 IN A 127.0.0.1\n");
    test::ScopedEnvironment useDns(kDnsServerVariable, dns.address());
    mailer.openSmtpConnection(run.context(), server.portText(), "smtp.dorvane.test", "dorvane-user",
                              "S3cret");
    ASSERT_EQ(run.ui.messages.size(), 2u);
    EXPECT_EQ(run.ui.messages[0].text, "Cannot connect to SMTP Server  64");
    EXPECT_NE(run.ui.messages[1].text.find("without encryption"), std::string::npos);
    EXPECT_FALSE(send("a@example.test"));
    test::SmtpRecord record = server.record();
    EXPECT_EQ(record.connections, 1);
    EXPECT_TRUE(record.sessions.at(0).auths.empty());
    EXPECT_TRUE(record.messages.empty());
    EXPECT_GE(dns.count("smtp.dorvane.test.", "A"), 1);

    // Without a login the same server is fine.
    run.ui.messages.clear();
    mailer.openSmtpConnection(run.context(), server.portText(), "smtp.dorvane.test", "", "");
    EXPECT_TRUE(run.ui.messages.empty());
    EXPECT_TRUE(send("a@example.test"));

    // An address of another machine, written as numbers, is no different. The connection is
    // pinned to this machine's loopback address, so nothing leaves it.
    int expectedConnections = 2;
    for (const char* remote : {"192.0.2.25", "10.20.30.40"}) {
        SCOPED_TRACE(remote);
        SmtpClient client;
        client.setServer(remote, server.portText(), "dorvane-user", "S3cret");
        client.pinHostAddresses({"127.0.0.1"});
        EXPECT_EQ(client.connect(), kResultTlsRequired);
        EXPECT_EQ(server.record().connections, ++expectedConnections);
    }
    for (const auto& session : server.record().sessions) {
        EXPECT_TRUE(session.auths.empty());
    }
}

}  // namespace
}  // namespace dorvane::mail
