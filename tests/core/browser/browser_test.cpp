// SPDX-License-Identifier: GPL-3.0-or-later
// The document lists on crafted QuickBooks answers: rows, icons, status texts, check marks.
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <utility>

#include "browser/documenttypes.h"
#include "browser/loaders.h"
#include "browser/sentlog.h"
#include "common/text.h"
#include "company/companyeditor.h"
#include "company/companyinfo.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/responsefolder.h"
#include "support/testsupport.h"
#include "ui/documentwindow.h"

namespace dorvane::browser {
namespace {

using test::qbAnswer;
using test::qbRs;
using test::ScriptedUi;
using test::TempDir;

// What the loaders see of a window. `blankLabel` stands for a label that shows nothing of
// the company text it is given.
struct ListWindow final : ui::DocumentWindow {
    void setStatusText(std::string text) override { status = std::move(text); }
    const std::string& companyText() const override { return label; }
    void setCompanyText(std::string text) override { label = blankLabel ? "" : std::move(text); }
    void setProgress(int) override {}
    void setControlEnabled(const std::string& name, bool enabled) override {
        this->enabled[name] = enabled;
    }
    const std::string& documentType() const override { return type; }
    bool previewChecked() const override { return false; }
    ui::ListModel& list() override { return rows; }
    xml::Document& listDocument() override { return document; }
    std::string& sentLogText() override { return sentLog; }

    std::string status, label, type, sentLog;
    bool blankLabel = false;
    std::map<std::string, bool> enabled;
    ui::ListModel rows;
    xml::Document document;
};

// Answers from response files and keeps every request sent, and whether the exchange that
// sent it asked which company file is open.
struct Recorder {
    std::vector<std::string> requests;
    std::vector<bool> askedCompanyFile;
    bool asking = false;
    std::function<void()> afterRequest;  // runs after each answer
    qbgateway::ProcessorFactory wrap(qbgateway::ProcessorFactory inner) {
        struct Processor final : qbgateway::RequestProcessor {
            std::unique_ptr<qbgateway::RequestProcessor> inner;
            Recorder* recorder;
            Status openConnection(const std::string& a, const std::string& b) override {
                return inner->openConnection(a, b);
            }
            Result<std::string> beginSession(const std::string& f, qbgateway::FileMode m) override {
                return inner->beginSession(f, m);
            }
            Result<std::string> getCurrentCompanyFileName(const std::string& t) override {
                recorder->asking = true;
                return inner->getCurrentCompanyFileName(t);
            }
            Result<std::string> processRequest(const std::string& t,
                                               const std::string& r) override {
                recorder->requests.push_back(r);
                recorder->askedCompanyFile.push_back(std::exchange(recorder->asking, false));
                auto answer = inner->processRequest(t, r);
                if (recorder->afterRequest) {
                    recorder->afterRequest();
                }
                return answer;
            }
            Status endSession(const std::string& t) override { return inner->endSession(t); }
            Status closeConnection() override { return inner->closeConnection(); }
        };
        return [this, inner]() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
            auto made = inner();
            if (!made) {
                return made.error();
            }
            auto p = std::make_unique<Processor>();
            p->inner = std::move(made).value();
            p->recorder = this;
            return std::unique_ptr<qbgateway::RequestProcessor>(std::move(p));
        };
    }
};

std::string customer(const std::string& id, const std::string& name, const std::string& email,
                     const std::string& active = "true", const std::string& balance = "10.00") {
    return "<CustomerRet><ListID>" + id + "</ListID><Name>" + name + "</Name><FullName>" + name +
           "</FullName><IsActive>" + active + "</IsActive>" +
           (email.empty() ? "" : "<Email>" + email + "</Email>") + "<Balance>" + balance +
           "</Balance><TotalBalance>" + balance + "</TotalBalance></CustomerRet>";
}

std::string invoice(const std::string& txn, const std::string& custId, const std::string& name,
                    const std::string& subtotal, const std::string& date = "2026-11-17") {
    return "<InvoiceRet><TxnID>" + txn + "</TxnID><CustomerRef><ListID>" + custId +
           "</ListID><FullName>" + name + "</FullName></CustomerRef><TxnDate>" + date +
           "</TxnDate><RefNumber>1001</RefNumber><Subtotal>" + subtotal +
           "</Subtotal></InvoiceRet>";
}

class BrowserTest : public ::testing::Test {
protected:
    BrowserTest()
        : folder(home.path()),
          gateway(folder, ui, recorder.wrap(qbgateway::responseFolderFactory(answers()))),
          company(ui, folder, gateway, window),
          browser(window, gateway, folder, company, ui) {
        for (const auto& f : std::filesystem::directory_iterator(test::programSource())) {
            if (f.path().extension() == ".xml") {
                std::filesystem::copy(f.path(), home / f.path().filename().string());
            }
        }
        answer(
            "CompanyQueryRs.xml",
            qbAnswer(qbRs(
                "CompanyQueryRs",
                "<CompanyRet><CompanyName>Harbor Lane Joinery</CompanyName><Address><Addr1>12 Quay "
                "St</Addr1><City>Portland</City><State>ME</State><PostalCode>04101</PostalCode></"
                "Address><Email>office@example.com</Email></CompanyRet>")));
        company.retrieveCompanyInfo();
    }

