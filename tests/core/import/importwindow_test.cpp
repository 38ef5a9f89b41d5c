// SPDX-License-Identifier: GPL-3.0-or-later
// The import window against the embedded QuickBooks: documents mailed with their exchange
// files by company A and booked by company B, the match report, the creation questions, the
// duplicate guard, pasted receipts and hostile files.
#include "import/importwindow.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "import/importlog.h"
#include "support/demoapp.h"

namespace dorvane::imports {
namespace {

using test::readFile;
using test::writeFile;

constexpr const char* kSender = "Harbor Lane Landscaping";  // the demo company's name

class ImportWindowTest : public test::DemoAppTest {
protected:
    ImportWindowTest() : DemoAppTest("a.dvq") {
        startApp();
        app->window().startUp();
    }

    ImportWindow& window() { return app->importWindow(); }

    std::size_t count(const std::string& kind) {
        return query("<" + kind + "QueryRq/>").selectAll("//" + kind + "Ret").size();
    }

    // Mails the first ready document of `type` with its exchange file and answers the file.
    std::string mailOne(const std::string& type, test::SmtpTestServer& server) {
        app->settings()
            .setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                         {"SMTP", "Port", server.portText()},
                         {"Settings", "MailOption", "0"},
                         {"Settings", "Attachment", "1"}})
            .ok();
        app->window().selectTimeframe("ALL");
        app->window().selectDocumentType(type);
        ui::ListModel& list = app->window().list();
        bool first = true;
        for (int r = 0; r < list.rowCount(); ++r) {
            if (list.row(r).checked) {
                list.setChecked(r, first);
                first = false;
            }
        }
        EXPECT_FALSE(first) << "no " << type << " ready to send";
        const std::size_t before = server.record().accepted().size();
        app->sender().sendSelectedDocuments();
        const auto accepted = server.record().accepted();
        EXPECT_EQ(accepted.size(), before + 1) << ui.texts().back();
        if (accepted.size() != before + 1) {
            return {};
        }
        const auto dvx = home / (type + ".dvx");
        for (const auto& part : accepted.back().mime.parts) {
            if (part.filename.ends_with(".dvx")) {
                writeFile(dvx, part.body);
            }
        }
        EXPECT_TRUE(std::filesystem::exists(dvx)) << "no exchange file in the mail";
        return dvx.string();
    }
};

double amount(const xml::Node& node, const char* path) {
    return std::strtod(node.valueOf(path).c_str(), nullptr);
}

