// SPDX-License-Identifier: GPL-3.0-or-later
// "Send Email" from a loaded list to a real SMTP server on loopback: what goes out, what is
// unchecked and logged, previews, statements, timesheets and exchange files.
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "browser/sentlog.h"
#include "mail/documentextras.h"
#include "mail/mxresolver.h"
#include "qbgateway/responsefolder.h"
#include "shell/application.h"
#include "support/mailservers.h"

namespace dorvane::mail {
namespace {

using test::MimePartRecord;
using test::MimeRecord;
using test::qbAnswer;
using test::qbRs;
using test::ScopedEnvironment;
using test::ScriptedUi;
using test::SmtpServerOptions;
using test::SmtpTestServer;
using test::TempDir;

const std::string kCompanyRet =
    "<CompanyRet><CompanyName>Harbor Lane Joinery</CompanyName><LegalCompanyName>Harbor Lane "
    "Joinery LLC</LegalCompanyName><Address><Addr1>12 Quay St</Addr1><City>Portland</City>"
    "<State>ME</State><PostalCode>04101</PostalCode></Address><LegalAddress><Addr1>PO Box 1"
    "</Addr1></LegalAddress><Phone>207-555-0100</Phone><Email>office@example.com</Email>"
    "<FirstMonthFiscalYear>January</FirstMonthFiscalYear><FileName>/q/harbor.qbw</FileName>"
    "</CompanyRet>";

std::string customer(const std::string& id, const std::string& name, const std::string& email,
                     const std::string& total = "100.00") {
    return "<CustomerRet><ListID>" + id + "</ListID><Name>" + name + "</Name><FullName>" + name +
           "</FullName><IsActive>true</IsActive>" +
           (email.empty() ? "" : "<Email>" + email + "</Email>") + "<Balance>" + total +
           "</Balance><TotalBalance>" + total + "</TotalBalance></CustomerRet>";
}

std::string invoice(const std::string& txn, const std::string& ref, const std::string& custId,
                    const std::string& name, const std::string& subtotal,
                    const std::string& tax = "0.00") {
    return "<InvoiceRet><TxnID>" + txn + "</TxnID><CustomerRef><ListID>" + custId +
           "</ListID><FullName>" + name +
           "</FullName></CustomerRef><TxnDate>2026-11-17"
           "</TxnDate><RefNumber>" +
           ref + "</RefNumber><Subtotal>" + subtotal + "</Subtotal><SalesTaxTotal>" + tax +
           "</SalesTaxTotal><InvoiceLineRet><TxnLineID>L1"
           "</TxnLineID><ItemRef><ListID>80000007-1</ListID><FullName>Labor</FullName></ItemRef>"
           "<Desc>Cabinet work</Desc><Quantity>2</Quantity><Rate>50.00</Rate><Amount>100.00"
           "</Amount></InvoiceLineRet></InvoiceRet>";
}

class SendLoopTest : public ::testing::Test {
protected:
    SendLoopTest()
        : config("XDG_CONFIG_HOME", (home / "cfg").string()),
          app(ui, shell::StartOptions{(home / "program").string()},
              qbgateway::responseFolderFactory(home / "qb")) {
        std::filesystem::create_directories(home / "qb");
        test::copyProgramFiles(home / "program");
        answer("CompanyQueryRs.xml", qbAnswer(qbRs("CompanyQueryRs", kCompanyRet)));
        useServer();
        app.sender().onRowProcessed([this](const RowOutcome& o) { outcomes.push_back(o); });
    }

    void useServer(SmtpServerOptions options = {}) {
        server = std::make_unique<SmtpTestServer>(options);
        app.settings()
            .setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                         {"SMTP", "Port", server->portText()},
                         {"Settings", "MailOption", "0"}})
            .ok();
    }
    void answer(const std::string& file, const std::string& text) {
        test::writeFile(home / "qb" / file, text);
    }
    // Lists three invoices under `settings`; the third customer has no address unless one is
    // given.
    void listInvoices(const std::vector<platform::SettingsStore::Change>& settings = {},
                      const std::string& thirdEmail = "") {
        ASSERT_TRUE(app.settings().setEntries(settings).ok());
        answer("InvoiceQueryRs.xml",
               qbAnswer(qbRs("InvoiceQueryRs",
                             invoice("11-1", "1041", "C1", "Able Co", "100.00", "5.00") +
                                 invoice("11-2", "1042", "C2", "Baker &amp; Sons", "20.00") +
                                 invoice("11-3", "1043", "C3", "No Mail Ltd", "7.00")) +
                        qbRs("CustomerQueryRs",
                             customer("C1", "Able Co", "able@example.test") +
                                 customer("C2", "Baker &amp; Sons", "baker@example.test") +
                                 customer("C3", "No Mail Ltd", thirdEmail)) +
                        qbRs("CompanyQueryRs", kCompanyRet)));
        pick("Invoice");
    }
    void pick(const std::string& type) {
        app.window().startUp();
        app.window().selectDocumentType(type);
    }

