// SPDX-License-Identifier: GPL-3.0-or-later
// Mail figures: the invoices of a sandbox company sent to the recording SMTP server on
// loopback (tests/support/smtp_server.py, --quiet) over one connection.
//
// End to end is a real send run: "Send Email" on an invoice list whose checked rows are the
// first N invoices with an address (MailOption 0, the settings' defaults otherwise), so each
// message is rendered with the style sheets, composed, saved, sent and logged. The baseline
// pushes the very messages that run composed (saved aside as they went out) over one
// connection of the same SMTP client. Then the parts of a message, each timed on its own:
// rendering, composing, saving the message file, the sent-log write. Each figure is the
// median of several runs.
//
//   mail_bench [messages] [runs]        defaults 1000, 3
//
// With $DORVANE_BENCH_COMPANIES set to a folder, the company is kept there for later runs.
// $DORVANE_BENCH_SERVER_DELAY_MS makes the server wait that long before it accepts each
// message, as a real server does while it scans and queues it (loopback answers at once).
// Targets: at least 100 messages per second end to end, and end to end within 2 x the time
// of the baseline; with a PDF copy attached (Documents AttachPdf 1), at least half the speed
// of the run without.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "browser/loaders.h"
#include "browser/recipients.h"
#include "browser/sentlog.h"
#include "common/fd.h"
#include "common/memory.h"
#include "mail/mimecompose.h"
#include "mail/mimemessage.h"
#include "mail/smtpclient.h"
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

constexpr double kRateTarget = 100;
constexpr double kBaselineTarget = 2.0;
constexpr double kPdfShareTarget = 0.5;

// The test server as a child process, in quiet mode (it keeps no message content).
class SmtpServer {
public:
    explicit SmtpServer(int dataDelayMs = 0) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) {
            return;
        }
        UniqueFd readEnd(fds[0]);
        UniqueFd writeEnd(fds[1]);
        std::string python = "/usr/bin/python3";
        std::string script = DORVANE_SMTP_TEST_SERVER;
        std::string quiet = "--quiet";
        std::string delay = "--data-delay=" + std::to_string(dataDelayMs);
        char* argv[] = {python.data(), script.data(), quiet.data(), delay.data(), nullptr};
        m_pid = fork();
        if (m_pid == 0) {
            dup2(writeEnd.get(), STDOUT_FILENO);
            execv(argv[0], argv);
            _exit(127);
        }
        writeEnd.reset();
        std::string line;
        char c = 0;
        pollfd p{readEnd.get(), POLLIN, 0};
        while (poll(&p, 1, 20000) > 0 && read(readEnd.get(), &c, 1) == 1 && c != '\n') {
            line += c;
        }
        m_port = line.rfind("READY ", 0) == 0 ? std::atoi(line.c_str() + 6) : 0;
    }
    ~SmtpServer() {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            waitpid(m_pid, nullptr, 0);
        }
    }
    SmtpServer(const SmtpServer&) = delete;
    SmtpServer& operator=(const SmtpServer&) = delete;
    int port() const { return m_port; }

private:
    pid_t m_pid = -1;
    int m_port = 0;
};

// One message as the run sent it.
struct Sent {
    fs::path file;
    std::string key;  // TxnID
    std::string recipient;
};

// Leaves checked only the first `count` rows that a run would mail (checked, with an
// address); answers how many there are.
int keepFirst(ui::ListModel& list, int count) {
    int kept = 0;
    for (int i = 0; i < list.rowCount(); ++i) {
        const auto& row = list.row(i);
        if (!row.checked) {
            continue;
        }
        if (kept < count && row.cells.size() > 4 && !row.cells[4].empty()) {
            ++kept;
        } else {
            list.setChecked(i, false);
        }
    }
    return kept;
}

double rate(int messages, double seconds) {
    return seconds > 0 ? messages / seconds : 0;
}

}  // namespace

