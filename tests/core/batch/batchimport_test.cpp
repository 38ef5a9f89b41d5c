// SPDX-License-Identifier: GPL-3.0-or-later
// The Authorize.Net batch and bulk imports against the embedded QuickBooks: what is booked,
// every report line, the log, duplicates, customers on and off, refusals, chunks, quoted
// fields and a run that died between QuickBooks' answer and the log.
#include "batch/batchimport.h"

#include <gtest/gtest.h>
#include <regex>

#include "import/importlog.h"
#include "support/demoapp.h"

namespace dorvane::batch {
namespace {

using test::readFile;
using test::writeFile;

const std::string kExpanded = (test::dataDir() / "batch" / "expanded-latin1.csv").string();
const std::string kStandard = (test::dataDir() / "batch" / "standard-utf8.txt").string();
const std::string kHeader =
    "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer Last "
    "Name\r\n";
const std::string kCutLine =
    std::string("<dt>Transaction 60123456784 not imported: ") + kCutQuoteReason + ".</dt>";

class BatchImportTest : public test::DemoAppTest {
protected:
    BatchImportTest() : DemoAppTest("a.dvq") {
        startApp();
        batch().onRecord([this](const RecordOutcome& o) { outcomes.push_back(o); });
    }

    BatchImport& batch() { return app->batchImport(); }
    imports::ImportWindow& window() { return app->importWindow(); }
    std::string body() { return window().browserBody().value_or("(no body)"); }
    std::string log() { return readFile(program / imports::kBatchLogFile); }
    void set(const char* key, const char* value) {
        ASSERT_TRUE(app->settings().set("Import", key, value));
    }

    // The receipts whose memo names the transaction.
    std::vector<xml::Node> receipts(const std::string& txnId, xml::Document& doc) {
        doc = query(
            "<SalesReceiptQueryRq><IncludeLineItems>true</IncludeLineItems>"
            "</SalesReceiptQueryRq>");
        return doc.selectAll("//SalesReceiptRet[starts-with(Memo, $m)]",
                             {{"m", "Authorize.Net transaction " + txnId + ","}});
    }
    std::size_t receiptCount(const std::string& txnId) {
        xml::Document doc;
        return receipts(txnId, doc).size();
    }