    TempDir home;
    ScopedEnvironment today{"DORVANE_TODAY", "2026-11-18"};
    ScopedEnvironment config;
    ScriptedUi ui;
    shell::Application app;
    std::unique_ptr<SmtpTestServer> server;
    std::vector<RowOutcome> outcomes;
};

TEST_F(SendLoopTest, InvoicesGoOutOverOneConnectionAndAreLogged) {
    listInvoices();
    ui.messages.clear();
    app.sender().sendSelectedDocuments();

    auto record = server->record();
    EXPECT_EQ(record.connections, 1);
    const auto accepted = record.accepted();
    ASSERT_EQ(accepted.size(), 2u);
    const auto& first = accepted[0];
    EXPECT_EQ(first.mailFrom, "office@example.com");
    EXPECT_EQ(first.rcptTos, std::vector<std::string>{"able@example.test"});
    EXPECT_EQ(first.mime.subject, "Invoice: #1041  Date: 2026-11-17  ");
    ASSERT_GE(first.mime.parts.size(), 2u);
    const std::string& html = first.mime.parts[1].body;
    EXPECT_NE(html.find("Harbor Lane Joinery"), std::string::npos) << "company header";
    EXPECT_NE(html.find("Cabinet work"), std::string::npos);
    EXPECT_NE(accepted[1].mime.parts[1].body.find("Baker &amp; Sons"), std::string::npos);

    // Sent rows lose their check; the row without an address was passed over.
    const auto& list = app.window().list();
    EXPECT_FALSE(list.row(0).checked);
    EXPECT_FALSE(list.row(1).checked);
    EXPECT_EQ(outcomes.size(), 2u);
    EXPECT_EQ(app.window().statusText(), "Invoices sent");
    EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;

    // (That each record reaches the disk right after its message: the killed-run test.)
    const std::string log = test::readFile(home / "program" / "EmailsSent.log");
    EXPECT_NE(log.find("<TxnID>11-2</TxnID><SentDate>2026-11-18 "), std::string::npos)
        << "the send date follows DORVANE_TODAY: " << log;
    EXPECT_TRUE(log.ends_with("</Invoice>\r\n\r\n"));

    // The next list shows them as sent, and a second press sends nothing.
    app.window().refresh();
    EXPECT_EQ(list.row(0).cells.back(), "Already sent");
    EXPECT_EQ(list.row(1).cells.back(), "Already sent");
    outcomes.clear();
    app.sender().sendSelectedDocuments();
    EXPECT_TRUE(outcomes.empty());
    EXPECT_EQ(server->record().accepted().size(), 2u);
}

// The program is killed right after the first message went out: nothing of the end of the run
// happens, and yet the next start knows that message was sent.
TEST_F(SendLoopTest, AKilledRunNeverMailsADocumentTwice) {
    listInvoices();
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        app.sender().onRowProcessed([](const RowOutcome& o) {
            if (o.sent) {
                ::raise(SIGKILL);
            }
        });
        app.sender().sendSelectedDocuments();
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(server->record().accepted().size(), 1u);

    // Started again: the list shows the first invoice as sent, and a run mails the rest.
    shell::Application restarted(ui, shell::StartOptions{(home / "program").string()},
                                 qbgateway::responseFolderFactory(home / "qb"));
    restarted.window().startUp();
    restarted.window().selectDocumentType("Invoice");
    EXPECT_EQ(restarted.window().list().row(0).cells.back(), "Already sent");
    restarted.sender().sendSelectedDocuments();
    auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 2u);
    EXPECT_EQ(accepted[0].rcptTos, std::vector<std::string>{"able@example.test"});
    EXPECT_EQ(accepted[1].rcptTos, std::vector<std::string>{"baker@example.test"});
}

