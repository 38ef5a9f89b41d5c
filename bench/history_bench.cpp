// SPDX-License-Identifier: GPL-3.0-or-later
// History figures: a program folder whose logs hold ENTRIES events between them (sent
// documents with re-sends and test copies, reminders, receipts and batch imports, exchange
// files, each with its activity-log record), listed whole and filtered, as `dorvane history`
// and the History window do: read, joined, sorted, filtered.
//
//   history_bench [ENTRIES]      (100000 by default)
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

#include "browser/sentlog.h"
#include "history/history.h"
#include "import/importlog.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "remind/reminderlog.h"
#include "support/benchsupport.h"

namespace {

using namespace dorvane;
using bench::Clock;

constexpr double kListTarget = 1.0;  // seconds for the whole list

double peakRssMb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

std::string when(int i) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "2026-%02d-%02d %02d:%02d:%02d", 1 + i % 12, 1 + i % 28, i % 24,
                  i % 60, (i / 60) % 60);
    return buf;
}

// Writes the logs: of every ten events six are sends (one of them a re-send, one a test copy),
// one a reminder, two receipts or batch imports and one an exchange file.
void writeLogs(const platform::ProgramFolder& folder, int entries) {
    std::string sent, reminders, imports, activity;
    for (int i = 0; i < entries; ++i) {
        const std::string txn = std::to_string(1000 + i / 2) + "-1735641409";
        const std::string customer = "Customer " + std::to_string(i % 997);
        platform::Activity a{.when = when(i),
                             .type = "Invoice",
                             .txnId = txn,
                             .number = std::to_string(i),
                             .amount = std::to_string(i % 900) + ".50",
                             .party = customer,
                             .address = "ap" + std::to_string(i % 997) + "@example.com",
                             .outcome = "sent"};
        switch (i % 10) {
            case 0:
            case 1:
            case 2:
            case 3:
            case 4:
                sent += "<Invoice><TxnID>" + txn + "</TxnID><SentDate>" + when(i) +
                        "</SentDate></Invoice>\r\n";
                a.event = "sent";
                break;
            case 5:
                sent += "<TestInvoice><TestTxnID>" + txn + "</TestTxnID><SentTo>me@example.com" +
                        "</SentTo><SentDate>" + when(i) + "</SentDate></TestInvoice>\r\n";
                a.event = "test";
                break;
            case 6: {
                remind::ReminderRecord r;
                r.txnId = txn;
                r.stage = 1 + i % 3;
                r.refNumber = a.number;
                r.customer = customer;
                r.balance = a.amount;
                r.sentTo = a.address;
                r.sentDate = when(i);
                reminders += remind::reminderRecord(r);
                continue;
            }
            case 7:
            case 8:
                imports += "<AuthNetBatchImport><TxnID>" + std::to_string(70000000 + i) +
                           "</TxnID><RecordDate>" + when(i) +
                           "</RecordDate></AuthNetBatchImport>\r\n";
                a.event = i % 10 == 7 ? "batch" : "receipt";
                a.txnId = std::to_string(70000000 + i);
                break;
            default:
                a.event = "import";
                a.kind = "Invoice";
                a.type = "Bill";
                break;
        }
        activity += platform::activityRecord(a);
    }
    bench::require(folder.appendProgramFile(sent, browser::kSentLogFile));
    bench::require(folder.appendProgramFile(reminders, remind::kReminderLogFile));
    bench::require(folder.appendProgramFile(imports, imports::kBatchLogFile));
    bench::require(folder.appendProgramFile(activity, platform::kActivityLogFile));
}

}  // namespace

int main(int argc, char** argv) {
    const int entries = argc > 1 ? std::atoi(argv[1]) : 100000;
    bench::ScratchFolder scratch("dorvane-history-bench");
    const platform::ProgramFolder folder(scratch.path());
    writeLogs(folder, entries);
    const double before = peakRssMb();

    auto start = Clock::now();
    const auto events = history::joinHistory(history::readLogs(folder));
    const double listSeconds = bench::secondsSince(start);
    const std::string summary = history::summaryText(events);
    const double afterList = peakRssMb();

    start = Clock::now();
    const auto some = history::filterHistory(
        events, {.type = "invoice", .since = "2026-03-01", .until = "2026-05-31", .customer = "9"});
    const double filterSeconds = bench::secondsSince(start);

    std::printf("history of %d entries: %zu events (%s)\n", entries, events.size(),
                summary.c_str());
    const bool met = listSeconds < kListTarget;
    std::printf("  list: %.3f s (target < %.1f s: %s)\n", listSeconds, kListTarget,
                met ? "met" : "MISSED");
    std::printf("  filtered (type, dates, party): %zu events in %.3f s\n", some.size(),
                filterSeconds);
    std::printf("  peak memory: %.0f MB (%.0f MB before listing)\n", afterList, before);
    return met ? 0 : 1;
}
