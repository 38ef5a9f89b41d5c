// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/bridge.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "qbgateway/requestprocessor.h"
#include "webconnector/credentials.h"

namespace dorvane::webconnector {
namespace {

constexpr std::uint32_t kErrCouldNotAccess = 0x80040401;
constexpr std::uint32_t kErrUnexpected = 0x80040402;
constexpr const char* kCouldNotStart = "Could not start QuickBooks.";
constexpr const char* kCouldNotAccess = "Could not access QuickBooks.";
constexpr const char* kInvalidTicket = "The ticket parameter is invalid.";
constexpr const char* kClosedText =
    "Dorvane has stopped; the next scheduled update connects again when it runs.";
constexpr int kPercentGoingOn = 50;
constexpr int kPercentDone = 100;
constexpr auto kTick = std::chrono::milliseconds(100);

// Counts a call for as long as it waits (under the bridge's lock).
class Counted {
public:
    explicit Counted(int& count) : m_count(count) { ++m_count; }
    ~Counted() { --m_count; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int& m_count;
};

// A name someone typed, as the log shows it: short, on one line.
std::string shown(const std::string& name) {
    constexpr std::size_t kLongest = 64;
    return name.size() > kLongest ? name.substr(0, kLongest) + "..." : name;
}

Error couldNotStart() {
    return qbgateway::processorError(qbgateway::kErrCouldNotStart, kCouldNotStart);
}

Error couldNotAccess() {
    return qbgateway::processorError(kErrCouldNotAccess, kCouldNotAccess);
}

int secondsSince(std::chrono::steady_clock::time_point start) {
    return static_cast<int>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start)
            .count());
}

}  // namespace

struct Bridge::Session {
    std::string ticket;
    std::string user;
    std::string peer;
    std::string companyFile;
    std::string lastError;  // what getLastError answers; "" answers "NoOp"
    bool polled = false;
    bool closed = false;
};

struct Bridge::Job {
    enum class State { Queued, HandedOut };
    std::string request;
    State state = State::Queued;
    std::string ticket;  // the session it went to
    std::optional<Result<std::string>> answer;
};

std::uint32_t parseHresult(const std::string& text) {
    std::string t(text);
    t.erase(std::remove_if(t.begin(), t.end(), [](char c) { return c == ' '; }), t.end());
    if (t.empty()) {
        return kErrUnexpected;
    }
    char* end = nullptr;
    errno = 0;
    long long value = 0;
    if (t.size() > 2 && t[0] == '0' && (t[1] == 'x' || t[1] == 'X')) {
        value = std::strtoll(t.c_str() + 2, &end, 16);
    } else {
        value = std::strtoll(t.c_str(), &end, 10);
    }
    if (errno != 0 || end == nullptr || *end != '\0' || value < INT32_MIN ||
        value > static_cast<long long>(UINT32_MAX)) {
        return kErrUnexpected;
    }
    return static_cast<std::uint32_t>(value);
}

Bridge::Bridge(BridgeOptions options) : m_options(std::move(options)) {}

Bridge::~Bridge() {
    (void)shutdown();
}

std::string Bridge::versionText() {
    return std::string("Dorvane ") + DORVANE_VERSION;
}

void Bridge::setEventSink(EventSink sink) {
    std::lock_guard lock(m_mutex);
    m_sink = std::move(sink);
}

void Bridge::event(const std::string& keyword, const std::string& text) {
    if (m_sink) {
        m_sink(keyword, text);
    }
}

Bridge::Reply Bridge::answer(const SoapCall& call, const std::string& peer) {
    const std::string& m = call.method;
    const auto& p = [&call](const char* name) -> const std::string& { return call.param(name); };
    if (m == "serverVersion") {
        return {false, soapStringResult(m, versionText())};
    }
    if (m == "clientVersion") {
        return {false, soapStringResult(m, clientVersion(p("strVersion")))};
    }
    if (m == "authenticate") {
        return {false, soapArrayResult(m, authenticate(p("strUserName"), p("strPassword"), peer))};
    }
    if (m == "sendRequestXML") {
        return {false, soapStringResult(m, sendRequestXML(p("ticket"), p("strCompanyFileName")))};
    }
    if (m == "receiveResponseXML") {
        return {false, soapIntResult(m, receiveResponseXML(p("ticket"), p("response"), p("hresult"),
                                                           p("message")))};
    }
    if (m == "connectionError") {
        return {false,
                soapStringResult(m, connectionError(p("ticket"), p("hresult"), p("message")))};
    }
    if (m == "getLastError") {
        return {false, soapStringResult(m, getLastError(p("ticket")))};
    }
    if (m == "closeConnection") {
        return {false, soapStringResult(m, closeConnection(p("ticket")))};
    }
    return {true, soapFault("Client", "Dorvane does not know the method '" + m + "'.")};
}

