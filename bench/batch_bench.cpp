// SPDX-License-Identifier: GPL-3.0-or-later
// Authorize.Net batch import figures: 20,000 rows of an "Expanded Fields" download booked into
// the sandbox end to end (convert, transform, rewrite, request, log), by the bulk import and by
// the whole-file batch import; the same against a log of 200,000 entries; the duplicate check
// alone; and how far memory grows on each path.
//
//   batch_bench [ROWS] [LOG_ENTRIES]      (20000 and 200000 by default)
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

#include "batch/batchimport.h"
#include "common/files.h"
#include "import/assignment.h"
#include "import/importlog.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/benchsupport.h"

namespace {

using namespace dorvane;
using bench::Clock;

double peakRssMb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

const char* kHeader =
    "Transaction ID,Transaction Status,Settlement Amount,Settlement Currency,Settlement "
    "Date/Time,Authorization Amount,Authorization Currency,Submit Date/Time,Authorization "
    "Code,Reference Transaction ID,Transaction Type,Address Verification Status,Card Code "
    "Status,Fraudscreen Applied,Recurring Billing Transaction,Partial Capture Status,Card "
    "Number,Expiration Date,Bank Account Number,Routing Number,Total Amount,Currency,Invoice "
    "Number,Invoice Description,Customer First Name,Customer Last Name,Company,Address,City,"
    "State,ZIP,Country,Phone,Fax,Email,Customer ID,Ship-To First Name,Ship-To Last "
    "Name,Ship-To Company,Ship-To Address,Ship-To City,Ship-To State,Ship-To ZIP,Ship-To "
    "Country,L2 - Tax,L2 - Freight,L2 - Duty,L2 - Tax Exempt,L2 - Purchase Order Number";

// A download of `rows` transactions, one in twenty declined, Latin-1 names, CR LF.
std::string download(int rows, long long firstId) {
    static const char* names[] = {"M\xFCller", "Ortega", "Nguyen", "O'Neil", "Lef\xE8vre"};
    std::string text = std::string(kHeader) + "\r\n";
    for (int i = 0; i < rows; ++i) {
        const std::string id = std::to_string(firstId + i);
        const std::string last = names[i % 5];
        const bool declined = i % 20 == 7;
        const std::string amount = std::to_string(10 + i % 500) + "." + std::to_string(10 + i % 90);
        text += id + (declined ? ",Declined," : ",Settled Successfully,") + amount +
                ",USD,17-Nov-2026 18:00:01 PST," + amount +
                ",USD,17-Nov-2026 09:" + std::to_string(10 + i % 50) + ":00 PST," +
                (declined ? "" : "A" + id.substr(5)) +
                ",,Authorization w/ Auto Capture,Y,M,N,N,,XXXX1111,XXXX,,," + amount + ",USD,INV-" +
                std::to_string(i) + ",Garden work,Pat," + last + "," + last +
                " Landscaping,12 Elm St,Portland,OR,97201,US,503-555-0100,,pat@example.com,C-" +
                std::to_string(i % 300) + ",Pat," + last + ",,12 Elm St,Portland,OR,97201,US," +
                "1.00,0.00,0.00,N,\r\n";
    }
    return text;
}

struct Figures {
    double seconds = 0;
    double processorSeconds = 0;  // inside the sandbox's six operations
    std::size_t added = 0;
    std::size_t records = 0;
    double rssGrowthMb = 0;
};

// One import of a fresh download into a fresh demo company.
Figures importOnce(const bench::ScratchFolder& scratch, const std::string& name, int rows,
                   long long firstId, bool bulk, long logEntries) {
    const auto program = scratch / (name + "-program");
    std::filesystem::create_directories(program);
    bench::copyProgramFiles(program);
    const auto company = scratch / (name + ".dvq");
    qbsandbox::DemoOptions options;
    options.invoices = 20;
    qbsandbox::createDemoCompany(company, options);
    (void)qbsandbox::writeState(scratch / "sandbox", {true, company});
    if (logEntries > 0) {
        std::string log;
        for (long i = 0; i < logEntries; ++i) {
            log += imports::importLogRecord(std::to_string(900000000000LL + i));
        }
        (void)files::writeAtomically(program / imports::kBatchLogFile, log);
    }
    const auto file = scratch / (name + ".csv");
    (void)files::writeAtomically(file, download(rows, firstId));

    testkit::QuietUi ui;
    bench::ProcessorTimes times;
    shell::Application app(ui, shell::StartOptions{program.string()},
                           bench::timedFactory(qbsandbox::processorFactory(), times));
    (void)app.settings().set("Import", "IgnoreAuthNetCust", "1");
    batch::BatchImport& importer = app.batchImport();
    const double rssBefore = peakRssMb();
    const auto start = Clock::now();
    if (bulk) {
        importer.processAuthNetBulk(file.string());
    } else {
        importer.processAuthNetBatch(file.string());
    }
    Figures f;
    f.seconds = bench::secondsSince(start);
    f.processorSeconds = times.total;
    const auto& run = importer.lastRun();
    f.added = run.added;
    f.records = run.added + run.notApproved + run.alreadyImported + run.refused;
    f.rssGrowthMb = peakRssMb() - rssBefore;
    if (run.refused || run.stopped) {
        std::fprintf(stderr, "%s: %zu refused, stopped %d (%d messages)\n", name.c_str(),
                     run.refused, run.stopped, ui.messages());
    }
    return f;
}

void print(const char* what, const Figures& f) {
    std::printf("%-44s %6zu records (%zu added) in %6.2f s: %7.0f records/s, peak RSS +%.1f MB\n",
                what, f.records, f.added, f.seconds, static_cast<double>(f.records) / f.seconds,
                f.rssGrowthMb);
    std::printf("  of which %.2f s in the sandbox QuickBooks, %.2f s in the import and gateway\n",
                f.processorSeconds, f.seconds - f.processorSeconds);
}

}  // namespace

