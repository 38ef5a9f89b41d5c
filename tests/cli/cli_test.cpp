// SPDX-License-Identifier: GPL-3.0-or-later
// The built `dorvane` executable, run as a script or cron job would run it.
#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

#include "support/clirun.h"
#include "support/mailservers.h"
#include "support/testsupport.h"
#include "support/webconnectorstandin.h"
#include "support/webserver.h"
#include "xml/xml.h"

namespace dorvane::test {
namespace {

namespace fs = std::filesystem;

const std::string ok = "statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\"";

TEST_F(Cli, RequestPrintsTheAnswerAndTracesBoth) {
    writeFile(home / "qb" / "HostQueryRs.xml", "<?xml version=\"1.0\" ?>\n<QBXML/>\n");
    writeFile(home / "req.xml",
              "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><HostQueryRq/>"
              "</QBXMLMsgsRq></QBXML>");
    EXPECT_EQ(dorvane("request " + (home / "req.xml").string()), 0) << err;
    EXPECT_EQ(out, "<?xml version=\"1.0\" ?>\n<QBXML/>\n");
    EXPECT_EQ(readFile(home / "program" / "QBXMLReq.txt"), readFile(home / "req.xml") + "\r\n");
    EXPECT_EQ(readFile(home / "program" / "QBXMLResult.txt"), out + "\r\n");
}

TEST_F(Cli, RequestReportsAGatewayFailureWithItsText) {
    writeFile(home / "req.xml", "<QBXML/>");
    writeFile(home / "qb" / "failures.txt",
              "OpenConnection 0x80040408 Could not start QuickBooks.\n");
    EXPECT_EQ(dorvane("request " + (home / "req.xml").string()), 2);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "QuickBooks Access Error\nCould not start QuickBooks.(-2147220472)\n");

    writeFile(home / "qb" / "failures.txt", "BeginSession 0x80040416 none\n");
    for (const std::string& command :
         {"request " + (home / "req.xml").string(), std::string("company"),
          std::string("company set Phone 555-0100"), std::string("list Invoice")}) {
        EXPECT_EQ(dorvane(command), 2) << command;
        EXPECT_EQ(err.rfind("Please open Quickbooks and select the appropriate Company file\n", 0),
                  0u)
            << command << ": " << err;
    }

