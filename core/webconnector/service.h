// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Web Connector service: QuickBooks on a Windows PC, reached through the Web
// Connector that polls this program over SOAP.
//
// While a Dorvane process uses this connection it serves the Web Connector at
// WebConnector/Port (path /qbwc) and feeds it the gateway's requests one at a time. The
// request processors it makes look to the gateway like QuickBooks' own: a session that does
// not come is "Could not start QuickBooks.", and what QuickBooks answers through the Web
// Connector (its HRESULTs included) comes back unchanged. Events go to WebConnector.log in
// the program folder; no password and no ticket ever does.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "common/result.h"
#include "qbgateway/requestprocessor.h"
#include "webconnector/bridge.h"
#include "webconnector/config.h"
#include "webconnector/httpserver.h"

namespace dorvane::webconnector {

struct ServiceOptions {
    ServiceSettings settings;
    std::filesystem::path logFile;
    // The window keeps the Web Connector's session open while it runs; a command-line job
    // lets it end when its work is done.
    bool holdSession = false;
    // Short pauses for tests: poll wait, linger and the first refusal delay.
    std::chrono::milliseconds pollWait{5000};
    std::chrono::milliseconds linger{3000};
    std::chrono::milliseconds refusalDelay{1000};
};

class Service {
public:
    explicit Service(ServiceOptions options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // Starts listening (once; later calls answer how the first went). A failure reads
    // "Dorvane cannot serve the Web Connector on port N: " and the reason.
    Status start();
    bool running() const;
    // The port it listens on (the setting, or the one the system chose for port 0).
    int port() const;
    // "Dorvane serves the Web Connector at …" once started.
    std::string notice() const;

    // Called about ten times a second while a job waits for the Web Connector; false stops
    // the wait. Without a hook the wait just runs its time.
    void setWaitHook(WaitHook hook);
    const WaitHook& waitHook() const { return m_hook; }

    // Request processors over this service, for the gateway.
    qbgateway::ProcessorFactory processorFactory();

    Bridge& bridge() { return m_bridge; }
    const ServiceSettings& settings() const { return m_options.settings; }

    // Answers one request as the HTTP server hands it on: the support page, or one SOAP call.
    HttpReply handle(const HttpRequest& request);

private:
    ServiceOptions m_options;
    Bridge m_bridge;
    WaitHook m_hook;
    mutable std::mutex m_startMutex;
    std::unique_ptr<HttpServer> m_server;
    std::optional<Error> m_startError;
};

}  // namespace dorvane::webconnector
