// SPDX-License-Identifier: GPL-3.0-or-later
// List figures: the invoice list of a sandbox company with 2,000 customers and 10,000 invoices
// and of one twice its size in everything (4,000 customers, 20,000 invoices, a sent log twice
// as long), loaded through the application's document browser (timeframe ALL).
//
// Each measured load is a Refresh: it replaces the list of the load before. Its time is split
// into the request processor's (making it and its six operations) and Dorvane's own, which is
// everything else the load does: the request and response traces, dropping the last list,
// parsing, the customer index, reading and indexing the sent log (3,000 records, 1,000 of
// them for invoices in the list, for the smaller company; twice that for the larger), the rows.
// Dorvane's own time is set against the time libxml2 alone needs to parse the same response text,
// and the larger company's own time against the smaller one's. Each figure is the median of several
// loads, as wall-clock time and as this thread's processor time (which other work on the machine
// does not inflate).
//
//   browser_bench [loads] [customers] [invoices]    defaults 5, 2000, 10000 (and twice both)
//
// Making the companies takes most of a run. With $DORVANE_BENCH_COMPANIES set to a folder
// they are kept there and used again by later runs.
//
// Targets: own time at most 2 x the parse time; the company twice the size at most 2.2 x the
// own time.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "browser/loaders.h"
#include "browser/sentlog.h"
#include "common/memory.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/benchsupport.h"
#include "xml/xml.h"

namespace {

using namespace dorvane;
using bench::Clock;
using bench::secondsSince;

constexpr double kParseTarget = 2.0;
constexpr double kLinearTarget = 2.2;
constexpr int kSentLogRecords = 3000;
constexpr int kSentLogMatches = 1000;  // of those, records of documents in the list

struct Figures {
    int invoices = 0;
    int rows = 0;
    int alreadySent = 0;
    int missingAddress = 0;
    std::size_t answerBytes = 0;
    double processor = 0;
    double request = 0;
    double own = 0;
    double parse = 0;
    double ownCpu = 0;  // the same two as this thread's processor time
    double parseCpu = 0;
    double ratio = 0;  // median of own/parse over the loads
    double ratioCpu = 0;
};

// A sent log of `scale` x `kSentLogRecords` records, `scale` x `kSentLogMatches` of them for
// documents in the list (spread over it), the rest for documents the company no longer lists.
std::string makeSentLog(const ui::ListModel& list, int scale) {
    std::string log;
    const int rows = list.rowCount();
    const int matches = scale * kSentLogMatches;
    const int records = scale * kSentLogRecords;
    const int step = std::max(1, rows / matches);
    const char* types[] = {"Invoice", "Estimate", "SalesReceipt", "CreditMemo"};
    int written = 0;
    for (int i = 0; i < rows && written < matches; i += step, ++written) {
        browser::appendSentRecord(log, list.row(i).cells[1], "Invoice");
    }
    for (int i = 0; written < records; ++i, ++written) {
        browser::appendSentRecord(log, "ZZ" + std::to_string(90000 + i) + "-1234567890",
                                  types[i % 4]);
    }
    return log;
}

Figures measure(const std::filesystem::path& company, int invoices, int scale, int loads,
                const std::filesystem::path& programFolder) {
    (void)qbsandbox::writeState(qbsandbox::stateFolder(), {true, company});
    testkit::QuietUi ui;
    bench::ProcessorTimes times;
    shell::Application app(ui, shell::StartOptions{programFolder.string()},
                           bench::timedFactory(qbsandbox::processorFactory(), times));
    app.window().startUp();
    auto& list = app.window().list();

    // A first load finds the documents the sent log is made of; it is not counted.
    bench::require(app.folder().writeProgramFile("", browser::kSentLogFile));
    app.browser().loadList("Invoice", "ALL");
    bench::require(app.folder().writeProgramFile(makeSentLog(list, scale), browser::kSentLogFile));

    Figures f;
    f.invoices = invoices;
    std::vector<double> processor, request, own, parse, ownCpu, parseCpu, ratio, ratioCpu;
    times.keepAnswer = true;
    // Each load is followed by parses of its answer, so that both see the same machine.
    for (int i = 0; i < loads; ++i) {
        times.clear();
        const auto start = Clock::now();
        const double cpu = bench::threadCpuSeconds();
        app.browser().loadList("Invoice", "ALL");
        const double total = secondsSince(start);
        const double totalCpu = bench::threadCpuSeconds() - cpu;
        if (times.requests != 1) {
            std::fprintf(stderr, "note: %d requests in one load\n", times.requests);
        }
        const std::string answer = std::move(times.lastAnswer);
        f.answerBytes = answer.size();
        // libxml2 at its best: the second of two parses, in the memory the first one freed.
        (void)xml::Document::parse(answer);
        const auto parseStart = Clock::now();
        const double parseCpuStart = bench::threadCpuSeconds();
        auto doc = xml::Document::parse(answer);
        parse.push_back(secondsSince(parseStart));
        parseCpu.push_back(bench::threadCpuSeconds() - parseCpuStart);
        if (!doc) {
            std::fprintf(stderr, "the answer does not parse: %s\n",
                         doc.error().description.c_str());
            std::exit(1);
        }
        processor.push_back(times.total);
        request.push_back(times.request);
        own.push_back(total - times.total);
        ownCpu.push_back(totalCpu - times.totalCpu);
        ratio.push_back(own.back() / parse.back());
        ratioCpu.push_back(ownCpu.back() / parseCpu.back());
    }
    f.rows = list.rowCount();
    for (const auto& row : list.rows()) {
        f.alreadySent += row.icon == browser::kIconAlreadySent;
        f.missingAddress += row.cells.back() == browser::kMissingEmail;
    }
    f.processor = bench::median(processor);
    f.request = bench::median(request);
    f.own = bench::median(own);
    f.parse = bench::median(parse);
    f.ownCpu = bench::median(ownCpu);
    f.parseCpu = bench::median(parseCpu);
    f.ratio = bench::median(ratio);
    f.ratioCpu = bench::median(ratioCpu);
    if (ui.messages() > 0) {
        std::fprintf(stderr, "%d message box(es) during the loads\n", ui.messages());
    }
    return f;
}

void print(const Figures& f) {
    std::printf(
        "%6d invoices: %d rows (%d already sent, %d without address), answer %.1f MB\n"
        "  processor %.3f s (ProcessRequest %.3f s), Dorvane's own %.3f s, "
        "libxml2 parse %.3f s, own/parse %.2f\n"
        "  processor time of this thread: own %.3f s, parse %.3f s, own/parse %.2f\n",
        f.invoices, f.rows, f.alreadySent, f.missingAddress,
        static_cast<double>(f.answerBytes) / 1e6, f.processor, f.request, f.own, f.parse, f.ratio,
        f.ownCpu, f.parseCpu, f.ratioCpu);
}

}  // namespace

