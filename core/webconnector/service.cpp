// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/service.h"

#include <unistd.h>

#include "common/files.h"
#include "xml/xml.h"

namespace dorvane::webconnector {
namespace {

constexpr std::uint32_t kErrCouldNotAccess = 0x80040401;

BridgeOptions bridgeOptions(const ServiceOptions& o) {
    BridgeOptions b;
    b.userName = o.settings.userName;
    b.passwordHash = o.settings.passwordHash;
    b.companyFile = o.settings.companyFile;
    b.holdSession = o.holdSession;
    b.pollWait = o.pollWait;
    b.linger = o.linger;
    b.refusalDelay = o.refusalDelay;
    return b;
}

std::string supportPage(const ServiceSettings& s) {
    return "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>" +
           xml::escapeText(s.appName) +
           "</title></head><body><h1>Dorvane and the QuickBooks Web Connector</h1>"
           "<p>This computer runs Dorvane, which sends its QuickBooks requests through the Web "
           "Connector on the PC where QuickBooks runs. The Web Connector reaches it at " +
           xml::escapeText(s.appUrl()) +
           ".</p><p>Dorvane answers only while its window is open or one of its commands "
           "runs; between those times the Web Connector reports that it cannot connect, "
           "which does no harm.</p></body></html>";
}

// The gateway's view of the service: one object per exchange, as with QuickBooks' own
// request processor. The session is the Web Connector's and outlives it.
class WebConnectorProcessor final : public qbgateway::RequestProcessor {
public:
    explicit WebConnectorProcessor(Service& service) : m_service(service) {}

    Status openConnection(const std::string&, const std::string&) override {
        Status started = m_service.start();
        if (!started) {
            return qbgateway::processorError(kErrCouldNotAccess, started.error().description);
        }
        return {};
    }

    Result<std::string> beginSession(const std::string&, qbgateway::FileMode) override {
        auto company = m_service.bridge().waitForSession(m_service.settings().waitSeconds,
                                                         m_service.waitHook());
        if (!company) {
            return company.error();
        }
        m_companyFile = *company;
        m_ticket = "web-connector";
        return m_ticket;
    }

    Result<std::string> getCurrentCompanyFileName(const std::string& ticket) override {
        if (ticket != m_ticket) {
            return qbgateway::processorError(qbgateway::kErrTicket,
                                             "The ticket parameter is invalid.");
        }
        return m_companyFile;
    }

    Result<std::string> processRequest(const std::string& ticket,
                                       const std::string& request) override {
        if (ticket != m_ticket) {
            return qbgateway::processorError(qbgateway::kErrTicket,
                                             "The ticket parameter is invalid.");
        }
        return m_service.bridge().exchange(request, m_service.settings().waitSeconds,
                                           m_service.settings().answerSeconds,
                                           m_service.waitHook());
    }

