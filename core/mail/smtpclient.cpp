// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/smtpclient.h"

#include <arpa/inet.h>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <unistd.h>

#include <curl/curl.h>

#include "common/text.h"

namespace dorvane::mail {
namespace {

struct CurlEasyCleanup {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct CurlSlistFree {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
struct FileClose {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using CurlPtr = std::unique_ptr<CURL, CurlEasyCleanup>;
using SlistPtr = std::unique_ptr<curl_slist, CurlSlistFree>;

void initCurl() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool curlHasTls() {
    initCurl();
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    return info && (info->features & CURL_VERSION_SSL) != 0;
}

std::string_view withoutBrackets(std::string_view host) {
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    return host;
}

bool isIpv6Literal(std::string_view host) {
    in6_addr v6{};
    const std::string bare(withoutBrackets(host));
    return inet_pton(AF_INET6, bare.c_str(), &v6) == 1;
}

std::string urlHost(std::string_view host) {
    if (isIpv6Literal(host) && host.front() != '[') {
        return "[" + std::string(host) + "]";
    }
    return std::string(host);
}

std::string ehloName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0 || !name[0]) {
        return "localhost";
    }
    return name;
}

size_t discardBody(char*, size_t size, size_t count, void*) {
    return size * count;
}

size_t readFromFile(char* buffer, size_t size, size_t count, void* file) {
    return std::fread(buffer, size, count, static_cast<std::FILE*>(file));
}

bool startsWithIgnoreCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           text::equalsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

std::string withoutLineEnd(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    return std::string(line);
}

}  // namespace

std::string bareAddress(std::string_view address) {
    auto open = address.find('<');
    auto close = address.rfind('>');
    if (open != std::string_view::npos && close != std::string_view::npos && close > open) {
        return std::string(text::trim(address.substr(open + 1, close - open - 1)));
    }
    return std::string(text::trim(address));
}

bool isAddressLiteral(std::string_view host) {
    in_addr v4{};
    const std::string bare(withoutBrackets(host));
    return inet_pton(AF_INET, bare.c_str(), &v4) == 1 || isIpv6Literal(host);
}

bool isLoopbackHost(std::string_view host) {
    const std::string lower = text::toLower(host);
    if (lower == "localhost" || (lower.size() > 10 && lower.ends_with(".localhost"))) {
        return true;
    }
    const std::string bare(withoutBrackets(lower));
    in_addr v4{};
    if (inet_pton(AF_INET, bare.c_str(), &v4) == 1) {
        return (ntohl(v4.s_addr) >> 24) == 127;
    }
    in6_addr v6{};
    if (inet_pton(AF_INET6, bare.c_str(), &v6) == 1) {
        if (IN6_IS_ADDR_LOOPBACK(&v6)) {
            return true;
        }
        return IN6_IS_ADDR_V4MAPPED(&v6) && v6.s6_addr[12] == 127;
    }
    return false;
}

ConnectionPlan planConnection(std::string_view host, std::string_view port, std::string_view user,
                              bool tlsAvailable) {
    ConnectionPlan plan;
    const std::string portText(text::trim(port));
    const bool implicit = portText == "465";
    plan.url = std::string(implicit ? "smtps://" : "smtp://") + urlHost(host);
    if (!portText.empty()) {
        plan.url += ":" + portText;
    }
    // The path names this machine in EHLO.
    plan.url += "/" + ehloName();
    if (implicit) {
        plan.tls = TlsMode::Implicit;
    } else if (!user.empty() && !isLoopbackHost(host)) {
        plan.tls = TlsMode::Required;
    }
    if (!tlsAvailable && plan.tls != TlsMode::Opportunistic) {
        plan.refusal = "This system cannot encrypt the connection to the SMTP server " +
                       std::string(host) +
                       "; Dorvane does not send the user name and password without encryption.";
    }
    return plan;
}

struct SmtpClient::Impl {
    CurlPtr handle;
    SlistPtr resolve;
    std::string host;
    std::string port;
    std::string user;
    std::string password;
    std::vector<std::string> pinned;
    bool pinnedSet = false;
    bool isConnected = false;
    bool returnReceipts = false;
    ConnectionPlan plan;
    int result = 0;
    std::string resultText;
    int connectResult = 0;
    std::string connectText;
    std::int64_t connections = 0;
    char errorBuffer[CURL_ERROR_SIZE] = {};