    std::filesystem::path answers() const {
        auto dir = home / "answers";
        std::filesystem::create_directories(dir);
        return dir;
    }
    void answer(const std::string& file, const std::string& text) {
        test::writeFile(answers() / file, text);
    }
    // Row i as "[x] icon cells..." for compact comparisons.
    std::string row(int i) {
        const auto& r = window.list().row(i);
        std::string s = std::string(r.checked ? "[x]" : "[ ]") + std::to_string(r.icon);
        for (const auto& c : r.cells) {
            s += "|" + c;
        }
        return s;
    }
    void load(const std::string& type, const std::string& timeframe = "ThisWeekToDate") {
        recorder.requests.clear();
        recorder.askedCompanyFile.clear();
        ui.messages.clear();
        browser.loadList(type, timeframe);
    }

    TempDir home;
    ScriptedUi ui;
    Recorder recorder;
    platform::ProgramFolder folder;
    qbgateway::Gateway gateway;
    ListWindow window;
    company::CompanyInfo company;
    DocumentBrowser browser;
};

TEST_F(BrowserTest, InvoiceRowsTheirStatusAndTheSentLog) {
    answer("InvoiceQueryRs.xml",
           qbAnswer(qbRs("InvoiceQueryRs", invoice("11-1", "C1", "Able Co", "100.00") +
                                               invoice("11-2", "C2", "Baker", "20.00") +
                                               invoice("11-3", "C1", "Able Co", "5.00") +
                                               invoice("11-4", "C2", "Baker", "7.00")) +
                    qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.com") +
                                                customer("C2", "Baker", ""))));
    // 11-3 went out before; "11-4" is the beginning of a logged "11-45", which counts as sent.
    // Copies sent in test mode (11-1, and 11-3 before its real send) count for nothing.
    test::writeFile(home / "EmailsSent.log",
                    testSentRecord("11-3", "Invoice", "me@example.com") +
                        "<Invoice><TxnID>11-3</TxnID><SentDate>x</SentDate></Invoice>\r\n"
                        "<CreditMemo><TxnID>11-45</TxnID><SentDate>x</SentDate></CreditMemo>\r\n" +
                        testSentRecord("11-1", "Invoice", "me@example.com"));
    load("Invoice", "LastMonth");

    EXPECT_NE(recorder.requests.at(0).find("<DateMacro>LastMonth</DateMacro>"), std::string::npos);
    EXPECT_EQ(recorder.requests.size(), 1u) << "customers come from the list answer";
    const auto& cols = window.list().columns();
    ASSERT_EQ(cols.size(), 6u);
    EXPECT_EQ(cols[2].caption, "Customer:Job");
    EXPECT_EQ(row(0), "[x]3|2026-11-17|11-1|Able Co|100.00|able@example.com|Ready to send");
    EXPECT_EQ(row(1), "[ ]1|2026-11-17|11-2|Baker|20.00||Missing Email address");
    EXPECT_EQ(row(2), "[ ]2|2026-11-17|11-3|Able Co|5.00|able@example.com|Already sent");
    EXPECT_EQ(row(3), "[ ]2|2026-11-17|11-4|Baker|7.00||Already sent");
    EXPECT_EQ(window.companyText(), "Harbor Lane Joinery\r\n12 Quay St \r\nPortland ME 04101");
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_FALSE(window.enabled.at("editcompanyinfo")) << "QuickBooks keeps this record";
}

