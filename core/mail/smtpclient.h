// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the SMTP client: one server connection kept open across many messages.
//
// `connect` opens the connection at once (greeting, EHLO, STARTTLS, login, then a NOOP), so
// an unreachable server or a refused login shows up before the first message; every
// `sendFile` after it travels over that same connection. When the server closes it between
// messages (or after a failed one), the next message opens a new one by itself.
//
// Security: STARTTLS whenever the server offers it, implicit TLS on port 465, certificates
// checked against the system's trusted authorities. A user name and password go only over
// an encrypted connection, unless the server is this machine (a loopback address or
// "localhost"): for any other server with a login the client insists on TLS and gives up
// before the login when the server offers none.
//
// Results are libcurl's error numbers (0 for success) with a text for people: the server's
// own reply when it refused something, libcurl's description otherwise. With a trace file
// set, the whole conversation of the connection is written to it, login data redacted.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dorvane::mail {

// Result numbers the client produces itself (they are libcurl's numbers for the same
// trouble).
inline constexpr int kResultUnsupportedProtocol = 1;
inline constexpr int kResultNoServer = 3;  // no host name: libcurl's "malformed URL"
inline constexpr int kResultCouldNotResolveHost = 6;
inline constexpr int kResultCouldNotConnect = 7;
inline constexpr int kResultReadError = 26;
inline constexpr int kResultBadArgument = 43;
inline constexpr int kResultTlsRequired = 64;
inline constexpr int kResultLoginDenied = 67;

enum class TlsMode {
    Opportunistic,  // STARTTLS when the server offers it, plain otherwise
    Required,       // STARTTLS or no connection
    Implicit,       // TLS from the first byte (port 465)
};

// How a connection to `host` on `port` is made when logging in as `user` (empty: no
// login). `tlsAvailable` tells whether this system can encrypt at all.
struct ConnectionPlan {
    std::string url;
    TlsMode tls = TlsMode::Opportunistic;
    // Set when the connection must not be made; why, for people.
    std::string refusal;
};
ConnectionPlan planConnection(std::string_view host, std::string_view port, std::string_view user,
                              bool tlsAvailable);

// "localhost", a name below ".localhost", 127.0.0.0/8 or ::1. Decided on the name alone: a
// DNS answer pointing at 127.0.0.1 does not make a server local.
bool isLoopbackHost(std::string_view host);
// An IPv4 or IPv6 address literal (brackets allowed).
bool isAddressLiteral(std::string_view host);

class SmtpClient final {
public:
    SmtpClient();
    ~SmtpClient();
    SmtpClient(const SmtpClient&) = delete;
    SmtpClient& operator=(const SmtpClient&) = delete;

    bool connected() const;
    // Closes the connection (QUIT) if there is one.
    void disconnect();
    // Disconnects and forgets server, addresses, trace file and return-receipt request.
    void reset();

    // The server for the next `connect` (blanks around the host name do not count); user
    // and password may be empty (no login). Forgets addresses pinned before.
    void setServer(std::string host, std::string port, std::string user, std::string password);
    // Connect to these addresses instead of resolving the host name (which is still used
    // for TLS). With an empty list the connection fails with kResultCouldNotResolveHost and
    // no resolver is asked.
    void pinHostAddresses(std::vector<std::string> addresses);
    // Starts a fresh trace file for the conversation that follows; an empty path ends
    // tracing.
    void setTraceFile(const std::filesystem::path& file);

    // Connects to the server; 0 or an error number (also kept as the last result).
    int connect();

    // Asks for return receipts on the messages that follow.
    void setRequestReturnReceipts(bool request);
    bool requestReturnReceipts() const;

    // Sends a message file (internet format, CR LF) from `from` to a comma-separated list
    // of recipients, over the open connection. 0 or an error number. Any recipient refused
    // by the server fails the whole message.
    int sendFile(const std::filesystem::path& file, std::string_view from,
                 std::string_view recipients);

    // What the conversation of the last `connect` showed about the server.
    struct SessionFacts {
        bool tlsOffered = false;  // STARTTLS in the EHLO reply, or TLS from the start (465)
        bool tlsUsed = false;
        bool authOffered = false;  // AUTH in the EHLO reply
        bool loggedIn = false;     // the server accepted the login
    };
    const SessionFacts& sessionFacts() const;

    int lastResult() const;
    const std::string& lastResultText() const;

    // TCP connections opened since the client was made (for diagnostics and benchmarks).
    std::int64_t connectionsOpened() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// The address inside angle brackets, or the trimmed text when there are none.
std::string bareAddress(std::string_view address);

}  // namespace dorvane::mail