TEST_F(SendLoopTest, ARefusedMessageStaysCheckedAndTheRunGoesOn) {
    SmtpServerOptions options;
    options.refuseRecipients = {"able@example.test"};
    useServer(options);
    listInvoices();
    ui.messages.clear();
    app.sender().sendSelectedDocuments();
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_FALSE(outcomes[0].sent);
    EXPECT_TRUE(outcomes[1].sent);
    EXPECT_TRUE(app.window().list().row(0).checked);
    EXPECT_FALSE(app.window().list().row(1).checked);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.messages[0].text.find("able@example.test"), std::string::npos);
    const std::string log = test::readFile(home / "program" / "EmailsSent.log");
    EXPECT_EQ(log.find("<TxnID>11-1"), std::string::npos);
    EXPECT_NE(log.find("<TxnID>11-2"), std::string::npos);
}

// Which rows go out, and to whom, under the recipient settings.
struct RecipientCase {
    const char* name;
    std::vector<platform::SettingsStore::Change> settings;
    bool checkRowWithoutAddress;
    std::vector<std::vector<std::string>> envelopes;  // one per message, in row order
    std::vector<std::string> boxes;
    bool reachedTheCustomers = true;  // logged as sent, so the next list shows "Already sent"
};

TEST_F(SendLoopTest, RecipientSettingsDecideWhoGetsEachMessage) {
    using Strings = std::vector<std::string>;
    const Strings able{"able@example.test"};
    const Strings baker{"baker@example.test"};
    const RecipientCase cases[] = {
        {"blind copies with the box unticked go nowhere",
         {{"Settings", "BCC", "0"}, {"Settings", "BCCAdr", "boss@example.test"}},
         false,
         {able, baker},
         {}},
        {"always send blind copies: the row without an address goes to them alone",
         {{"Settings", "BCC", "1"},
          {"Settings", "BCCAdr", "files@example.test"},
          {"Settings", "alwaysBCC", "1"}},
         true,
         {{"able@example.test", "files@example.test"},
          {"baker@example.test", "files@example.test"},
          {"files@example.test"}},
         {}},
        {"without always, a row without an address is passed over",
         {{"Settings", "BCC", "1"},
          {"Settings", "BCCAdr", "files@example.test"},
          {"Settings", "alwaysBCC", "0"}},
         true,
         {{"able@example.test", "files@example.test"},
          {"baker@example.test", "files@example.test"}},
         {}},
        {"test mode without a test address mails the customers and says so",
         {{"Settings", "Test", "1"}, {"Settings", "EmailAdr", ""}},
         false,
         {able, baker},
         {"Please enter a vaild email address for testing"}},
        {"test mode: copies to the test address leave the documents unsent for the customers",
         {{"Settings", "Test", "1"}, {"Settings", "EmailAdr", "me@example.test"}},
         false,
         {{"me@example.test"}, {"me@example.test"}},
         {},
         false},
    };
    for (const RecipientCase& c : cases) {
        SCOPED_TRACE(c.name);
        useServer();
        std::vector<platform::SettingsStore::Change> changes = {
            {"Settings", "BCC", "0"},  {"Settings", "BCCAdr", ""},   {"Settings", "alwaysBCC", "0"},
            {"Settings", "Test", "0"}, {"Settings", "EmailAdr", ""},
        };
        changes.insert(changes.end(), c.settings.begin(), c.settings.end());
        test::writeFile(home / "program" / "EmailsSent.log", "");
        listInvoices(changes);
        app.window().list().setChecked(2, c.checkRowWithoutAddress);
        ui.messages.clear();
        app.sender().sendSelectedDocuments();

        const auto accepted = server->record().accepted();
        ASSERT_EQ(accepted.size(), c.envelopes.size());
        for (std::size_t i = 0; i < accepted.size(); ++i) {
            EXPECT_EQ(accepted[i].rcptTos, c.envelopes[i]) << "message " << i;
        }
        EXPECT_EQ(ui.texts(), c.boxes);
        ASSERT_FALSE(outcomes.empty());
        EXPECT_EQ(outcomes.back().test, !c.reachedTheCustomers);
        app.window().refresh();
        EXPECT_EQ(app.window().list().row(0).cells.back(),
                  c.reachedTheCustomers ? "Already sent" : "Ready to send");
        outcomes.clear();
    }
}