// Each transaction list reads its own amount field and its own party.
TEST_F(BrowserTest, EachTransactionListShowsItsAmountAndParty) {
    struct Case {
        const char* type;
        const char* element;  // the record's element, without "Ret"
        const char* party;
        const char* idCaption;
        const char* amount;  // the value the Balance column must show
    };
    const Case cases[] = {
        {"Invoice", "Invoice", "Customer", "Invoice ID", "1.10"},
        {"Estimate", "Estimate", "Customer", "Estimate ID", "1.10"},
        {"CreditMemo", "CreditMemo", "Customer", "ID", "1.10"},
        {"SalesReceipt", "SalesReceipt", "Customer", "ID", "2.20"},
        {"PurchaseOrder", "PurchaseOrder", "Vendor", "PO ID", "2.20"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        const std::string party = c.party;
        answer(
            std::string(c.element) + "QueryRs.xml",
            qbAnswer(qbRs(std::string(c.element) + "QueryRs",
                          "<" + std::string(c.element) + "Ret><TxnID>X-1</TxnID><TxnDate>" +
                              "2026-11-17</TxnDate><" + party + "Ref><ListID>P1</ListID>" +
                              "<FullName>Able Co</FullName></" + party + "Ref><Subtotal>1.10" +
                              "</Subtotal><TotalAmount>2.20</TotalAmount></" + c.element + "Ret>") +
                     qbRs(party + "QueryRs", "<" + party +
                                                 "Ret><ListID>P1</ListID><Email>a@example.com"
                                                 "</Email></" +
                                                 party + "Ret>")));
        load(c.type);
        EXPECT_EQ(window.list().columns().at(1).caption, c.idCaption);
        EXPECT_EQ(row(0), "[x]3|2026-11-17|X-1|Able Co|" + std::string(c.amount) +
                              "|a@example.com|Ready to send");
        EXPECT_EQ(recorder.requests.size(), 1u);
    }
}

TEST_F(BrowserTest, ACustomerMissingFromTheListIsAskedOfQuickBooks) {
    answer("InvoiceQueryRs.xml",
           qbAnswer(qbRs("InvoiceQueryRs", invoice("11-1", "C9", "Cole", "1.00"))));
    answer("CustomerQueryRs.xml",
           qbAnswer(qbRs("CustomerQueryRs", customer("C9", "Cole", "cole@example.org"))));
    load("Invoice");
    ASSERT_EQ(recorder.requests.size(), 2u);
    EXPECT_NE(recorder.requests[1].find("<ListID>C9</ListID>"), std::string::npos);
    EXPECT_EQ(recorder.askedCompanyFile, (std::vector<bool>{true, true}))
        << "a lookup notices a switch of company file too";
    EXPECT_EQ(row(0), "[x]3|2026-11-17|11-1|Cole|1.00|cole@example.org|Ready to send");

    // QuickBooks opens another company file while the list loads: the rows so far are of the
    // file before, and none stays checked.
    answer("InvoiceQueryRs.xml",
           qbAnswer(qbRs("InvoiceQueryRs", invoice("11-1", "C1", "Able Co", "1.00") +
                                               invoice("11-2", "C9", "Cole", "2.00")) +
                    qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.com"))));
    test::writeFile(home / "EmailsSent.log", "");
    recorder.afterRequest = [&] { test::writeFile(answers() / "companyfile.txt", "/q/other.qbw"); };
    load("Invoice");
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text,
              "QuickBooks opened another company file while the list was loading. The list is "
              "incomplete: no row is checked.");
    EXPECT_EQ(window.status, "The list is incomplete");
    ASSERT_EQ(window.list().rowCount(), 1);
    EXPECT_EQ(row(0), "[ ]0|2026-11-17|11-1|Able Co|1.00|able@example.com|List incomplete");
}

TEST_F(BrowserTest, AFailedAnswerKeepsTheRowsAndSaysSo) {
    answer("InvoiceQueryRs.xml",
           qbAnswer(qbRs("InvoiceQueryRs", invoice("11-1", "C1", "Able Co", "1.00")) +
                    qbRs("CustomerQueryRs", customer("C1", "Able Co", "a@example.com"))));
    load("Invoice");
    ASSERT_EQ(window.list().rowCount(), 1);
    test::writeFile(answers() / "failures.txt", "BeginSession 0x80040416 no file\n");
    load("Invoice");
    EXPECT_EQ(ui.texts(), (std::vector<std::string>{
                              "Please open Quickbooks and select the appropriate Company file",
                              "Could not access the company file(1)"}));
    EXPECT_EQ(window.status, "Could not access the company file");
    EXPECT_EQ(window.list().rowCount(), 1);
    EXPECT_TRUE(window.listDocument().empty());

    // An answer that loads but leaves the company label empty is said too; the list loads.
    std::filesystem::remove(answers() / "failures.txt");
    test::writeFile(home / "EmailsSent.log", "");
    window.blankLabel = true;
    load("Invoice");
    EXPECT_EQ(ui.texts(), (std::vector<std::string>{"Could not access the company file(2)"}));
    EXPECT_EQ(window.status, "");
    EXPECT_EQ(window.list().rowCount(), 1);
}

TEST_F(BrowserTest, StatementsSkipInactiveCustomersAndShowBalanced) {
    answer("CustomerQueryRs.xml",
           qbAnswer(
               qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.com") +
                                           customer("C2", "Gone Ltd", "gone@example.com", "false") +
                                           customer("C3", "Zero Inc", "", "true", "0.00") +
                                           customer("C4", "No Mail", "", "true", "3.50"))));
    load("Statement");
    ASSERT_EQ(window.list().rowCount(), 3);
    EXPECT_EQ(window.list().columns()[0].caption, "");
    EXPECT_EQ(row(0), "[x]3||C1|Able Co|10.00|able@example.com|Ready to send");
    EXPECT_EQ(row(1), "[ ]4||C3|Zero Inc|0.00||Balanced");
    EXPECT_EQ(row(2), "[ ]1||C4|No Mail|3.50||Missing Email address");
}

TEST_F(BrowserTest, PurchaseOrdersWithReceivedLinesAreLeftOut) {
    auto po = [](const std::string& txn, const std::string& lines, const std::string& memo = "") {
        return "<PurchaseOrderRet><TxnID>" + txn +
               "</TxnID><VendorRef><ListID>V1</ListID>"
               "<FullName>Timber Supply</FullName></VendorRef><TxnDate>2026-11-16</TxnDate>"
               "<TotalAmount>50.00</TotalAmount>" +
               (memo.empty() ? "" : "<Memo>" + memo + "</Memo>") + lines + "</PurchaseOrderRet>";
    };
    auto line = [](const std::string& received) {
        return "<PurchaseOrderLineRet><TxnLineID>L</TxnLineID><ReceivedQuantity>" + received +
               "</ReceivedQuantity></PurchaseOrderLineRet>";
    };
    answer("PurchaseOrderQueryRs.xml",
           qbAnswer(qbRs("PurchaseOrderQueryRs",
                         po("P1", line("0") + line("0"), "rush") +  // open: listed
                             po("P2", line("0") + line("2")) +      // partly received: out
                             po("P3", "") +                         // no quantities: as P2 → out
                             po("P4", line("0")) +                  // open again
                             po("P5", "")) +                        // as P4 → listed
                    qbRs("VendorQueryRs",
                         "<VendorRet><ListID>V1</ListID><Name>Timber Supply"
                         "</Name><Email>orders@example.net</Email></VendorRet>")));
    load("PurchaseOrder");
    ASSERT_EQ(window.list().rowCount(), 3);
    EXPECT_EQ(row(0),
              "[x]3|2026-11-16|P1|Timber Supply/rush|50.00|orders@example.net|Ready to send");
    EXPECT_EQ(window.list().row(1).key, "P4");
    EXPECT_EQ(window.list().row(2).key, "P5");
}

TEST_F(BrowserTest, TimesheetsAddUpPerCustomer) {
    auto entry = [](const std::string& date, const std::string& cust, const std::string& who,
                    const std::string& duration) {
        return "<TimeTrackingRet><TxnID>T" + date + who + "</TxnID><TxnDate>" + date +
               "</TxnDate><EntityRef><ListID>E-" + who + "</ListID><FullName>" + who +
               "</FullName></EntityRef><CustomerRef><ListID>" + cust + "</ListID><FullName>" +
               (cust == "C1" ? "Able Co" : "Baker") + "</FullName></CustomerRef><Duration>" +
               duration + "</Duration></TimeTrackingRet>";
    };
    // Time that is billed to no customer has no recipient, whoever QuickBooks lists first.
    const std::string noCustomer =
        "<TimeTrackingRet><TxnID>T0</TxnID><TxnDate>2026-11-18</TxnDate><EntityRef><ListID>"
        "E-Eli</ListID><FullName>Eli</FullName></EntityRef><Duration>PT0H10M</Duration>"
        "</TimeTrackingRet>";
    answer("TimeTrackingQueryRs.xml",
           qbAnswer(qbRs("TimeTrackingQueryRs", entry("2026-11-16", "C1", "Dana", "PT1H30M") +
                                                    entry("2026-11-17", "C2", "Dana", "PT2H") +
                                                    noCustomer +
                                                    entry("2026-11-18", "C1", "Eli", "PT0H45M")) +
                    qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.com") +
                                                customer("C2", "Baker", ""))));
    answer("CustomerQueryRs.xml",
           qbAnswer(qbRs("CustomerQueryRs", customer("C1", "Able Co", "able@example.com"))));
    load("Timesheet");
    ASSERT_EQ(window.list().rowCount(), 3);
    EXPECT_EQ(window.list().columns()[2].caption, "Duration[MM]");
    EXPECT_EQ(row(0), "[x]3|2026-11-16|Able Co|135|able@example.com|Ready to send");
    EXPECT_EQ(row(1), "[ ]1|2026-11-17|Baker|120||Missing Email address");
    EXPECT_EQ(row(2), "[ ]1|2026-11-18||10||Missing Email address");
    EXPECT_EQ(recorder.requests.size(), 1u) << "nothing to look up without a customer";

    // By entity, every entry asks QuickBooks for the person's address.
    answer("CustomerQueryRs.xml",
           qbAnswer(qbRs("CustomerQueryRs", "") +
                    qbRs("EmployeeQueryRs",
                         "<EmployeeRet><ListID>E-Dana</ListID><Name>Dana</Name>"
                         "<Email>dana@example.com</Email></EmployeeRet>")));
    load("TimesheetA");
    EXPECT_EQ(recorder.requests.size(), 5u);
    EXPECT_EQ(recorder.askedCompanyFile, std::vector<bool>(5, true));
    ASSERT_EQ(window.list().rowCount(), 2);
    EXPECT_EQ(row(0), "[x]3|2026-11-16|Dana|210|dana@example.com|Ready to send");
    EXPECT_EQ(row(1), "[ ]1|2026-11-18|Eli|55||Missing Email address");
}