std::string Bridge::clientVersion(const std::string& version) {
    std::lock_guard lock(m_mutex);
    event("version",
          "Web Connector " + (version.empty() ? std::string("(unnamed)") : shown(version)));
    return "";
}

std::vector<std::string> Bridge::authenticate(const std::string& user, const std::string& password,
                                              const std::string& peer) {
    // The slow hash runs outside the lock, so a login never holds up a running session.
    const bool valid = !m_options.userName.empty() && !m_options.passwordHash.empty() &&
                       constantTimeEquals(user, m_options.userName) &&
                       verifyPassword(password, m_options.passwordHash);
    std::unique_lock lock(m_mutex);
    if (!valid) {
        ++m_refusals;
        const int shift = std::min(m_refusalsInRow++, 5);
        const auto delay = m_options.refusalDelay * (1 << shift);
        event("refused",
              m_options.userName.empty()
                  ? "login as '" + user + "' from " + peer +
                        ": no Web Connector user is set (dorvane webconnector user NAME)"
                  : "login as '" + user + "' from " + peer + ": wrong user name or password");
        // The pause grows with each refusal in a row; stopping the service cuts it short.
        m_changed.wait_for(lock, delay, [this] { return m_shutdown; });
        return {randomHex(16), "nvu"};
    }
    m_refusalsInRow = 0;
    m_gaveUp = false;
    if (m_shutdown) {
        return {randomHex(16), "none"};
    }
    if (m_session && !m_session->closed) {
        failJobs(couldNotAccess(), m_session->ticket);
        event("replaced", "a new login replaces the session of " + m_session->peer);
    }
    m_session = std::make_unique<Session>();
    m_session->ticket = randomHex(16);
    m_session->user = user;
    m_session->peer = peer;
    event("connected", "user " + user + " from " + peer);
    m_changed.notify_all();
    return {m_session->ticket, m_options.companyFile};
}

Bridge::Session* Bridge::sessionFor(const std::string& ticket) {
    if (m_session && !m_session->closed && !ticket.empty() &&
        constantTimeEquals(ticket, m_session->ticket)) {
        return m_session.get();
    }
    return nullptr;
}

std::shared_ptr<Bridge::Job> Bridge::handedOutTo(const std::string& ticket) const {
    for (const auto& job : m_jobs) {
        if (job->state == Job::State::HandedOut && job->ticket == ticket) {
            return job;
        }
    }
    return nullptr;
}

std::shared_ptr<Bridge::Job> Bridge::nextQueued() const {
    for (const auto& job : m_jobs) {
        if (job->state == Job::State::Queued) {
            return job;
        }
    }
    return nullptr;
}

bool Bridge::anyHandedOut() const {
    return std::any_of(m_jobs.begin(), m_jobs.end(),
                       [](const auto& job) { return job->state == Job::State::HandedOut; });
}

// Answers the jobs handed to `ticket` (every job when `ticket` is empty) with `error`.
void Bridge::failJobs(const Error& error, const std::string& ticket) {
    for (auto it = m_jobs.begin(); it != m_jobs.end();) {
        Job& job = **it;
        if (ticket.empty() || (job.state == Job::State::HandedOut && job.ticket == ticket)) {
            job.answer = error;
            it = m_jobs.erase(it);
        } else {
            ++it;
        }
    }
    m_changed.notify_all();
}

void Bridge::removeJob(const std::shared_ptr<Job>& job) {
    m_jobs.erase(std::remove(m_jobs.begin(), m_jobs.end(), job), m_jobs.end());
}