    std::vector<RecordOutcome> outcomes;
};

// The window's batch import of the comma-separated, Latin-1 "Expanded Fields" download,
// customers created: once, again, and once more with quoted fields.
TEST_F(BatchImportTest, BatchImportBooksOnceAndReportsEveryRecord) {
    ui.files.push_back(kExpanded);
    window().runMenuEntry(imports::kImpAuthNetBatch);
    EXPECT_EQ(window().browserFile(), window().folder().filePath("startBatch.htm"));
    EXPECT_EQ(body(), std::string(kResultsHead) +
                          "<dt>M\xC3\xBCller Gartenbau GmbH added.</dt>"
                          "<dt>Sales receipt for M\xC3\xBCller Gartenbau GmbH 185.40 added.</dt>"
                          "<dt>Transaction for Brightside Cafe 42.00 not approved.</dt>"
                          "<dt>Jos\xC3\xA9 Ortega added.</dt>"
                          "<dt>Sales receipt for Jos\xC3\xA9 Ortega 96.00 added.</dt>" +
                          kCutLine +
                          "<dt>Transaction for M\xC3\xBCller Gartenbau GmbH 185.40 ignored. "
                          "Already imported.</dt>" +
                          kReviewTail);
    EXPECT_EQ(window().statusText(), "Salesreceipt added");
    EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
    const std::regex record(
        "<AuthNetBatchImport><TxnID>([0-9]+)</TxnID><RecordDate>[^<]+"
        "</RecordDate></AuthNetBatchImport>\r\n");
    std::string ids;
    const std::string logged = log();
    for (std::sregex_iterator it(logged.begin(), logged.end(), record), end; it != end; ++it) {
        ids += (*it)[1].str() + " ";
    }
    EXPECT_EQ(ids, "60123456781 60123456783 ");
    EXPECT_EQ(std::regex_replace(logged, record, ""), "");
    EXPECT_FALSE(std::filesystem::exists(program / kJournalFile));

    // What QuickBooks got: the receipt with its date, reference, customer, addresses, memo and
    // amount; the customer with name, company, address, phone and e-mail.
    xml::Document doc;
    const auto booked = receipts("60123456781", doc);
    ASSERT_EQ(booked.size(), 1u);
    const xml::Node& r = booked[0];
    EXPECT_EQ(r.valueOf("TxnDate"), "2026-11-17");
    EXPECT_EQ(r.valueOf("RefNumber"), "INV-1001");
    EXPECT_EQ(r.valueOf("CustomerRef/FullName"), "M\xC3\xBCller Gartenbau GmbH");
    EXPECT_EQ(r.valueOf("BillAddress/Addr2"), "J\xC3\xBCrgen M\xC3\xBCller");
    EXPECT_EQ(r.valueOf("BillAddress/Addr3"),
              "12 Lindenstra\xC3\x9F"
              "e");
    EXPECT_EQ(r.valueOf("ShipAddress/Addr3"), "88 Elm Court");
    EXPECT_EQ(r.valueOf("Memo"),
              "Authorize.Net transaction 60123456781, auth A1B2C3, P.O. PO-77; amount includes tax "
              "14.40");
    EXPECT_EQ(r.valueOf("SalesReceiptLineRet/Desc"), "Spring clean-up of the front beds");
    EXPECT_EQ(r.valueOf("SalesReceiptLineRet/Amount"), "185.40");
    auto customers =
        query("<CustomerQueryRq><FullName>Jos\xC3\xA9 Ortega</FullName></CustomerQueryRq>");
    EXPECT_EQ(customers.valueOf("//CustomerRet/Email"), "jose.ortega@example.com");
    EXPECT_EQ(customers.valueOf("//CustomerRet/Phone"), "541-555-0123");
    EXPECT_EQ(customers.valueOf("//CustomerRet/BillAddress/City"), "Eugene");
    EXPECT_EQ(receiptCount("60123456783"), 1u);

    // The same file again adds nothing.
    outcomes.clear();
    batch().processAuthNetBatch(kExpanded);
    EXPECT_EQ(body(), std::string(kResultsHead) +
                          "<dt>Transaction for M\xC3\xBCller Gartenbau GmbH 185.40 ignored. "
                          "Already imported.</dt>"
                          "<dt>Transaction for Brightside Cafe 42.00 not approved.</dt>"
                          "<dt>Transaction for  96.00 ignored. Already imported.</dt>" +
                          kCutLine +
                          "<dt>Transaction for M\xC3\xBCller Gartenbau GmbH 185.40 ignored. "
                          "Already imported.</dt>" +
                          kReviewTail);
    EXPECT_EQ(logged, log());
    EXPECT_EQ(receiptCount("60123456781"), 1u);
    ASSERT_EQ(outcomes.size(), 5u);
    EXPECT_EQ(outcomes[3].kind, RecordOutcome::Kind::NotImported);
    EXPECT_EQ(outcomes[3].transactionId, "60123456784");

    // With quoted fields (ticked in Dialog3) the cut record imports whole, its amount a valid
    // one.
    ui.dialogHandler = [](ui::DialogModel& model) {
        auto& preferences = dynamic_cast<imports::ImportPreferencesModel&>(model);
        EXPECT_FALSE(preferences.QuotedFields);
        preferences.QuotedFields = true;
        return true;
    };
    window().runMenuEntry(imports::kSetPref);
    EXPECT_EQ(app->settings().get("Import", "QuotedFields"), "1");
    batch().processAuthNetBatch(kExpanded);
    EXPECT_NE(body().find("<dt>Sales receipt for O'Brien Mechanical, Inc. 1,234.50 added.</dt>"),
              std::string::npos)
        << body();
    EXPECT_EQ(batch().lastRun().added, 1u);
    EXPECT_EQ(receiptCount("60123456784"), 1u);
    receipts("60123456784", doc);
    EXPECT_EQ(doc.valueOf("//SalesReceiptRet[starts-with(Memo, 'Authorize.Net transaction "
                          "60123456784,')]/SalesReceiptLineRet/Amount"),
              "1234.50");
}

// The bulk import of the tab-delimited, UTF-8 "Standard" download without customers: only
// exceptions on the page, no customer requests.
TEST_F(BatchImportTest, BulkImportWithoutCustomersReportsOnlyExceptions) {
    set("IgnoreAuthNetCust", "1");
    const auto customersBefore = query("<CustomerQueryRq/>").selectAll("//CustomerRet").size();
    ui.answers.push_back(ui::Answer::Ok);
    ui.files.push_back(kStandard);
    window().runMenuEntry(imports::kImpAuthNetBulk);
    ASSERT_FALSE(ui.messages.empty());
    EXPECT_EQ(ui.messages[0].text, kBulkWarning);
    EXPECT_EQ(body(), std::string(kExceptionsHead) +
                          "<dt>Transaction for Chen Dental 310.00 not approved.</dt>" +
                          kReviewTail);
    EXPECT_EQ(window().statusText(), "Done");
    EXPECT_EQ(query("<CustomerQueryRq/>").selectAll("//CustomerRet").size(), customersBefore);
    xml::Document doc;
    const auto booked = receipts("70234567891", doc);
    ASSERT_EQ(booked.size(), 1u);
    EXPECT_FALSE(booked[0].selectOne("CustomerRef"));
    EXPECT_EQ(booked[0].valueOf("TxnDate"), "2026-11-16");
    EXPECT_EQ(booked[0].valueOf("BillAddress/Addr1"), "Fjord & Pine Landscapes");
    EXPECT_EQ(booked[0].valueOf("BillAddress/Addr2"),
              "S\xC3\xB8ren \xC3\x98"
              "deg\xC3\xA5rd");
    EXPECT_EQ(booked[0].valueOf("SalesReceiptLineRet/Amount"), "1250.00");
    EXPECT_EQ(receiptCount("70234567893"), 1u);

    // Cancelled at the warning: nothing happens.
    ui.answers.push_back(ui::Answer::Cancel);
    window().runMenuEntry(imports::kImpAuthNetBulk);
    EXPECT_TRUE(ui.files.empty());
}

// A name from the download is text on the results page, never markup.
TEST_F(BatchImportTest, NamesFromTheDownloadAreEscapedOnThePage) {
    set("IgnoreAuthNetCust", "1");
    const std::string file = (home / "hostile.csv").string();
    writeFile(file,
              "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer "
              "Last Name\r\n"
              "556,OK1,12.00,<img src=x onerror=alert(1)>\r\n");
    batch().processAuthNetBatch(file);
    EXPECT_NE(body().find("&lt;img src=x onerror=alert(1)&gt;"), std::string::npos) << body();
    EXPECT_EQ(body().find("<img"), std::string::npos) << body();
}

// A refused receipt is not logged, so a later run tries it again; in the bulk import the
// exception is QuickBooks' own message.
TEST_F(BatchImportTest, RefusedReceiptsAreNotLoggedAndTriedAgain) {
    set("IgnoreAuthNetCust", "1");
    set("Item", "No Such Item");
    const std::string file = (home / "one.csv").string();
    writeFile(file,
              "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer "
              "Last Name\r\n"
              "555,OK1,12.00,Acme\r\n");
    batch().processAuthNetBatch(file);
    EXPECT_EQ(body(), std::string(kResultsHead) +
                          "<dt>Could not add sales receipt for Acme 12.00 added.</dt>" +
                          kReviewTail);
    EXPECT_EQ(window().statusText(), "An error occurred");
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "Error from QuickBooks");
    EXPECT_EQ(log(), "");

