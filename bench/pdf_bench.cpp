// SPDX-License-Identifier: GPL-3.0-or-later
// PDF figures: the demo company's invoices, rendered as a send run mails them (the company
// header with a logo over invoice.xslt's page), turned into PDF copies one after another on
// one thread, cycling through the invoices.
//
//   pdf_bench [pdfs] [A4]        defaults 1000, Letter
//
// Target: at least 50 PDFs a second.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <vector>

#include "browser/sentlog.h"
#include "pdf/pdf.h"
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
namespace fs = std::filesystem;

constexpr double kRateTarget = 50;

double peakRssMb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// A 1x1 GIF: the logo the header shows.
const std::string kLogo(
    "GIF89a\x01\x00\x01\x00\x80\x00\x00\x00\x00\x00\xff\xff\xff!\xf9\x04\x01"
    "\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02\x44\x01\x00;",
    43);

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000;
    pdf::PageSetup page;
    if (argc > 2 && !pdf::parsePageSize(argv[2], page.size)) {
        std::fprintf(stderr, "page size: Letter or A4\n");
        return 2;
    }

    bench::ScratchFolder scratch("dorvane-pdf-bench");
    bench::setEnvironment("DORVANE_SANDBOX_DIR", (scratch / "sandbox").string());
    bench::setEnvironment("XDG_CONFIG_HOME", (scratch / "config").string());
    fs::create_directories(scratch / "sandbox");
    const fs::path program = scratch / "program";
    bench::copyProgramFiles(program);
    if (std::FILE* out = std::fopen((program / "logo.gif").c_str(), "wb")) {
        std::fwrite(kLogo.data(), 1, kLogo.size(), out);
        std::fclose(out);
    }

    const fs::path company = scratch / "sandbox" / "pdf-bench.dvq";
    qbsandbox::createDemoCompany(company, qbsandbox::DemoOptions{});
    (void)qbsandbox::writeState(qbsandbox::stateFolder(), {true, company});

    testkit::QuietUi ui;
    shell::Application app(ui, shell::StartOptions{program.string()},
                           qbsandbox::processorFactory());
    bench::require(app.folder().writeProgramFile("", browser::kSentLogFile));
    auto& window = app.window();
    window.startUp();
    window.selectTimeframe(std::string_view("ALL"));
    window.selectDocumentType("Invoice");

    // The documents as mailed, rendered once: the figures are the PDF's alone.
    auto sheet = xml::Stylesheet::load(app.folder().filePath("/invoice.xslt"));
    if (!sheet) {
        std::fprintf(stderr, "invoice.xslt: %s\n", sheet.error().description.c_str());
        return 1;
    }
    const std::string header = app.sender().companyHeaderHtml();
    std::vector<std::string> documents;
    for (xml::Node invoice :
         window.listDocument().selectAll("/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet")) {
        if (auto html = sheet->transformNode(invoice)) {
            documents.push_back(header + *html);
        }
    }
    if (documents.empty() || header.find("<img") == std::string::npos) {
        std::fprintf(stderr, "no invoices, or no logo in the header (%zu invoices)\n",
                     documents.size());
        return 1;
    }
    std::size_t htmlBytes = 0;
    for (const std::string& d : documents) {
        htmlBytes += d.size();
    }
    std::printf("setup: %zu demo invoices, %.1f KB of HTML each on average, %s pages\n",
                documents.size(), static_cast<double>(htmlBytes) / documents.size() / 1024,
                pdf::pageSizeName(page.size));

    // One warm-up document: the thread's fonts are found and measured once. It is kept as
    // sample.pdf beside a kept scratch folder ($DORVANE_BENCH_KEEP), to look at.
    auto first = pdf::renderPdf(documents[0], page, "Invoice");
    if (!first) {
        std::fprintf(stderr, "the first invoice: %s\n", first.error().description.c_str());
        return 1;
    }
    bench::require(app.folder().writeProgramFile(*first, "sample.pdf"));

    std::size_t bytes = 0;
    const double cpuStart = bench::threadCpuSeconds();
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        auto out = pdf::renderPdf(documents[static_cast<std::size_t>(i) % documents.size()], page,
                                  "Invoice");
        if (!out) {
            std::fprintf(stderr, "PDF %d: %s\n", i, out.error().description.c_str());
            return 1;
        }
        bytes += out->size();
    }
    const double seconds = secondsSince(start);
    const double cpu = bench::threadCpuSeconds() - cpuStart;
    const double rate = count / seconds;
    const bool met = rate >= kRateTarget;
    std::printf("%d PDFs in %.2f s (%.2f s of this thread's processor time)\n", count, seconds,
                cpu);
    std::printf("  %.0f PDFs/s (target >= %.0f: %s)\n", rate, kRateTarget, met ? "met" : "MISSED");
    std::printf("  %.2f ms a PDF on average (%.2f ms processor time)\n", seconds * 1000 / count,
                cpu * 1000 / count);
    std::printf("  %.1f KB a PDF on average\n", static_cast<double>(bytes) / count / 1024);
    std::printf("  peak RSS %.1f MB\n", peakRssMb());
    return met ? 0 : 1;
}