int main(int argc, char** argv) {
    dorvane::memory::tuneForLargeDocuments();
    const int loads = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const int customers = argc > 2 ? std::atoi(argv[2]) : 2000;
    const int invoices = argc > 3 ? std::atoi(argv[3]) : 10000;

    bench::ScratchFolder scratch("dorvane-browser-bench");
    bench::setEnvironment("DORVANE_SANDBOX_DIR", (scratch / "sandbox").string());
    bench::setEnvironment("XDG_CONFIG_HOME", (scratch / "config").string());
    std::filesystem::create_directories(scratch / "sandbox");
    bench::copyProgramFiles(scratch / "program");

    const char* keep = std::getenv("DORVANE_BENCH_COMPANIES");
    const std::filesystem::path companyFolder =
        keep && *keep ? std::filesystem::absolute(keep) : scratch / "sandbox";
    std::filesystem::create_directories(companyFolder);
    // The larger company is the smaller one twice over: customers, invoices and sent log.
    std::vector<std::pair<int, std::filesystem::path>> companies;
    for (int scale : {1, 2}) {
        const int c = scale * customers;
        const int n = scale * invoices;
        const auto file = companyFolder /
                          ("browser-bench-" + std::to_string(c) + "-" + std::to_string(n) + ".dvq");
        companies.emplace_back(scale, file);
        if (keep && *keep && std::filesystem::exists(file)) {
            std::printf("setup: company with %d customers and %d invoices kept from before\n", c,
                        n);
            continue;
        }
        const auto start = Clock::now();
        qbsandbox::DemoOptions options;
        options.customers = c;
        options.invoices = n;
        qbsandbox::createDemoCompany(file, options);
        std::printf("setup: company with %d customers and %d invoices in %.1f s\n", c, n,
                    secondsSince(start));
        std::fflush(stdout);
    }

    std::printf("invoice list, timeframe ALL, median of %d loads:\n", loads);
    std::vector<Figures> figures;
    for (const auto& [scale, file] : companies) {
        figures.push_back(measure(file, scale * invoices, scale, loads, scratch / "program"));
        print(figures.back());
        std::fflush(stdout);
    }

    bool ok = true;
    for (const Figures& f : figures) {
        if (f.rows != f.invoices) {
            std::printf("row count %d is not %d\n", f.rows, f.invoices);
            ok = false;
        }
    }
    const double parseRatio = figures[0].ratio;
    const double linearRatio = figures[1].own / figures[0].own;
    const double linearRatioCpu = figures[1].ownCpu / figures[0].ownCpu;
    const bool parseMet = parseRatio <= kParseTarget;
    const bool linearMet = linearRatio <= kLinearTarget;
    std::printf("own/parse at %d invoices: %.2f (target <= %.1f: %s)\n", invoices, parseRatio,
                kParseTarget, parseMet ? "met" : "MISSED");
    std::printf(
        "own at %d / own at %d invoices: %.2f (target <= %.1f: %s); "
        "as processor time %.2f\n",
        2 * invoices, invoices, linearRatio, kLinearTarget, linearMet ? "met" : "MISSED",
        linearRatioCpu);
    return ok && parseMet && linearMet ? 0 : 1;
}
