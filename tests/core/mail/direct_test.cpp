// SPDX-License-Identifier: GPL-3.0-or-later
// Direct delivery and the choice of transport: a real DNS server on loopback answers the MX
// queries, and its mail exchangers point at a real SMTP server on loopback.
#include <gtest/gtest.h>

#include "mail/mailer.h"
#include "mail/mxresolver.h"
#include "mailrun.h"
#include "platform/settings.h"
#include "support/mailservers.h"

namespace dorvane::mail {
namespace {

using test::MailRun;

const std::string kSender = "billing@company.test";
const std::string kSubject = "Invoice: #1041  Date: 2002-05-01  ";
const std::string kHtml = "<html><body><p>Invoice</p></body></html>";

// example.test: two exchangers, the preferred one listed second; the other one's address
// has no server. nomx.test: an address but no MX. nullmx.test: accepts no mail.
const char* const kZone =
    "example.test.      60 IN MX 20 backup.example.test.\n"
    "example.test.      60 IN MX 10 mx.example.test.\n"
    "mx.example.test.   60 IN A  127.0.0.1\n"
    "backup.example.test. 60 IN A 127.0.0.2\n"
    "nomx.test.         60 IN A  127.0.0.1\n"
    "nullmx.test.       60 IN MX 0 .\n"
    "nullmx.test.       60 IN A  127.0.0.1\n";

std::vector<std::string> list(std::initializer_list<const char*> items) {
    return {items.begin(), items.end()};
}

class DirectDelivery : public ::testing::Test {
protected:
    test::SmtpTestServer smtp;
    test::DnsTestServer dns{kZone};
    test::ScopedEnvironment useDns{kDnsServerVariable, dns.address()};
    test::ScopedEnvironment usePort{kDirectPortVariable, smtp.portText()};
    MailRun run;
    Mailer mailer;