// Direct delivery looks up and connects to each blind copy's own mail server.
TEST_F(SendLoopTest, DirectDeliverySendsEachBlindCopyOverItsOwnConnection) {
    test::DnsTestServer dns(
        "example.test.   60 IN MX 10 mx.example.test.\n"
        "mx.example.test. 60 IN A 127.0.0.1\n"
        "corp.test.      60 IN MX 10 mx.corp.test.\n"
        "mx.corp.test.   60 IN A 127.0.0.1\n"
        "archive.test.   60 IN MX 10 mx.archive.test.\n"
        "mx.archive.test. 60 IN A 127.0.0.1\n");
    ScopedEnvironment useDns(kDnsServerVariable, dns.address());
    ScopedEnvironment usePort(kDirectPortVariable, server->portText());
    listInvoices({{"Settings", "MailOption", "2"},
                  {"Settings", "BCC", "1"},
                  {"Settings", "BCCAdr", "boss@corp.test;files@archive.test"}});
    app.window().list().setChecked(1, false);
    app.sender().sendSelectedDocuments();

    const auto record = server->record();
    EXPECT_EQ(record.connections, 3);
    const auto accepted = record.accepted();
    ASSERT_EQ(accepted.size(), 3u);
    const std::vector<std::string> expected{"able@example.test", "boss@corp.test",
                                            "files@archive.test"};
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        EXPECT_EQ(accepted[i].rcptTos, std::vector<std::string>{expected[i]});
        EXPECT_EQ(accepted[i].session, static_cast<int>(i) + 1);
        EXPECT_EQ(accepted[i].mime.header("To"), expected[i]);
    }
    for (const char* domain : {"example.test.", "corp.test.", "archive.test."}) {
        EXPECT_EQ(dns.count(domain, "MX"), 1) << domain;
    }
    EXPECT_FALSE(app.window().list().row(0).checked);
}

// A sent log that cannot take a record: nothing goes out that could not be noted, and a run
// stops right after the message it could not note.
TEST_F(SendLoopTest, ASentLogThatCannotBeWrittenStopsTheRun) {
    const auto logPath = home / "program" / "EmailsSent.log";
    // A folder where the file should be: no one can write it, whatever their rights.
    auto breakLog = [&] {
        std::filesystem::remove_all(logPath);
        std::filesystem::create_directory(logPath);
    };
    listInvoices({}, "carr@example.test");
    const auto& list = app.window().list();

    // Unwritable before the run: nothing is sent.
    breakLog();
    ui.messages.clear();
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(server->record().connections, 0);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.texts()[0].find("nothing was sent"), std::string::npos) << ui.texts()[0];
    EXPECT_NE(ui.texts()[0].find(logPath.string()), std::string::npos);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(list.row(i).checked) << i;
    }

    // Unwritable from the second message on: that message went out, the third does not.
    std::filesystem::remove(logPath);
    test::writeFile(logPath, "");
    app.sender().onRowProcessed([&](const RowOutcome& o) {
        outcomes.push_back(o);
        if (o.sent && o.row == 0) {
            breakLog();
        }
    });
    ui.messages.clear();
    app.sender().sendSelectedDocuments();
    const auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 2u);
    EXPECT_EQ(accepted[1].rcptTos, std::vector<std::string>{"baker@example.test"});
    EXPECT_FALSE(list.row(0).checked);
    EXPECT_FALSE(list.row(1).checked);
    EXPECT_TRUE(list.row(2).checked) << "not sent, so still checked";
    ASSERT_EQ(ui.messages.size(), 1u);
    const std::string box = ui.texts()[0];
    EXPECT_NE(box.find("Invoice: #1042"), std::string::npos) << box;
    EXPECT_NE(box.find("Baker"), std::string::npos) << box;
    EXPECT_NE(box.find("stopped"), std::string::npos) << box;
    EXPECT_NE(app.window().statusText(), "Invoices sent");
}