// Company A mails an invoice, an estimate and a sales receipt with their exchange files;
// company B books them as a bill, a purchase order, a check and a card charge.
TEST_F(ImportWindowTest, MailedDocumentsBecomeTheCounterDocumentsOfTheReceiver) {
    test::SmtpTestServer server;
    const std::string invoiceFile = mailOne("Invoice", server);
    const std::string estimateFile = mailOne("Estimate", server);
    const std::string receiptFile = mailOne("SalesReceipt", server);
    ASSERT_FALSE(receiptFile.empty());
    useCompany("b.dvq");
    window().open();
    ui.messages.clear();

    struct Case {
        const std::string& file;
        const char* caption;
        const char* source;  // the Ret element of the exchange file
        const char* target;  // what company B books
        const char* status;
        const char* page;
        const char* account;  // the paying account of a sales receipt
        const char* line;
        const char* total;
        const char* sourceTotal;
    };
    const Case cases[] = {
        {invoiceFile, "Dorvane - Import Invoice as Bill", "InvoiceRet", "Bill", "Bill added",
         "Bill sucessfully added.", "", "ItemLineRet", "AmountDue", "Subtotal"},
        {estimateFile, "Dorvane - Import Estimate as PurchaseOrder", "EstimateRet", "PurchaseOrder",
         "Purchaseorder added", "Purchase Order sucessfully added.", "", "PurchaseOrderLineRet",
         "TotalAmount", "TotalAmount"},
        {receiptFile, "Dorvane - Import Sales Receipt as Charge", "SalesReceiptRet", "Check",
         "Sales Receipt added", "Sales Receipt sucessfully added.", "Checking", "ItemLineRet",
         "Amount", "TotalAmount"},
        {receiptFile, "Dorvane - Import Sales Receipt as Charge", "SalesReceiptRet",
         "CreditCardCharge", "Sales Receipt added", "Sales Receipt sucessfully added.", "Visa Card",
         "ItemLineRet", "Amount", "TotalAmount"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target);
        auto source = xml::Document::load(c.file);
        ASSERT_TRUE(source);
        const xml::Node sent = source->selectOne(std::string("/") + c.source);
        ASSERT_TRUE(sent);

        window().openExchangeFile(c.file);
        EXPECT_EQ(window().caption(), c.caption);
        EXPECT_TRUE(window().control(kAddItemBtn).visible);
        EXPECT_TRUE(window().control(kAddItemBtn).enabled);
        EXPECT_EQ(window().counterparts().columnHeader, "Vendor");
        EXPECT_NE(window().browserPage().find(sent.valueOf("RefNumber")), std::string::npos);
        if (*c.account) {
            ASSERT_TRUE(window().counterparts().selected) << window().label1();
            std::size_t i = 0;
            while (i < window().accounts().size() && window().accounts()[i].name != c.account) {
                ++i;
            }
            window().selectAccount(i);
        }
        window().importSelectedDocument();
        ASSERT_EQ(window().statusText(), c.status) << ui.texts().back();
        EXPECT_EQ(window().lastOutcome(), ImportOutcome::Added);
        EXPECT_NE(window().browserPage().find(c.page), std::string::npos);
        EXPECT_EQ(window().caption(), kIdleCaption);
        EXPECT_FALSE(window().control(kAddItemBtn).enabled);

        const xml::Document answer = query(
            "<" + std::string(c.target) + "QueryRq><RefNumber>" + sent.valueOf("RefNumber") +
            "</RefNumber><IncludeLineItems>true</IncludeLineItems></" + c.target + "QueryRq>");
        const xml::Node booked = answer.selectOne(std::string("//") + c.target + "Ret");
        ASSERT_TRUE(booked);
        EXPECT_EQ(booked.valueOf("VendorRef/FullName") + booked.valueOf("PayeeEntityRef/FullName"),
                  kSender);
        EXPECT_EQ(booked.valueOf("TxnDate"), sent.valueOf("TxnDate"));
        const double tax = amount(sent, "SalesTaxTotal");
        EXPECT_NEAR(amount(booked, c.total),
                    amount(sent, c.sourceTotal) + (std::string(c.source) == "InvoiceRet" ? tax : 0),
                    0.005);
        EXPECT_GE(booked.selectAll(c.line).size() +
                      booked.selectAll("*[contains(name(), 'Group')]").size(),
                  sent.selectAll("*[contains(name(), 'Line')]").size());
        if (*c.account) {
            EXPECT_EQ(booked.valueOf("AccountRef/FullName"), c.account);
        }
    }
    EXPECT_EQ(ui.texts(), std::vector<std::string>{"Dorvane will now add a new vendor"});
}