    bool deliver(const std::string& recipient) {
        return mailer.deliverDirect(run.context(), kSender, recipient, kSubject, kHtml, "");
    }
};

TEST_F(DirectDelivery, GoesToThePreferredMailExchangerWithoutLogin) {
    run.settings.returnReceipt = 1;
    ASSERT_TRUE(deliver("customer@example.test")) << run.ui.texts().at(0);
    EXPECT_EQ(run.statuses,
              list({"Query SMTP Server", "Connecting to SMTP", "Connected", "Trying to send"}));
    EXPECT_TRUE(run.ui.messages.empty());
    EXPECT_EQ(dns.count("example.test.", "MX"), 1);
    EXPECT_GE(dns.count("mx.example.test.", "A"), 1);
    EXPECT_EQ(dns.count("backup.example.test.", "A"), 0);

    const test::SmtpRecord record = smtp.record();
    ASSERT_EQ(record.accepted().size(), 1u);
    EXPECT_EQ(record.messages[0].rcptTos, list({"customer@example.test"}));
    EXPECT_EQ(record.messages[0].mime.header("To"), "customer@example.test");
    EXPECT_EQ(record.messages[0].mime.header("Disposition-Notification-To"), kSender);
    EXPECT_TRUE(record.sessions.at(0).auths.empty());
}

TEST_F(DirectDelivery, ADomainWithoutMxReceivesAtItsOwnAddress) {
    ASSERT_TRUE(deliver("someone@nomx.test"));
    EXPECT_EQ(dns.count("nomx.test.", "MX"), 1);
    EXPECT_EQ(smtp.record().accepted().at(0).rcptTos, list({"someone@nomx.test"}));
}

TEST_F(DirectDelivery, EachRecipientGetsItsOwnConnectionAndTheTraceKeepsTheLast) {
    run.settings.trace = 1;
    ASSERT_TRUE(deliver("first@example.test"));
    ASSERT_TRUE(deliver("second@nomx.test"));
    const test::SmtpRecord record = smtp.record();
    EXPECT_EQ(record.connections, 2);
    ASSERT_EQ(record.accepted().size(), 2u);
    EXPECT_EQ(record.messages[0].session, 1);
    EXPECT_EQ(record.messages[1].session, 2);

    const std::string trace = run.file("smtptrace.txt");
    EXPECT_NE(trace.find("RCPT TO:<second@nomx.test>"), std::string::npos);
    EXPECT_EQ(trace.find("first@example.test"), std::string::npos);
}

TEST_F(DirectDelivery, NoMailExchangerMeansNoConnectionAndNoMessage) {
    for (const char* recipient : {"no-at-sign", "someone@unknown.test", "someone@nullmx.test"}) {
        run.ui.messages.clear();
        EXPECT_FALSE(deliver(recipient)) << recipient;
        ASSERT_EQ(run.ui.messages.size(), 2u) << recipient;
        // The connection fails for the empty host, then the message for the connection.
        EXPECT_EQ(run.ui.messages[0].text.rfind("Cannot connect to SMTP Server  ", 0), 0u);
        EXPECT_TRUE(run.ui.messages[1].text.ends_with(std::string(" ") + recipient));
    }
    // The address without "@" asked nothing.
    EXPECT_EQ(dns.count("no-at-sign.", "MX"), 0);
    EXPECT_EQ(dns.count("unknown.test.", "MX"), 1);
    EXPECT_EQ(smtp.record().connections, 0);
}

TEST(MailTransport, TheStoredServerAndLoginAreReadWhenTheRunStarts) {
    test::SmtpServerOptions options;
    options.authUser = "dorvane-user";
    options.authPassword = "pa55";
    options.authRequired = true;
    test::SmtpTestServer server(options);
    MailRun run;
    platform::SettingsStore store(run.dir / "DV01.ini");
    // The dialog writes "Pwd"; the transport reads "pwd".
    ASSERT_TRUE(store
                    .setAll("SMTP", {{"Hostname", "127.0.0.1"},
                                     {"Port", server.portText()},
                                     {"User", "dorvane-user"},
                                     {"Pwd", "pa55"}})
                    .ok());
    Mailer mailer;
    EXPECT_EQ(mailer.openMailTransport(run.context(), store), 0);
    EXPECT_TRUE(run.ui.messages.empty()) << run.ui.texts().at(0);
    EXPECT_TRUE(mailer.smtpClient().connected());
    const test::SmtpRecord record = server.record();
    ASSERT_EQ(record.sessions.at(0).auths.size(), 1u);
    EXPECT_TRUE(record.sessions[0].auths[0].success);
    EXPECT_EQ(record.sessions[0].auths[0].user, "dorvane-user");
}

TEST(MailTransport, OutlookAndDirectDeliveryConnectNothingAtTheStart) {
    test::SmtpTestServer server;
    MailRun run;
    platform::SettingsStore store(run.dir / "DV01.ini");
    ASSERT_TRUE(
        store.setAll("SMTP", {{"Hostname", "127.0.0.1"}, {"Port", server.portText()}}).ok());
    Mailer mailer;

    run.settings.mailOption = 1;
    EXPECT_EQ(mailer.openMailTransport(run.context(), store), 0);
    EXPECT_EQ(run.ui.texts(), list({"Could not connect to Outlook 2000 or 2002"}));
    EXPECT_FALSE(mailer.outlookConnected());
    EXPECT_FALSE(
        mailer.sendViaOutlook(run.context(), kSender, "a@example.test", kSubject, kHtml, "", ""));

    run.ui.messages.clear();
    run.settings.mailOption = 2;
    EXPECT_EQ(mailer.openMailTransport(run.context(), store), 0);
    EXPECT_TRUE(run.ui.messages.empty());
    EXPECT_TRUE(run.statuses.empty());
    EXPECT_EQ(server.record().connections, 0);
}

}  // namespace
}  // namespace dorvane::mail