    ui.messages.clear();
    std::vector<std::string> exceptions;
    batch().processAuthNetBatchFromString(
        {"555,OK1,12.00,Acme"}, {"TransactionID", "AuthorizationCode", "TotalAmount", "Company"},
        ",", exceptions);
    ASSERT_EQ(exceptions.size(), 1u);
    EXPECT_NE(exceptions[0].find("No Such Item"), std::string::npos) << exceptions[0];
    EXPECT_EQ(window().statusText(), "An error occurred " + exceptions[0]);
    EXPECT_TRUE(ui.messages.empty());

    set("Item", "Uncategorized Expenses");
    exceptions.clear();
    batch().processAuthNetBatchFromString(
        {"555,OK1,12.00,Acme"}, {"TransactionID", "AuthorizationCode", "TotalAmount", "Company"},
        ",", exceptions);
    EXPECT_TRUE(exceptions.empty());
    EXPECT_EQ(window().statusText(), "Salesreceipt added (555)");
    EXPECT_TRUE(imports::importLogHolds(log(), "555"));
}

// The duplicate test is the log's plain prefix search: 123 counts as imported when 1234 is.
TEST_F(BatchImportTest, AnIdThatBeginsALoggedOneCountsAsImported) {
    writeFile(program / imports::kBatchLogFile, imports::importLogRecord("1234"));
    const std::string file = (home / "prefix.csv").string();
    writeFile(file,
              "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer "
              "Last Name\r\n"
              "123,OK1,5.00,Acme\r\n");
    batch().processAuthNetBatch(file);
    EXPECT_EQ(body(), std::string(kResultsHead) +
                          "<dt>Transaction for Acme 5.00 ignored. Already imported.</dt>" +
                          kReviewTail);
}

// The bulk import hands on 51 lines at a time, and the rest (maybe none) at the end.
TEST_F(BatchImportTest, BulkImportReadsChunksOf51Lines) {
    std::vector<std::size_t> chunks;
    batch().onChunk([&](std::size_t lines) { chunks.push_back(lines); });
    for (const auto& [lines, expected] : {std::pair{102, std::vector<std::size_t>{51, 51, 0}},
                                          std::pair{51, std::vector<std::size_t>{51, 0}},
                                          std::pair{53, std::vector<std::size_t>{51, 2}}}) {
        std::string text =
            "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer "
            "Last Name\r\n";
        for (int i = 0; i < lines; ++i) {
            text += std::to_string(9000 + i) + ",,1.00,Declined Co\r\n";
        }
        const std::string file = (home / "declined.csv").string();
        writeFile(file, text);
        chunks.clear();
        outcomes.clear();
        batch().processAuthNetBulk(file);
        EXPECT_EQ(chunks, expected) << lines;
        EXPECT_EQ(outcomes.size(), static_cast<std::size_t>(lines));
    }
}

// QuickBooks books a receipt but its answer never arrives, and asking fails too: the run
// stops with the journal naming the receipt. The next run finds it in QuickBooks, logs it and
// books nothing twice.
TEST_F(BatchImportTest, AReceiptWhoseAnswerWasLostIsNeverBookedTwice) {
    set("IgnoreAuthNetCust", "1");
    ASSERT_TRUE(qbsandbox::writeFaults(home / "sandbox", {{"EndSession", 2, 0x80040402, 0}}));
    batch().processAuthNetBatch(kExpanded);
    EXPECT_TRUE(batch().lastRun().unreachable);
    EXPECT_EQ(receiptCount("60123456781"), 1u);
    EXPECT_EQ(log(), "");
    EXPECT_TRUE(std::filesystem::exists(program / kJournalFile));

    // Started again: QuickBooks has it, so it is logged and skipped; the rest goes on.
    outcomes.clear();
    batch().processAuthNetBatch(kExpanded);
    EXPECT_FALSE(batch().lastRun().unreachable);
    EXPECT_EQ(receiptCount("60123456781"), 1u);
    EXPECT_EQ(receiptCount("60123456783"), 1u);
    ASSERT_EQ(outcomes.size(), 5u);
    EXPECT_EQ(outcomes[0].kind, RecordOutcome::Kind::AlreadyImported);
    EXPECT_EQ(outcomes[2].kind, RecordOutcome::Kind::Added);
    EXPECT_TRUE(imports::importLogHolds(log(), "60123456781"));
    EXPECT_FALSE(std::filesystem::exists(program / kJournalFile));

    // An answer lost once only: asked at once, and logged as added.
    ASSERT_TRUE(qbsandbox::writeFaults(home / "sandbox", {{"EndSession", 1, 0x80040402, 0}}));
    const std::string file = (home / "one.csv").string();
    writeFile(file,
              "Transaction ID,Authorization Code,Total Amount,Company,Customer First Name,Customer "
              "Last Name\r\n"
              "777,OK7,7.00,Acme\r\n");
    outcomes.clear();
    batch().processAuthNetBatch(file);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].kind, RecordOutcome::Kind::Added);
    EXPECT_EQ(receiptCount("777"), 1u);
    EXPECT_TRUE(imports::importLogHolds(log(), "777"));
}