    SessionFacts facts;
    bool startTlsSent = false;

    // Conversation state, kept for the result text and the trace.
    std::string lastReply;
    std::string refusal;  // the last 4xx/5xx reply; a QUIT may follow it
    bool inAuth = false;
    std::ofstream trace;
    bool traceAtLineStart = true;

    ~Impl() { closeHandle(); }

    void closeHandle() {
        handle.reset();  // sends QUIT on an open connection
        resolve.reset();
        isConnected = false;
    }

    void writeTrace(std::string_view prefix, std::string_view data) {
        if (!trace.is_open()) {
            return;
        }
        for (char c : data) {
            if (traceAtLineStart) {
                trace << prefix;
                traceAtLineStart = false;
            }
            trace.put(c);
            if (c == '\n') {
                traceAtLineStart = true;
            }
        }
        trace.flush();
    }

    // A command going out: login data never reaches the trace.
    std::string redactCommand(std::string_view line) {
        if (startsWithIgnoreCase(line, "AUTH ")) {
            inAuth = true;
            std::string_view rest = line.substr(5);
            const auto space = rest.find(' ');
            std::string shown = "AUTH " + withoutLineEnd(rest.substr(0, space));
            if (space != std::string_view::npos) {
                shown += " <redacted>";
            }
            return shown + "\r\n";
        }
        if (inAuth) {
            return "<redacted>\r\n";
        }
        return std::string(line);
    }

    void onDebug(curl_infotype type, std::string_view data) {
        const bool isData = type == CURLINFO_DATA_OUT || type == CURLINFO_DATA_IN;
        if (!isData && !traceAtLineStart) {
            writeTrace("", "\n");
        }
        switch (type) {
            case CURLINFO_TEXT:
                writeTrace("* ", data);
                break;
            case CURLINFO_HEADER_IN: {
                const std::string reply = withoutLineEnd(data);
                if (!reply.empty()) {
                    lastReply = reply;
                    if (reply[0] == '4' || reply[0] == '5') {
                        refusal = reply;
                    }
                }
                noteFacts(reply);
                if (inAuth && !reply.starts_with("334")) {
                    inAuth = false;
                }
                writeTrace("< ", data);
                break;
            }
            case CURLINFO_HEADER_OUT:
                startTlsSent = startTlsSent || startsWithIgnoreCase(data, "STARTTLS");
                writeTrace("> ", redactCommand(data));
                break;
            case CURLINFO_DATA_OUT:
                writeTrace("> ", data);
                break;
            case CURLINFO_DATA_IN:
                writeTrace("< ", data);
                break;
            default:  // TLS records: nothing readable
                break;
        }
    }

    // The EHLO reply's extensions ("250-STARTTLS", "250 AUTH PLAIN LOGIN"), the reply to
    // STARTTLS and to the login.
    void noteFacts(std::string_view reply) {
        if (reply.size() > 4 && reply.starts_with("250")) {
            const std::string_view extension = reply.substr(4);
            facts.tlsOffered = facts.tlsOffered || startsWithIgnoreCase(extension, "STARTTLS");
            facts.authOffered = facts.authOffered || startsWithIgnoreCase(extension, "AUTH");
        } else if (startTlsSent && reply.starts_with("220")) {
            facts.tlsUsed = true;
        } else if (inAuth && reply.starts_with("235")) {
            facts.loggedIn = true;
        }
    }

    static int debugCallback(CURL*, curl_infotype type, char* data, size_t size, void* self) {
        static_cast<Impl*>(self)->onDebug(type, std::string_view(data, size));
        return 0;
    }

    void setResult(int code, std::string text) {
        result = code;
        resultText = std::move(text);
    }

    // The result of a transfer: the server's words when it refused, libcurl's otherwise.
    void takeResult(CURLcode code) {
        long connects = 0;
        curl_easy_getinfo(handle.get(), CURLINFO_NUM_CONNECTS, &connects);
        connections += connects;
        if (code == CURLE_OK) {
            setResult(0, lastReply);
            return;
        }
        std::string text;
        if (!refusal.empty()) {
            text = refusal;
        } else if (errorBuffer[0]) {
            text = errorBuffer;
        } else {
            text = curl_easy_strerror(code);
        }
        if (code == CURLE_USE_SSL_FAILED && plan.tls == TlsMode::Required) {
            text = "The SMTP server " + host +
                   " offers no encrypted connection (STARTTLS); Dorvane does not send the user "
                   "name and password without encryption.";
        }
        setResult(static_cast<int>(code), text);
    }