// A document QuickBooks has already is booked again only when the person says so; the
// command line's policy refuses without asking. A number with markup characters is looked up
// like any other, and a look-up that fails ends the import as a failed add does.
TEST_F(ImportWindowTest, ABillAlreadyBookedIsCaughtBeforeItIsAddedAgain) {
    test::SmtpTestServer server;
    const std::string file = mailOne("Invoice", server);
    useCompany("b.dvq");
    window().open();
    window().openExchangeFile(file);
    window().importSelectedDocument();
    ASSERT_EQ(window().lastOutcome(), ImportOutcome::Added) << ui.texts().back();
    const std::size_t bills = count("Bill");
    auto numbered = xml::Document::load(file);
    ASSERT_TRUE(numbered);
    numbered->selectOne("/InvoiceRet/RefNumber").setText("A&77");
    const std::string ampersand = (home / "ampersand.dvx").string();
    writeFile(ampersand, numbered->toString());

    struct Case {
        const std::string& file;
        DuplicatePolicy policy;
        std::optional<ui::Answer> answer;
        const char* faults;  // of the sandbox, for this import
        ImportOutcome outcome;
        std::size_t added;
        const char* status;
        const char* message;  // the start of the one message shown; "" for none
    };
    const char* failSecondRequest = "ProcessRequest:1:delay=1,ProcessRequest:1:0x80040400";
    const Case cases[] = {
        {file, DuplicatePolicy::Ask, ui::Answer::No, nullptr, ImportOutcome::NotSent, 0,
         "already in QuickBooks", kAlreadyInQuickBooks},
        {file, DuplicatePolicy::Refuse, std::nullopt, nullptr, ImportOutcome::NotSent, 0,
         "already in QuickBooks", kAlreadyInQuickBooks},
        {file, DuplicatePolicy::Ask, ui::Answer::Yes, nullptr, ImportOutcome::Added, 1,
         "Bill added", kAlreadyInQuickBooks},
        {file, DuplicatePolicy::Allow, std::nullopt, nullptr, ImportOutcome::Added, 2, "Bill added",
         ""},
        // The look-up after the lists' (the second request) fails.
        {file, DuplicatePolicy::Refuse, std::nullopt, failSecondRequest, ImportOutcome::Unreachable,
         2, kErrorStatus, "QuickBooks found an error"},
        {ampersand, DuplicatePolicy::Refuse, std::nullopt, nullptr, ImportOutcome::Added, 3,
         "Bill added", ""},
        {ampersand, DuplicatePolicy::Refuse, std::nullopt, nullptr, ImportOutcome::NotSent, 3,
         "already in QuickBooks", kAlreadyInQuickBooks},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(&c - cases));
        ui.messages.clear();
        if (c.answer) {
            ui.answers.push_back(*c.answer);
        }
        window().setDuplicatePolicy(c.policy);
        window().openExchangeFile(c.file);
        EXPECT_TRUE(window().counterparts().selected);  // the vendor created the first time
        {
            std::optional<test::ScopedEnvironment> faults;
            if (c.faults) {
                faults.emplace("DORVANE_SANDBOX_FAULTS", c.faults);
            }
            window().importSelectedDocument();
        }
        EXPECT_EQ(window().lastOutcome(), c.outcome);
        EXPECT_EQ(window().statusText(), c.status);
        EXPECT_EQ(count("Bill"), bills + c.added);
        if (*c.message) {
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_NE(ui.messages[0].text.find(c.message), std::string::npos)
                << ui.messages[0].text;
        } else {
            EXPECT_EQ(ui.texts(), std::vector<std::string>{});
        }
        if (c.message == kAlreadyInQuickBooks) {
            EXPECT_NE(ui.messages[0].text.find("from Harbor Lane Landscaping"), std::string::npos)
                << ui.messages[0].text;
        }
    }
}