// The journal is read from its last note: when the answer of a later receipt of a run is lost,
// that receipt is the one asked about, never booked twice.
TEST_F(BatchImportTest, TheLastReceiptNotedIsTheOneSettled) {
    set("IgnoreAuthNetCust", "1");
    const std::string file = (home / "three.csv").string();
    writeFile(file, kHeader + "801,OK1,8.01,Acme\r\n802,OK2,8.02,Acme\r\n803,OK3,8.03,Acme\r\n");
    batch().onRecord([this](const RecordOutcome& o) {
        if (o.transactionId == "801") {  // the next receipt is booked, its answer lost
            ASSERT_TRUE(
                qbsandbox::writeFaults(home / "sandbox", {{"EndSession", 2, 0x80040402, 0}}));
        }
    });
    batch().processAuthNetBatch(file);
    EXPECT_TRUE(batch().lastRun().unreachable);
    batch().onRecord({});
    batch().processAuthNetBatch(file);
    EXPECT_EQ(receiptCount("801"), 1u);
    EXPECT_EQ(receiptCount("802"), 1u);
    EXPECT_EQ(receiptCount("803"), 1u);
}

// What the import cannot keep apart is not booked: a download without a column the import
// reads is refused whole, a record without its ID alone; an empty ID logged by an older version
// never makes a transaction look imported.
TEST_F(BatchImportTest, WhatCannotBeKeptApartIsNeverBooked) {
    set("IgnoreAuthNetCust", "1");
    struct Case {
        const char* name;
        std::string text;
        std::string logBefore;
        std::vector<std::string> booked;  // transaction IDs that get a receipt
        const char* refusal;              // in the refusal of the whole file; null: accepted
    };
    const std::string poisoned = imports::importLogRecord("");
    const Case cases[] = {
        {"renamed ID column",
         "Trans ID,Authorization Code,Total Amount,Company,Customer First Name,Customer Last "
         "Name\r\n901,OK1,9.01,Acme\r\n",
         "",
         {},
         "lacks the column \"Transaction ID\" of an Authorize.Net"},
        {"only three columns",
         "Transaction ID,Auth Code,Total Amount\r\n902,OK1,9.02\r\n",
         "",
         {},
         "\"Authorization Code\", \"Company\", \"Customer First Name\", \"Customer Last Name\" "
         "of an Authorize.Net transaction download (the header holds: TransactionID, AuthCode, "
         "TotalAmount)"},
        {"a record without its ID",
         kHeader + ",OK1,9.03,Acme\r\n  ,OK2,9.04,Acme\r\n905,OK3,9.05,Acme\r\n",
         "",
         {"905"},
         nullptr},
        {"a log poisoned by an empty ID",
         kHeader + "906,OK1,9.06,Acme\r\n",
         poisoned,
         {"906"},
         nullptr},
    };
    for (const Case& c : cases) {
        for (const bool bulk : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (bulk ? " (bulk)" : ""));
            writeFile(program / imports::kBatchLogFile, c.logBefore);
            const std::string file = (home / "case.csv").string();
            writeFile(file, c.text);
            const auto receiptsBefore =
                query("<SalesReceiptQueryRq/>").selectAll("//SalesReceiptRet").size();
            outcomes.clear();
            bulk ? batch().processAuthNetBulk(file) : batch().processAuthNetBatch(file);
            const RunSummary& run = batch().lastRun();
            if (c.refusal) {
                EXPECT_NE(run.refusedFile.find(c.refusal), std::string::npos) << run.refusedFile;
                EXPECT_NE(body().find("nothing was booked"), std::string::npos) << body();
                EXPECT_TRUE(outcomes.empty());
            } else {
                EXPECT_EQ(run.refusedFile, "");
            }
            std::vector<std::string> added;
            for (const RecordOutcome& o : outcomes) {
                if (o.kind == RecordOutcome::Kind::Added) {
                    added.push_back(o.transactionId);
                } else {
                    EXPECT_EQ(o.kind, RecordOutcome::Kind::NotImported);
                    EXPECT_EQ(o.reason, kNoTransactionIdReason);
                }
            }
            EXPECT_EQ(added, c.booked);
            EXPECT_EQ(query("<SalesReceiptQueryRq/>").selectAll("//SalesReceiptRet").size(),
                      receiptsBefore + c.booked.size());
            EXPECT_EQ(log().find("<TxnID></TxnID>", c.logBefore.size()), std::string::npos);
            EXPECT_EQ(log().find("<TxnID>  </TxnID>"), std::string::npos);
        }
    }
}

