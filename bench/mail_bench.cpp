// SPDX-License-Identifier: GPL-3.0-or-later
// Mail throughput: composing document mails, and pushing pre-composed messages over one SMTP
// connection to the recording test server on loopback (tests/support/smtp_server.py).
//
//   mail_bench [messages]        default 1000; starts its own server
//   mail_bench [messages] PORT   uses a server already listening on 127.0.0.1:PORT
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "mail/mimecompose.h"
#include "mail/mimemessage.h"
#include "mail/smtpclient.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

// The test server, started as a child process; answers its port, or 0.
int startServer(pid_t& pid) {
    const std::filesystem::path script =
        std::filesystem::path(__FILE__).parent_path().parent_path() / "tests" / "support" /
        "smtp_server.py";
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        return 0;
    }
    std::string python = "/usr/bin/python3";
    std::string scriptText = script.string();
    std::string quiet = "--quiet";
    char* argv[] = {python.data(), scriptText.data(), quiet.data(), nullptr};
    pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        execv(argv[0], argv);
        _exit(127);
    }
    close(fds[1]);
    std::string line;
    char c = 0;
    pollfd p{fds[0], POLLIN, 0};
    while (poll(&p, 1, 20000) > 0 && read(fds[0], &c, 1) == 1 && c != '\n') {
        line += c;
    }
    close(fds[0]);
    return line.rfind("READY ", 0) == 0 ? std::atoi(line.c_str() + 6) : 0;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace dorvane::mail;
    const int count = argc > 1 ? std::atoi(argv[1]) : 1000;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("dorvane-mail-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);

    // A typical document: a 30 KB page with a 10 KB logo and an exchange file.
    {
        std::ofstream logo(folder / "logo.gif", std::ios::binary);
        logo << "GIF89a";
        for (int i = 0; i < 10000; ++i) {
            logo.put(static_cast<char>(i * 7));
        }
        std::ofstream exchange(folder / "doc.dvx", std::ios::binary);
        exchange << "<InvoiceRet><TxnID>1-2</TxnID></InvoiceRet>\r\n";
    }
    std::string html = "<html><body><img src=\"file://" + (folder / "logo.gif").string() + "\">";
    while (html.size() < 30000) {
        html += "<tr><td>Widget, blue</td><td>3</td><td>12.50</td><td>37.50</td></tr>\n";
    }
    html += "</body></html>\n";

    DocumentMail mail;
    mail.sender = "billing@company.test";
    mail.recipient = "customer@example.test";
    mail.subject = "Invoice: #1041  Date: 2002-05-01  ";
    mail.html = html;
    mail.attachment = folder / "doc.dvx";

    MimeMessage message;
    const std::filesystem::path file = folder / "themail.txt";
    auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        composeDocumentMail(mail, message);
        if (message.save(file) != 0) {
            std::fprintf(stderr, "cannot save %s\n", file.c_str());
            return 1;
        }
    }
    const double composeSeconds = seconds(start);
    std::printf("compose+save: %d messages of %ju bytes in %.3f s = %.0f messages/s\n", count,
                static_cast<std::uintmax_t>(std::filesystem::file_size(file)), composeSeconds,
                count / composeSeconds);

    pid_t server = 0;
    int port = argc > 2 ? std::atoi(argv[2]) : startServer(server);
    if (port <= 0) {
        std::fprintf(stderr, "no SMTP server\n");
        return 1;
    }

    SmtpClient client;
    client.setServer("127.0.0.1", std::to_string(port), "", "");
    if (client.connect() != 0) {
        std::fprintf(stderr, "connect: %d %s\n", client.lastResult(),
                     client.lastResultText().c_str());
        return 1;
    }
    start = Clock::now();
    int failed = 0;
    for (int i = 0; i < count; ++i) {
        if (client.sendFile(file, mail.sender, mail.recipient) != 0) {
            ++failed;
        }
    }
    const double sendSeconds = seconds(start);
    client.disconnect();
    std::printf(
        "send over one connection: %d messages in %.3f s = %.0f messages/s "
        "(%d failed, %lld connection(s) opened)\n",
        count, sendSeconds, count / sendSeconds, failed,
        static_cast<long long>(client.connectionsOpened()));

    if (server > 0) {
        kill(server, SIGTERM);
        waitpid(server, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return failed == 0 ? 0 : 1;
}
