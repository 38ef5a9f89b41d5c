// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — real SMTP and DNS servers on loopback, and what they recorded.
//
// SmtpTestServer runs tests/support/smtp_server.py (aiosmtpd) and DnsTestServer runs
// tests/support/dns_server.py (dnslib) as child processes on free loopback ports; each is
// ready when its constructor returns and stopped by its destructor. `record()` and
// `queries()` read back what a server saw so far.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/testsupport.h"

namespace dorvane::test {

using HeaderList = std::vector<std::pair<std::string, std::string>>;

// One body part as Python's email package reads it back.
struct MimePartRecord {
    HeaderList headers;       // in order, names and values as written
    std::string contentType;  // the effective type ("text/plain" when none is given)
    std::string filename;
    std::string body;  // decoded bytes
    std::optional<std::string> header(std::string_view name) const;
    std::vector<std::string> headerNames() const;
};

struct MimeRecord {
    HeaderList headers;
    std::string contentType;
    std::string boundary;
    std::string subject;  // RFC 2047 decoded
    std::vector<std::string> defects;
    std::vector<MimePartRecord> parts;
    std::optional<std::string> header(std::string_view name) const;
};

struct SmtpAuthRecord {
    std::string mechanism;
    std::string user;
    bool success = false;
};

struct SmtpSessionRecord {
    int id = 0;
    std::string ehlo;
    bool startTls = false;
    bool quit = false;
    std::vector<SmtpAuthRecord> auths;
};

struct SmtpMessageRecord {
    int session = 0;
    std::string mailFrom;
    std::vector<std::string> rcptTos;
    std::string status;    // the server's reply to the data; empty when dropped
    bool dropped = false;  // connection closed in the middle of the data
    std::string data;      // as received (dot-unstuffed)
    MimeRecord mime;
};

struct SmtpRecord {
    int connections = 0;
    std::vector<SmtpSessionRecord> sessions;
    std::vector<SmtpMessageRecord> messages;  // accepted, refused and dropped, in order
    std::vector<std::string> refusedRecipients;
    // Messages the server accepted.
    std::vector<SmtpMessageRecord> accepted() const;
};

struct SmtpServerOptions {
    std::vector<std::string> refuseRecipients;  // answered 550 at RCPT TO
    int refuseData = 0;                         // the first N messages get 554 after the data
    int dropData = 0;  // the connection closes in the middle of the first N messages
    std::string authUser;
    std::string authPassword;
    bool authRequired = false;
    std::vector<std::string> authMechanisms;  // offered mechanisms; empty: LOGIN and PLAIN
    std::filesystem::path tlsCertificate;     // offers STARTTLS with this certificate
    std::filesystem::path tlsKey;
    bool quiet = false;   // record messages without their content
    int dataDelayMs = 0;  // waits this long before answering a message's data
};

// A running helper process that printed "READY <port>".
class ServerProcess {
public:
    ServerProcess(const std::string& script, std::vector<std::string> arguments,
                  const std::filesystem::path& logFile);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;
    int port() const { return m_port; }

private:
    void stop();

    int m_pid = -1;
    int m_port = 0;
};

class SmtpTestServer {
public:
    explicit SmtpTestServer(SmtpServerOptions options = {});
    int port() const { return m_process->port(); }
    std::string portText() const { return std::to_string(port()); }
    SmtpRecord record() const;

private:
    TempDir m_dir;
    std::unique_ptr<ServerProcess> m_process;
};

struct DnsQueryRecord {
    std::string name;  // fully qualified, with the final "."
    std::string type;  // "MX", "A", "AAAA", ...
};

class DnsTestServer {
public:
    // `zone`: master-file lines such as "example.test. 60 IN MX 10 mx.example.test.".
    explicit DnsTestServer(const std::string& zone);
    int port() const { return m_process->port(); }
    // For $DORVANE_DNS_SERVER.
    std::string address() const { return "127.0.0.1:" + std::to_string(port()); }
    std::vector<DnsQueryRecord> queries() const;
    // Questions of one type ("MX") for one name ("example.test.").
    int count(std::string_view name, std::string_view type) const;

private:
    TempDir m_dir;
    std::unique_ptr<ServerProcess> m_process;
};

// Sets (or with nullopt unsets) an environment variable for the life of the object.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, std::optional<std::string> value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};

// A loopback port where nothing listens (bound, then released).
int unusedLoopbackPort();

// A self-signed certificate and key for "localhost" made with openssl in `dir`; false when
// openssl is not there.
bool makeSelfSignedCertificate(const std::filesystem::path& dir, std::filesystem::path& cert,
                               std::filesystem::path& key);

// Bytes in base64, as coreutils' base64 writes them (no line breaks).
std::string base64Encode(std::string_view bytes);

}  // namespace dorvane::test