// A timesheet load that stops half-way shows what it has, with no row checked: the totals
// may be short.
TEST_F(BrowserTest, ATimesheetLoadThatStopsLeavesNoRowChecked) {
    auto entry = [](const std::string& cust, const std::string& duration) {
        return "<TimeTrackingRet><TxnDate>2026-11-16</TxnDate><CustomerRef><ListID>" + cust +
               "</ListID><FullName>" + cust + "</FullName></CustomerRef><Duration>" + duration +
               "</Duration></TimeTrackingRet>";
    };
    struct Case {
        std::string entries;
        std::string says;
    };
    const Case cases[] = {
        {entry("C1", "PT1H") + entry("C2", "PT1H") + entry("C1", "PT30H") + entry("C1", "PT1H"),
         "has a duration that cannot be read: \"PT30H\"."},
        {entry("C1", "PT1H") + entry("C2", "PT1H") +
             [&] {
                 std::string many;  // 23 x 1439 minutes pass the 16-bit total
                 for (int i = 0; i < 23; ++i) {
                     many += entry("C1", "PT23H59M");
                 }
                 return many;
             }(),
         "The time of C1 is too long to add up."},
    };
    test::writeFile(home / "EmailsSent.log", "");
    for (const Case& c : cases) {
        answer("TimeTrackingQueryRs.xml",
               qbAnswer(qbRs("TimeTrackingQueryRs", c.entries) +
                        qbRs("CustomerQueryRs", customer("C1", "C1", "a@example.com") +
                                                    customer("C2", "C2", "b@example.com"))));
        load("Timesheet");
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_NE(ui.messages[0].text.find(c.says), std::string::npos) << ui.messages[0].text;
        EXPECT_NE(ui.messages[0].text.find("The list is incomplete"), std::string::npos);
        EXPECT_EQ(window.status, "The list is incomplete");
        ASSERT_EQ(window.list().rowCount(), 2);
        EXPECT_EQ(row(0).substr(0, 3), "[ ]");
        EXPECT_EQ(row(1), "[ ]0|2026-11-16|C2|60|b@example.com|List incomplete");
    }
}