    EXPECT_EQ(dorvane("request " + (home / "missing.xml").string()), 66);
}

TEST_F(Cli, ListPrintsRowsWithCheckMarks) {
    writeFile(home / "qb" / "CompanyQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><CompanyQueryRs statusCode=\"0\" "
              "statusSeverity=\"Info\" statusMessage=\"Status OK\"><CompanyRet><CompanyName>"
              "Harbor Lane Joinery</CompanyName><Address><Addr1>12 Quay St</Addr1><City>Portland"
              "</City></Address></CompanyRet></CompanyQueryRs></QBXMLMsgsRs></QBXML>");
    writeFile(home / "qb" / "EstimateQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><EstimateQueryRs statusCode=\"0\" "
              "statusSeverity=\"Info\" statusMessage=\"Status OK\"><EstimateRet><TxnID>E-1</TxnID>"
              "<CustomerRef><ListID>C1</ListID><FullName>Able Co</FullName></CustomerRef><TxnDate>"
              "2026-11-17</TxnDate><Subtotal>40.00</Subtotal></EstimateRet></EstimateQueryRs>"
              "<CustomerQueryRs statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status "
              "OK\"><CustomerRet><ListID>C1</ListID><Email>able@example.com</Email></CustomerRet>"
              "</CustomerQueryRs></QBXMLMsgsRs></QBXML>");
    writeFile(home / "program" / "EmailsSent.log", "");
    EXPECT_EQ(dorvane("list estimate --timeframe all"), 0) << err;
    EXPECT_EQ(out,
              "Checked\tDate\tEstimate ID\tCustomer\tBalance\tEMail\tStatus\n"
              "[x]\t2026-11-17\tE-1\tAble Co\t40.00\table@example.com\tReady to send\n");
    EXPECT_NE(err.find("Harbor Lane Joinery"), std::string::npos);
    EXPECT_NE(readFile(home / "program" / "QBXMLReq.txt").find("<EstimateQueryRq"),
              std::string::npos);
    EXPECT_EQ(readFile(home / "program" / "QBXMLReq.txt").find("DateMacro"), std::string::npos)
        << "ALL removes the date filter";

    EXPECT_EQ(dorvane("list Estimate --timeframe lastFISCALquarter"), 0) << err;
    EXPECT_NE(readFile(home / "program" / "QBXMLReq.txt")
                  .find("<DateMacro>LastFiscalQuarter</DateMacro>"),
              std::string::npos);

    // A wrong command line is refused before anything talks to QuickBooks.
    for (const char* wrong : {"list Estimate --timeframe Yesterday", "list Receipts",
                              "send Invoice --timeframe Tomorrow"}) {
        std::filesystem::remove(home / "program" / "QBXMLReq.txt");
        EXPECT_EQ(dorvane(wrong), 64) << wrong;
        EXPECT_FALSE(std::filesystem::exists(home / "program" / "QBXMLReq.txt")) << wrong;
    }
}

TEST_F(Cli, SettingsAreListedCheckedAndReadWithTheirDefaults) {
    struct Case {
        const char* args;
        int rc;
        const char* output;  // a fragment of what the command prints (out, then err)
    };
    const Case cases[] = {
        {"settings get SMTP Port", 0, "25\n"},
        {"settings get settings mailoption", 0, "0\n"},
        {"settings get Import Account", 0, "[Expense] Uncategorized Expenses\n"},
        {"settings get SMTP Nothing", 1, "SMTP Nothing is not set"},
        {"settings get SMTP Hostnme", 1, "Did you mean 'SMTP Hostname'?"},
        {"settings set SMTP port 2525", 0, ""},
        {"settings get SMTP Port", 0, "2525\n"},
        {"settings set SMTP Port abc", 64, "SMTP Port: 'abc' is not allowed; give a port number"},
        {"settings set Settings Test yes", 64, "give 0 (off) or 1 (on)"},
        {"settings set Bogus Key 1", 64, "settings list` shows every setting"},
        {"settings set SMTP Hostnme x", 64, "Did you mean 'SMTP Hostname'?"},
        {"settings set SMTP Pwd 's3cret pass'", 0, ""},
        {"settings get smtp pwd", 0, "(set)\n"},
        {"settings list SMTP", 0, "SMTP Port = 2525\n    the SMTP server's port"},
        {"settings list SMTP", 0, "SMTP Trace = 0 (default)\n"},
        {"settings list", 0, "SMTP Pwd = (set)\n"},
        {"settings list", 0, "      1  Outlook, which Linux lacks"},
        {"settings list", 0, "WebConnector CompanyFile = \"\" (default)"},
        {"settings list Bogus", 64,
         "the sections are SMTP Settings Documents View Import Handheld Web"},
        {"settings frob", 64, "unknown command 'frob'"},
        {"settings --help", 0, "Sections: SMTP, Settings, Documents, View, Import, Handheld, Web,"},
    };
    for (const Case& c : cases) {
        const std::string before = readFile(home / "cfg" / "dorvane" / "DV01.ini");
        EXPECT_EQ(dorvane(c.args), c.rc) << c.args << ": " << err;
        EXPECT_NE((out + err).find(c.output), std::string::npos) << c.args << ": " << out << err;
        EXPECT_EQ((out + err).find("s3cret"), std::string::npos) << c.args;
        if (c.rc != 0) {
            EXPECT_EQ(readFile(home / "cfg" / "dorvane" / "DV01.ini"), before) << c.args;
        }
    }
}

TEST_F(Cli, CompanySetKeepsTheRecordAsTheWindowsEditorDoes) {
    writeFile(home / "qb" / "CompanyQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><CompanyQueryRs " + ok +
                  "/></QBXMLMsgsRs></QBXML>");
    writeFile(home / "qb" / "companyfile.txt", "C:\\Books\\joinery.qbw");
    // The open company file's record in companyinfo.xml: field → value ("" = absent).
    const auto stored = [&](const std::string& field) {
        auto file = xml::Document::load((home / "program" / "companyinfo.xml").string());
        EXPECT_TRUE(file);
        auto records =
            file->selectAll("/CompanyInfo/CompanyRet[FileName='C:\\Books\\joinery.qbw']");
        EXPECT_LE(records.size(), 1u) << "one record per company file";
        return records.empty() ? std::string() : records.front().valueOf(field);
    };
    struct Case {
        std::string args;
        int rc;
        std::string said;  // in the output or the messages
        std::vector<std::pair<std::string, std::string>> record;
    };
    const Case cases[] = {
        // No record yet: the command line says how to give one.
        {"company", 1, "dorvane company set CompanyName", {{"CompanyName", ""}}},
        // The editor's own rule: only Addr2, Fax and Website may stay empty.
        {"company set CompanyName X Addr1 Y City Z State ME Zip 1 Country US Email x@example.com",
         1,
         "All fields are required !",
         {{"CompanyName", ""}}},
        {"company set companyname 'Harbor Lane Joinery' Addr1 '12 Quay St' City Portland "
         "State ME Zip 04101 Country US Phone 207-555-0100 Email office@example.com",
         0,
         "Harbor Lane Joinery\n12 Quay St\nPortland ME 04101\n",
         {{"LegalCompanyName", "Harbor Lane Joinery"},
          {"LegalAddress/City", "Portland"},
          {"Address/PostalCode", "04101"},
          {"Phone", "207-555-0100"}}},
        // A correction goes through the editor the menu opens on the stored record.
        {"company set Phone 207-555-0199 WEBSITE www.example.com",
         0,
         "Harbor Lane Joinery",
         {{"Phone", "207-555-0199"},
          {"CompanyWebSite", "www.example.com"},
          {"Address/City", "Portland"}}},
        {"company set Colour red", 64, "unknown field 'Colour'", {{"Phone", "207-555-0199"}}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(dorvane(c.args), c.rc) << c.args << ": " << err;
        EXPECT_NE((out + err).find(c.said), std::string::npos) << c.args << ":\n" << out << err;
        EXPECT_EQ(err.find("needs the window"), std::string::npos) << c.args;
        for (const auto& [field, value] : c.record) {
            EXPECT_EQ(stored(field), value) << c.args << ": " << field;
        }
    }

    // Where QuickBooks supplies the record, Dorvane keeps none to edit.
    writeFile(home / "qb" / "CompanyQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><CompanyQueryRs " + ok +
                  "><CompanyRet><CompanyName>Quay Books</CompanyName></CompanyRet></CompanyQueryRs>"
                  "</QBXMLMsgsRs></QBXML>");
    EXPECT_EQ(dorvane("company set Phone 1"), 1);
    EXPECT_NE(err.find("QuickBooks supplies"), std::string::npos) << err;
    EXPECT_EQ(stored("Phone"), "207-555-0199");
}

TEST_F(Cli, ANewCompanyFileKnowsOnlyItsName) {
    const auto file = home / "Acme Tools.dvq";
    EXPECT_EQ(dorvane("sandbox new '" + file.string() + "'", "sandbox"), 0) << err;
    writeFile(home / "req.xml",
              "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
              "onError=\"stopOnError\"><CompanyQueryRq/></QBXMLMsgsRq></QBXML>");
    EXPECT_EQ(dorvane("request " + (home / "req.xml").string(), "sandbox"), 0) << err;
    for (const char* element : {"<Address>", "<Phone>", "<Email>", "<EIN>", "<CompanyType>",
                                "<CompanyWebSite>", "<LegalAddress>"}) {
        EXPECT_EQ(out.find(element), std::string::npos) << element << " in\n" << out;
    }
    EXPECT_NE(out.find("<CompanyName>Acme Tools</CompanyName>"), std::string::npos) << out;
    EXPECT_EQ(dorvane("company", "sandbox"), 0) << err;
    EXPECT_EQ(out, "Acme Tools\n");
}

// Every command that reads a file says what is wrong with it before QuickBooks is asked: a
// missing file, a folder or an empty file never passes for an import with nothing in it.
TEST_F(Cli, AFileThatCannotBeReadIsSaidSo) {
    writeFile(home / "empty.csv", "");
    writeFile(home / "blank.dvx", " \r\n");
    const std::string missing = (home / "nothere.csv").string();
    const std::string folder = home.path().string();
    struct Case {
        std::string args;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {"import-batch " + missing, 66, "Cannot read " + missing + ": No such file or directory"},
        {"import-batch " + folder, 66, "Cannot read " + folder + ": Is a directory"},
        {"import-batch " + (home / "empty.csv").string(), 65, "the file is empty"},
        {"--yes import-batch --bulk " + missing, 66, "No such file or directory"},
        {"import " + (home / "blank.dvx").string(), 65, "the file is empty"},
        {"import --receipt " + folder, 66, "Is a directory"},
        {"import --receipt - < " + (home / "empty.csv").string(), 65, "the receipt is empty"},
        {"handheld import " + missing, 66, "No such file or directory"},
        {"request " + folder, 66, "Is a directory"},
        {"sandbox load " + (home / "empty.csv").string(), 65, "the file is empty"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        EXPECT_EQ(dorvane(c.args, "sandbox"), c.status) << out << err;
        EXPECT_NE(err.find(c.message), std::string::npos) << err;
        EXPECT_EQ(out, "");
    }
    // Nothing reached QuickBooks: no request was traced.
    EXPECT_FALSE(std::filesystem::exists(home / "program" / "QBXMLReq.txt"));
}

// A company file is never lost to a typing slip: `sandbox new` does not replace what is there
// unless told to, and never anything but a company file; open and load leave a file that is
// not a company file exactly as it was.
TEST_F(Cli, SandboxNeverWritesOverWhatIsThere) {
    const std::string company = (home / "mine.dvq").string();
    const std::string text = (home / "notes.txt").string();
    writeFile(text, "not a company\n");
    writeFile(home / "blank.dvq", "");
    ASSERT_EQ(newDemo("mine.dvq"), 0) << err;
    struct Case {
        std::string args;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {"sandbox new '" + company + "'", 1, "is a company file already"},
        {"sandbox new '" + text + "' --force", 1, "is not a company file"},
        {"sandbox new '" + (home / "blank.dvq").string() + "' --force", 1, "is not a company file"},
        {"sandbox open '" + text + "'", 1, "is not a Dorvane company file"},
        {"sandbox open '" + (home / "blank.dvq").string() + "'", 1,
         "is not a Dorvane company file"},
        {"sandbox open nothere.dvq", 66,
         "nothere.dvq' in " + fs::current_path().string() + " nor in " +
             (home / "sandbox").string()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        EXPECT_EQ(dorvane(c.args, "sandbox"), c.status) << out << err;
        EXPECT_NE(err.find(c.message), std::string::npos) << err;
    }
    EXPECT_EQ(readFile(text), "not a company\n");
    EXPECT_EQ(readFile(home / "blank.dvq"), "");
    // A name without a folder is also looked for in the sandbox's folder.
    const auto kept = home / "sandbox" / "kept.dvq";
    ASSERT_EQ(dorvane("sandbox new '" + kept.string() + "'", "sandbox"), 0) << err;
    EXPECT_EQ(dorvane("sandbox open kept", "sandbox"), 0) << err;
    EXPECT_EQ(out, "QuickBooks is running with " + kept.string() + " open.\n");
    ASSERT_EQ(dorvane("sandbox open '" + company + "'", "sandbox"), 0) << err;
    // The demo company is still there and still open; --force replaces it with an empty one.
    EXPECT_EQ(dorvane("list Invoice --timeframe ALL", "sandbox"), 0) << err;
    EXPECT_GT(std::count(out.begin(), out.end(), '\n'), 10);
    EXPECT_EQ(dorvane("sandbox new '" + company + "' --force", "sandbox"), 0) << err;
    EXPECT_EQ(dorvane("list Invoice --timeframe ALL", "sandbox"), 0) << err;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1);
}

// `dorvane check` names every component; it exits 1 while one has a problem (here: no
// shipped files to seed from), 0 once everything set up works.
TEST_F(Cli, CheckNamesEveryComponentAndExitsOneOnAProblem) {
    EXPECT_EQ(dorvane("check", "sandbox"), 1) << out << err;
    EXPECT_NE(out.find("program folder: PROBLEM — The shipped templates and style sheets were "
                       "not found"),
              std::string::npos)
        << out;
    std::filesystem::create_directory_symlink(programSource(), home / "no-shipped-files");
    EXPECT_EQ(dorvane("check", "sandbox"), 0) << out << err;
    for (const char* component : {"program folder", "settings", "QuickBooks", "SMTP server",
                                  "MX delivery", "handheld folder", "web update", "window"}) {
        EXPECT_NE(("\n" + out).find(std::string("\n") + component + ": "), std::string::npos)
            << component << " in:\n"
            << out;
    }
    EXPECT_EQ(out.find("PROBLEM"), std::string::npos) << out;
}

// QuickBooks out of reach: every job says so once, with what brings it back, and exits 2.
TEST_F(Cli, QuickBooksOutOfReachIsSaidOnceWithWhatToDo) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const std::string company = (home / "demo.dvq").string();
    writeFile(home / "batch.csv", readFile(dataDir() / "batch" / "standard-utf8.txt"));
    const std::string jobs[] = {"list Invoice", "send Invoice", "company", "webupdate Service",
                                "import-batch " + (home / "batch.csv").string()};
    for (const auto& [state, failure, advice] :
         {std::tuple{"stop", "Could not start QuickBooks.",
                     "The sandbox QuickBooks is not running: start it with `dorvane sandbox "
                     "open '" +
                         company + "'` (the company file open last)."},
          std::tuple{"close", "Please open Quickbooks and select the appropriate Company file",
                     "No company file is open in the sandbox QuickBooks: open one with `dorvane "
                     "sandbox open '" +
                         company + "'`"}}) {
        ASSERT_EQ(dorvane(std::string("sandbox ") + state, "sandbox"), 0);
        for (const std::string& job : jobs) {
            SCOPED_TRACE(std::string(state) + ": " + job);
            EXPECT_EQ(dorvane("--yes " + job, "sandbox"), 2) << out << err;
            std::size_t lines = 0;
            for (std::size_t at = 0; (at = err.find(failure, at)) != std::string::npos; ++at) {
                ++lines;
            }
            EXPECT_EQ(lines, 1u) << err;
            EXPECT_NE(err.find("dorvane: QuickBooks could not be reached. " + advice),
                      std::string::npos)
                << err;
            EXPECT_EQ(err.find("Could not access Quickbooks"), std::string::npos) << err;
        }
    }
}

// One line of outcome and an exit status a script can act on: booked, not booked and why,
// QuickBooks not there; the same document or receipt is booked again only with --again.
TEST_F(Cli, ImportBooksADocumentOnceAndSaysWhatHappened) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const std::string invoice = (home / "invoice.dvx").string();
    writeFile(
        invoice,
        "<?xml version=\"1.0\" ?><InvoiceRet><TxnDate>2026-11-02</TxnDate><RefNumber>"
        "A-77</RefNumber><InvoiceLineRet><ItemRef><FullName>Design</FullName></ItemRef>"
        "<Desc>Plans</Desc><Quantity>2</Quantity><Rate>40.00</Rate><Amount>80.00</Amount>"
        "</InvoiceLineRet><CompanyRet><CompanyName>M\xC3\xBCller &amp; S\xC3\xB8n &lt;GmbH&gt;"
        "</CompanyName></CompanyRet></InvoiceRet>");
    const std::string receipt = (home / "receipt.txt").string();
    writeFile(receipt, readFile(dataDir() / "import" / "receipts" / "standard-crlf.txt"));
    struct Step {
        std::string args;
        int status;
        const char* outcome;  // the last line of the output
    };
    const Step steps[] = {
        {"import", 64, ""},
        {"import --receipt " + receipt + " --vendor X", 64, ""},
        {"import " + invoice, 1, "Not imported: creating the vendor"},
        {"--yes import " + invoice, 0, "Booked the bill A-77"},
        {"import " + invoice, 1, "Not imported: already in QuickBooks"},
        {"import " + invoice + " --vendor 'm\xC3\xBCller & s\xC3\xB8n <gmbh>' --again", 0,
         "Booked the bill A-77"},
        {"import " + invoice + " --vendor Nobody", 1, "Not imported: QuickBooks has no vendor"},
        {"--yes import --receipt - --customer '' < " + receipt, 0, "Booked the sales receipt"},
        {"--yes import --receipt " + receipt, 1, "Not imported: imported before"},
        {"sandbox close", 0, ""},
        {"import " + invoice, 2, "Not imported: QuickBooks could not be reached"},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.args);
        EXPECT_EQ(dorvane(step.args, "sandbox"), step.status) << out << err;
        const std::string last = out.empty() ? "" : out.substr(out.rfind('\n', out.size() - 2) + 1);
        EXPECT_EQ(last.rfind(step.outcome, 0), 0u) << out << err;
    }
    // The vendor was created with its name intact, and booked twice under it.
    EXPECT_EQ(dorvane("sandbox open '" + (home / "demo.dvq").string() + "'", "sandbox"), 0);
    writeFile(home / "req.xml",
              "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
              "onError=\"stopOnError\"><BillQueryRq><RefNumber>A-77</RefNumber></BillQueryRq>"
              "</QBXMLMsgsRq></QBXML>");
    EXPECT_EQ(dorvane("request " + (home / "req.xml").string(), "sandbox"), 0) << err;
    auto bills = xml::Document::parse(out);
    ASSERT_TRUE(bills);
    EXPECT_EQ(bills
                  ->selectAll("//BillRet[VendorRef/FullName = $v]",
                              {{"v", "M\xC3\xBCller & S\xC3\xB8n <GmbH>"}})
                  .size(),
              2u)
        << out;
}