// QuickBooks lost in the middle of a run: the run says at which transaction it stopped and how
// many were not tried, and the same file again books the rest, nothing twice.
TEST_F(BatchImportTest, ARunThatLosesQuickBooksSaysWhereItStopped) {
    set("IgnoreAuthNetCust", "1");
    struct Case {
        bool bulk;
        const char* lostAfter;  // the last transaction QuickBooks answers for
        const char* report;
    };
    const Case cases[] = {
        {false, "7002",
         "The import stopped at transaction 7003: QuickBooks could not be reached. 57 "
         "transactions were not tried, that one included."},
        {true, "8005",
         "The import stopped at transaction 8006: QuickBooks could not be reached. 54 "
         "transactions were not tried, that one included."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lostAfter);
        std::string text = kHeader;
        for (int i = 0; i < 60; ++i) {
            text += std::to_string(c.bulk ? 8000 + i : 7000 + i) + ",OK,1.00,Acme\r\n";
        }
        const std::string file = (home / "sixty.csv").string();
        writeFile(file, text);
        batch().onRecord([&](const RecordOutcome& o) {
            if (o.transactionId == c.lostAfter) {
                ASSERT_TRUE(qbsandbox::writeFaults(home / "sandbox",
                                                   {{"OpenConnection", 99, 0x80040408, 0}}));
            }
        });
        c.bulk ? batch().processAuthNetBulk(file) : batch().processAuthNetBatch(file);
        EXPECT_TRUE(batch().lastRun().unreachable);
        EXPECT_EQ(stopReport(batch().lastRun()).rfind(c.report, 0), 0u)
            << stopReport(batch().lastRun());
        EXPECT_NE(body().find(c.report), std::string::npos) << body();
        EXPECT_EQ(window().statusText(), "Import stopped: QuickBooks could not be reached");

        ASSERT_TRUE(qbsandbox::writeFaults(home / "sandbox", {}));
        batch().onRecord({});
        batch().processAuthNetBatch(file);
        EXPECT_EQ(stopReport(batch().lastRun()), "");
        EXPECT_EQ(batch().lastRun().added + batch().lastRun().alreadyImported, 60u);
    }
    EXPECT_EQ(query("<SalesReceiptQueryRq/>")
                  .selectAll("//SalesReceiptRet[starts-with(Memo, 'Authorize.Net transaction 70') "
                             "or starts-with(Memo, 'Authorize.Net transaction 80')]")
                  .size(),
              120u);
}