int main(int argc, char** argv) {
    const int rows = argc > 1 ? std::atoi(argv[1]) : 20000;
    const long logEntries = argc > 2 ? std::atol(argv[2]) : 200000;
    bench::ScratchFolder scratch("dorvane-batch-bench");
    bench::setEnvironment("DORVANE_SANDBOX_DIR", (scratch / "sandbox").string());
    bench::setEnvironment("XDG_CONFIG_HOME", (scratch / "config").string());

    // Warm-up: style sheets compiled once, caches filled.
    (void)importOnce(scratch, "warm-up", 200, 100000000000LL, true, 0);

    const Figures bulk = importOnce(scratch, "bulk", rows, 200000000000LL, true, 0);
    print("bulk import, empty log", bulk);
    const Figures bulkLog = importOnce(scratch, "bulk-log", rows, 300000000000LL, true, logEntries);
    char label[96];
    std::snprintf(label, sizeof label, "bulk import, log of %ld entries", logEntries);
    print(label, bulkLog);
    std::printf("  the large log costs %+.1f %%\n", (bulkLog.seconds / bulk.seconds - 1) * 100);
    const Figures whole = importOnce(scratch, "batch", rows, 400000000000LL, false, 0);
    print("batch import (whole file), empty log", whole);

    // Conversion, style sheet and rewriting alone, without QuickBooks: the import's own share.
    {
        const auto file = scratch / "convert-only.csv";
        (void)files::writeAtomically(file, download(rows, 500000000000LL));
        const auto sheet =
            xml::Stylesheet::load(scratch / "batch-program" / batch::kReceiptWithoutCustomerSheet);
        if (!sheet) {
            std::fprintf(stderr, "no style sheet: %s\n", sheet.error().description.c_str());
            return 1;
        }
        const imports::ImportSettings settings;
        const auto start = Clock::now();
        std::string delimiter = ",";
        const xml::Document doc =
            batch::csvFileToXml(file, batch::kRecordTag, batch::kRootTag, delimiter);
        const double converted = bench::secondsSince(start);
        std::size_t bytes = 0;
        for (const xml::Node& record : doc.root().selectAll(batch::kRecordTag)) {
            auto request = sheet->transformNode(record);
            if (request) {
                imports::applyItemAssignment(*request, settings);
                bytes += request->size();
            }
        }
        const double seconds = bench::secondsSince(start);
        std::printf(
            "conversion (%.2f s), style sheet and rewriting of %d rows without QuickBooks: "
            "%.2f s, %.0f records/s (%zu bytes of requests)\n",
            converted, rows, seconds, rows / seconds, bytes);
    }

    // The duplicate check alone: every row looked up against the log.
    for (long entries : {0L, logEntries}) {
        std::string log;
        for (long i = 0; i < entries; ++i) {
            log += imports::importLogRecord(std::to_string(900000000000LL + i));
        }
        const auto start = Clock::now();
        imports::ImportLogIndex index;
        index.add(log);
        std::size_t hits = 0;
        for (int i = 0; i < rows; ++i) {
            hits += index.holds(std::to_string(200000000000LL + i)) ? 1 : 0;
        }
        const double seconds = bench::secondsSince(start);
        std::printf(
            "duplicate check of %d IDs against %7ld entries: %.1f ms (index built "
            "included), %zu found\n",
            rows, entries, seconds * 1000, hits);
    }
    return 0;
}