// QuickBooks that does not describe the company: the record comes from companyinfo.xml,
// entered once per company file in the editor.
TEST_F(BrowserTest, CompanyRecordsFromTheFileOnePerCompanyFile) {
    answer("CompanyQueryRs.xml",
           qbAnswer(qbRs("CompanyQueryRs", "") + qbRs("PreferencesQueryRs", "")));
    test::writeFile(answers() / "companyfile.txt", "/q/first.qbw");
    int opened = 0;
    ui.dialogHandler = [&](ui::DialogModel& model) {
        ++opened;
        auto& editor = dynamic_cast<company::CompanyEditorModel&>(model);
        editor.values = {
            "First Shop", "1 Main St",         "", "Bath", "ME", "04530", "US", "207-555-0101",
            "",           "first@example.com", ""};
        return editor.accept();
    };
    company.retrieveCompanyInfo();
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(window.companyText(), "First Shop\r\n1 Main St \r\nBath ME 04530");
    EXPECT_EQ(company.senderAddress(), "first@example.com");
    company.retrieveCompanyInfo();
    EXPECT_EQ(opened, 1) << "stored and found again by FileName";
    EXPECT_TRUE(window.enabled.at("editcompanyinfo")) << "the record is this program's to edit";
    // Editing it through the menu changes the file.
    ui.dialogHandler = [&](ui::DialogModel& model) {
        auto& editor = dynamic_cast<company::CompanyEditorModel&>(model);
        EXPECT_EQ(editor.values[0], "First Shop");
        editor.values[8] = "207-555-0199";  // Fax may stay empty, or be filled in later
        return editor.accept();
    };
    company.editCompanyInfo();
    EXPECT_EQ(xml::Document::load(home / "companyinfo.xml")
                  ->valueOf("/CompanyInfo/CompanyRet[FileName='/q/first.qbw']/Fax"),
              "207-555-0199");

    // A second company file gets its own record beside the first.
    test::writeFile(answers() / "companyfile.txt", "/q/second.qbw");
    ui.dialogHandler = [&](ui::DialogModel& model) {
        ++opened;
        auto& editor = dynamic_cast<company::CompanyEditorModel&>(model);
        editor.values = {"Second Shop", "2 Elm St",     "", "Bath", "ME", "04530",
                         "US",          "207-555-0102", "", "",     ""};
        EXPECT_FALSE(editor.accept()) << "Email is required";
        EXPECT_EQ(ui.texts().back(), "All fields are required !");
        editor.values[9] = "second@example.com";
        return editor.accept();
    };
    company.retrieveCompanyInfo();
    EXPECT_EQ(opened, 2);
    auto file = xml::Document::load(home / "companyinfo.xml");
    ASSERT_TRUE(file.ok());
    EXPECT_EQ(file->selectAll("/CompanyInfo/CompanyRet").size(), 3u) << "template + two";
    xml::Node second = file->selectOne("/CompanyInfo/CompanyRet[FileName='/q/second.qbw']");
    EXPECT_EQ(second.valueOf("CompanyName"), "Second Shop");
    EXPECT_EQ(second.valueOf("LegalCompanyName"), "Second Shop");
    EXPECT_EQ(second.selectOne("LegalAddress").xml(),
              text::replaceAll(second.selectOne("Address").xml(), "Address>", "LegalAddress>"));

    // Cancel stores nothing.
    test::writeFile(answers() / "companyfile.txt", "/q/third.qbw");
    ui.dialogHandler = [](ui::DialogModel&) { return false; };
    company.retrieveCompanyInfo();
    EXPECT_EQ(xml::Document::load(home / "companyinfo.xml")->selectAll("//CompanyRet").size(), 3u);
    EXPECT_FALSE(company.companyNode());
    EXPECT_FALSE(window.enabled.at("editcompanyinfo")) << "no record to edit";
    EXPECT_EQ(window.companyText(), "\r\n \r\n  ") << "the name-and-address frame, empty";
}