// Before the vendor is created the import looks up the records its preferences put into the
// document; a preference the document does not use is not looked up. A group line keeps the
// group the sender named. A document QuickBooks refuses after the vendor was created leaves
// the vendor, and the report says so.
TEST_F(ImportWindowTest, WhatThePreferencesNameIsLookedUpBeforeAnythingIsWritten) {
    window().open();
    struct Case {
        const char* key;  // the import preference changed
        const char* value;
        const char* date;
        ImportOutcome outcome;
        std::vector<std::string> missing;  // the preferences reported
        std::vector<std::string> added;    // what QuickBooks took
    };
    const Case cases[] = {
        {"Item", "No Such Item", "2026-11-02", ImportOutcome::NotSent, {"Item"}, {}},
        {"Term", "Net 99", "2026-11-02", ImportOutcome::NotSent, {"Term"}, {}},
        {"Account",
         "[Expense] Nowhere",
         "2026-11-02",
         ImportOutcome::Added,
         {},
         {"vendor", "bill"}},
        {"ItemGroup", "No Such Group", "2026-11-03", ImportOutcome::Added, {}, {"vendor", "bill"}},
        {"Item", "Uncategorized Expenses", "2026-02-30", ImportOutcome::Refused, {}, {"vendor"}},
    };
    for (const Case& c : cases) {
        const std::string number = "P-" + std::to_string(&c - cases);
        SCOPED_TRACE(number);
        const std::string sender = "Newcomer " + number;
        writeFile(home / "invoice.dvx",
                  "<?xml version=\"1.0\" ?><InvoiceRet><TxnDate>" + std::string(c.date) +
                      "</TxnDate><RefNumber>" + number +
                      "</RefNumber><TermsRef><FullName>Their Terms</FullName></TermsRef>"
                      "<InvoiceLineRet><ItemRef><FullName>Design</FullName></ItemRef><Quantity>2"
                      "</Quantity><Rate>40.00</Rate><Amount>80.00</Amount></InvoiceLineRet>"
                      "<InvoiceLineGroupRet><ItemGroupRef><FullName>Spring Package</FullName>"
                      "</ItemGroupRef><Quantity>1</Quantity></InvoiceLineGroupRet><CompanyRet>"
                      "<CompanyName>" +
                      sender + "</CompanyName></CompanyRet></InvoiceRet>");
        app->settings()
            .setEntries({{"Import", "Item", "Uncategorized Expenses"},
                         {"Import", "ItemGroup", "Uncategorized Expense Group"},
                         {"Import", "Term", "Net 30"},
                         {"Import", "Account", "[Expense] Uncategorized Expenses"},
                         {"Import", c.key, c.value}})
            .ok();
        window().reloadImportSettings();
        window().openExchangeFile((home / "invoice.dvx").string());
        const std::size_t vendors = count("Vendor");
        ui.messages.clear();
        window().importSelectedDocument();
        EXPECT_EQ(window().lastOutcome(), c.outcome) << testing::PrintToString(ui.texts());
        std::vector<std::string> missing, added;
        for (const MissingRecord& m : window().lastReport().missing) {
            missing.push_back(m.settingKey);
        }
        for (const AddedRecord& a : window().lastReport().added) {
            added.push_back(a.noun);
        }
        EXPECT_EQ(missing, c.missing);
        EXPECT_EQ(added, c.added);
        EXPECT_EQ(count("Vendor"), vendors + (added.empty() ? 0 : 1));
        if (!c.missing.empty()) {
            EXPECT_EQ(window().statusText(), kErrorStatus);
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_NE(ui.messages[0].text.find(std::string("'") + c.value + "'"), std::string::npos)
                << ui.messages[0].text;
        }
        const xml::Document bills =
            query("<BillQueryRq><RefNumber>" + number +
                  "</RefNumber><IncludeLineItems>true</IncludeLineItems></BillQueryRq>");
        const xml::Node bill = bills.selectOne("//BillRet");
        ASSERT_EQ(bool(bill), c.outcome == ImportOutcome::Added);
        if (bill) {
            EXPECT_EQ(bill.valueOf("ItemGroupLineRet/ItemGroupRef/FullName"), "Spring Package");
            EXPECT_EQ(window().lastReport().added.back().party, sender);
            EXPECT_EQ(window().lastReport().added.back().refNumber, number);
        }
    }
}