// The web update from a script: the chosen items reach the site, one line each; a refusal
// makes the exit status 1.
TEST_F(Cli, WebUpdatePublishesTheChosenItems) {
    std::filesystem::copy(programSource() / "UpdateItemToWeb.xslt", home / "program");
    ASSERT_EQ(newDemo(), 0) << err;
    EXPECT_EQ(dorvane("webupdate gadgets", "sandbox"), 64);
    HttpServerOptions refuseSecond;
    refuseSecond.fail = {2};
    HttpTestServer site(refuseSecond);
    ASSERT_EQ(dorvane("settings set Web UpdateURL " + site.url()), 0);
    ASSERT_EQ(dorvane("webupdate inventory", "sandbox"), 1) << err;
    EXPECT_NE(out.find("Checked\tID\tModified\tName\tPrice\tDescription\n[x]\t"), std::string::npos)
        << out;
    EXPECT_NE(out.find("\npublished\t"), std::string::npos) << out;
    EXPECT_NE(out.find("\nnot taken\t"), std::string::npos) << out;
    EXPECT_NE(out.find("the web site answered 500"), std::string::npos) << out;
    const std::size_t sent = site.requests().size();
    const std::string body = site.requests()[0].body;
    const std::size_t from = body.find("\"listId\":\"") + 10;
    const std::string id = body.substr(from, body.find('"', from) - from);
    EXPECT_EQ(dorvane("webupdate Inventory --only " + id, "sandbox"), 0) << err << out;
    ASSERT_EQ(site.requests().size(), sent + 1);
    EXPECT_NE(site.requests().back().body.find(id), std::string::npos);
}