std::string Bridge::sendRequestXML(const std::string& ticket, const std::string& companyFile) {
    std::unique_lock lock(m_mutex);
    Session* session = sessionFor(ticket);
    if (session == nullptr) {
        return "";
    }
    if (!companyFile.empty() && session->companyFile != companyFile) {
        session->companyFile = companyFile;
        event("company", companyFile);
    }
    session->polled = true;
    session->lastError.clear();
    m_changed.notify_all();
    const auto deadline = Clock::now() + m_options.pollWait;
    const std::string mine = session->ticket;
    const Counted waiting(m_callsWaiting);
    while (true) {
        session = sessionFor(mine);
        if (session == nullptr) {
            return "";
        }
        if (m_shutdown) {
            session->lastError = kClosedText;
            return "";
        }
        if (!anyHandedOut()) {
            if (auto job = nextQueued()) {
                job->state = Job::State::HandedOut;
                job->ticket = mine;
                m_changed.notify_all();
                return job->request;
            }
        }
        if (m_changed.wait_until(lock, deadline) == std::cv_status::timeout &&
            Clock::now() >= deadline) {
            break;
        }
    }
    // Nothing to send: the Web Connector asks getLastError, pauses on "NoOp" and polls again.
    if ((session = sessionFor(mine)) != nullptr) {
        session->lastError.clear();
    }
    return "";
}

int Bridge::receiveResponseXML(const std::string& ticket, const std::string& response,
                               const std::string& hresult, const std::string& message) {
    std::unique_lock lock(m_mutex);
    Session* session = sessionFor(ticket);
    if (session == nullptr) {
        return -1;
    }
    const std::string mine = session->ticket;
    if (auto job = handedOutTo(mine)) {
        if (hresult.empty()) {
            job->answer = response;
        } else {
            job->answer = qbgateway::processorError(
                parseHresult(hresult), message.empty() ? std::string(kCouldNotAccess) : message);
        }
        removeJob(job);
        m_changed.notify_all();
    } else {
        event("late", "QuickBooks answered a request Dorvane had stopped waiting for" +
                          (hresult.empty() ? std::string() : " (" + hresult + ")"));
    }
    if (m_shutdown) {
        return kPercentDone;
    }
    if (m_options.holdSession) {
        return kPercentGoingOn;
    }
    // A command-line job usually sends its next request at once; if none comes, the session
    // ends here and the Web Connector reports success.
    const Counted waiting(m_callsWaiting);
    const bool more = m_changed.wait_for(lock, m_options.linger,
                                         [this] { return m_shutdown || nextQueued() != nullptr; });
    return more && !m_shutdown ? kPercentGoingOn : kPercentDone;
}

std::string Bridge::connectionError(const std::string& ticket, const std::string& hresult,
                                    const std::string& message) {
    std::lock_guard lock(m_mutex);
    Session* session = sessionFor(ticket);
    if (session == nullptr) {
        return "done";
    }
    const Error error = qbgateway::processorError(
        parseHresult(hresult), message.empty() ? std::string(kCouldNotStart) : message);
    event("error", "the Web Connector could not reach QuickBooks: " + error.description + " (" +
                       hresult + ")");
    session->closed = true;
    m_connectionFailure = error;
    ++m_failureGeneration;
    failJobs(error, "");
    return "done";
}

std::string Bridge::getLastError(const std::string& ticket) {
    std::lock_guard lock(m_mutex);
    Session* session = sessionFor(ticket);
    if (session == nullptr) {
        return kInvalidTicket;
    }
    return session->lastError.empty() ? "NoOp" : session->lastError;
}

std::string Bridge::closeConnection(const std::string& ticket) {
    std::lock_guard lock(m_mutex);
    Session* session = sessionFor(ticket);
    if (session == nullptr) {
        // The session Dorvane ended itself (after a connectionError, or when it stopped
        // polling) is closed once more without complaint.
        const bool last =
            m_session && !ticket.empty() && constantTimeEquals(ticket, m_session->ticket);
        return last ? "OK" : kInvalidTicket;
    }
    session->closed = true;
    failJobs(couldNotAccess(), session->ticket);
    event("closed", "session of " + session->peer + " closed");
    m_changed.notify_all();
    return "OK";
}

void Bridge::refuseOversize(const std::string& peer, const Error& error) {
    std::lock_guard lock(m_mutex);
    if (m_session && !m_session->closed && m_session->peer == peer) {
        failJobs(error, m_session->ticket);
    }
}

bool Bridge::keepWaiting(const WaitHook& hook, WaitProgress progress,
                         std::unique_lock<std::mutex>& lock) {
    if (!hook) {
        m_changed.wait_for(lock, kTick);
        return true;
    }
    lock.unlock();
    const bool going = hook(progress);
    lock.lock();
    if (going) {
        m_changed.wait_for(lock, kTick);
    }
    return going;
}

