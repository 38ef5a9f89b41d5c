// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mailservers.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <cstring>
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

#include "common/text.h"

namespace dorvane::test {
namespace {

// ---- A small JSON reader for the servers' records ----

struct Json {
    enum class Kind { Null, Bool, Number, String, Array, Object };
    Kind kind = Kind::Null;
    bool boolean = false;
    double number = 0;
    std::string string;
    std::vector<Json> array;
    std::vector<std::pair<std::string, Json>> object;

    const Json& operator[](std::string_view key) const {
        static const Json null;
        for (const auto& [k, v] : object) {
            if (k == key) {
                return v;
            }
        }
        return null;
    }
    std::string text() const { return kind == Kind::String ? string : std::string(); }
    int integer() const { return kind == Kind::Number ? static_cast<int>(number) : 0; }
    bool truth() const { return kind == Kind::Bool && boolean; }
};

class JsonReader {
public:
    explicit JsonReader(std::string_view in) : m_in(in) {}

    Json read() {
        Json value = parseValue();
        skipSpace();
        if (m_pos != m_in.size()) {
            fail("trailing characters");
        }
        return value;
    }

private:
    [[noreturn]] void fail(const std::string& why) const {
        throw std::runtime_error("record line is not JSON (" + why + "): " + std::string(m_in));
    }
    void skipSpace() {
        while (m_pos < m_in.size() && std::strchr(" \t\r\n", m_in[m_pos])) {
            ++m_pos;
        }
    }
    char peek() {
        skipSpace();
        return m_pos < m_in.size() ? m_in[m_pos] : '\0';
    }
    void expect(char c) {
        if (peek() != c) {
            fail(std::string("expected ") + c);
        }
        ++m_pos;
    }
    bool consume(std::string_view word) {
        if (m_in.substr(m_pos, word.size()) == word) {
            m_pos += word.size();
            return true;
        }
        return false;
    }

    Json parseValue() {
        Json v;
        const char c = peek();
        if (c == '{') {
            v.kind = Json::Kind::Object;
            ++m_pos;
            if (peek() == '}') {
                ++m_pos;
                return v;
            }
            while (true) {
                std::string key = parseString();
                expect(':');
                v.object.emplace_back(std::move(key), parseValue());
                if (peek() == ',') {
                    ++m_pos;
                    continue;
                }
                expect('}');
                return v;
            }
        }
        if (c == '[') {
            v.kind = Json::Kind::Array;
            ++m_pos;
            if (peek() == ']') {
                ++m_pos;
                return v;
            }
            while (true) {
                v.array.push_back(parseValue());
                if (peek() == ',') {
                    ++m_pos;
                    continue;
                }
                expect(']');
                return v;
            }
        }
        if (c == '"') {
            v.kind = Json::Kind::String;
            v.string = parseString();
            return v;
        }
        if (consume("true")) {
            v.kind = Json::Kind::Bool;
            v.boolean = true;
            return v;
        }
        if (consume("false")) {
            v.kind = Json::Kind::Bool;
            return v;
        }
        if (consume("null")) {
            return v;
        }
        std::size_t used = 0;
        const std::string rest(m_in.substr(m_pos));
        try {
            v.number = std::stod(rest, &used);
        } catch (const std::exception&) {
            fail("bad value");
        }
        v.kind = Json::Kind::Number;
        m_pos += used;
        return v;
    }

    unsigned hex4() {
        if (m_pos + 4 > m_in.size()) {
            fail("short \\u escape");
        }
        unsigned value =
            static_cast<unsigned>(std::stoul(std::string(m_in.substr(m_pos, 4)), nullptr, 16));
        m_pos += 4;
        return value;
    }

    static void appendUtf8(std::string& out, unsigned cp) {
        if (cp < 0x80) {
            out += static_cast<char>(cp);
        } else if (cp < 0x800) {
            out += static_cast<char>(0xC0 | (cp >> 6));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            out += static_cast<char>(0xE0 | (cp >> 12));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (cp >> 18));
            out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }

    std::string parseString() {
        expect('"');
        std::string out;
        while (m_pos < m_in.size() && m_in[m_pos] != '"') {
            char c = m_in[m_pos++];
            if (c != '\\') {
                out += c;
                continue;
            }
            if (m_pos >= m_in.size()) {
                fail("escape at end");
            }
            c = m_in[m_pos++];
            switch (c) {
                case 'n':
                    out += '\n';
                    break;
                case 'r':
                    out += '\r';
                    break;
                case 't':
                    out += '\t';
                    break;
                case 'b':
                    out += '\b';
                    break;
                case 'f':
                    out += '\f';
                    break;
                case 'u': {
                    unsigned cp = hex4();
                    if (cp >= 0xD800 && cp < 0xDC00 && consume("\\u")) {
                        const unsigned low = hex4();
                        cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
                    }
                    appendUtf8(out, cp);
                    break;
                }
                default:
                    out += c;
            }
        }
        expect('"');
        return out;
    }