    void prepareTransfer() {
        errorBuffer[0] = '\0';
        lastReply.clear();
        refusal.clear();
        inAuth = false;
    }

    bool openHandle() {
        initCurl();
        handle.reset(curl_easy_init());
        if (!handle) {
            return false;
        }
        CURL* h = handle.get();
        curl_easy_setopt(h, CURLOPT_URL, plan.url.c_str());
        curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
        curl_easy_setopt(h, CURLOPT_USE_SSL,
                         plan.tls == TlsMode::Opportunistic ? CURLUSESSL_TRY : CURLUSESSL_ALL);
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, 1L);
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, 2L);
        if (!user.empty()) {
            curl_easy_setopt(h, CURLOPT_USERNAME, user.c_str());
            curl_easy_setopt(h, CURLOPT_PASSWORD, password.c_str());
        }
        if (pinnedSet) {
            std::string entry = std::string(withoutBrackets(host)) + ":" +
                                (text::trim(port).empty()
                                     ? std::string(plan.tls == TlsMode::Implicit ? "465" : "25")
                                     : std::string(text::trim(port))) +
                                ":";
            for (std::size_t i = 0; i < pinned.size(); ++i) {
                entry += (i ? "," : "") + urlHost(pinned[i]);
            }
            resolve.reset(curl_slist_append(nullptr, entry.c_str()));
            curl_easy_setopt(h, CURLOPT_RESOLVE, resolve.get());
        }
        curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT, 30L);
        curl_easy_setopt(h, CURLOPT_SERVER_RESPONSE_TIMEOUT, 120L);
        curl_easy_setopt(h, CURLOPT_LOW_SPEED_LIMIT, 1L);
        curl_easy_setopt(h, CURLOPT_LOW_SPEED_TIME, 120L);
        curl_easy_setopt(h, CURLOPT_TCP_KEEPALIVE, 1L);
        curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorBuffer);
        curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, discardBody);
        curl_easy_setopt(h, CURLOPT_VERBOSE, 1L);
        curl_easy_setopt(h, CURLOPT_DEBUGFUNCTION, &Impl::debugCallback);
        curl_easy_setopt(h, CURLOPT_DEBUGDATA, this);
        return true;
    }
};

SmtpClient::SmtpClient() : m_impl(std::make_unique<Impl>()) {}

SmtpClient::~SmtpClient() = default;

bool SmtpClient::connected() const {
    return m_impl->isConnected;
}

void SmtpClient::disconnect() {
    m_impl->closeHandle();
}

void SmtpClient::reset() {
    disconnect();
    m_impl->host.clear();
    m_impl->port.clear();
    m_impl->user.clear();
    m_impl->password.clear();
    m_impl->pinned.clear();
    m_impl->pinnedSet = false;
    m_impl->returnReceipts = false;
    m_impl->connectResult = 0;
    m_impl->connectText.clear();
    setTraceFile({});
}

void SmtpClient::setServer(std::string host, std::string port, std::string user,
                           std::string password) {
    m_impl->host = std::string(text::trim(host));
    m_impl->port = std::move(port);
    m_impl->user = std::move(user);
    m_impl->password = std::move(password);
    m_impl->pinned.clear();
    m_impl->pinnedSet = false;
}

void SmtpClient::pinHostAddresses(std::vector<std::string> addresses) {
    m_impl->pinned = std::move(addresses);
    m_impl->pinnedSet = true;
}

void SmtpClient::setTraceFile(const std::filesystem::path& file) {
    m_impl->trace.close();
    m_impl->trace.clear();
    m_impl->traceAtLineStart = true;
    if (!file.empty()) {
        m_impl->trace.open(file, std::ios::binary | std::ios::trunc);
    }
}