TEST_F(Cli, SettingsAndSendThroughARealServer) {
    SmtpTestServer server;
    EXPECT_EQ(dorvane("settings set SMTP Hostname 127.0.0.1"), 0) << err;
    EXPECT_EQ(dorvane("settings set smtp port " + server.portText()), 0);

    writeFile(home / "qb" / "CompanyQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><CompanyQueryRs " + ok +
                  "><CompanyRet><CompanyName>Harbor Lane Joinery</CompanyName><Address><Addr1>12 "
                  "Quay St</Addr1></Address><Email>office@example.com</Email></CompanyRet>"
                  "</CompanyQueryRs></QBXMLMsgsRs></QBXML>");
    writeFile(home / "qb" / "InvoiceQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><InvoiceQueryRs " + ok +
                  "><InvoiceRet><TxnID>11-1</TxnID><CustomerRef><ListID>C1</ListID><FullName>"
                  "Able Co</FullName></CustomerRef><TxnDate>2026-11-17</TxnDate><RefNumber>1041"
                  "</RefNumber><Subtotal>40.00</Subtotal></InvoiceRet><InvoiceRet><TxnID>11-2"
                  "</TxnID><CustomerRef><ListID>C2</ListID><FullName>Refused</FullName>"
                  "</CustomerRef><TxnDate>2026-11-17</TxnDate><RefNumber>1042</RefNumber>"
                  "</InvoiceRet></InvoiceQueryRs><CustomerQueryRs " +
                  ok +
                  "><CustomerRet><ListID>C1</ListID><Email>able@example.test</Email></CustomerRet>"
                  "<CustomerRet><ListID>C2</ListID><Email>no@example.test</Email></CustomerRet>"
                  "</CustomerQueryRs></QBXMLMsgsRs></QBXML>");
    writeFile(home / "program" / "EmailsSent.log", "");
    copyProgram(".xslt");

    EXPECT_EQ(dorvane("send Invoice --preview"), 0) << err;
    EXPECT_EQ(out,
              "preview\t11-1\tAble Co\table@example.test\n"
              "preview\t11-2\tRefused\tno@example.test\n");
    EXPECT_TRUE(std::filesystem::exists(home / "program" / "preview.htm"));
    EXPECT_EQ(server.record().connections, 0);

    EXPECT_EQ(dorvane("send Invoice"), 0) << err;
    EXPECT_EQ(out,
              "sent\t11-1\tAble Co\table@example.test\n"
              "sent\t11-2\tRefused\tno@example.test\n");
    EXPECT_NE(err.find("Invoices sent"), std::string::npos);
    EXPECT_EQ(server.record().accepted().size(), 2u);
    // Sent once: the next run finds them in the log.
    EXPECT_EQ(dorvane("send Invoice"), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(server.record().accepted().size(), 2u);

    // Asked for each address ("altEmail"): a script gets no answer, --yes takes the one the
    // box suggests.
    writeFile(home / "program" / "EmailsSent.log", "");
    EXPECT_EQ(dorvane("settings set Settings altEmail 1"), 0);
    EXPECT_EQ(dorvane("send Invoice"), 1);
    EXPECT_EQ(out.find("sent\t"), std::string::npos) << out;
    EXPECT_EQ(server.record().accepted().size(), 2u);
    EXPECT_EQ(dorvane("--yes send Invoice"), 0) << err;
    EXPECT_EQ(out,
              "sent\t11-1\tAble Co\table@example.test\n"
              "sent\t11-2\tRefused\tno@example.test\n");
    EXPECT_EQ(server.record().accepted().size(), 4u);
}

TEST_F(Cli, SendExitsWithOneWhenADocumentDidNotGoOut) {
    SmtpServerOptions options;
    options.refuseRecipients = {"able@example.test"};
    SmtpTestServer server(options);
    dorvane("settings set SMTP Hostname 127.0.0.1");
    dorvane("settings set SMTP Port " + server.portText());
    writeFile(home / "qb" / "EstimateQueryRs.xml",
              "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><EstimateQueryRs " + ok +
                  "><EstimateRet><TxnID>E-1</TxnID><CustomerRef><ListID>C1</ListID><FullName>"
                  "Able Co</FullName></CustomerRef><TxnDate>2026-11-17</TxnDate></EstimateRet>"
                  "</EstimateQueryRs><CustomerQueryRs " +
                  ok +
                  "><CustomerRet><ListID>C1</ListID>"
                  "<Email>able@example.test</Email></CustomerRet></CustomerQueryRs></QBXMLMsgsRs>"
                  "</QBXML>");
    writeFile(home / "program" / "EmailsSent.log", "");
    copyProgram(".xslt");
    EXPECT_EQ(dorvane("send Estimate"), 1);
    EXPECT_EQ(out, "failed\tE-1\tAble Co\table@example.test\n");
    EXPECT_NE(err.find("able@example.test"), std::string::npos) << "the refusal is reported";
}

// An Authorize.Net download from a script: one line per transaction, each booked once; a
// value cut at a quoted comma is refused until --quoted.
TEST_F(Cli, ImportBatchBooksEachTransactionOnce) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const std::string file = (dataDir() / "batch" / "expanded-latin1.csv").string();
    const std::string cut =
        "60123456784: refused: a quoted value holds the delimiter and was cut there";
    struct Step {
        std::string args;
        int status;
        std::vector<std::string> lines;  // what each line of the output begins with
    };
    const Step steps[] = {
        {"import-batch", 64, {}},
        {"import-batch " + file,
         1,
         {"60123456781 M\xC3\xBCller Gartenbau GmbH 185.40: added",
          "60123456782 Brightside Cafe 42.00: not approved",
          "60123456783 Jos\xC3\xA9 Ortega 96.00: added", cut,
          "60123456781 M\xC3\xBCller Gartenbau GmbH 185.40: already imported",
          "2 added, 1 not approved, 1 already imported, 1 refused"}},
        {"import-batch --bulk " + file, 1, {"Not imported: cancelled"}},
        {"import-batch " + file + " --bulk --quoted --yes",
         0,
         {"60123456781 M\xC3\xBCller Gartenbau GmbH 185.40: already imported",
          "60123456782 Brightside Cafe 42.00: not approved", "60123456783 96.00: already imported",
          "60123456784 O'Brien Mechanical, Inc. 1,234.50: added",
          "60123456781 M\xC3\xBCller Gartenbau GmbH 185.40: already imported",
          "1 added, 1 not approved, 3 already imported, 0 refused"}},
        {"sandbox stop", 0, {}},
        {"import-batch " + file, 2, {"Not imported: QuickBooks could not be reached"}},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.args);
        EXPECT_EQ(dorvane(step.args, "sandbox"), step.status) << out << err;
        if (step.lines.empty()) {
            continue;
        }
        std::vector<std::string> lines;
        for (std::size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos;
             at = end + 1) {
            lines.push_back(out.substr(at, end - at));
        }
        ASSERT_EQ(lines.size(), step.lines.size()) << out;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(lines[i].rfind(step.lines[i], 0), 0u) << lines[i];
        }
    }
}

