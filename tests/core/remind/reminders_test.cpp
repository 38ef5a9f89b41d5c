// SPDX-License-Identifier: GPL-3.0-or-later
// Overdue reminders over the real sandbox and a real SMTP server: which messages are due,
// that each invoice gets each stage once, test mode, and a reminder log that cannot be
// written.
#include <gtest/gtest.h>

#include "qbsandbox/demo.h"
#include "qbsandbox/state.h"
#include "remind/reminderlog.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/overduecompany.h"

namespace dorvane::remind {
namespace {

using test::ScopedEnvironment;
using Lines = std::vector<std::string>;

class RemindTest : public ::testing::Test {
protected:
    RemindTest() {
        test::copyProgramFiles(program);
        qbsandbox::createEmptyCompany(home / "co.dvq", "Harbor Lane Joinery");
        EXPECT_TRUE(qbsandbox::writeState(home / "sandbox", {true, home / "co.dvq"}));
        app = std::make_unique<shell::Application>(ui, shell::StartOptions{program.string()});
        app->gateway().processRequest(test::overdueCompanyRequest());
        app->window().startUp();
        set("SMTP", "Hostname", "127.0.0.1");
        set("SMTP", "Port", server.portText());
        app->reminders().onMessage([this](const ReminderOutcome& o) { outcomes.push_back(o); });
    }

    void set(const char* section, const char* key, const std::string& value) {
        ASSERT_TRUE(app->settings().set(section, key, value));
    }

    // The plan, one line per message: customer, stage, invoices, total, address.
    Lines plan(std::optional<ReminderDays> days = std::nullopt) {
        EXPECT_EQ(reminders().plan(days), PlanResult::Planned) << reminders().problem();
        Lines lines;
        for (const PlannedReminder& m : reminders().planned()) {
            std::string refs;
            for (const OverdueInvoice& i : m.invoices) {
                refs += (refs.empty() ? "" : ",") + i.refNumber;
            }
            lines.push_back(m.customer + " " + std::to_string(m.stage) + " " + refs + " " +
                            m.total + " " + m.email);
        }
        return lines;
    }

    std::string txnOf(const std::string& ref) {
        for (const PlannedReminder& m : reminders().planned()) {
            for (const OverdueInvoice& i : m.invoices) {
                if (i.refNumber == ref) {
                    return i.txnId;
                }
            }
        }
        return {};
    }

    std::vector<ReminderRecord> log() const {
        return parseReminderLog(test::readFile(program / kReminderLogFile));
    }

    Reminders& reminders() { return app->reminders(); }