TEST(Durations, AsMinutesOfATimeOfDay) {
    EXPECT_EQ(durationToMinutes("PT2H30M"), 150);
    EXPECT_EQ(durationToMinutes("PT0H45M"), 45);
    EXPECT_EQ(durationToMinutes("PT1H"), 60);
    EXPECT_EQ(durationToMinutes("PT1H30M59S"), 90);
    EXPECT_EQ(durationToMinutes("PT23H59M"), 1439);
    EXPECT_EQ(durationToMinutes("PT24H"), std::nullopt);
    EXPECT_EQ(durationToMinutes("PT45M"), std::nullopt) << "no hours part";
    EXPECT_EQ(durationToMinutes(""), std::nullopt);
    EXPECT_EQ(durationToMinutes("P1DT2H"), std::nullopt);
}

TEST(SentLog, RecordsAndTheSubstringRule) {
    std::string log;
    appendSentRecord(log, "1A-99", "Invoice");
    EXPECT_TRUE(log.starts_with("<Invoice><TxnID>1A-99</TxnID><SentDate>"));
    EXPECT_TRUE(log.ends_with("</SentDate></Invoice>\r\n"));
    log += "<CreditMemo><TxnID>2B-7</TxnID><SentDate>d</SentDate></CreditMemo>";
    SentLogIndex index(log);
    for (const char* id : {"1A-99", "1A-9", "1A", "2B-7", ""}) {
        EXPECT_TRUE(index.contains(id)) << id;
    }
    // Test-mode records never read as sent, whatever their identifier or address hold.
    log += testSentRecord("3C-1", "Invoice", "me@example.com");
    log += testSentRecord("<TxnID>4D-1", "Estimate", "x<TxnID>5E-1</TxnID>@example.com");
    EXPECT_TRUE(log.ends_with("</TestEstimate>\r\n")) << log;
    EXPECT_NE(log.find("<TestInvoice><TestTxnID>3C-1</TestTxnID><SentTo>me@example.com</SentTo>"
                       "<SentDate>"),
              std::string::npos)
        << log;
    index = SentLogIndex(log);
    for (const char* id : {"1A-990", "2B-70", "A-99", "1a-99", "3C-1", "3C", "4D-1", "5E-1"}) {
        EXPECT_FALSE(index.contains(id)) << id;
    }
    EXPECT_EQ(log.find("<TxnID>", log.find("3C-1")), std::string::npos) << log;
    EXPECT_FALSE(SentLogIndex("").contains(""));
}

// What a type names in the program folder is shipped: its request, and the style sheet that
// renders it for mailing compiles.
TEST(DocumentTypes, TheirProgramFilesAreShipped) {
    const platform::ProgramFolder shipped(test::programSource());
    for (const DocumentType& type : kDocumentTypes) {
        SCOPED_TRACE(type.name);
        EXPECT_EQ(findDocumentType(type.name), &type);
        const auto request = shipped.readProgramFile(type.requestTemplate);
        EXPECT_TRUE(request && !request->empty());
        if (type.styleSheet) {
            EXPECT_TRUE(xml::Stylesheet::load(shipped.filePath(type.styleSheet)));
        }
    }
}

}  // namespace
}  // namespace dorvane::browser