TEST_F(Cli, HandheldSyncHandsOverTheListsAndBooksTheHours) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const auto device = home / "device";
    const auto data = device / "Program Files" / "TimeTrack" / "data.xml";
    std::filesystem::create_directories(data.parent_path());
    writeFile(data, readFile(dataDir() / "handheld" / "data.xml"));
    struct Step {
        std::string args;
        int status;
        const char* output;  // what the output or the messages hold
    };
    const Step steps[] = {
        {"handheld", 64, ""},
        {"handheld status", 2, "Device folder: none chosen"},
        {"handheld sync --employee 'ana lopez'", 2, "Could not initialize the transfer"},
        {"settings set Handheld DeviceFolder '" + device.string() + "'", 0, ""},
        {"handheld status", 0, "  time entries: 3 (layout version 1)"},
        {"handheld sync", 64,
         "Name the worker with --employee; QuickBooks' employees:\n  Ana Lopez / "},
        {"handheld sync --employee 'ana lopez' --yes", 0, "Time Tracking items added"},
        {"handheld status", 0, "  time entries: 0"},
        {"handheld import", 0, "Time Tracking items added"},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.args);
        EXPECT_EQ(dorvane(step.args, "sandbox"), step.status) << out << err;
        EXPECT_NE((out + err).find(step.output), std::string::npos) << out << err;
    }
    EXPECT_EQ(readFile(data).rfind("<?xml version=\"1.0\" ?> \r\n<Dorvane_PDA><Employee><Name>Ana "
                                   "Lopez</Name>",
                                   0),
              0u);
    // Booked twice: once by the sync, once more by the import of the same fetched file.
    writeFile(home / "q.xml",
              "<?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq onError=\"stopOnError\">"
              "<TimeTrackingQueryRq><TxnDateRangeFilter><FromTxnDate>2026-11-16</FromTxnDate>"
              "<ToTxnDate>2026-11-16</ToTxnDate></TxnDateRangeFilter></TimeTrackingQueryRq>"
              "</QBXMLMsgsRq></QBXML>");
    ASSERT_EQ(dorvane("request " + (home / "q.xml").string(), "sandbox"), 0) << err;
    std::size_t hedges = 0;
    for (std::size_t at = 0; (at = out.find("Hedges along the gate", at)) != std::string::npos;
         ++at) {
        ++hedges;
    }
    EXPECT_EQ(hedges, 2u);
}

