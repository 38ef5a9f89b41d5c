// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane send` from a script, through a real SMTP server: what each run says at its end.
#include <gtest/gtest.h>

#include "support/clirun.h"
#include "support/mailservers.h"

namespace dorvane::test {
namespace {

std::string invoiceRet(const std::string& txn, const std::string& customer,
                       const std::string& name) {
    return "<InvoiceRet><TxnID>" + txn + "</TxnID><CustomerRef><ListID>" + customer +
           "</ListID><FullName>" + name +
           "</FullName></CustomerRef><TxnDate>2026-11-17</TxnDate><RefNumber>" + txn +
           "</RefNumber><Subtotal>40.00</Subtotal></InvoiceRet>";
}

std::string customerRet(const std::string& id, const std::string& email) {
    return "<CustomerRet><ListID>" + id + "</ListID>" +
           (email.empty() ? "" : "<Email>" + email + "</Email>") + "</CustomerRet>";
}

std::string sentRecord(const std::string& txn) {
    return "<Invoice><TxnID>" + txn + "</TxnID><SentDate>x</SentDate></Invoice>\r\n";
}

// Four invoices: Able's, two of Baker's and one of Carr, who has no address.
void writeInvoiceAnswers(const std::filesystem::path& qb) {
    writeFile(qb / "CompanyQueryRs.xml",
              qbAnswer(qbRs("CompanyQueryRs",
                            "<CompanyRet><CompanyName>Harbor Lane Joinery"
                            "</CompanyName><Email>office@example.com</Email>"
                            "</CompanyRet>")));
    writeFile(
        qb / "InvoiceQueryRs.xml",
        qbAnswer(qbRs("InvoiceQueryRs",
                      invoiceRet("11-1", "C1", "Able Co") + invoiceRet("11-2", "C2", "Baker") +
                          invoiceRet("11-3", "C3", "Carr") + invoiceRet("11-4", "C2", "Baker")) +
                 qbRs("CustomerQueryRs", customerRet("C1", "able@example.test") +
                                             customerRet("C2", "baker@example.test") +
                                             customerRet("C3", ""))));
}

// Four invoices: Able's address is refused by the server in the first case, Carr has none,
// and 11-4 is in the sent log unless a case says otherwise.
TEST_F(Cli, ASendRunEndsWithItsCounts) {
    struct Case {
        const char* name;
        std::vector<std::string> refuse;
        std::string sentLog;
        std::vector<std::string> settings;
        bool removeSheet;
        int rc;
        std::string out;
        std::vector<std::string> errHas;
        std::vector<std::string> errHasNot;
    };
    const Case cases[] = {
        {"sent, failed with its reason, skipped and already sent",
         {"able@example.test"},
         sentRecord("11-4"),
         {},
         false,
         1,
         "failed\t11-1\tAble Co\table@example.test\nsent\t11-2\tBaker\tbaker@example.test\n",
         {"\nInvoices sent\n1 sent, 1 failed, 1 skipped for a missing e-mail address, 1 already "
          "sent\nfailed 11-1 Able Co: 55 550 ",
          "entered in QuickBooks"},
         {"Nothing to send"}},
        {"nothing to send says so, without \"Invoices sent\"",
         {},
         sentRecord("11-1") + sentRecord("11-2") + sentRecord("11-4"),
         {},
         false,
         0,
         "",
         {"Nothing to send: 0 sent, 0 failed, 1 skipped for a missing e-mail address, 3 "
          "already sent\n"},
         {"Invoices sent", "failed "}},
        {"a run that cannot render counts what it never tried",
         {},
         sentRecord("11-4"),
         {},
         true,
         1,
         "",
         {"Invoice conversion failed\n", ", 2 not tried\n"},
         {"Invoices sent", "Nothing to send"}},
        {"test mode says the copies went to the test address only",
         {"able@example.test"},
         sentRecord("11-4"),
         {"Settings Test 1", "Settings EmailAdr me@example.test"},
         false,
         0,
         "test\t11-1\tAble Co\tme@example.test\ntest\t11-2\tBaker\tme@example.test\n",
         {"0 sent, 0 failed, 1 skipped for a missing e-mail address, 1 already sent, 2 sent to "
          "the test address only\n",
          "Test mode: 2 went to the test address me@example.test only and are not noted as "
          "sent"},
         {"failed "}},
    };
    writeInvoiceAnswers(home / "qb");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove_all(home / "cfg");
        std::filesystem::remove_all(home / "program");
        std::filesystem::create_directories(home / "program");
        copyProgram(".xml");
        copyProgram(".xslt");
        if (c.removeSheet) {
            std::filesystem::remove(home / "program" / "invoice.xslt");
        }
        writeFile(home / "program" / "EmailsSent.log", c.sentLog);
        SmtpServerOptions options;
        options.refuseRecipients = c.refuse;
        SmtpTestServer server(options);
        std::vector<std::string> settings = {"SMTP Hostname 127.0.0.1",
                                             "SMTP Port " + server.portText()};
        settings.insert(settings.end(), c.settings.begin(), c.settings.end());
        for (const std::string& s : settings) {
            ASSERT_EQ(dorvane("settings set " + s), 0) << err;
        }
        EXPECT_EQ(dorvane("send Invoice"), c.rc) << err;
        EXPECT_EQ(out, c.out);
        for (const std::string& has : c.errHas) {
            EXPECT_NE(err.find(has), std::string::npos) << has << "\nin:\n" << err;
        }
        for (const std::string& hasNot : c.errHasNot) {
            EXPECT_EQ(err.find(hasNot), std::string::npos) << hasNot << "\nin:\n" << err;
        }
    }
    // The test copies are on record, but not as sent: a run without test mode mails them.
    const std::string log = readFile(home / "program" / "EmailsSent.log");
    EXPECT_NE(log.find("<TestTxnID>11-1</TestTxnID>"), std::string::npos) << log;
    EXPECT_EQ(log.find("<TxnID>11-1"), std::string::npos) << log;
    SmtpTestServer server;
    for (const std::string& s :
         {std::string("Settings Test 0"), "SMTP Port " + server.portText()}) {
        ASSERT_EQ(dorvane("settings set " + s), 0) << err;
    }
    EXPECT_EQ(dorvane("send Invoice"), 0) << err;
    EXPECT_EQ(out,
              "sent\t11-1\tAble Co\table@example.test\n"
              "sent\t11-2\tBaker\tbaker@example.test\n");
}

// --only sends just the rows named, by number; an already-sent one goes only with --again, which
// says so; an unknown ID stops the run before anything is mailed. 11-4 is in the sent log.
TEST_F(Cli, OnlyAndAgainChooseWhatASendRunMails) {
    struct Case {
        const char* args;
        int rc;
        const char* out;
        std::vector<std::string> errHas;
        std::size_t mailed;
    };
    const Case cases[] = {
        {"--only 11-2",
         0,
         "sent\t11-2\tBaker\tbaker@example.test\n",
         {"1 sent, 0 failed, 0 skipped for a missing e-mail address, 0 already sent\n"},
         1},
        {"--only 11-2 11-9 Nobody",
         1,
         "",
         {"No Invoice '11-9' in the list of ThisWeekToDate.\nNo Invoice 'Nobody'",
          "Nothing was sent."},
         0},
        {"--only 11-4 11-3",
         0,
         "",
         {"Invoice 11-4 (Baker) was sent before and is not sent now; --again sends it again.\n",
          "0 sent, 0 failed, 1 skipped for a missing e-mail address, 1 already sent\n"},
         0},
        {"--only 11-4 --again", 0, "sent again\t11-4\tBaker\tbaker@example.test\n", {"1 sent,"}, 1},
        {"--again",
         0,
         "sent\t11-1\tAble Co\table@example.test\nsent\t11-2\tBaker\tbaker@example.test\n"
         "sent again\t11-4\tBaker\tbaker@example.test\n",
         {"3 sent,"},
         3},
        {"11-2", 64, "", {"dorvane send: extra argument '11-2'"}, 0},
    };
    writeInvoiceAnswers(home / "qb");
    copyProgram(".xslt");
    const std::filesystem::path log = home / "program" / "EmailsSent.log";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        writeFile(log, sentRecord("11-4"));
        SmtpTestServer server;
        for (const std::string& s :
             {std::string("SMTP Hostname 127.0.0.1"), "SMTP Port " + server.portText()}) {
            ASSERT_EQ(dorvane("settings set " + s), 0) << err;
        }
        EXPECT_EQ(dorvane("send Invoice " + std::string(c.args)), c.rc) << err;
        EXPECT_EQ(out, c.out);
        for (const std::string& has : c.errHas) {
            EXPECT_NE(err.find(has), std::string::npos) << has << "\nin:\n" << err;
        }
        EXPECT_EQ(server.record().accepted().size(), c.mailed);
        // A re-send is one more record of the same TxnID, in the usual form.
        const std::string written = readFile(log);
        const std::string record = "<Invoice><TxnID>11-4</TxnID><SentDate>";
        const std::size_t second = written.find(record, written.find(record) + 1);
        EXPECT_EQ(second != std::string::npos,
                  std::string_view(c.args).find("again") != std::string_view::npos)
            << written;
    }
}

