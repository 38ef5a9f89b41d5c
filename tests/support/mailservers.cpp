// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mailservers.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "common/fd.h"
#include "common/text.h"
#include "xml/xml.h"

namespace dorvane::test {
namespace {

// The complete lines of a record file (a line still being written is left out), one element
// each, below one root.
xml::Document readRecord(const std::filesystem::path& file) {
    const std::string content = readFile(file);
    auto doc =
        xml::Document::parse("<record>" + content.substr(0, content.rfind('\n') + 1) + "</record>");
    if (!doc.ok()) {
        throw std::runtime_error(file.string() + " is not a record: " + doc.error().description);
    }
    return std::move(doc).value();
}

HeaderList headerList(const xml::Node& element) {
    HeaderList out;
    for (const xml::Node& h : element.selectAll("header")) {
        out.emplace_back(h.attribute("name"), h.attribute("value"));
    }
    return out;
}

std::optional<std::string> findHeader(const HeaderList& headers, std::string_view name) {
    for (const auto& [n, v] : headers) {
        if (text::equalsIgnoreCase(n, name)) {
            return v;
        }
    }
    return std::nullopt;
}

MimeRecord mimeRecord(const xml::Node& mime, const std::filesystem::path& folder) {
    MimeRecord out;
    out.headers = headerList(mime);
    out.contentType = mime.attribute("content_type");
    out.boundary = mime.attribute("boundary");
    out.subject = mime.attribute("subject");
    for (const xml::Node& d : mime.selectAll("defect")) {
        out.defects.push_back(d.text());
    }
    for (const xml::Node& p : mime.selectAll("part")) {
        out.parts.push_back({headerList(p), p.attribute("content_type"), p.attribute("filename"),
                             readFile(folder / p.attribute("body"))});
    }
    return out;
}

std::filesystem::path supportScript(const std::string& name) {
    return dataDir().parent_path() / "support" / name;
}

}  // namespace

std::optional<std::string> MimePartRecord::header(std::string_view name) const {
    return findHeader(headers, name);
}

std::vector<std::string> MimePartRecord::headerNames() const {
    std::vector<std::string> out;
    for (const auto& h : headers) {
        out.push_back(h.first);
    }
    return out;
}

std::optional<std::string> MimeRecord::header(std::string_view name) const {
    return findHeader(headers, name);
}

std::vector<SmtpMessageRecord> SmtpRecord::accepted() const {
    std::vector<SmtpMessageRecord> out;
    for (const auto& m : messages) {
        if (!m.dropped && m.status.starts_with("250")) {
            out.push_back(m);
        }
    }
    return out;
}

// ---- Child processes ----

ServerProcess::ServerProcess(const std::string& script, std::vector<std::string> arguments,
                             const std::filesystem::path& logFile) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    UniqueFd readEnd(fds[0]);
    UniqueFd writeEnd(fds[1]);
    std::vector<std::string> argv = {"/usr/bin/python3", supportScript(script).string()};
    argv.insert(argv.end(), arguments.begin(), arguments.end());

    std::vector<char*> args;
    for (auto& a : argv) {
        args.push_back(a.data());
    }
    args.push_back(nullptr);

    const pid_t pid = fork();
    if (pid < 0) {
        throw std::runtime_error("fork failed");
    }
    if (pid == 0) {
        dup2(writeEnd.get(), STDOUT_FILENO);
        const int log = open(logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (log >= 0) {
            dup2(log, STDERR_FILENO);
        }
        const int null = open("/dev/null", O_RDONLY);
        if (null >= 0) {
            dup2(null, STDIN_FILENO);
        }
        // Sockets of the test (SMTP connections) must not live on in the server.
        close_range(3, ~0U, 0);
        execv(args[0], args.data());
        _exit(127);
    }
    m_pid = pid;
    writeEnd.reset();

    std::string output;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (output.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd p{readEnd.get(), POLLIN, 0};
        if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0) {
            break;
        }
        char buffer[256];
        const ssize_t n = read(readEnd.get(), buffer, sizeof buffer);
        if (n <= 0) {
            break;
        }
        output.append(buffer, static_cast<std::size_t>(n));
    }
    readEnd.reset();
    if (output.rfind("READY ", 0) != 0) {
        const std::string log = readFile(logFile);
        stop();
        throw std::runtime_error(script + " did not start: " + output + log);
    }
    m_port = std::atoi(output.c_str() + 6);
}

ServerProcess::~ServerProcess() {
    stop();
}