int SmtpClient::connect() {
    Impl& d = *m_impl;
    disconnect();
    d.prepareTransfer();
    d.plan = planConnection(d.host, d.port, d.user, curlHasTls());
    auto fail = [&d](int code, std::string text) {
        d.writeTrace("* ", text + "\n");
        d.setResult(code, std::move(text));
        d.connectResult = d.result;
        d.connectText = d.resultText;
        return d.result;
    };
    if (!d.plan.refusal.empty()) {
        return fail(kResultTlsRequired, d.plan.refusal);
    }
    if (d.host.empty()) {
        return fail(kResultNoServer, "No SMTP server named");
    }
    if (d.pinnedSet && d.pinned.empty()) {
        return fail(kResultCouldNotResolveHost, "Could not resolve host: " + d.host);
    }
    if (!d.openHandle()) {
        return fail(kResultBadArgument, "The SMTP client could not be set up");
    }
    d.facts = {};
    d.startTlsSent = false;
    // A NOOP makes libcurl open the connection, read the greeting, say EHLO, start TLS and
    // log in now; the messages then reuse the connection.
    curl_easy_setopt(d.handle.get(), CURLOPT_CUSTOMREQUEST, "NOOP");
    const CURLcode code = curl_easy_perform(d.handle.get());
    curl_easy_setopt(d.handle.get(), CURLOPT_CUSTOMREQUEST, nullptr);
    d.takeResult(code);
    d.connectResult = d.result;
    d.connectText = d.resultText;
    if (code != CURLE_OK) {
        d.closeHandle();
        return d.result;
    }
    if (d.plan.tls == TlsMode::Implicit) {
        d.facts.tlsOffered = d.facts.tlsUsed = true;
    }
    d.isConnected = true;
    return 0;
}

const SmtpClient::SessionFacts& SmtpClient::sessionFacts() const {
    return m_impl->facts;
}

void SmtpClient::setRequestReturnReceipts(bool request) {
    m_impl->returnReceipts = request;
}

bool SmtpClient::requestReturnReceipts() const {
    return m_impl->returnReceipts;
}

int SmtpClient::sendFile(const std::filesystem::path& file, std::string_view from,
                         std::string_view recipients) {
    Impl& d = *m_impl;
    d.prepareTransfer();
    if (!d.isConnected) {
        const int code = d.connectResult ? d.connectResult : kResultCouldNotConnect;
        std::string text = "Not connected to an SMTP server";
        if (!d.connectText.empty()) {
            text += ": " + d.connectText;
        }
        d.setResult(code, text);
        return code;
    }
    curl_slist* list = nullptr;
    for (const std::string& piece : text::split(recipients, ',')) {
        const std::string address = bareAddress(piece);
        if (!address.empty()) {
            curl_slist* grown = curl_slist_append(list, ("<" + address + ">").c_str());
            if (!grown) {
                curl_slist_free_all(list);
                list = nullptr;
                break;
            }
            list = grown;
        }
    }
    SlistPtr rcpt(list);
    if (!rcpt) {
        d.setResult(kResultBadArgument, "No recipients");
        return d.result;
    }
    std::unique_ptr<std::FILE, FileClose> in(std::fopen(file.c_str(), "rb"));
    if (!in) {
        d.setResult(kResultReadError, "Cannot read the message file " + file.string());
        return d.result;
    }
    std::error_code ec;
    const auto size = std::filesystem::file_size(file, ec);

    CURL* h = d.handle.get();
    const std::string mailFrom = "<" + bareAddress(from) + ">";
    curl_easy_setopt(h, CURLOPT_MAIL_FROM, mailFrom.c_str());
    curl_easy_setopt(h, CURLOPT_MAIL_RCPT, rcpt.get());
    curl_easy_setopt(h, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(h, CURLOPT_READFUNCTION, readFromFile);
    curl_easy_setopt(h, CURLOPT_READDATA, in.get());
    curl_easy_setopt(h, CURLOPT_INFILESIZE_LARGE,
                     ec ? curl_off_t(-1) : static_cast<curl_off_t>(size));
    const CURLcode code = curl_easy_perform(h);
    curl_easy_setopt(h, CURLOPT_MAIL_RCPT, nullptr);
    curl_easy_setopt(h, CURLOPT_MAIL_FROM, nullptr);
    curl_easy_setopt(h, CURLOPT_UPLOAD, 0L);
    curl_easy_setopt(h, CURLOPT_READDATA, nullptr);
    d.takeResult(code);
    return d.result;
}

int SmtpClient::lastResult() const {
    return m_impl->result;
}

const std::string& SmtpClient::lastResultText() const {
    return m_impl->resultText;
}

std::int64_t SmtpClient::connectionsOpened() const {
    return m_impl->connections;
}

}  // namespace dorvane::mail
