// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — a Web Connector of our own: it calls the SOAP service over real HTTP as the
// QuickBooks Web Connector does, and answers each request from a sandbox company that plays
// the office's QuickBooks.
//
// One update: serverVersion, clientVersion, authenticate; "nvu" or "none" ends it. Then
// sendRequestXML (the host/company/preferences answer on the first call only); a request is
// run in the office company and handed back with receiveResponseXML (a failed call as its
// HRESULT and message); an empty request makes it ask getLastError, and "NoOp" makes it pause
// and poll again; any other text, a negative percentage or 100 ends with closeConnection.
// When an update ends, the next starts after `every`, like the Web Connector's scheduler.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace dorvane::test {

class WebConnectorStandIn {
public:
    enum class Mode {
        Answer,           // run every request in the office company
        Stall,            // take the first request and never answer it
        ConnectionError,  // cannot reach QuickBooks: connectionError after the login
    };
    struct Options {
        std::string url;  // http://127.0.0.1:PORT/qbwc
        std::string user = "office";
        std::string password = "secret";
        std::filesystem::path office;  // the sandbox state folder of the office's QuickBooks
        Mode mode = Mode::Answer;
        std::string caFile;  // the certificate to trust, for https
        std::chrono::milliseconds every{300};
        std::chrono::milliseconds noOpPause{200};
        std::string companyFile = "C:\\Office\\Harbor Lane.QBW";
        // What ConnectionError mode reports: the HRESULT and its text.
        std::pair<std::string, std::string> connectionError{"0x80040408",
                                                            "Could not start QuickBooks."};
    };
    struct Counts {
        int updates = 0;
        int logins = 0;
        int refusals = 0;
        int answered = 0;  // requests run and handed back
        int noOps = 0;
        int unreachable = 0;  // calls that did not get through
        int closed = 0;
        bool polling = false;   // a sendRequestXML is under way
        std::string lastError;  // the last getLastError text other than NoOp
        std::string lastClose;  // what closeConnection answered last
    };

    explicit WebConnectorStandIn(Options options);
    ~WebConnectorStandIn();
    WebConnectorStandIn(const WebConnectorStandIn&) = delete;
    WebConnectorStandIn& operator=(const WebConnectorStandIn&) = delete;

    // Ends the current update (closing its session) and stops.
    void stop();
    Counts counts() const;
    // Polls `condition` on the counts until it holds or `limit` passes.
    template <class F>
    bool waitFor(F condition, std::chrono::seconds limit = std::chrono::seconds(30)) const {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (std::chrono::steady_clock::now() < end) {
            if (condition(counts())) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return condition(counts());
    }

    // One POST of `body` to `url`: the HTTP status (0 when nothing came back) and the body.
    static std::pair<long, std::string> post(const std::string& url, const std::string& body,
                                             const std::string& caFile = {},
                                             const std::string& soapAction = {});
    // A call of the service's namespace with its parameters, as the Web Connector writes it.
    static std::string envelope(const std::string& method,
                                const std::vector<std::pair<std::string, std::string>>& params);
    // The <method>Result of a reply: its text, or its <string> items.
    static std::vector<std::string> results(const std::string& reply, const std::string& method);

private:
    void run();
    void update();
    std::vector<std::string> call(const std::string& method,
                                  const std::vector<std::pair<std::string, std::string>>& params);
    std::pair<std::string, std::string> runInOffice(const std::string& request);
    void pause(std::chrono::milliseconds length);

    Options m_options;
    mutable std::mutex m_mutex;
    Counts m_counts;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

}  // namespace dorvane::test
