// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane remind` from a script, over the sandbox and a real SMTP server: it asks first, says
// what became of each message, and a run killed half-way never reminds an invoice twice.
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <sys/wait.h>
#include <unistd.h>

#include "support/clirun.h"
#include "support/mailservers.h"
#include "support/overduecompany.h"

namespace dorvane::test {
namespace {

class CliRemind : public Cli {
protected:
    // An empty sandbox company with the invoices of overduecompany.h, mailing to `server`.
    void setUp(const SmtpTestServer& server) {
        copyProgram(".xslt");
        ASSERT_EQ(dorvane("sandbox new '" + (home / "co.dvq").string() + "'", "sandbox"), 0) << err;
        writeFile(home / "add.xml", overdueCompanyRequest());
        ASSERT_EQ(dorvane("request " + (home / "add.xml").string(), "sandbox"), 0) << err;
        for (const std::string& s :
             {std::string("SMTP Hostname 127.0.0.1"), "SMTP Port " + server.portText()}) {
            ASSERT_EQ(dorvane("settings set " + s), 0) << err;
        }
    }
    std::string command(const std::string& args) {
        return "XDG_CONFIG_HOME=" + (home / "cfg").string() +
               " DORVANE_SANDBOX_DIR=" + (home / "sandbox").string() +
               " DORVANE_SHARE_DIR=" + (home / "no-shipped-files").string() + " " +
               DORVANE_EXECUTABLE + " --home " + (home / "program").string() + " " + args;
    }
    std::string log() const { return readFile(home / "program" / "Reminders.log"); }
};

TEST_F(CliRemind, AsksThenSaysWhatBecameOfEachReminder) {
    SmtpTestServer server;
    setUp(server);
    EXPECT_EQ(dorvane("remind --days 1,15", "sandbox"), 64);
    EXPECT_NE(err.find("--days takes three increasing numbers"), std::string::npos) << err;

    // Without a terminal the question is answered no.
    EXPECT_EQ(dorvane("remind", "sandbox"), 1) << err;
    EXPECT_NE(err.find("Send 4 reminders now?"), std::string::npos) << err;
    EXPECT_NE(err.find("Nothing sent: sending was not confirmed (answer the question on a "
                       "terminal, or give --yes)."),
              std::string::npos)
        << err;
    EXPECT_TRUE(server.record().accepted().empty());

    EXPECT_EQ(dorvane("remind --yes", "sandbox"), 1) << err;
    EXPECT_EQ(out,
              "Able Co\t1 friendly\t501,502\t170.00\table@example.test\tsent\n"
              "Able Co\t3 final\t503\t80.00\table@example.test\tsent\n"
              "Baker\t2 firm\t601,604\t70.00\tbaker@example.test\tsent\n"
              "Carr\t2 firm\t701\t70.00\t-\tnot sent: QuickBooks has no e-mail address for Carr: "
              "enter one for the customer in QuickBooks\n");
    EXPECT_NE(err.find("3 sent, 1 not sent; noted in "), std::string::npos) << err;
    EXPECT_EQ(server.record().accepted().size(), 3u);

    // Again: only Carr is due, and nothing goes out.
    EXPECT_EQ(dorvane("--yes remind", "sandbox"), 1) << err;
    EXPECT_EQ(out.find("Carr\t2 firm"), 0u) << out;
    EXPECT_EQ(server.record().accepted().size(), 3u);
}

TEST_F(CliRemind, ARunKilledAfterAnAcceptedReminderSendsEachOnlyOnce) {
    SmtpServerOptions slow;
    slow.dataDelayMs = 1000;  // the second message is still waiting when the run is killed
    SmtpTestServer server(slow);
    setUp(server);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::setpgid(0, 0);  // the shell and the program, killed together
        ::execl("/bin/sh", "sh", "-c", command("remind --yes >/dev/null 2>&1").c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    // Waits for the first reminder's records: the server accepted it.
    while (log().find("<Reminder>") == std::string::npos &&
           ::waitpid(child, &status, WNOHANG) == 0) {
        ::usleep(10000);
    }
    ::kill(-child, SIGKILL);
    ::waitpid(child, &status, 0);
    ASSERT_NE(log().find("<RefNumber>502</RefNumber>"), std::string::npos);
    ASSERT_EQ(log().find("<RefNumber>503</RefNumber>"), std::string::npos) << "killed half-way";

    EXPECT_EQ(dorvane("remind --yes", "sandbox"), 1) << err;
    std::map<std::string, int> messages;  // by recipient and subject
    for (const SmtpMessageRecord& m : server.record().accepted()) {
        ++messages[m.rcptTos.at(0) + " " + m.mime.subject];
    }
    EXPECT_EQ(messages, (std::map<std::string, int>{
                            {"able@example.test Final notice - invoice no. 503", 1},
                            {"able@example.test Payment reminder - invoice no. 501, 502", 1},
                            {"baker@example.test Second reminder - invoice no. 601, 604", 1}}));
}

}  // namespace
}  // namespace dorvane::test