void ServerProcess::stop() {
    if (m_pid <= 0) {
        return;
    }
    kill(m_pid, SIGTERM);
    for (int i = 0; i < 100; ++i) {
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_pid = -1;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}

SmtpTestServer::SmtpTestServer(SmtpServerOptions options) {
    std::vector<std::string> args = {"--record", (m_dir / "smtp.record").string()};
    for (const auto& r : options.refuseRecipients) {
        args.insert(args.end(), {"--refuse-rcpt", r});
    }
    if (options.refuseData > 0) {
        args.insert(args.end(), {"--refuse-data", std::to_string(options.refuseData)});
    }
    if (options.dropData > 0) {
        args.insert(args.end(), {"--drop-data", std::to_string(options.dropData)});
    }
    if (!options.authUser.empty()) {
        args.insert(args.end(),
                    {"--auth-user", options.authUser, "--auth-password", options.authPassword});
    }
    if (options.authRequired) {
        args.push_back("--auth-required");
    }
    for (const auto& m : options.authMechanisms) {
        args.insert(args.end(), {"--auth-mechanism", m});
    }
    if (!options.tlsCertificate.empty()) {
        args.insert(args.end(), {"--tls-cert", options.tlsCertificate.string(), "--tls-key",
                                 options.tlsKey.string()});
    }
    if (options.quiet) {
        args.push_back("--quiet");
    }
    if (options.dataDelayMs > 0) {
        args.insert(args.end(), {"--data-delay", std::to_string(options.dataDelayMs)});
    }
    m_process =
        std::make_unique<ServerProcess>("smtp_server.py", std::move(args), m_dir / "smtp.log");
}

SmtpRecord SmtpTestServer::record() const {
    SmtpRecord record;
    std::map<int, std::size_t> sessionIndex;
    auto session = [&](int id) -> SmtpSessionRecord& {
        auto it = sessionIndex.find(id);
        if (it == sessionIndex.end()) {
            record.sessions.push_back({});
            record.sessions.back().id = id;
            it = sessionIndex.emplace(id, record.sessions.size() - 1).first;
        }
        return record.sessions[it->second];
    };
    const xml::Document events = readRecord(m_dir / "smtp.record");
    for (const xml::Node& e : events.root().childElements()) {
        const std::string event = e.name();
        const int id = std::atoi(e.attribute("session").c_str());
        if (event == "connect") {
            ++record.connections;
            session(id);
        } else if (event == "ehlo") {
            session(id).ehlo = e.attribute("name");
        } else if (event == "starttls") {
            session(id).startTls = true;
        } else if (event == "auth") {
            session(id).auths.push_back(
                {e.attribute("mechanism"), e.attribute("user"), e.attribute("success") == "True"});
        } else if (event == "quit") {
            session(id).quit = true;
        } else if (event == "rcpt") {
            if (e.attribute("accepted") != "True") {
                record.refusedRecipients.push_back(e.attribute("address"));
            }
        } else if (event == "message" || event == "dropped") {
            SmtpMessageRecord m;
            m.session = id;
            m.mailFrom = e.attribute("mail_from");
            for (const xml::Node& r : e.selectAll("rcpt_to")) {
                m.rcptTos.push_back(r.text());
            }
            m.status = e.attribute("status");
            m.dropped = event == "dropped";
            if (e.hasAttribute("data")) {
                m.data = readFile(m_dir / e.attribute("data"));
                m.mime = mimeRecord(e.selectOne("mime"), m_dir.path());
            }
            record.messages.push_back(std::move(m));
        }
    }
    return record;
}

DnsTestServer::DnsTestServer(const std::string& zone) {
    writeFile(m_dir / "zone.txt", zone);
    m_process = std::make_unique<ServerProcess>(
        "dns_server.py",
        std::vector<std::string>{"--zone", (m_dir / "zone.txt").string(), "--record",
                                 (m_dir / "dns.record").string()},
        m_dir / "dns.log");
}

std::vector<DnsQueryRecord> DnsTestServer::queries() const {
    std::vector<DnsQueryRecord> out;
    const xml::Document questions = readRecord(m_dir / "dns.record");
    for (const xml::Node& q : questions.root().childElements()) {
        out.push_back({q.attribute("name"), q.attribute("type")});
    }
    return out;
}

int DnsTestServer::count(std::string_view name, std::string_view type) const {
    int n = 0;
    for (const auto& q : queries()) {
        if (text::equalsIgnoreCase(q.name, name) && q.type == type) {
            ++n;
        }
    }
    return n;
}

ScopedEnvironment::ScopedEnvironment(std::string name, std::optional<std::string> value)
    : m_name(std::move(name)) {
    if (const char* old = std::getenv(m_name.c_str())) {
        m_previous = old;
    }
    if (value) {
        setenv(m_name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(m_name.c_str());
    }
}

ScopedEnvironment::~ScopedEnvironment() {
    if (m_previous) {
        setenv(m_name.c_str(), m_previous->c_str(), 1);
    } else {
        unsetenv(m_name.c_str());
    }
}

int unusedLoopbackPort() {
    const UniqueFd s(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    if (bind(s.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        getsockname(s.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("no free loopback port");
    }
    return ntohs(address.sin_port);
}

bool makeSelfSignedCertificate(const std::filesystem::path& dir, std::filesystem::path& cert,
                               std::filesystem::path& key) {
    cert = dir / "server.crt";
    key = dir / "server.key";
    const std::string command =
        "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "
        "/CN=localhost -keyout '" +
        key.string() + "' -out '" + cert.string() + "'";
    return runCommand(command) == 0 && std::filesystem::exists(cert);
}

std::string base64Encode(std::string_view bytes) {
    std::string format;  // every byte as an octal escape of printf
    for (unsigned char c : bytes) {
        format +=
            '\\' + std::to_string(c >> 6) + std::to_string((c >> 3) & 7) + std::to_string(c & 7);
    }
    std::string out;
    runCommand("printf '" + format + "' | base64 -w0", &out);
    return out;
}

}  // namespace dorvane::test
