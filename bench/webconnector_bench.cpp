// SPDX-License-Identifier: GPL-3.0-or-later
// Web Connector figures: what the bridge adds to a request. A Web Connector stand-in polls
// the service over loopback HTTP and answers from a sandbox company; the same requests are
// also sent to that company directly. Small requests (HostQuery) show the cost per round
// trip; an InvoiceQuery with line items over 3,000 invoices shows the cost per megabyte.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "qbgateway/requestprocessor.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "support/benchsupport.h"
#include "support/webconnectorstandin.h"
#include "webconnector/credentials.h"
#include "webconnector/service.h"

namespace {

using namespace dorvane;
using Clock = std::chrono::steady_clock;

std::string message(const std::string& body) {
    return "<?xml version=\"1.0\" ?>\n<?qbxml version=\"13.0\"?>\n<QBXML>\n<QBXMLMsgsRq "
           "onError=\"stopOnError\">\n" +
           body + "\n</QBXMLMsgsRq>\n</QBXML>\n";
}

// One exchange as the gateway makes it; empty when a step failed.
std::string exchange(const qbgateway::ProcessorFactory& factory, const std::string& request) {
    auto made = factory();
    if (!made) {
        return {};
    }
    auto& p = **made;
    if (!p.openConnection("", "Dorvane")) {
        return {};
    }
    auto ticket = p.beginSession("", qbgateway::FileMode::DoNotCare);
    if (!ticket) {
        return {};
    }
    auto answer = p.processRequest(*ticket, request);
    (void)p.endSession(*ticket);
    (void)p.closeConnection();
    return answer ? std::move(*answer) : std::string();
}

struct Figure {
    double seconds = 0;
    std::size_t bytes = 0;
    bool ok = true;
};

Figure run(const qbgateway::ProcessorFactory& factory, const std::string& request, int times) {
    Figure f;
    const auto start = Clock::now();
    for (int i = 0; i < times; ++i) {
        const std::string answer = exchange(factory, request);
        f.ok = f.ok && !answer.empty();
        f.bytes += answer.size();
    }
    f.seconds = bench::secondsSince(start);
    return f;
}

}  // namespace

int main() {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("dorvane-wc-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder / "office");
    qbsandbox::createDemoCompany(folder / "office.dvq", {200, 3000, 20261118});
    if (!qbsandbox::writeState(folder / "office", {true, folder / "office.dvq"})) {
        std::fprintf(stderr, "cannot open the bench company\n");
        return 1;
    }
    const auto direct = qbsandbox::processorFactory(folder / "office");

    webconnector::ServiceOptions o;
    o.settings.port = 0;
    o.settings.userName = "office";
    o.settings.passwordHash = *webconnector::hashPassword("secret");
    o.settings.maxRequestBytes = 200u * 1024 * 1024;
    o.holdSession = true;
    webconnector::Service service(std::move(o));
    if (!service.start()) {
        std::fprintf(stderr, "the service did not start\n");
        return 1;
    }
    test::WebConnectorStandIn::Options standIn;
    standIn.url = "http://127.0.0.1:" + std::to_string(service.port()) + "/qbwc";
    standIn.office = folder / "office";
    test::WebConnectorStandIn connector(standIn);
    const auto bridged = service.processorFactory();

    const std::string host = message("<HostQueryRq/>");
    const std::string invoices =
        message("<InvoiceQueryRq><IncludeLineItems>true</IncludeLineItems></InvoiceQueryRq>");
    (void)exchange(bridged, host);  // the login

    std::printf(
        "Web Connector bridge over loopback HTTP (stand-in Web Connector, sandbox "
        "company with 3,000 invoices)\n\n");
    std::printf("%-34s %12s %12s %10s\n", "request", "direct", "bridged", "added");
    const int small = 300;
    const Figure d1 = run(direct, host, small);
    const Figure b1 = run(bridged, host, small);
    std::printf("%-34s %9.2f ms %9.2f ms %7.2f ms\n", "HostQuery, per request",
                1000 * d1.seconds / small, 1000 * b1.seconds / small,
                1000 * (b1.seconds - d1.seconds) / small);
    const int large = 5;
    const Figure d2 = run(direct, invoices, large);
    const Figure b2 = run(bridged, invoices, large);
    const double mb = static_cast<double>(d2.bytes) / large / (1024 * 1024);
    std::printf("%-34s %9.0f ms %9.0f ms %7.0f ms\n", "InvoiceQuery with lines, per request",
                1000 * d2.seconds / large, 1000 * b2.seconds / large,
                1000 * (b2.seconds - d2.seconds) / large);
    std::printf("\nanswer size %.1f MB; the bridge adds %.0f ms per MB; all answers came: %s\n", mb,
                1000 * (b2.seconds - d2.seconds) / large / mb,
                d1.ok && b1.ok && d2.ok && b2.ok && d2.bytes == b2.bytes ? "yes" : "NO");
    connector.stop();
    std::filesystem::remove_all(folder);
    return 0;
}
