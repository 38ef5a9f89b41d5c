// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/httpserver.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <microhttpd.h>
#include <mutex>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "common/fd.h"

namespace dorvane::webconnector {
namespace {

// What libmicrohttpd said while a daemon started (bind errors, certificate errors).
std::mutex g_logMutex;
std::string* g_startLog = nullptr;

void logMessage(void*, const char* format, va_list args) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    std::lock_guard lock(g_logMutex);
    if (g_startLog != nullptr) {
        std::string line(text);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
            line.pop_back();
        }
        if (!g_startLog->empty()) {
            *g_startLog += "; ";
        }
        *g_startLog += line;
    }
}

// The state of one request while its body arrives.
struct Exchange {
    HttpRequest request;
    bool refused = false;
};

std::string peerOf(MHD_Connection* connection) {
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    if (info == nullptr || info->client_addr == nullptr) {
        return "?";
    }
    char text[INET6_ADDRSTRLEN] = "?";
    const sockaddr* addr = info->client_addr;
    if (addr->sa_family == AF_INET) {
        ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(addr)->sin_addr, text,
                    sizeof text);
    } else if (addr->sa_family == AF_INET6) {
        ::inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(addr)->sin6_addr, text,
                    sizeof text);
    }
    return text;
}

MHD_Result send(MHD_Connection* connection, const HttpReply& reply, bool close) {
    MHD_Response* response = MHD_create_response_from_buffer(
        reply.body.size(), const_cast<char*>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.contentType.c_str());
    if (close) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
    }
    const MHD_Result queued =
        MHD_queue_response(connection, static_cast<unsigned int>(reply.status), response);
    MHD_destroy_response(response);
    return queued;
}

}  // namespace

bool declaredTooLarge(const char* contentLength, std::size_t maxBodyBytes) {
    errno = 0;
    const unsigned long long declared = std::strtoull(contentLength, nullptr, 10);
    return errno != 0 || declared > maxBodyBytes;
}

void appendBody(HttpRequest& request, std::string_view piece, std::size_t maxBodyBytes) {
    if (request.tooLarge) {
        return;
    }
    if (request.body.size() + piece.size() > maxBodyBytes) {
        request.tooLarge = true;
        request.body.clear();
        request.body.shrink_to_fit();
    } else {
        request.body.append(piece);
    }
}

struct HttpServer::Impl {
    HttpServerOptions options;
    HttpHandler handler;
    MHD_Daemon* daemon = nullptr;
    // Requests begun and not yet answered in full.
    std::atomic<int> active{0};

    static MHD_Result onRequest(void* cls, MHD_Connection* connection, const char* url,
                                const char* method, const char*, const char* uploadData,
                                size_t* uploadSize, void** state) {
        auto* self = static_cast<Impl*>(cls);
        auto* exchange = static_cast<Exchange*>(*state);
        if (exchange == nullptr) {
            exchange = new Exchange;
            ++self->active;
            exchange->request.method = method;
            exchange->request.path = url;
            exchange->request.peer = peerOf(connection);
            if (const char* type = MHD_lookup_connection_value(connection, MHD_HEADER_KIND,
                                                               MHD_HTTP_HEADER_CONTENT_TYPE)) {
                exchange->request.contentType = type;
            }
            if (const char* length = MHD_lookup_connection_value(connection, MHD_HEADER_KIND,
                                                                 MHD_HTTP_HEADER_CONTENT_LENGTH)) {
                exchange->request.tooLarge = declaredTooLarge(length, self->options.maxBodyBytes);
            }
            *state = exchange;
            if (!exchange->request.tooLarge) {
                return MHD_YES;
            }
            // Declared over the limit: answered before a byte of the body is read.
        } else if (exchange->refused) {
            *uploadSize = 0;
            return MHD_YES;
        }
        if (*uploadSize > 0 && !exchange->request.tooLarge) {
            appendBody(exchange->request, {uploadData, *uploadSize}, self->options.maxBodyBytes);
            *uploadSize = 0;
            if (!exchange->request.tooLarge) {
                return MHD_YES;
            }
            // Over the limit: answer now, without reading the rest.
        }
        exchange->refused = true;
        HttpReply reply;
        try {
            reply = self->handler(exchange->request);
        } catch (const std::exception& e) {
            reply = HttpReply{500, "text/plain; charset=utf-8", std::string("error: ") + e.what()};
        }
        return send(connection, reply, exchange->request.tooLarge);
    }