// A download of more lines than a page can hold lists the first ones and counts the rest,
// in both runs; every record is still reported.
TEST_F(BatchImportTest, APageListsAtMostItsLimit) {
    std::string text = kHeader;
    for (std::size_t i = 0; i < kMaxPageLines + 2; ++i) {
        text += std::to_string(900000 + i) + ",,1.00,Declined Co\r\n";
    }
    const std::string file = (home / "long.csv").string();
    writeFile(file, text);
    for (const bool bulk : {false, true}) {
        SCOPED_TRACE(bulk);
        outcomes.clear();
        bulk ? batch().processAuthNetBulk(file) : batch().processAuthNetBatch(file);
        EXPECT_EQ(outcomes.size(), kMaxPageLines + 2);
        const std::string page = body();
        std::size_t listed = 0;
        for (auto at = page.find("<dt>"); at != std::string::npos; at = page.find("<dt>", at + 1)) {
            ++listed;
        }
        EXPECT_EQ(listed, kMaxPageLines);
        EXPECT_NE(page.find("<p>2 more results are not listed here"), std::string::npos);
    }
}

// Cancel stops after the transaction under way; what QuickBooks got is logged, the rest is
// left for the next run.
TEST_F(BatchImportTest, CancelStopsAfterTheRecordUnderWay) {
    set("IgnoreAuthNetCust", "1");
    std::vector<int> progress;
    batch().onProgress([&](int percent) { progress.push_back(percent); });
    batch().onRecord([this](const RecordOutcome& o) {
        outcomes.push_back(o);
        if (o.kind == RecordOutcome::Kind::Added) {
            batch().cancel();
        }
    });
    batch().processAuthNetBatch(kExpanded);
    EXPECT_TRUE(batch().lastRun().cancelled);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(window().statusText(), "Import cancelled");
    EXPECT_EQ(body(), std::string(kResultsHead) +
                          "<dt>Sales receipt for M\xC3\xBC"
                          "ller Gartenbau GmbH 185.40 added.</dt><p>The import stopped at "
                          "transaction 60123456782: cancelled. 4 transactions were not tried, "
                          "that one included. Import the same file again to go on where it "
                          "stopped; nothing is booked twice.</p>" +
                          kReviewTail);
    EXPECT_TRUE(imports::importLogHolds(log(), "60123456781"));
    EXPECT_FALSE(imports::importLogHolds(log(), "60123456783"));
    EXPECT_EQ(progress, (std::vector<int>{0, 20, -1}));
    EXPECT_FALSE(batch().running());
}

// The log's index answers as the plain search of the text does, as the log grows piece by
// piece (a record may arrive in two reads).
TEST(ImportLogIndex, AnswersAsTheTextSearch) {
    const std::string log = imports::importLogRecord("1234") + imports::importLogRecord("A-7") +
                            "<TxnID>98</TxnID>garbage<TxnID>5";
    const char* ids[] = {"",  "1",  "123",         "1234", "12345", "A-7", "A-",
                         "9", "98", "98</TxnID>g", "5",    "55",    "7",   "</TxnID>"};
    for (std::size_t split : {std::size_t{0}, std::size_t{3}, log.size() / 2, log.size() - 3}) {
        imports::ImportLogIndex index;
        index.add(log.substr(0, split));
        index.add(log.substr(split));
        for (const char* id : ids) {
            EXPECT_EQ(index.holds(id), imports::importLogHolds(log, id)) << id << " @" << split;
        }
        EXPECT_TRUE(index.holdsExactly("1234"));
        EXPECT_FALSE(index.holdsExactly("123"));
        EXPECT_TRUE(index.holdsExactly("5"));
    }
}

}  // namespace
}  // namespace dorvane::batch