// A new handheld has no file yet: the sync says how to make one, and the first sync after
// `handheld init` hands it the lists without a complaint.
TEST_F(Cli, ANewHandheldStartsWithInit) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    const auto device = home / "device";
    const auto data = device / "Program Files" / "TimeTrack" / "data.xml";
    struct Step {
        std::string args;
        int status;
        std::string said;  // in the output or the messages
    };
    const Step steps[] = {
        {"handheld init", 2, "dorvane handheld init: no device folder chosen"},
        {"settings set Handheld DeviceFolder '" + device.string() + "'", 0, ""},
        {"handheld init", 2, "is not there (is the handheld mounted?)"},
        {"handheld sync --employee 'ana lopez'", 1,
         "data.xml Not Found. Operation Aborted.\nA new handheld has no \\Program "
         "Files\\TimeTrack\\data.xml yet: `dorvane handheld init`"},
        {"handheld init", 0, "Wrote an empty " + data.string()},
        {"handheld status", 0, "  empty: the next sync hands it the lists"},
        {"handheld init", 1, "is there already and may hold hours not fetched yet"},
        {"handheld sync --employee 'ana lopez' --yes", 0, "Time entries fetched: 0"},
        {"handheld status", 0, "  employee: Ana Lopez"},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.args);
        if (step.args == "handheld sync --employee 'ana lopez'") {
            std::filesystem::create_directories(device);
        }
        EXPECT_EQ(dorvane(step.args, "sandbox"), step.status) << out << err;
        EXPECT_NE((out + err).find(step.said), std::string::npos) << out << err;
        EXPECT_EQ(err.find("Cannot process file"), std::string::npos) << err;
    }
}