TEST_F(SendLoopTest, TestModeBlindCopiesAndAttachments) {
    listInvoices({{"Settings", "Test", "1"},
                  {"Settings", "EmailAdr", "me@example.test"},
                  {"Settings", "BCC", "1"},
                  {"Settings", "BCCAdr", "boss@example.test;files@example.test"},
                  {"Settings", "Attachment", "1"}});
    app.window().list().setChecked(1, false);
    app.sender().sendSelectedDocuments();
    auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 1u);
    EXPECT_EQ(accepted[0].rcptTos, (std::vector<std::string>{"me@example.test", "boss@example.test",
                                                             "files@example.test"}));
    EXPECT_EQ(accepted[0].mime.header("To"), "me@example.test");
    EXPECT_EQ(accepted[0].data.find("boss@"), std::string::npos) << "blind copies stay hidden";

    const test::MimePartRecord* dvx = nullptr;
    for (const auto& p : accepted[0].mime.parts) {
        if (p.filename.ends_with(".dvx")) {
            dvx = &p;
        }
    }
    ASSERT_NE(dvx, nullptr);
    EXPECT_EQ(dvx->filename, "Invoice-1041--Date-2026-11-17--.dvx");
    auto exchange = xml::Document::parse(dvx->body);
    ASSERT_TRUE(exchange.ok()) << dvx->body;
    EXPECT_EQ(exchange->root().name(), "InvoiceRet");
    for (xml::Node id : exchange->selectAll("//ListID")) {
        EXPECT_EQ(id.text(), "ignore");
    }
    EXPECT_EQ(exchange->valueOf("//CompanyRet/CompanyName"), "Harbor Lane Joinery");
    for (const char* gone :
         {"LegalAddress", "LegalCompanyName", "FileName", "FirstMonthFiscalYear"}) {
        EXPECT_FALSE(exchange->selectOne(std::string("//CompanyRet/") + gone)) << gone;
    }
    EXPECT_FALSE(std::filesystem::exists(home / "program" / dvx->filename)) << "deleted after";
}

TEST_F(SendLoopTest, PreviewRendersEveryCheckedRowAndSendsNothing) {
    listInvoices();
    app.window().list().setChecked(2, true);  // no address, rendered all the same
    app.window().setPreviewChecked(true);
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(server->record().connections, 0);
    const std::string page = test::readFile(home / "program" / "preview.htm");
    EXPECT_TRUE(page.starts_with("<html><head>")) << page.substr(0, 80);
    EXPECT_NE(page.find("<body><DIV style='page-break-after:always'>"), std::string::npos);
    const std::string block = "<DIV style='page-break-after:always'>";
    std::size_t blocks = 0;
    for (std::size_t p = page.find(block); p != std::string::npos; p = page.find(block, p + 1)) {
        ++blocks;
    }
    EXPECT_EQ(blocks, 3u) << "one block per document, each ending its printed page";
    // On screen a rule and room between the blocks; on paper no rule.
    const std::string style = page.substr(0, page.find("<body>"));
    const std::size_t print = style.find("@media print");
    ASSERT_NE(print, std::string::npos) << style;
    const std::string screen = style.substr(0, print);
    for (const char* rule : {"body>div{", "border-bottom:3px", "margin:0 0 36px 0"}) {
        EXPECT_NE(screen.find(rule), std::string::npos) << rule << " in " << style;
    }
    EXPECT_NE(style.find("border-bottom:none", print), std::string::npos) << style;
    EXPECT_EQ(ui.opened.back(), (home / "program" / "preview.htm").string());
    EXPECT_TRUE(app.window().list().row(0).checked);
    EXPECT_EQ(test::readFile(home / "program" / "EmailsSent.log"), "");
}

TEST_F(SendLoopTest, StatementsCarryTheForwardBalanceOnce) {
    auto payment =
        "<ReceivePaymentRet><TxnID>P-1</TxnID><TxnDate>2026-11-16</TxnDate>"
        "<CustomerRef><ListID>C1</ListID><FullName>Able Co</FullName></CustomerRef>"
        "<TotalAmount>30.00</TotalAmount></ReceivePaymentRet>";
    answer("CustomerQueryRs.xml",
           qbAnswer(
               qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.test", "500.00") +
                                           customer("C2", "Baker", "b@example.test", "75.00")) +
               qbRs("InvoiceQueryRs", invoice("11-1", "1041", "C1", "Able Co", "100.00", "5.00")) +
               qbRs("ReceivePaymentQueryRs", payment) + qbRs("CompanyQueryRs", kCompanyRet)));
    pick("Statement");
    app.window().list().setChecked(1, false);
    app.window().setPreviewChecked(true);
    app.sender().sendSelectedDocuments();
    // 500 - (100 + 5) + 30
    xml::Node able = app.window().listDocument().selectOne(
        "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[ListID='C1']");
    EXPECT_EQ(able.valueOf("ForwardBalance"), "425");
    EXPECT_TRUE(able.selectOne("InvoiceRet"));
    EXPECT_EQ(able.valueOf("PrintDate"), "2026-11-18");

    // Sending after the preview finds the invoices moved already.
    app.window().setPreviewChecked(false);
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(able.selectAll("ForwardBalance").size(), 2u);
    EXPECT_EQ(able.selectAll("ForwardBalance")[1].text(), "500");
    auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 1u);
    EXPECT_EQ(accepted[0].mime.subject, "Your Statement");
    EXPECT_EQ(app.window().statusText(), "Statements sent");
}