    Status endSession(const std::string&) override {
        m_ticket.clear();
        return {};
    }
    Status closeConnection() override { return {}; }

private:
    Service& m_service;
    std::string m_ticket;
    std::string m_companyFile;
};

}  // namespace

Service::Service(ServiceOptions options)
    : m_options(std::move(options)), m_bridge(bridgeOptions(m_options)) {
    if (!m_options.logFile.empty()) {
        m_bridge.setEventSink(
            [log = m_options.logFile](const std::string& keyword, const std::string& text) {
                logEvent(log, keyword, text);
            });
    }
}

Service::~Service() {
    const bool polling = m_bridge.shutdown();
    std::lock_guard lock(m_startMutex);
    if (m_server) {
        // A session in the middle of a poll is told that Dorvane stopped, and closes. One
        // that is pausing, or stalled, finds nobody at its next call.
        if (polling) {
            m_bridge.waitForSessionEnd(std::chrono::milliseconds(1500));
        }
        m_server.reset();
        if (!m_options.logFile.empty()) {
            logEvent(m_options.logFile, "stopped", "process " + std::to_string(::getpid()));
        }
    }
}

Status Service::start() {
    std::lock_guard lock(m_startMutex);
    if (m_server) {
        return {};
    }
    if (m_startError) {
        return *m_startError;
    }
    const ServiceSettings& s = m_options.settings;
    // Said once, for the gateway's box and the window's status bar alike.
    const auto cannotServe = [&s](const Error& reason) {
        return Error{reason.code, "Dorvane cannot serve the Web Connector on port " +
                                      std::to_string(s.port) + ": " + reason.description};
    };
    HttpServerOptions http;
    http.port = s.port;
    http.maxBodyBytes = s.maxRequestBytes;
    http.idleTimeout = std::chrono::seconds(120);
    if (s.secure()) {
        auto cert = files::readAll(s.certificate);
        auto key = files::readAll(s.key);
        if (!cert || !key) {
            const Error& unread = cert ? key.error() : cert.error();
            m_startError = cannotServe(
                Error{unread.code, "the certificate or key cannot be read: " + unread.description});
            return *m_startError;
        }
        http.bindAddress = "";
        http.certificatePem = std::move(*cert);
        http.keyPem = std::move(*key);
    }
    auto server = HttpServer::start(http, [this](const HttpRequest& r) { return handle(r); });
    if (!server) {
        m_startError = cannotServe(server.error());
        return *m_startError;
    }
    m_server = std::move(*server);
    if (!m_options.logFile.empty()) {
        std::string where = s.listenText();
        if (s.port == 0) {
            where += " port " + std::to_string(m_server->port());
        }
        logEvent(m_options.logFile, "listening",
                 where + " (process " + std::to_string(::getpid()) + ")");
    }
    return {};
}

bool Service::running() const {
    std::lock_guard lock(m_startMutex);
    return m_server != nullptr;
}

int Service::port() const {
    std::lock_guard lock(m_startMutex);
    return m_server ? m_server->port() : m_options.settings.port;
}

std::string Service::notice() const {
    const ServiceSettings& s = m_options.settings;
    if (!running()) {
        return "";
    }
    std::string text = "Dorvane serves the Web Connector at " + s.appUrl();
    if (!s.secure()) {
        text += " (this computer only: no certificate is set)";
    }
    return text;
}

void Service::setWaitHook(WaitHook hook) {
    m_hook = std::move(hook);
}

qbgateway::ProcessorFactory Service::processorFactory() {
    return [this]() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
        return std::unique_ptr<qbgateway::RequestProcessor>(new WebConnectorProcessor(*this));
    };
}

HttpReply Service::handle(const HttpRequest& request) {
    if (request.path == kSupportPath && request.method == "GET") {
        return HttpReply{200, "text/html; charset=utf-8", supportPage(m_options.settings)};
    }
    if (request.path != kServicePath) {
        return HttpReply{404, "text/plain; charset=utf-8", "Not found\n"};
    }
    if (request.method != "POST") {
        return HttpReply{405, "text/plain; charset=utf-8",
                         "The Web Connector service takes SOAP messages by POST.\n"};
    }
    if (request.tooLarge) {
        const std::string limit =
            std::to_string(m_options.settings.maxRequestBytes / (1024 * 1024)) + " MB";
        if (!m_options.logFile.empty()) {
            logEvent(m_options.logFile, "error",
                     "refused a message over " + limit + " from " + request.peer);
        }
        m_bridge.refuseOversize(
            request.peer, qbgateway::processorError(
                              kErrCouldNotAccess, "QuickBooks' answer is larger than the " + limit +
                                                      " Dorvane accepts from the Web Connector "
                                                      "(WebConnector MaxRequestMB)."));
        return HttpReply{413, "text/xml; charset=utf-8",
                         soapFault("Client", "The message is larger than Dorvane accepts.")};
    }
    auto call = parseSoapCall(request.body);
    if (!call) {
        return HttpReply{500, "text/xml; charset=utf-8",
                         soapFault("Client", call.error().description)};
    }
    Bridge::Reply reply = m_bridge.answer(*call, request.peer);
    return HttpReply{reply.fault ? 500 : 200, "text/xml; charset=utf-8", std::move(reply.body)};
}

}  // namespace dorvane::webconnector