// `dorvane list` through a Web Connector that polls while it runs shows the office company's
// invoices exactly as the direct list does; with a wrong password it gives up after the wait.
TEST_F(Cli, WebConnectorListEqualsTheDirectList) {
    ASSERT_EQ(newDemo("office.dvq"), 0) << err;
    ASSERT_EQ(dorvane("list Invoice --timeframe ALL", "sandbox"), 0) << err;
    const std::string directList = out;
    ASSERT_NE(directList.find('\n'), std::string::npos);

    const int port = unusedLoopbackPort();
    writeFile(home / "password", "secret\n");
    ASSERT_EQ(
        dorvane("webconnector user office < '" + (home / "password").string() + "'", "sandbox"), 0)
        << err;
    for (const std::string& setting :
         {std::string("QuickBooks Connection webconnector"),
          "WebConnector Port " + std::to_string(port), std::string("WebConnector WaitSeconds 3")}) {
        ASSERT_EQ(dorvane("settings set " + setting, "sandbox"), 0) << err;
    }
    EXPECT_EQ(readFile(home / "cfg" / "dorvane" / "DV01.ini").find("secret"), std::string::npos);

    WebConnectorStandIn::Options options;
    options.url = "http://127.0.0.1:" + std::to_string(port) + "/qbwc";
    options.office = home / "sandbox";
    {
        WebConnectorStandIn connector(options);
        EXPECT_EQ(dorvane("list Invoice --timeframe ALL", "settings"), 0) << err;
        EXPECT_EQ(out, directList);
        EXPECT_TRUE(connector.waitFor([](const auto& c) { return c.closed >= 1; }));
        EXPECT_EQ(connector.counts().lastClose, "OK");
    }
    EXPECT_EQ(dorvane("webconnector status", "settings"), 0) << err;
    EXPECT_NE(out.find("Connection:      webconnector"), std::string::npos) << out;
    EXPECT_NE(out.find("user office from 127.0.0.1"), std::string::npos) << out;
    EXPECT_NE(out.find("Serving now:     no"), std::string::npos) << out;
    EXPECT_NE(out.find("Company file:    C:\\Office\\Harbor Lane.QBW"), std::string::npos) << out;

    options.password = "guess";
    WebConnectorStandIn stranger(options);
    EXPECT_EQ(dorvane("list Invoice --timeframe ALL", "settings"), 2);
    EXPECT_EQ(out, "");
    EXPECT_NE(err.find("waiting up to 3 s for the Web Connector at http://localhost:" +
                       std::to_string(port) + "/qbwc"),
              std::string::npos)
        << err;
    EXPECT_NE(err.find("Could not start QuickBooks.(-2147220472)"), std::string::npos) << err;
    EXPECT_GE(stranger.counts().refusals, 1);

    ASSERT_EQ(dorvane("webconnector qwc '" + (home / "office.qwc").string() + "'", "settings"), 0)
        << err;
    EXPECT_NE(readFile(home / "office.qwc").find("<UserName>office</UserName>"), std::string::npos);
}

}  // namespace
}  // namespace dorvane::test
