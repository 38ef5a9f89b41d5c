// SPDX-License-Identifier: GPL-3.0-or-later
// A mailed invoice as its recipient reads it: "Send Email" to a real SMTP server, the message
// that arrived read back by Python's email package.
#include <gtest/gtest.h>

#include "qbgateway/responsefolder.h"
#include "rendersupport.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/testsupport.h"

namespace dorvane::render::test {
namespace {

using dorvane::test::qbAnswer;
using dorvane::test::qbRs;
using dorvane::test::readFile;
using dorvane::test::ScopedEnvironment;
using dorvane::test::ScriptedUi;
using dorvane::test::SmtpTestServer;
using dorvane::test::TempDir;
using dorvane::test::writeFile;

// A 1x1 GIF.
const std::string kLogo(
    "GIF89a\x01\x00\x01\x00\x80\x00\x00\x00\x00\x00\xff\xff\xff!\xf9\x04\x01"
    "\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02\x44\x01\x00;",
    43);

std::string invoice(const std::string& txn, const std::string& ref) {
    return "<InvoiceRet><TxnID>" + txn + "</TxnID><CustomerRef><ListID>C1</ListID><FullName>" +
           "M\xC3\xBCller &amp; S\xC3\xB8n</FullName></CustomerRef><TxnDate>2026-11-17</TxnDate>" +
           "<RefNumber>" + ref + "</RefNumber><Subtotal>100.00</Subtotal><InvoiceLineRet>" +
           "<TxnLineID>L1</TxnLineID><Desc>Cabinet work \xE2\x80\x93 oak</Desc><Quantity>2" +
           "</Quantity><Rate>50.00</Rate><Amount>100.00</Amount></InvoiceLineRet></InvoiceRet>";
}

// The program folder holds the shipped style sheets and a logo; QuickBooks answers from files.
class MailedInvoice : public ::testing::Test {
protected:
    MailedInvoice()
        : config("XDG_CONFIG_HOME", (home / "cfg").string()),
          app(ui, shell::StartOptions{program.string()},
              qbgateway::responseFolderFactory(home / "qb")) {
        std::filesystem::create_directories(home / "qb");
        dorvane::test::copyProgramFiles(program);
        writeFile(program / "logo.gif", kLogo);
        const std::string company =
            qbRs("CompanyQueryRs",
                 "<CompanyRet><CompanyName>Caf\xC3\xA9 N\xC3\xB8rd</CompanyName>"
                 "<Email>office@example.com</Email></CompanyRet>");
        writeFile(home / "qb" / "CompanyQueryRs.xml", qbAnswer(company));
        writeFile(
            home / "qb" / "InvoiceQueryRs.xml",
            qbAnswer(qbRs("InvoiceQueryRs", invoice("11-1", "1041") + invoice("11-2", "1042")) +
                     qbRs("CustomerQueryRs",
                          "<CustomerRet><ListID>C1</ListID><Name>M\xC3\xBCller &amp; S\xC3\xB8n"
                          "</Name><FullName>M\xC3\xBCller &amp; S\xC3\xB8n</FullName><Email>"
                          "mueller@example.test</Email></CustomerRet>") +
                     company));
        app.settings()
            .setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                         {"SMTP", "Port", server.portText()},
                         {"Settings", "MailOption", "0"}})
            .ok();
        app.window().startUp();
        app.window().selectDocumentType("Invoice");
    }

    TempDir home;
    std::filesystem::path program = home / "program";
    ScopedEnvironment today{"DORVANE_TODAY", "2026-11-18"};
    ScopedEnvironment config;
    ScriptedUi ui;
    shell::Application app;
    SmtpTestServer server;
};

TEST_F(MailedInvoice, ReadsAsTheDocumentWithItsLogoAndItsLetters) {
    app.sender().sendSelectedDocuments();
    const auto accepted = server.record().accepted();
    ASSERT_EQ(accepted.size(), 2u) << readFile(program / "themail.txt");

    writeFile(home / "arrived.eml", accepted[0].data);
    const std::string reader =
        (dorvane::test::dataDir().parent_path() / "support" / "mail_reader.py").string();
    std::string out;
    const int status = dorvane::test::runCommand(
        "/usr/bin/python3 '" + reader + "' '" + (home / "arrived.eml").string() + "'" +
            " --text 'M\xC3\xBCller & S\xC3\xB8n' --text 'Caf\xC3\xA9 N\xC3\xB8rd'" +
            " --text 'Cabinet work \xE2\x80\x93 oak' --image '" + (program / "logo.gif").string() +
            "' --absent '" + program.string() + "' --subject 'Invoice: #1041  Date: 2026-11-17  '",
        &out);
    EXPECT_EQ(status, 0) << out;
}

}  // namespace
}  // namespace dorvane::render::test