// One document's PDF copy from the demo company: found by its number or TxnID, written where
// asked, readable by poppler; a number the list lacks is a data error.
TEST_F(Cli, PdfWritesOneDocumentsCopy) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const std::string file = (home / "inv.pdf").string();
    ASSERT_EQ(dorvane("pdf invoice 80 -o '" + file + "'", "sandbox"), 0) << err;
    EXPECT_NE(err.find("Wrote " + file), std::string::npos) << err;
    std::string text;
    ASSERT_EQ(runCommand("pdftotext -layout '" + file + "' -", &text), 0);
    for (const char* expected : {"INVOICE", "80", "Karen Kowalski", "Garden soil", "345.00"}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected << " in\n" << text;
    }
    EXPECT_EQ(dorvane("pdf Invoice 99999", "sandbox"), 65);
    EXPECT_NE(err.find("No Invoice '99999'"), std::string::npos) << err;
    EXPECT_EQ(dorvane("pdf TimesheetA x", "sandbox"), 64);

    // A preview with --pdf writes preview.pdf beside preview.htm; nothing is mailed.
    EXPECT_EQ(dorvane("send Invoice --timeframe ALL --preview --pdf", "sandbox"), 0) << err;
    EXPECT_NE(err.find("Open: " + (home / "program" / "preview.pdf").string()), std::string::npos)
        << err;
    std::string info;
    ASSERT_EQ(runCommand("pdfinfo '" + (home / "program" / "preview.pdf").string() + "'", &info),
              0);
    EXPECT_EQ(info.find("Pages:           1\n"), std::string::npos) << "one page per document";
}

}  // namespace
}  // namespace dorvane::test