    static void onCompleted(void* cls, MHD_Connection*, void** state, MHD_RequestTerminationCode) {
        if (*state != nullptr) {
            delete static_cast<Exchange*>(*state);
            *state = nullptr;
            --static_cast<Impl*>(cls)->active;
        }
    }
};

Result<std::unique_ptr<HttpServer>> HttpServer::start(const HttpServerOptions& options,
                                                      HttpHandler handler) {
    std::unique_ptr<HttpServer> server(new HttpServer);
    server->m_impl = std::make_unique<Impl>();
    Impl& impl = *server->m_impl;
    impl.options = options;
    impl.handler = std::move(handler);

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(options.port));
    const std::string bind = options.bindAddress.empty() ? "0.0.0.0" : options.bindAddress;
    if (::inet_pton(AF_INET, bind.c_str(), &address.sin_addr) != 1) {
        return Error{EINVAL, "'" + bind + "' is not an IPv4 address."};
    }
    const bool tls = !options.certificatePem.empty() || !options.keyPem.empty();
    unsigned int flags =
        MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_ERROR_LOG;
    if (tls) {
        flags |= MHD_USE_TLS;
    }
    std::string startLog;
    {
        std::lock_guard lock(g_logMutex);
        g_startLog = &startLog;
    }
    MHD_OptionItem tlsOptions[] = {
        {MHD_OPTION_HTTPS_MEM_CERT, 0, const_cast<char*>(options.certificatePem.c_str())},
        {MHD_OPTION_HTTPS_MEM_KEY, 0, const_cast<char*>(options.keyPem.c_str())},
        {MHD_OPTION_HTTPS_PRIORITIES, 0,
         const_cast<char*>("NORMAL:-VERS-SSL3.0:-VERS-TLS1.0:-VERS-TLS1.1")},
        {MHD_OPTION_END, 0, nullptr},
    };
    MHD_OptionItem noOptions[] = {{MHD_OPTION_END, 0, nullptr}};
    impl.daemon = MHD_start_daemon(
        flags, static_cast<std::uint16_t>(options.port), nullptr, nullptr, &Impl::onRequest, &impl,
        MHD_OPTION_EXTERNAL_LOGGER, &logMessage, nullptr, MHD_OPTION_SOCK_ADDR,
        reinterpret_cast<sockaddr*>(&address), MHD_OPTION_CONNECTION_LIMIT, 32u,
        MHD_OPTION_PER_IP_CONNECTION_LIMIT, 8u, MHD_OPTION_CONNECTION_TIMEOUT,
        static_cast<unsigned int>(options.idleTimeout.count()), MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        static_cast<size_t>(64 * 1024), MHD_OPTION_NOTIFY_COMPLETED, &Impl::onCompleted, &impl,
        MHD_OPTION_ARRAY, tls ? tlsOptions : noOptions, MHD_OPTION_END);
    {
        std::lock_guard lock(g_logMutex);
        g_startLog = nullptr;
    }
    if (impl.daemon == nullptr) {
        return Error{EADDRINUSE, startLog.empty() ? "the HTTP server did not start" : startLog};
    }
    const MHD_DaemonInfo* info = MHD_get_daemon_info(impl.daemon, MHD_DAEMON_INFO_BIND_PORT);
    server->m_port = info != nullptr ? info->port : options.port;
    return server;
}

HttpServer::~HttpServer() {
    if (m_impl && m_impl->daemon != nullptr) {
        // No new connections; the answers on their way are let out (a last closeConnection),
        // for a moment at most.
        const UniqueFd listening(MHD_quiesce_daemon(m_impl->daemon));
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (m_impl->active > 0 && std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        MHD_stop_daemon(m_impl->daemon);
    }
}

}  // namespace dorvane::webconnector