// Cancel at either creation question sends nothing.
TEST_F(ImportWindowTest, CancellingACreationQuestionSendsNothing) {
    writeFile(home / "invoice.dvx",
              "<?xml version=\"1.0\" ?><InvoiceRet><TxnDate>2026-11-02</TxnDate><RefNumber>77"
              "</RefNumber><InvoiceLineRet><Desc>Work</Desc><Amount>10.00</Amount>"
              "</InvoiceLineRet><CompanyRet><CompanyName>Nowhere Ltd</CompanyName></CompanyRet>"
              "</InvoiceRet>");
    window().open();
    window().openExchangeFile((home / "invoice.dvx").string());
    const std::size_t vendors = count("Vendor");
    const std::size_t bills = count("Bill");
    const std::size_t receipts = count("SalesReceipt");
    ui.answers = {ui::Answer::Cancel};
    window().importSelectedDocument();
    EXPECT_EQ(window().lastOutcome(), ImportOutcome::NotSent);

    ui.clipboard = "Company : Nowhere Ltd\r\nAmount : 5.00\r\n";
    ui.answers = {ui::Answer::Ok};
    window().captureAuthorizeNetReceipt();
    EXPECT_EQ(window().nameText(), "Nowhere Ltd");
    const std::size_t customers = count("Customer");
    ui.answers = {ui::Answer::Cancel};
    window().importSelectedDocument();
    EXPECT_EQ(window().lastOutcome(), ImportOutcome::NotSent);

    EXPECT_EQ(count("Vendor"), vendors);
    EXPECT_EQ(count("Bill"), bills);
    EXPECT_EQ(count("Customer"), customers);
    EXPECT_EQ(count("SalesReceipt"), receipts);
}

// A receipt pasted from the clipboard becomes a sales receipt, is recorded in the batch log
// as a batch record is, and a second paste of it asks first.
TEST_F(ImportWindowTest, APastedReceiptIsBookedOnceAndLogged) {
    window().open();
    ui.clipboard = readFile(test::dataDir() / "import" / "receipts" / "standard-crlf.txt");
    ui.answers = {ui::Answer::Ok};
    window().captureAuthorizeNetReceipt();
    EXPECT_EQ(window().caption(), "Dorvane - Import Authorize.Net receipt as SalesReceipt");
    EXPECT_TRUE(window().control(kNameText).visible);
    EXPECT_EQ(window().counterparts().columnHeader, "Customer");
    EXPECT_NE(readFile(program / "tmpauthorize.xml").find("<TransactionID>2147483790<"),
              std::string::npos);
    const std::size_t receipts = count("SalesReceipt");

    // Tries that QuickBooks does not take are not logged, so that the next one books it.
    const std::string customer = window().nameText();
    for (const char* faults : {"ProcessRequest:1:0x80040400"}) {
        SCOPED_TRACE(faults);
        const test::ScopedEnvironment fail("DORVANE_SANDBOX_FAULTS", faults);
        window().setNameText({});  // without a customer: the receipt is the one request
        window().importSelectedDocument();
        EXPECT_EQ(window().statusText(), kErrorStatus);
        EXPECT_FALSE(std::filesystem::exists(program / kBatchLogFile));
    }
    window().setNameText(customer);
    ui.messages.clear();
    window().importSelectedDocument();  // creates the customer (OK), then the receipt
    ASSERT_EQ(window().statusText(), "Salesreceipt added")
        << (ui.texts().empty() ? "" : ui.texts().back());
    EXPECT_NE(window().browserPage().find("Please review this receipt in Quickbooks"),
              std::string::npos);
    EXPECT_EQ(count("SalesReceipt"), receipts + 1);
    const std::string log = readFile(program / kBatchLogFile);
    EXPECT_EQ(log.rfind("<AuthNetBatchImport><TxnID>2147483790</TxnID><RecordDate>", 0), 0u);
    EXPECT_TRUE(log.ends_with("</RecordDate></AuthNetBatchImport>\r\n")) << log;

    // Again: the log knows it; No keeps it out, and the customer is found this time.
    ui.messages.clear();
    ui.answers = {ui::Answer::Ok, ui::Answer::No};
    window().captureAuthorizeNetReceipt();
    EXPECT_TRUE(window().counterparts().selected);
    window().importSelectedDocument();
    EXPECT_EQ(window().lastOutcome(), ImportOutcome::NotSent);
    EXPECT_EQ(count("SalesReceipt"), receipts + 1);
    ASSERT_EQ(ui.messages.size(), 2u);
    EXPECT_EQ(ui.messages[1].text.rfind(kReceiptAlreadyImported, 0), 0u);
    EXPECT_EQ(readFile(program / kBatchLogFile), log);

    // Customers ignored: booked without one, though the customer is in the list.
    app->settings().setEntries({{"Import", "IgnoreAuthNetCust", "1"}}).ok();
    window().reloadImportSettings();
    ui.answers = {ui::Answer::Ok, ui::Answer::Yes};
    window().captureAuthorizeNetReceipt();
    EXPECT_FALSE(window().counterparts().enabled);
    EXPECT_FALSE(window().control(kNameText).visible);
    window().importSelectedDocument();
    ASSERT_EQ(window().lastOutcome(), ImportOutcome::Added);
    EXPECT_EQ(count("SalesReceipt"), receipts + 2);
    const xml::Document booked =
        query("<SalesReceiptQueryRq><RefNumber>2041</RefNumber></SalesReceiptQueryRq>");
    std::vector<std::string> customers;
    for (const xml::Node& r : booked.selectAll("//SalesReceiptRet")) {
        customers.push_back(r.valueOf("CustomerRef/FullName"));
    }
    EXPECT_EQ(customers, (std::vector<std::string>{"Caf\xC3\xA9 Lumi\xC3\xA8re", ""}));
}