Result<std::string> Bridge::waitForSession(std::chrono::seconds limit, const WaitHook& hook) {
    const auto start = Clock::now();
    std::unique_lock lock(m_mutex);
    const std::uint64_t generation = m_failureGeneration;
    const std::uint64_t refusals = m_refusals;
    while (true) {
        if (m_failureGeneration != generation && m_connectionFailure) {
            return *m_connectionFailure;
        }
        if (m_session && m_session->polled && !m_session->closed) {
            return m_session->companyFile;
        }
        const int elapsed = secondsSince(start);
        if (m_shutdown || (m_gaveUp && !m_options.holdSession)) {
            return couldNotStart();
        }
        if (Clock::now() - start >= limit) {
            m_gaveUp = true;
            return couldNotStart();
        }
        WaitProgress progress;
        progress.phase = WaitProgress::Phase::Session;
        progress.elapsedSeconds = elapsed;
        progress.limitSeconds = static_cast<int>(limit.count());
        progress.text = "Waiting for the Web Connector to connect (" + std::to_string(elapsed) +
                        " of " + std::to_string(limit.count()) + " s)...";
        if (m_refusals != refusals) {
            progress.text += " Its login was refused: check the user name and password.";
        }
        if (!keepWaiting(hook, progress, lock)) {
            return couldNotStart();
        }
    }
}

Result<std::string> Bridge::exchange(const std::string& request, std::chrono::seconds pickupLimit,
                                     std::chrono::seconds answerLimit, const WaitHook& hook) {
    auto job = std::make_shared<Job>();
    job->request = request;
    const auto start = Clock::now();
    std::optional<Clock::time_point> pickedUp;
    std::unique_lock lock(m_mutex);
    m_jobs.push_back(job);
    m_changed.notify_all();
    while (true) {
        if (job->answer) {
            return std::move(*job->answer);
        }
        const bool handedOut = job->state == Job::State::HandedOut;
        if (handedOut && !pickedUp) {
            pickedUp = Clock::now();
        }
        if (!handedOut && (m_shutdown || Clock::now() - start >= pickupLimit)) {
            removeJob(job);
            if (!m_shutdown && m_session && !m_session->closed) {
                // The session stopped polling (its Web Connector was closed, or lost its
                // network): the next job waits for a new one.
                m_session->closed = true;
                event("closed", "the session of " + m_session->peer + " stopped polling");
            }
            m_gaveUp = true;
            return couldNotStart();
        }
        if (handedOut && (m_shutdown || Clock::now() - *pickedUp >= answerLimit)) {
            removeJob(job);
            event("late", "no answer from QuickBooks within " +
                              std::to_string(answerLimit.count()) + " s; Dorvane stopped waiting");
            return couldNotAccess();
        }
        WaitProgress progress;
        if (handedOut) {
            progress.phase = WaitProgress::Phase::Answer;
            progress.elapsedSeconds = secondsSince(*pickedUp);
            progress.limitSeconds = static_cast<int>(answerLimit.count());
            progress.text = "Waiting for QuickBooks to answer through the Web Connector (" +
                            std::to_string(progress.elapsedSeconds) + " s)...";
        } else {
            progress.phase = WaitProgress::Phase::Pickup;
            progress.elapsedSeconds = secondsSince(start);
            progress.limitSeconds = static_cast<int>(pickupLimit.count());
            progress.text = "Waiting for the Web Connector to take the request (" +
                            std::to_string(progress.elapsedSeconds) + " of " +
                            std::to_string(pickupLimit.count()) + " s)...";
        }
        if (!keepWaiting(hook, progress, lock)) {
            if (job->answer) {
                return std::move(*job->answer);
            }
            const bool wasHandedOut = job->state == Job::State::HandedOut;
            removeJob(job);
            if (wasHandedOut) {
                event("late",
                      "the wait for QuickBooks' answer was cancelled; QuickBooks may "
                      "still carry out the request");
                return couldNotAccess();
            }
            return couldNotStart();
        }
    }
}

bool Bridge::shutdown() {
    std::lock_guard lock(m_mutex);
    m_shutdown = true;
    m_changed.notify_all();
    return m_callsWaiting > 0;
}

void Bridge::waitForSessionEnd(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [this] { return !m_session || m_session->closed; });
}

}  // namespace dorvane::webconnector