TEST_F(SendLoopTest, TimesheetsGatherTheCustomersEntries) {
    auto entry = [](const std::string& cust, const std::string& d) {
        return "<TimeTrackingRet><TxnID>T" + d + "</TxnID><TxnDate>2026-11-1" + d +
               "</TxnDate><EntityRef><ListID>E1</ListID><FullName>Dana</FullName></EntityRef>"
               "<CustomerRef><ListID>" +
               cust + "</ListID><FullName>" + (cust == "C1" ? "Able Co" : "Baker") +
               "</FullName></CustomerRef><Duration>PT1H30M"
               "</Duration></TimeTrackingRet>";
    };
    answer("TimeTrackingQueryRs.xml",
           qbAnswer(
               qbRs("TimeTrackingQueryRs", entry("C1", "6") + entry("C2", "7") + entry("C1", "8")) +
               qbRs("CustomerQueryRs",
                    customer("C1", "Able Co", "able@example.test") + customer("C2", "Baker", "")) +
               qbRs("CompanyQueryRs", kCompanyRet)));
    pick("Timesheet");
    app.sender().sendSelectedDocuments();
    xml::Node able = app.window().listDocument().selectOne(
        "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet[FullName='Able Co']");
    EXPECT_EQ(able.selectAll("TimeTrackingRet").size(), 2u);
    EXPECT_EQ(able.childElements().back().name(), "PrintDate");
    auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 1u);
    EXPECT_EQ(accepted[0].mime.subject, "Your Timesheet");
    EXPECT_EQ(test::readFile(home / "program" / "EmailsSent.log"), "\r\n")
        << "timesheets append nothing but write the log back";
}

TEST_F(SendLoopTest, TimesheetsByEntityAndAMissingStyleSheetSendNothing) {
    answer(
        "TimeTrackingQueryRs.xml",
        qbAnswer(qbRs("TimeTrackingQueryRs",
                      "<TimeTrackingRet><TxnDate>2026-11-16</TxnDate><EntityRef><ListID>C1"
                      "</ListID><FullName>Able Co</FullName></EntityRef><Duration>PT1H</Duration>"
                      "</TimeTrackingRet>")));
    answer("CustomerQueryRs.xml",
           qbAnswer(qbRs("CustomerQueryRs", customer("C1", "Able Co", "a@example.test"))));
    pick("TimesheetA");
    ASSERT_EQ(app.window().list().rowCount(), 1);
    ASSERT_TRUE(app.window().list().row(0).checked);
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(server->record().connections, 0);
    EXPECT_TRUE(app.window().list().row(0).checked);

    listInvoices();
    std::filesystem::remove(home / "program" / "invoice.xslt");
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(app.window().statusText(), "Invoice conversion failed");
    EXPECT_EQ(server->record().connections, 0);
    EXPECT_TRUE(app.window().list().row(0).checked);
}

TEST_F(SendLoopTest, TheAddressPromptCanSendToBlindCopiesOnly) {
    listInvoices({{"Settings", "altEmail", "1"},
                  {"Settings", "BCC", "1"},
                  {"Settings", "BCCAdr", "files@example.test"}});
    app.window().list().setChecked(2, true);  // checked by hand, though it has no address
    ui.inputs = {std::string("other@example.test"), std::nullopt, std::string("new@example.test")};
    app.sender().sendSelectedDocuments();
    auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 3u) << "the row without an address is processed too";
    EXPECT_EQ(accepted[0].rcptTos,
              (std::vector<std::string>{"other@example.test", "files@example.test"}));
    EXPECT_EQ(accepted[1].rcptTos, std::vector<std::string>{"files@example.test"});
    EXPECT_FALSE(accepted[1].mime.header("To").has_value());
    EXPECT_EQ(accepted[2].rcptTos,
              (std::vector<std::string>{"new@example.test", "files@example.test"}));
}