// What arrives from outside and cannot be read changes nothing but the document.
TEST_F(ImportWindowTest, UnreadableAndUnknownFilesChangeNothing) {
    window().open();
    writeFile(home / "estimate.dvx",
              "<?xml version=\"1.0\" ?><EstimateRet><RefNumber>9</RefNumber><CompanyRet>"
              "<CompanyName>Acme</CompanyName></CompanyRet></EstimateRet>");
    window().openExchangeFile((home / "estimate.dvx").string());
    const std::string caption = window().caption();
    const std::string page = window().browserPage();
    const std::size_t vendors = window().counterparts().items.size();

    writeFile(home / "laughs.dvx",
              "<?xml version=\"1.0\"?><!DOCTYPE l [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b "
              "\"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
              "<InvoiceRet>&c;</InvoiceRet>");
    writeFile(home / "truncated.dvx", "<?xml version=\"1.0\" ?><InvoiceRet><CompanyRet>");
    writeFile(home / "binary.dvx", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
    for (const char* name : {"laughs.dvx", "truncated.dvx", "binary.dvx", "missing.dvx"}) {
        SCOPED_TRACE(name);
        ui.messages.clear();
        window().openExchangeFile((home / name).string());
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text.rfind("Cannot process file ", 0), 0u);
        EXPECT_GT(ui.messages[0].text.size(), 20u);
        EXPECT_EQ(window().caption(), caption);
        EXPECT_EQ(window().documentKind(), "EstimateRet");
        EXPECT_EQ(window().browserPage(), page);
        EXPECT_EQ(window().counterparts().items.size(), vendors);
        EXPECT_TRUE(window().exchangeDocument().empty());
    }

    // A root of another name, and a root recognised in lower case but not converted: the
    // Import button is there and sends nothing.
    const std::size_t bills = count("Bill");
    for (const char* root : {"CreditMemoRet", "invoiceret"}) {
        SCOPED_TRACE(root);
        writeFile(home / "other.dvx", std::string("<?xml version=\"1.0\" ?><") + root +
                                          "><CompanyRet><CompanyName>Acme</CompanyName>"
                                          "</CompanyRet></" +
                                          root + ">");
        window().openExchangeFile((home / "other.dvx").string());
        EXPECT_TRUE(window().control(kAddItemBtn).visible);
        window().itemClicked(0);
        window().importSelectedDocument();
        EXPECT_NE(window().lastOutcome(), ImportOutcome::Added);
        EXPECT_EQ(count("Bill"), bills);
    }
}

}  // namespace
}  // namespace dorvane::imports