    test::TempDir home;
    std::filesystem::path program = home / "program";
    ScopedEnvironment sandbox{"DORVANE_SANDBOX_DIR", (home / "sandbox").string()};
    ScopedEnvironment today{"DORVANE_TODAY", "2026-11-18"};
    ScopedEnvironment config{"XDG_CONFIG_HOME", (home / "cfg").string()};
    ScopedEnvironment noFaults{"DORVANE_SANDBOX_FAULTS", std::nullopt};
    test::SmtpTestServer server;
    test::ScriptedUi ui;
    std::unique_ptr<shell::Application> app;
    std::vector<ReminderOutcome> outcomes;
};

const std::string kAble1 = "Able Co 1 501,502 170.00 able@example.test";
const std::string kAble3 = "Able Co 3 503 80.00 able@example.test";
const std::string kBaker2 = "Baker 2 601,604 70.00 baker@example.test";
const std::string kCarr2 = "Carr 2 701 70.00 ";

// The HTML part of a message, and the names of its PDF files.
std::string htmlOf(const test::SmtpMessageRecord& message, Lines* files = nullptr) {
    std::string html;
    for (const test::MimePartRecord& part : message.mime.parts) {
        if (part.contentType == "application/pdf" && files) {
            files->push_back(part.filename);
        } else if (part.contentType == "text/html") {
            html = part.body;
        }
    }
    return html;
}

std::string logLine(const std::string& txn, int stage, bool test = false) {
    ReminderRecord r;
    r.txnId = txn;
    r.stage = stage;
    r.test = test;
    return reminderRecord(r);
}

// Thresholds, paid and not yet due invoices, and what the log says went out.
TEST_F(RemindTest, ThePlanGroupsTheDueInvoicesByCustomerAndStage) {
    plan();
    const std::string t502 = txnOf("502"), t503 = txnOf("503"), t601 = txnOf("601"),
                      t701 = txnOf("701");
    struct Case {
        const char* name;
        std::string days;
        std::string log;
        Lines expected;
    };
    const Case cases[] = {
        {"nothing reminded yet", "1,15,30", "", {kAble1, kAble3, kBaker2, kCarr2}},
        {"a stage that went out is not sent again, a test copy reminded nobody and a later "
         "stage is still due",
         "1,15,30",
         logLine(t502, 1) + logLine(t503, 3) + logLine(t601, 2, true) + logLine(t701, 1),
         {"Able Co 1 501 120.00 able@example.test", kBaker2, kCarr2}},
        {"other days",
         "10,20,60",
         "",
         {"Able Co 2 503 80.00 able@example.test", kBaker2, "Carr 1 701 70.00 "}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        set("Reminders", "Days", c.days);
        test::writeFile(program / kReminderLogFile, c.log);
        EXPECT_EQ(plan(), c.expected);
    }
    set("Reminders", "Days", "30,15,1");
    EXPECT_EQ(reminders().plan(), PlanResult::Refused);
    EXPECT_NE(reminders().problem().find("Reminders Days 1,15,30"), std::string::npos);
}

TEST_F(RemindTest, EachInvoiceGetsEachStageOnceAndAPaidOneNoMore) {
    EXPECT_EQ(plan(), (Lines{kAble1, kAble3, kBaker2, kCarr2}));
    EXPECT_TRUE(reminders().send(false));
    ASSERT_EQ(outcomes.size(), 4u);
    EXPECT_FALSE(outcomes[3].sent);
    EXPECT_NE(outcomes[3].why.find("no e-mail address for Carr"), std::string::npos);

    auto accepted = server.record().accepted();
    ASSERT_EQ(accepted.size(), 3u);
    EXPECT_EQ(accepted[0].rcptTos, Lines{"able@example.test"});
    EXPECT_EQ(accepted[0].mime.subject, "Payment reminder - invoice no. 501, 502");
    EXPECT_EQ(accepted[1].mime.subject, "Final notice - invoice no. 503");
    EXPECT_EQ(accepted[2].rcptTos, Lines{"baker@example.test"});
    const std::string first = htmlOf(accepted[0]);
    for (const char* expected :
         {"Harbor Lane Joinery", "PAYMENT REMINDER", "Dear Able Co", "501", "502", "170.00"}) {
        EXPECT_NE(first.find(expected), std::string::npos) << expected;
    }
    EXPECT_EQ(first.find("503"), std::string::npos);
    // A job's invoice goes into its customer's message, which greets the customer's contact.
    const std::string baker = htmlOf(accepted[2]);
    for (const char* expected : {"Dear Bea Baker,", "Kitchen", "604", "70.00"}) {
        EXPECT_NE(baker.find(expected), std::string::npos) << expected;
    }
    const auto records = log();
    ASSERT_EQ(records.size(), 5u);
    EXPECT_EQ(records[0].refNumber, "501");
    EXPECT_EQ(records[2].stage, 3);
    EXPECT_EQ(records[3].sentTo, "baker@example.test");
    EXPECT_EQ(records[3].balance, "30.00");

    // Run again: only the customer without an address is left, and nothing goes out.
    outcomes.clear();
    EXPECT_EQ(plan(), Lines{kCarr2});
    reminders().send(false);
    EXPECT_EQ(server.record().accepted().size(), 3u);

    // 501 is paid; with later stages due, it is never reminded again, the rest move on.
    const std::string paid = records[0].txnId;
    app->gateway().processRequest(
        "<?xml version=\"1.0\" ?><?qbxml version=\"13.0\"?><QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>"
        "Able "
        "Co</FullName></CustomerRef><TotalAmount>120.00</TotalAmount><AppliedToTxnAdd><TxnID>" +
        paid +
        "</TxnID><PaymentAmount>120.00</PaymentAmount></AppliedToTxnAdd></ReceivePaymentAdd>"
        "</ReceivePaymentAddRq></QBXMLMsgsRq></QBXML>");
    EXPECT_EQ(plan(ReminderDays{1, 2, 5}),
              (Lines{"Able Co 2 502 50.00 able@example.test",
                     "Baker 3 601,604 70.00 baker@example.test", "Carr 3 701 70.00 "}));
}

TEST_F(RemindTest, TestModeSendsToTheTestAddressWithPdfCopiesAndPayLinks) {
    set("Settings", "Test", "1");
    set("Settings", "EmailAdr", "me@example.test");
    set("Documents", "AttachPdf", "1");
    set("Documents", "PayLink", "https://pay.example.test/?n={number}");
    plan();
    for (std::size_t i = 1; i < reminders().planned().size(); ++i) {
        reminders().setChecked(i, false);
    }
    EXPECT_TRUE(reminders().send(false));
    const auto accepted = server.record().accepted();
    ASSERT_EQ(accepted.size(), 1u);
    EXPECT_EQ(accepted[0].rcptTos, Lines{"me@example.test"});
    Lines files;
    const std::string html = htmlOf(accepted[0], &files);
    EXPECT_EQ(files, (Lines{"Invoice-501.pdf", "Invoice-502.pdf"}));
    EXPECT_NE(html.find("https://pay.example.test/?n=502"), std::string::npos) << html;

    const auto records = log();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_TRUE(records[0].test && records[1].test);
    EXPECT_EQ(records[0].sentTo, "me@example.test");
    EXPECT_EQ(plan().front(), kAble1);  // the customer still gets it
}

TEST_F(RemindTest, AReminderLogThatCannotBeWrittenStopsTheRun) {
    // Not writable from the start: nothing goes out.
    std::filesystem::create_directory(program / kReminderLogFile);
    plan();
    EXPECT_FALSE(reminders().send(false));
    EXPECT_TRUE(server.record().accepted().empty());
    EXPECT_NE(reminders().problem().find("so nothing was sent"), std::string::npos);

    // Broken after the first message: the second goes out, is not noted, and the run stops.
    std::filesystem::remove(program / kReminderLogFile);
    reminders().onMessage([this](const ReminderOutcome& o) {
        if (outcomes.empty()) {
            std::filesystem::remove(program / kReminderLogFile);
            std::filesystem::create_directory(program / kReminderLogFile);
        }
        outcomes.push_back(o);
    });
    ui.messages.clear();
    EXPECT_FALSE(reminders().send(false));
    EXPECT_EQ(server.record().accepted().size(), 2u);
    EXPECT_EQ(outcomes.size(), 2u);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.messages[0].text.find("The final reminder to Able Co was sent, but Dorvane "
                                       "could not note it in the reminder log"),
              std::string::npos)
        << ui.messages[0].text;
}

}  // namespace
}  // namespace dorvane::remind
