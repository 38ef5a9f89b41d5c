// SPDX-License-Identifier: GPL-3.0-or-later
// Sandbox figures: an InvoiceQuery with line items over 10,000 invoices, and 10,000 single
// SalesReceiptAdd requests, each through the six request-processor operations.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>

#include "qbsandbox/demo.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"

namespace {

using Clock = std::chrono::steady_clock;
namespace sb = dorvane::qbsandbox;

double seconds(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

long peakRssKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::string message(const std::string& body) {
    return "<?xml version=\"1.0\" ?>\n<?qbxml version=\"13.0\"?>\n<QBXML>\n<QBXMLMsgsRq "
           "onError=\"stopOnError\">\n" +
           body + "\n</QBXMLMsgsRq>\n</QBXML>\n";
}

// One exchange as the gateway makes it; exits on any failure.
std::string exchange(const std::string& request) {
    auto processor = sb::processorFactory()();
    auto& p = **processor;
    auto fail = [](const char* step, const dorvane::Error& e) {
        std::fprintf(stderr, "%s failed: %s\n", step, e.description.c_str());
        std::exit(1);
    };
    if (auto s = p.openConnection("", "Dorvane"); !s) {
        fail("OpenConnection", s.error());
    }
    auto ticket = p.beginSession("", dorvane::qbgateway::FileMode::DoNotCare);
    if (!ticket) {
        fail("BeginSession", ticket.error());
    }
    auto answer = p.processRequest(*ticket, request);
    if (!answer) {
        fail("ProcessRequest", answer.error());
    }
    (void)p.endSession(*ticket);
    (void)p.closeConnection();
    return std::move(*answer);
}

}  // namespace

int main(int argc, char** argv) {
    int invoices = argc > 1 ? std::atoi(argv[1]) : 10000;
    int receipts = argc > 2 ? std::atoi(argv[2]) : 10000;
    auto folder = std::filesystem::temp_directory_path() /
                  ("dorvane-sandbox-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    ::setenv("DORVANE_SANDBOX_DIR", folder.c_str(), 1);
    auto company = folder / "bench.dvq";

    auto start = Clock::now();
    sb::DemoOptions options;
    options.customers = 200;
    options.invoices = invoices;
    sb::createDemoCompany(company, options);
    (void)sb::writeState(folder, {true, company});
    std::printf("demo company with %d invoices: %.2f s, %.1f MB\n", invoices, seconds(start),
                static_cast<double>(std::filesystem::file_size(company)) / 1e6);

    long rssBefore = peakRssKb();
    start = Clock::now();
    std::string answer = exchange(
        message("<InvoiceQueryRq><IncludeLineItems>true</IncludeLineItems></InvoiceQueryRq>"));
    double queryTime = seconds(start);
    std::size_t count = 0;
    for (auto at = answer.find("<InvoiceRet>"); at != std::string::npos;
         at = answer.find("<InvoiceRet>", at + 1)) {
        ++count;
    }
    std::printf(
        "InvoiceQuery with line items: %zu invoices in %.3f s, answer %.1f MB, peak RSS %.1f MB "
        "(was %.1f MB)\n",
        count, queryTime, static_cast<double>(answer.size()) / 1e6,
        static_cast<double>(peakRssKb()) / 1024, static_cast<double>(rssBefore) / 1024);
    answer.clear();
    answer.shrink_to_fit();

    start = Clock::now();
    for (int i = 0; i < receipts; ++i) {
        std::string r = exchange(
            message("<SalesReceiptAddRq><SalesReceiptAdd><CustomerRef><FullName>Harborside "
                    "Cafe</FullName></CustomerRef>"
                    "<TxnDate>2026-11-18</TxnDate><SalesReceiptLineAdd><ItemRef><FullName>Mulch</"
                    "FullName></ItemRef>"
                    "<Quantity>" +
                    std::to_string(1 + i % 9) +
                    "</Quantity></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>"));
        if (r.find("statusCode=\"0\"") == std::string::npos) {
            std::fprintf(stderr, "SalesReceiptAdd %d failed:\n%s\n", i, r.c_str());
            return 1;
        }
    }
    double addTime = seconds(start);
    std::printf("%d single SalesReceiptAdd requests: %.2f s (%.2f ms each)\n", receipts, addTime,
                addTime * 1000 / receipts);
    std::filesystem::remove_all(folder);
    return 0;
}
