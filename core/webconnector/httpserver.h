// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a small HTTP(S) server for the Web Connector service, over libmicrohttpd.
//
// Each connection gets its own thread, so a handler may wait (a poll that waits for the next
// request) without holding up the others. Bodies over the limit are not read: the handler is
// told, and the connection is closed after the answer. TLS comes from GnuTLS inside
// libmicrohttpd, TLS 1.2 and later only.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::webconnector {

struct HttpRequest {
    std::string method;
    std::string path;
    std::string peer;  // the client's address
    std::string contentType;
    std::string body;
    bool tooLarge = false;  // the body went over the limit and was dropped
};

struct HttpReply {
    int status = 200;
    std::string contentType = "text/xml; charset=utf-8";
    std::string body;
};

using HttpHandler = std::function<HttpReply(const HttpRequest&)>;

// The server's own part of reading a request; the rest is libmicrohttpd's.
// Whether the declared Content-Length refuses the body before a byte of it is read: over
// `maxBodyBytes`, or no number that fits.
bool declaredTooLarge(const char* contentLength, std::size_t maxBodyBytes);
// Adds a piece of the body as it arrives. A body that grows over `maxBodyBytes` is dropped
// and the request marked tooLarge; later pieces are ignored.
void appendBody(HttpRequest& request, std::string_view piece, std::size_t maxBodyBytes);

struct HttpServerOptions {
    // "127.0.0.1" for this computer only; "" for every IPv4 address.
    std::string bindAddress = "127.0.0.1";
    int port = 0;  // 0: any free port (see port())
    // PEM texts; both empty for plain HTTP.
    std::string certificatePem;
    std::string keyPem;
    std::size_t maxBodyBytes = 10 * 1024 * 1024;
    // An idle connection is closed after this long; it must outlast the longest poll.
    std::chrono::seconds idleTimeout{120};
};

class HttpServer {
public:
    // Starts listening; fails with the reason when the port cannot be had or the certificate
    // or key does not load.
    static Result<std::unique_ptr<HttpServer>> start(const HttpServerOptions& options,
                                                     HttpHandler handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    int port() const { return m_port; }

private:
    HttpServer() = default;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
    int m_port = 0;
};

}  // namespace dorvane::webconnector