    std::string_view m_in;
    std::size_t m_pos = 0;
};

// The complete lines of a JSON-lines file (a line still being written is left out).
std::vector<Json> readRecord(const std::filesystem::path& file) {
    std::vector<Json> out;
    const std::string content = readFile(file);
    std::size_t start = 0;
    while (true) {
        const std::size_t end = content.find('\n', start);
        if (end == std::string::npos) {
            break;
        }
        const std::string_view line(content.data() + start, end - start);
        if (!text::trim(line).empty()) {
            out.push_back(JsonReader(line).read());
        }
        start = end + 1;
    }
    return out;
}

std::string base64Decode(std::string_view in) {
    auto value = [](char c) -> int {
        if (c >= 'A' && c <= 'Z') {
            return c - 'A';
        }
        if (c >= 'a' && c <= 'z') {
            return c - 'a' + 26;
        }
        if (c >= '0' && c <= '9') {
            return c - '0' + 52;
        }
        if (c == '+') {
            return 62;
        }
        if (c == '/') {
            return 63;
        }
        return -1;
    };
    std::string out;
    unsigned buffer = 0;
    int bits = 0;
    for (char c : in) {
        const int v = value(c);
        if (v < 0) {
            continue;
        }
        buffer = (buffer << 6) | static_cast<unsigned>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out += static_cast<char>((buffer >> bits) & 0xFF);
        }
    }
    return out;
}

HeaderList headerList(const Json& json) {
    HeaderList out;
    for (const Json& pair : json.array) {
        if (pair.array.size() == 2) {
            out.emplace_back(pair.array[0].text(), pair.array[1].text());
        }
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

MimeRecord mimeRecord(const Json& json) {
    MimeRecord mime;
    mime.headers = headerList(json["headers"]);
    mime.contentType = json["content_type"].text();
    mime.boundary = json["boundary"].text();
    mime.subject = json["subject"].text();
    for (const Json& d : json["defects"].array) {
        mime.defects.push_back(d.text());
    }
    for (const Json& p : json["parts"].array) {
        MimePartRecord part;
        part.headers = headerList(p["headers"]);
        part.contentType = p["content_type"].text();
        part.filename = p["filename"].text();
        part.body = base64Decode(p["body_b64"].text());
        mime.parts.push_back(std::move(part));
    }
    return mime;
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
        dup2(fds[1], STDOUT_FILENO);
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
    close(fds[1]);

    std::string output;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (output.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd p{fds[0], POLLIN, 0};
        if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0) {
            break;
        }
        char buffer[256];
        const ssize_t n = read(fds[0], buffer, sizeof buffer);
        if (n <= 0) {
            break;
        }
        output.append(buffer, static_cast<std::size_t>(n));
    }
    close(fds[0]);
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
    std::vector<std::string> args = {"--record", (m_dir / "smtp.jsonl").string()};
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
    for (const Json& e : readRecord(m_dir / "smtp.jsonl")) {
        const std::string event = e["event"].text();
        const int id = e["session"].integer();
        if (event == "connect") {
            ++record.connections;
            session(id);
        } else if (event == "ehlo") {
            session(id).ehlo = e["name"].text();
        } else if (event == "starttls") {
            session(id).startTls = true;
        } else if (event == "auth") {
            session(id).auths.push_back(
                {e["mechanism"].text(), e["user"].text(), e["success"].truth()});
        } else if (event == "quit") {
            session(id).quit = true;
        } else if (event == "rcpt") {
            if (!e["accepted"].truth()) {
                record.refusedRecipients.push_back(e["address"].text());
            }
        } else if (event == "message" || event == "dropped") {
            SmtpMessageRecord m;
            m.session = id;
            m.mailFrom = e["mail_from"].text();
            for (const Json& r : e["rcpt_tos"].array) {
                m.rcptTos.push_back(r.text());
            }
            m.status = e["status"].text();
            m.dropped = event == "dropped";
            m.data = base64Decode(e["data_b64"].text());
            m.mime = mimeRecord(e["mime"]);
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
                                 (m_dir / "dns.jsonl").string()},
        m_dir / "dns.log");
}

std::vector<DnsQueryRecord> DnsTestServer::queries() const {
    std::vector<DnsQueryRecord> out;
    for (const Json& q : readRecord(m_dir / "dns.jsonl")) {
        out.push_back({q["name"].text(), q["type"].text()});
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
    const int s = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    if (bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        getsockname(s, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        close(s);
        throw std::runtime_error("no free loopback port");
    }
    close(s);
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
    static constexpr char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    std::size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                           (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                           static_cast<unsigned char>(bytes[i + 2]);
        out += alphabet[(v >> 18) & 63];
        out += alphabet[(v >> 12) & 63];
        out += alphabet[(v >> 6) & 63];
        out += alphabet[v & 63];
    }
    if (i + 1 == bytes.size()) {
        const unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
        out += alphabet[(v >> 18) & 63];
        out += alphabet[(v >> 12) & 63];
        out += "==";
    } else if (i + 2 == bytes.size()) {
        const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                           (static_cast<unsigned char>(bytes[i + 1]) << 8);
        out += alphabet[(v >> 18) & 63];
        out += alphabet[(v >> 12) & 63];
        out += alphabet[(v >> 6) & 63];
        out += '=';
    }
    return out;
}

}  // namespace dorvane::test