int main(int argc, char** argv) {
    dorvane::memory::tuneForLargeDocuments();
    const int messages = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    bench::ScratchFolder scratch("dorvane-mail-bench");
    bench::setEnvironment("DORVANE_SANDBOX_DIR", (scratch / "sandbox").string());
    bench::setEnvironment("XDG_CONFIG_HOME", (scratch / "config").string());
    fs::create_directories(scratch / "sandbox");
    fs::create_directories(scratch / "composed");
    const fs::path program = scratch / "program";
    bench::copyProgramFiles(program);

    // About four customers in five have an address: enough invoices for `messages` rows.
    const char* keep = std::getenv("DORVANE_BENCH_COMPANIES");
    const fs::path companyFolder = keep && *keep ? fs::absolute(keep) : scratch / "sandbox";
    fs::create_directories(companyFolder);
    qbsandbox::DemoOptions options;
    options.customers = 200;
    options.invoices = messages * 3 / 2 + 50;
    const fs::path company = companyFolder / ("mail-bench-" + std::to_string(options.customers) +
                                              "-" + std::to_string(options.invoices) + ".dvq");
    if (keep && *keep && fs::exists(company)) {
        std::printf("setup: company with %d invoices kept from before\n", options.invoices);
    } else {
        const auto start = Clock::now();
        qbsandbox::createDemoCompany(company, options);
        std::printf("setup: company with %d customers and %d invoices in %.1f s\n",
                    options.customers, options.invoices, secondsSince(start));
    }
    (void)qbsandbox::writeState(qbsandbox::stateFolder(), {true, company});

    const char* delay = std::getenv("DORVANE_BENCH_SERVER_DELAY_MS");
    SmtpServer server(delay ? std::max(0, std::atoi(delay)) : 0);
    if (server.port() <= 0) {
        std::fprintf(stderr, "the SMTP test server did not start (%s)\n", DORVANE_SMTP_TEST_SERVER);
        return 1;
    }

    testkit::QuietUi ui;
    shell::Application app(ui, shell::StartOptions{program.string()},
                           qbsandbox::processorFactory());
    if (auto set = app.settings().setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                                              {"SMTP", "Port", std::to_string(server.port())},
                                              {"Settings", "MailOption", "0"}});
        !set) {
        std::fprintf(stderr, "settings: %s\n", set.error().description.c_str());
        return 1;
    }
    auto& window = app.window();
    window.startUp();
    window.selectTimeframe(std::string_view("ALL"));

    auto prepareList = [&] {
        bench::require(app.folder().writeProgramFile("", browser::kSentLogFile));
        if (window.documentType() == "Invoice") {
            app.browser().loadList("Invoice", "ALL");
        } else {
            window.selectDocumentType("Invoice");
        }
        return keepFirst(window.list(), messages);
    };

    // End to end, then the baseline over the messages that run composed; each pair of runs
    // gives one ratio.
    struct Figures {
        std::vector<double> endToEnd;
        std::vector<double> pushes;
        std::int64_t connections = 0;
        std::uintmax_t bytes = 0;
        double ratio(std::size_t r) const { return endToEnd[r] / pushes[r]; }
        double worstRatio() const {
            double worst = 0;
            for (std::size_t r = 0; r < endToEnd.size(); ++r) {
                worst = std::max(worst, ratio(r));
            }
            return worst;
        }
    };
    std::vector<Sent> sent;
    int sentInRun = 0;
    bool capture = true;
    double asideSeconds = 0;  // saving messages aside is no part of the run
    app.sender().onRowProcessed([&](const mail::RowOutcome& outcome) {
        if (!outcome.sent) {
            return;
        }
        ++sentInRun;
        if (capture) {
            const auto start = Clock::now();
            const fs::path file = scratch / "composed" / (std::to_string(sent.size()) + ".eml");
            fs::copy_file(app.folder().filePath(mail::kMessageFile), file,
                          fs::copy_options::overwrite_existing);
            sent.push_back({file, outcome.key, outcome.recipient});
            asideSeconds += secondsSince(start);
        }
    });
    const std::string sender = app.company().senderAddress();
    auto measure = [&](const char* label) -> std::optional<Figures> {
        Figures f;
        sent.clear();
        capture = true;
        // Run -1 warms up (the server's connection handling, the page cache, the allocator)
        // and captures the messages for the push; it is not counted.
        for (int r = -1; r < runs; ++r) {
            const int rows = prepareList();
            if (rows < messages) {
                std::fprintf(stderr, "only %d invoices with an address\n", rows);
                return std::nullopt;
            }
            sentInRun = 0;
            asideSeconds = 0;
            const auto start = Clock::now();
            app.sender().sendSelectedDocuments();
            const double seconds = secondsSince(start) - asideSeconds;
            capture = false;
            if (sentInRun != messages) {
                std::fprintf(stderr, "run %d sent %d of %d messages (%s)\n", r + 1, sentInRun,
                             messages, window.statusText().c_str());
                return std::nullopt;
            }
            if (r < 0) {
                continue;
            }
            f.endToEnd.push_back(seconds);

            mail::SmtpClient client;
            client.setServer("127.0.0.1", std::to_string(server.port()), "", "");
            const auto pushStart = Clock::now();
            if (client.connect() != 0) {
                std::fprintf(stderr, "connect: %d %s\n", client.lastResult(),
                             client.lastResultText().c_str());
                return std::nullopt;
            }
            for (const Sent& s : sent) {
                if (client.sendFile(s.file, sender, s.recipient) != 0) {
                    std::fprintf(stderr, "send: %d %s\n", client.lastResult(),
                                 client.lastResultText().c_str());
                    return std::nullopt;
                }
            }
            client.disconnect();
            f.pushes.push_back(secondsSince(pushStart));
            f.connections = client.connectionsOpened();
        }
        for (const Sent& s : sent) {
            f.bytes += fs::file_size(s.file);
        }
        const double e2e = bench::median(f.endToEnd);
        const double push = bench::median(f.pushes);
        std::printf("%s, messages of %.1f KB on average:\n", label,
                    static_cast<double>(f.bytes) / static_cast<double>(sent.size()) / 1024);
        std::printf(
            "  end to end (render, compose, save, send, log): %d messages in %.3f s = %.0f "
            "messages/s (slowest run %.3f s)\n",
            messages, e2e, rate(messages, e2e),
            *std::max_element(f.endToEnd.begin(), f.endToEnd.end()));
        std::printf(
            "  already composed over one connection (%lld opened): %.3f s = %.0f "
            "messages/s\n",
            static_cast<long long>(f.connections), push, rate(messages, push));
        std::printf("  end to end / already composed, run by run:");
        for (std::size_t r = 0; r < f.endToEnd.size(); ++r) {
            std::printf(" %.2f", f.ratio(r));
        }
        std::printf("; worst %.2f\n", f.worstRatio());
        std::fflush(stdout);
        return f;
    };

    // The realistic message first: the company's logo in the header and the exchange file
    // attached. Then the plain document, whose messages the parts below are timed on.
    {
        // A logo of a few kilobytes; its bytes are only base64-encoded, never decoded.
        std::string logo = "GIF89a";
        logo.resize(6 * 1024, '\x5a');
        std::FILE* out = std::fopen((program / "logo.gif").c_str(), "wb");
        if (!out || std::fwrite(logo.data(), 1, logo.size(), out) != logo.size()) {
            std::fprintf(stderr, "cannot write the logo\n");
            return 1;
        }
        std::fclose(out);
    }
    (void)app.settings().setEntries({{"Settings", "Attachment", "1"}});
    const auto realistic = measure("with logo and exchange file");
    fs::remove(program / "logo.gif");
    (void)app.settings().setEntries({{"Settings", "Attachment", "0"}});
    (void)app.settings().setEntries({{"Documents", "AttachPdf", "1"}});
    const auto withPdf = measure("document with its PDF copy");
    (void)app.settings().setEntries({{"Documents", "AttachPdf", "0"}});
    const auto plain = measure("document only");
    if (!realistic || !plain || !withPdf) {
        return 1;
    }
    const double e2e = bench::median(plain->endToEnd);
    const double push = bench::median(plain->pushes);
    const double pdfShare = e2e / bench::median(withPdf->endToEnd);
    std::printf(
        "with the PDF copy the run goes at %.2f of its speed without (target at least "
        "%.2f): %s\n",
        pdfShare, kPdfShareTarget, pdfShare >= kPdfShareTarget ? "met" : "MISSED");

    // The parts of a message, one by one, over the same documents.
    std::vector<std::string> ids;
    for (const Sent& s : sent) {
        ids.push_back(s.key);
    }
    const auto documents = browser::indexBy(
        window.listDocument(), "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet", "TxnID");
    auto sheet = xml::Stylesheet::load(app.folder().filePath("/invoice.xslt"));
    if (!sheet) {
        std::fprintf(stderr, "invoice.xslt: %s\n", sheet.error().description.c_str());
        return 1;
    }
    std::vector<double> renders, composes, saves, logs;
    std::vector<std::string> pages;
    for (int r = 0; r < runs; ++r) {
        pages.clear();
        auto start = Clock::now();
        const std::string header = app.sender().companyHeaderHtml();
        for (const std::string& id : ids) {
            auto found = documents.find(id);
            auto html = found == documents.end() ? Result<std::string>(Error{0, "missing"})
                                                 : sheet->transformNode(found->second);
            pages.push_back(html ? header + *html : std::string());
        }
        renders.push_back(secondsSince(start));

        mail::MimeMessage message;
        double composing = 0;
        double saving = 0;
        for (std::size_t i = 0; i < pages.size(); ++i) {
            start = Clock::now();
            mail::DocumentMail mail;
            mail.sender = sender;
            mail.recipient = sent[i].recipient;
            mail.subject = "Invoice: #" + ids[i];
            mail.html = pages[i];
            mail::composeDocumentMail(mail, message);
            composing += secondsSince(start);
            start = Clock::now();
            (void)message.save(program / mail::kMessageFile);
            message.clear();
            saving += secondsSince(start);
        }
        composes.push_back(composing);
        saves.push_back(saving);

        std::string log;
        start = Clock::now();
        for (const std::string& id : ids) {
            const std::string record = browser::sentRecord(id, "Invoice");
            log += record;
            bench::require(app.folder().appendProgramFile(record, browser::kSentLogFile));
        }
        bench::require(app.folder().writeProgramFile(log, browser::kSentLogFile));
        logs.push_back(secondsSince(start));
    }
    const double render = bench::median(renders);
    const double compose = bench::median(composes);
    const double save = bench::median(saves);
    const double log = bench::median(logs);
    auto part = [&](const char* name, double seconds) {
        std::printf("  %-36s %7.3f s  %6.2f ms a message\n", name, seconds,
                    seconds * 1000 / messages);
    };
    std::printf("parts of a message, each timed on its own:\n");
    part("rendering (company header + sheet)", render);
    part("composing", compose);
    part("saving the message file", save);
    part("writing the sent log", log);
    part("sending (the baseline)", push);
    part("rest of the run", e2e - render - compose - save - log - push);

    std::printf(
        "  (the run renders the next document while a message travels, so the parts\n"
        "   overlap and the rest can fall below zero)\n");
    const double endToEndRate = rate(messages, e2e);
    const double worst = std::max(realistic->worstRatio(), plain->worstRatio());
    const bool rateMet = endToEndRate >= kRateTarget;
    const bool ratioMet = worst <= kBaselineTarget;
    std::printf("end to end: %.0f messages/s (target >= %.0f: %s)\n", endToEndRate, kRateTarget,
                rateMet ? "met" : "MISSED");
    std::printf(
        "end to end / already composed: %.2f with logo and exchange file, %.2f document "
        "only, worst run %.2f (target <= %.1f: %s)\n",
        bench::median(realistic->endToEnd) / bench::median(realistic->pushes), e2e / push, worst,
        kBaselineTarget, ratioMet ? "met" : "MISSED");
    if (ui.messages() > 0) {
        std::fprintf(stderr, "%d message box(es) during the runs\n", ui.messages());
    }
    return rateMet && ratioMet ? 0 : 1;
}