// What pdftotext reads in a PDF (laid out), or what it said when it could not.
std::string pdfText(const test::TempDir& dir, const std::string& pdf) {
    const auto file = dir / "read.pdf";
    test::writeFile(file, pdf);
    std::string out, err;
    const int rc = test::runCommand("pdftotext -layout '" + file.string() + "' -", &out, &err);
    return rc == 0 ? out : "pdftotext failed: " + err;
}

// The sender's own words, a pay-now link and a PDF copy, once turned on: the HTML stays the
// message's root, the PDF reads back with the document in it.
TEST_F(SendLoopTest, OwnWordsPayLinkAndPdfCopyWhenTurnedOn) {
    DocumentTexts texts;
    texts.setWords("Invoice", {"Invoice {number} from {company}",
                               "Dear {customer},\n\nyour invoice of {total} {currency} is due."});
    ASSERT_TRUE(texts.save(app.folder()).ok());
    listInvoices({{"Documents", "AttachPdf", "1"},
                  {"Documents", "PayLink",
                   "https://pay.example.com/i/{number}?amount={balance}&who={customer}"}});
    app.sender().sendSelectedDocuments();

    const auto accepted = server->record().accepted();
    ASSERT_EQ(accepted.size(), 2u) << (ui.messages.empty() ? "" : ui.messages[0].text);
    const MimeRecord& first = accepted[0].mime;
    EXPECT_EQ(first.subject, "Invoice 1041 from Harbor Lane Joinery");
    EXPECT_NE(first.contentType.find("related"), std::string::npos);
    ASSERT_EQ(first.parts.size(), 3u);
    EXPECT_EQ(first.parts[0].body, "Dear Able Co,\r\n\r\nyour invoice of 105.00 USD is due.");
    const std::string& html = first.parts[1].body;
    EXPECT_EQ(first.parts[1].contentType, "text/html");
    EXPECT_NE(html.find("<p style=\"margin:0 0 10px 0;\">Dear Able Co,</p>"), std::string::npos);
    EXPECT_NE(html.find("href=\"https://pay.example.com/i/1041?amount=105.00&amp;who=Able%20Co\""),
              std::string::npos)
        << html.substr(0, 600);
    EXPECT_LT(html.find("Pay now"), html.find("Cabinet work"));
    EXPECT_NE(accepted[1].mime.parts[1].body.find("who=Baker%20%26%20Sons"), std::string::npos);

    const MimePartRecord& pdf = first.parts[2];
    EXPECT_EQ(pdf.contentType, "application/pdf");
    EXPECT_EQ(pdf.filename, "Invoice-1041.pdf");
    const std::string text = pdfText(home, pdf.body);
    for (const char* expected : {"1041", "Able Co", "Cabinet work", "105.00", "Pay now"}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected << " in\n" << text;
    }
    EXPECT_EQ(text.find("Dear Able Co"), std::string::npos) << "the cover text is the mail's";

    // A preview with the copy on writes every checked document into one PDF.
    app.window().list().setChecked(0, true);
    app.window().list().setChecked(1, true);
    app.window().setPreviewChecked(true);
    app.sender().sendSelectedDocuments();
    ASSERT_EQ(app.sender().previewPdf(), (home / "program" / "preview.pdf").string());
    const std::string both = pdfText(home, test::readFile(app.sender().previewPdf()));
    EXPECT_NE(both.find("Able Co"), std::string::npos);
    EXPECT_NE(both.find("Baker & Sons"), std::string::npos);
    EXPECT_NE(both.find("\f"), std::string::npos) << "each document starts a page";

    // A link put into the settings file by hand that is no web address sends nothing.
    ASSERT_TRUE(app.settings().setEntries({{"Documents", "PayLink", "javascript:alert(1)"}}).ok());
    app.window().setPreviewChecked(false);
    ui.messages.clear();
    app.sender().sendSelectedDocuments();
    EXPECT_EQ(server->record().accepted().size(), 2u);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.messages[0].text.find("Documents PayLink"), std::string::npos);
}

}  // namespace
}  // namespace dorvane::mail
