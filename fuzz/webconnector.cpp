// SPDX-License-Identifier: GPL-3.0-or-later
// One HTTP request to the Web Connector service, as the server hands it on to the service.
//
// The input reads as an HTTP request: "METHOD PATH ..." on the first line, header lines, a
// blank line, the body. Parsing HTTP is libmicrohttpd's; the server's own part (the
// Content-Length check, the body limit) and everything after it are what this target runs.
// Every occurrence of "{ticket}" in the input becomes the live session's ticket.
//
// Each input is answered three times, by a new service each time:
//   - with no session;
//   - with a session just logged in (a good authenticate call) and one of Dorvane's requests
//     waiting to be taken, which a sendRequestXML hands out;
//   - with that request handed out to the session (its first sendRequestXML), waiting for the
//     answer a receiveResponseXML brings.
// The waits of the service are zero and the stored password hash is cheap to check, so no
// input waits; everything else is as the program sets it.
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "common/text.h"
#include "fuzzkit.h"
#include "webconnector/service.h"
#include "xml/xml.h"

using namespace dorvane;
using webconnector::HttpRequest;

namespace {

constexpr std::string_view kTicketMarker = "{ticket}";
constexpr const char* kPeer = "192.168.1.20";
constexpr const char* kUser = "office";
constexpr const char* kPassword = "secret";
// "secret" under yescrypt at its lowest cost.
constexpr const char* kPasswordHash =
    "$y$j75$MAK5CzJpRcMFfmoyhrD/H0$IgLbVIWc4FepAPL8kf2GFf8uciS62E67jjqqf7y6jm5";
constexpr const char* kWaitingRequest =
    "<?xml version=\"1.0\" ?><?qbxml version=\"13.0\"?><QBXML><QBXMLMsgsRq "
    "onError=\"stopOnError\"><HostQueryRq/></QBXMLMsgsRq></QBXML>";

webconnector::ServiceOptions serviceOptions() {
    webconnector::ServiceOptions o;
    o.settings.userName = kUser;
    o.settings.passwordHash = kPasswordHash;
    o.logFile = fuzz::programFolder() / webconnector::kLogFile;
    o.pollWait = std::chrono::milliseconds(0);
    o.linger = std::chrono::milliseconds(0);
    o.refusalDelay = std::chrono::milliseconds(0);
    return o;
}

// The request the server would hand on for the input.
HttpRequest requestOf(std::string_view input, std::size_t maxBodyBytes) {
    HttpRequest request;
    request.peer = kPeer;
    bool first = true;
    while (!input.empty()) {
        const std::size_t end = input.find('\n');
        std::string_view line = input.substr(0, end);
        input = end == std::string_view::npos ? std::string_view() : input.substr(end + 1);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (first) {
            first = false;
            const std::size_t space = line.find(' ');
            request.method = std::string(line.substr(0, space));
            if (space != std::string_view::npos) {
                const std::string_view target = line.substr(space + 1);
                request.path = std::string(target.substr(0, target.find_first_of(" ?")));
            }
            continue;
        }
        if (line.empty()) {
            break;
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string_view name = line.substr(0, colon);
        const std::string value(text::trim(line.substr(colon + 1)));
        if (text::equalsIgnoreCase(name, "Content-Type")) {
            request.contentType = value;
        } else if (text::equalsIgnoreCase(name, "Content-Length")) {
            request.tooLarge = webconnector::declaredTooLarge(value.c_str(), maxBodyBytes);
        }
    }
    webconnector::appendBody(request, input, maxBodyBytes);
    return request;
}

HttpRequest soapRequest(const std::string& method, const std::string& params) {
    HttpRequest request;
    request.method = "POST";
    request.path = webconnector::kServicePath;
    request.peer = kPeer;
    request.contentType = "text/xml; charset=utf-8";
    request.body =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope "
        "xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body><" +
        method + " xmlns=\"http://developer.intuit.com/\">" + params + "</" + method +
        "></soap:Body></soap:Envelope>";
    return request;
}

// One of Dorvane's requests waiting in the bridge, as the gateway's thread waits while the
// Web Connector carries it. The wait hook, which runs with the bridge unlocked, holds the
// wait until the input has been answered and then ends it; what came back goes where the
// gateway would look first.
class WaitingRequest {
public:
    explicit WaitingRequest(webconnector::Service& service) {
        m_thread = std::thread([this, &service] {
            auto answer = service.bridge().exchange(
                kWaitingRequest, service.settings().waitSeconds, service.settings().answerSeconds,
                [this](const webconnector::WaitProgress&) {
                    std::unique_lock lock(m_mutex);
                    m_queued = true;
                    m_changed.notify_all();
                    m_changed.wait(lock, [this] { return m_done; });
                    return false;
                });
            if (answer) {
                (void)xml::declaresInternalSubset(*answer);
            }
        });
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_queued; });
    }
    ~WaitingRequest() {
        {
            std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    WaitingRequest(const WaitingRequest&) = delete;
    WaitingRequest& operator=(const WaitingRequest&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_queued = false;
    bool m_done = false;
    std::thread m_thread;
};

// Logs in as the Web Connector does; answers the session's ticket.
std::string logIn(webconnector::Service& service) {
    const std::string reply =
        service
            .handle(soapRequest("authenticate", std::string("<strUserName>") + kUser +
                                                    "</strUserName><strPassword>" + kPassword +
                                                    "</strPassword>"))
            .body;
    const std::size_t from = reply.find("<string>");
    const std::size_t to = reply.find("</string>");
    if (from == std::string::npos || to == std::string::npos || to < from) {
        return {};
    }
    return reply.substr(from + 8, to - from - 8);
}

void answerInSession(std::string_view input, bool handedOut) {
    webconnector::Service service(serviceOptions());
    const WaitingRequest waiting(service);
    const std::string ticket = logIn(service);
    if (handedOut) {
        (void)service.handle(
            soapRequest("sendRequestXML",
                        "<ticket>" + ticket +
                            "</ticket><strHCPResponse/><strCompanyFileName>C:\\Office\\Harbor "
                            "Lane.QBW</strCompanyFileName><qbXMLCountry>US</qbXMLCountry>"
                            "<qbXMLMajorVers>13</qbXMLMajorVers><qbXMLMinorVers>0"
                            "</qbXMLMinorVers>"));
    }
    const std::string withTicket = text::replaceAll(input, kTicketMarker, ticket);
    (void)service.handle(requestOf(withTicket, service.settings().maxRequestBytes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzz::text(data, size);
    std::error_code ignored;
    std::filesystem::remove(fuzz::programFolder() / webconnector::kLogFile, ignored);
    {
        webconnector::Service service(serviceOptions());
        (void)service.handle(requestOf(input, service.settings().maxRequestBytes));
    }
    answerInSession(input, false);
    answerInSession(input, true);
    return 0;
}
