// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the bridge between the gateway and a Web Connector session.
//
// The Web Connector (a program beside QuickBooks on a Windows PC) polls this service: it logs
// in, asks for a request (sendRequestXML), runs it in QuickBooks and hands the answer back
// (receiveResponseXML), until told that nothing is left. The gateway, on its own thread,
// waits for a session, queues its request and waits for the answer. The two sides meet here.
//
// One session at a time: a new login replaces the old one, whose ticket then stops working.
// Requests go out one at a time, in the order they were queued. While nothing is queued a
// poll waits a few seconds for a request and then answers "", and getLastError says "NoOp",
// so the Web Connector pauses and asks again: the session stays open and the next request
// does not wait for the next scheduled run. Without `holdSession` (a command-line job) a
// finished answer waits a moment for the next request and otherwise reports 100 %, which
// ends the session.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "common/result.h"
#include "webconnector/soap.h"

namespace dorvane::webconnector {

// What a waiting job shows a person, about ten times a second.
struct WaitProgress {
    enum class Phase { Session, Pickup, Answer };
    Phase phase = Phase::Session;
    int elapsedSeconds = 0;
    int limitSeconds = 0;
    std::string text;
};
// Returns false to stop waiting (the person pressed Cancel).
using WaitHook = std::function<bool(const WaitProgress&)>;

struct BridgeOptions {
    std::string userName;
    std::string passwordHash;
    // authenticate's second answer: "" uses the company file open in QuickBooks.
    std::string companyFile;
    bool holdSession = false;
    // How long a poll waits for a request before it answers "".
    std::chrono::milliseconds pollWait{5000};
    // Without holdSession: how long an answered request waits for the next one.
    std::chrono::milliseconds linger{3000};
    // The pause before a refused login is answered; it doubles with each refusal in a row,
    // up to 32 times this.
    std::chrono::milliseconds refusalDelay{1000};
};

// A line for the service's log. Never carries a password or a ticket.
using EventSink = std::function<void(const std::string& keyword, const std::string& text)>;

class Bridge {
public:
    explicit Bridge(BridgeOptions options);
    ~Bridge();
    Bridge(const Bridge&) = delete;
    Bridge& operator=(const Bridge&) = delete;

    void setEventSink(EventSink sink);

    // --- The Web Connector's side: any thread.
    // Answers one SOAP call with the SOAP message to send back; `peer` is the caller's
    // address, for the log. An unknown method or missing parameter is a fault.
    struct Reply {
        bool fault = false;
        std::string body;
    };
    Reply answer(const SoapCall& call, const std::string& peer);

    std::string clientVersion(const std::string& version);
    std::vector<std::string> authenticate(const std::string& user, const std::string& password,
                                          const std::string& peer);
    std::string sendRequestXML(const std::string& ticket, const std::string& companyFile);
    int receiveResponseXML(const std::string& ticket, const std::string& response,
                           const std::string& hresult, const std::string& message);
    std::string connectionError(const std::string& ticket, const std::string& hresult,
                                const std::string& message);
    std::string getLastError(const std::string& ticket);
    std::string closeConnection(const std::string& ticket);

    // A message too large to read came from `peer`. When that is the session's peer and a
    // request is out with it, the request fails with `error`: its answer would never fit.
    void refuseOversize(const std::string& peer, const Error& error);

    // --- Dorvane's side: the gateway's thread.
    // Waits until a session has reached QuickBooks (its first poll); answers the company file
    // the Web Connector named. Fails with "Could not start QuickBooks." when none came within
    // `limit` or the person stopped the wait, or with the error the Web Connector reported.
    // Without holdSession, once a wait has run out the next ones fail at once until a
    // session comes.
    Result<std::string> waitForSession(std::chrono::seconds limit, const WaitHook& hook);
    // Queues the request and waits for its answer: "Could not start QuickBooks." when no
    // session took it within `pickupLimit`; "Could not access QuickBooks." when the answer
    // did not come within `answerLimit`, the session ended first, or the person stopped the
    // wait; the Web Connector's HRESULT and message when QuickBooks refused the request.
    Result<std::string> exchange(const std::string& request, std::chrono::seconds pickupLimit,
                                 std::chrono::seconds answerLimit, const WaitHook& hook);

    // Stops serving: every wait ends, a waiting poll answers "" and getLastError says why.
    // True when a poll or a lingering answer was waiting: its Web Connector learns at once
    // that Dorvane stopped, and closes its session (see waitForSessionEnd).
    bool shutdown();
    // Waits up to `limit` for the open session to close.
    void waitForSessionEnd(std::chrono::milliseconds limit);

    static std::string versionText();

private:
    struct Session;
    struct Job;
    using Clock = std::chrono::steady_clock;

    Session* sessionFor(const std::string& ticket);
    std::shared_ptr<Job> handedOutTo(const std::string& ticket) const;
    std::shared_ptr<Job> nextQueued() const;
    bool anyHandedOut() const;
    void failJobs(const Error& error, const std::string& ticket);
    void removeJob(const std::shared_ptr<Job>& job);
    void event(const std::string& keyword, const std::string& text);
    bool keepWaiting(const WaitHook& hook, WaitProgress progress,
                     std::unique_lock<std::mutex>& lock);

    BridgeOptions m_options;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::unique_ptr<Session> m_session;
    std::deque<std::shared_ptr<Job>> m_jobs;
    std::optional<Error> m_connectionFailure;
    std::uint64_t m_failureGeneration = 0;
    // A wait for the Web Connector ran out: without holdSession (a command), later waits
    // fail at once until a session comes, so a job does not wait once per request.
    bool m_gaveUp = false;
    int m_refusalsInRow = 0;
    // Polls and lingering answers under way: each ends the session when Dorvane stops.
    int m_callsWaiting = 0;
    std::uint64_t m_refusals = 0;
    bool m_shutdown = false;
    EventSink m_sink;
};

// "0x80040408" (or a decimal text) as the 32-bit code; 0x80040402 when it is neither.
std::uint32_t parseHresult(const std::string& text);

}  // namespace dorvane::webconnector
