// SPDX-License-Identifier: GPL-3.0-or-later
// The company file itself: migrations from older schemas and loading captured responses.
#include "qbsandbox/companyfile.h"

#include <sqlite3.h>

#include "qbsandbox/load.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

class CompanyFileTest : public SandboxTest {};

TEST_F(CompanyFileTest, VersionOneFilesAreMigratedOnOpen) {
    // A file as the first sandbox release wrote it: one invoice with 25.00 of 100.00 open.
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(company().c_str(), &db), SQLITE_OK);
    std::string sql = qbsandbox::schemaSql(1) +
                      "INSERT INTO schema_version VALUES (1);"
                      "INSERT INTO lists(list_id, kind, ns, name, full_name, time_created, "
                      "time_modified, edit_sequence, balance)"
                      " VALUES ('80000001-1700000000', 'Customer', 'entity', 'Old Customer', 'Old "
                      "Customer', 1700000000,"
                      " 1700000000, '1700000000', 2500);"
                      "INSERT INTO txns(txn_id, type, txn_number, txn_date, ref_number, entity_id, "
                      "time_created, time_modified,"
                      " edit_sequence, total, open_amount, fields) VALUES ('1-1700000000', "
                      "'Invoice', 1, '2026-11-02', '1',"
                      " '80000001-1700000000', 1700000000, 1700000000, '1700000000', 10000, 2500,"
                      " 'CustomerRef\x1f"
                      "80000001-1700000000\x1eSubtotal\x1f"
                      "100.00\x1eSalesTaxTotal\x1f"
                      "0.00\x1e');";
    ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(db);
    sqlite3_close(db);

    {
        auto file = qbsandbox::CompanyFile::open(company());
        EXPECT_EQ(file->schemaVersion(), qbsandbox::CompanyFile::kSchemaVersion);
    }
    ASSERT_TRUE(qbsandbox::writeState(folder(), {true, company()}));
    auto doc = ask("<InvoiceQueryRq><TxnID>1-1700000000</TxnID></InvoiceQueryRq>");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/AppliedAmount"), "-75.00");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/BalanceRemaining"), "25.00");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/CustomerRef/FullName"), "Old Customer");
    // The migrated file takes new work, deletions included.
    auto del =
        ask("<TxnDelRq><TxnDelType>Invoice</TxnDelType><TxnID>1-1700000000</TxnID></TxnDelRq>");
    EXPECT_EQ(status(del), "0 Info Status OK");
}

TEST_F(CompanyFileTest, ForeignOrNewerFilesAreRefused) {
    writeFile(company(), "not a database at all, just text");
    EXPECT_THROW(qbsandbox::CompanyFile::open(company()), qbsandbox::CompanyFileError);
    std::filesystem::remove(company());
    {
        auto file = qbsandbox::CompanyFile::create(company());
        file->exec("UPDATE schema_version SET version = 99");
    }
    EXPECT_THROW(qbsandbox::CompanyFile::open(company()), qbsandbox::CompanyFileError);
    ASSERT_TRUE(qbsandbox::writeState(folder(), {true, company()}));
    auto answer = exchange(message("<CompanyQueryRq/>"));
    ASSERT_FALSE(answer);
    EXPECT_EQ(static_cast<std::uint32_t>(answer.error().code), 0x80040403u);
}

TEST_F(CompanyFileTest, CapturedResponsesLoadAndAnswerAsCaptured) {
    useEmptyCompany();
    auto captured = readFile(dataDir() / "qbsandbox" / "captured-response.xml");
    qbsandbox::LoadReport report;
    {
        auto file = qbsandbox::CompanyFile::open(company());
        auto loaded = qbsandbox::loadResponse(*file, captured);
        ASSERT_TRUE(loaded) << loaded.error().description;
        report = *loaded;
    }
    EXPECT_EQ(report.lists, 3);
    EXPECT_EQ(report.transactions, 1);
    EXPECT_EQ(report.skipped, 1);  // its "Accounts Receivable" is already in the file

    auto doc =
        ask("<CustomerQueryRq><ListID>80000020-1209525941</ListID></CustomerQueryRq>"
            "<InvoiceQueryRq><TxnID>2484-1263499231</TxnID><IncludeLineItems>true</"
            "IncludeLineItems></InvoiceQueryRq>"
            "<CompanyQueryRq/>");
    EXPECT_EQ(doc.valueOf("//CustomerRet/FullName"), "Kim's Nursery");
    EXPECT_EQ(doc.valueOf("//CustomerRet/TimeCreated"),
              qbsandbox::qbDateTime(*qbsandbox::parseDateTime("2008-04-29T23:25:41-05:00")));
    EXPECT_EQ(doc.valueOf("//CustomerRet/Email"), "kim@example.com");
    EXPECT_EQ(doc.valueOf("//CustomerRet/Balance"), "150.00");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/BalanceRemaining"), "150.00");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/InvoiceLineRet/TxnLineID"), "2486-1263499231");
    EXPECT_EQ(doc.valueOf("//InvoiceRet/InvoiceLineRet/ItemRef/FullName"), "Pruning");
    // A reference to an account this file does not hold keeps its captured name.
    EXPECT_EQ(doc.valueOf("//InvoiceRet/ARAccountRef/FullName"), "Accounts Receivable");
    EXPECT_EQ(doc.valueOf("//CompanyRet/CompanyName"), "Kim's Landscaping");

    auto again = [&] {
        auto file = qbsandbox::CompanyFile::open(company());
        return qbsandbox::loadResponse(*file, captured);
    }();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->lists + again->transactions, 0);

    auto file = qbsandbox::CompanyFile::open(company());
    for (const std::string bad : {"", "<QBXML><QBXMLMsgsRs>", "<Other/>"}) {
        EXPECT_FALSE(qbsandbox::loadResponse(*file, bad)) << bad;
    }
}

}  // namespace
}  // namespace dorvane::test
