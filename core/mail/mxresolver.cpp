// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mxresolver.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>

#include <ares.h>

#include "common/text.h"

namespace dorvane::mail {
namespace {

constexpr int kTimeoutMs = 2500;
constexpr int kTries = 2;
constexpr int kTypeMx = 15;
constexpr int kClassIn = 1;

void initAres() {
    static std::once_flag once;
    std::call_once(once, [] { ares_library_init(ARES_LIB_INIT_ALL); });
}

struct ChannelDestroy {
    void operator()(ares_channeldata* channel) const { ares_destroy(channel); }
};
using Channel = std::unique_ptr<ares_channeldata, ChannelDestroy>;

Channel openChannel(const std::string& servers) {
    initAres();
    ares_options options{};
    options.timeout = kTimeoutMs;
    options.tries = kTries;
    // No search domains: a recipient's domain and a server name are meant as written.
    options.domains = nullptr;
    options.ndomains = 0;
    const int mask = ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES | ARES_OPT_DOMAINS;
    ares_channel raw = nullptr;
    if (ares_init_options(&raw, &options, mask) != ARES_SUCCESS) {
        return nullptr;
    }
    Channel channel(raw);
    if (!servers.empty() && ares_set_servers_ports_csv(raw, servers.c_str()) != ARES_SUCCESS) {
        return nullptr;
    }
    return channel;
}

// Runs the channel until its queries have answered or timed out.
void waitForAnswers(ares_channel channel) {
    while (true) {
        ares_socket_t sockets[ARES_GETSOCK_MAXNUM];
        const int bits = ares_getsock(channel, sockets, ARES_GETSOCK_MAXNUM);
        pollfd fds[ARES_GETSOCK_MAXNUM];
        nfds_t count = 0;
        for (int i = 0; i < ARES_GETSOCK_MAXNUM; ++i) {
            const bool readable = ARES_GETSOCK_READABLE(bits, i);
            const bool writable = ARES_GETSOCK_WRITABLE(bits, i);
            if (!readable && !writable) {
                continue;
            }
            fds[count].fd = sockets[i];
            fds[count].events =
                static_cast<short>((readable ? POLLIN : 0) | (writable ? POLLOUT : 0));
            fds[count].revents = 0;
            ++count;
        }
        if (count == 0) {
            return;
        }
        timeval wait{};
        timeval* limit = ares_timeout(channel, nullptr, &wait);
        const int ms =
            limit ? static_cast<int>(limit->tv_sec * 1000 + limit->tv_usec / 1000) : 1000;
        const int ready = poll(fds, count, ms);
        if (ready <= 0) {
            ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);  // timeouts
            continue;
        }
        for (nfds_t i = 0; i < count; ++i) {
            const bool in = fds[i].revents & (POLLIN | POLLERR | POLLHUP);
            const bool out = fds[i].revents & POLLOUT;
            if (in || out) {
                ares_process_fd(channel, in ? fds[i].fd : ARES_SOCKET_BAD,
                                out ? fds[i].fd : ARES_SOCKET_BAD);
            }
        }
    }
}

struct MxAnswer {
    int status = ARES_ENOTFOUND;
    std::vector<std::pair<int, std::string>> hosts;  // preference, host
};

void onMxAnswer(void* arg, int status, int, unsigned char* buffer, int length) {
    auto* answer = static_cast<MxAnswer*>(arg);
    answer->status = status;
    if (status != ARES_SUCCESS) {
        return;
    }
    ares_mx_reply* replies = nullptr;
    answer->status = ares_parse_mx_reply(buffer, length, &replies);
    for (ares_mx_reply* r = replies; r; r = r->next) {
        answer->hosts.emplace_back(r->priority, r->host ? r->host : "");
    }
    if (replies) {
        ares_free_data(replies);
    }
}

void onAddresses(void* arg, int status, int, ares_addrinfo* result) {
    auto* out = static_cast<std::vector<std::string>*>(arg);
    if (status == ARES_SUCCESS && result) {
        for (ares_addrinfo_node* n = result->nodes; n; n = n->ai_next) {
            char text[INET6_ADDRSTRLEN] = {};
            if (n->ai_family == AF_INET) {
                auto* sa = reinterpret_cast<sockaddr_in*>(n->ai_addr);
                inet_ntop(AF_INET, &sa->sin_addr, text, sizeof text);
            } else if (n->ai_family == AF_INET6) {
                auto* sa = reinterpret_cast<sockaddr_in6*>(n->ai_addr);
                inet_ntop(AF_INET6, &sa->sin6_addr, text, sizeof text);
            } else {
                continue;
            }
            if (std::find(out->begin(), out->end(), text) == out->end()) {
                out->emplace_back(text);
            }
        }
    }
    if (result) {
        ares_freeaddrinfo(result);
    }
}

}  // namespace

MxResolver::MxResolver(std::string servers) : m_servers(std::move(servers)) {}

MxResolver MxResolver::fromEnvironment() {
    const char* servers = std::getenv(kDnsServerVariable);
    return MxResolver(servers ? std::string(text::trim(servers)) : std::string());
}

std::string MxResolver::mailExchanger(std::string_view domainText) const {
    std::string domain(text::trim(domainText));
    if (domain.size() > 2 && domain.front() == '[' && domain.back() == ']') {
        std::string literal = domain.substr(1, domain.size() - 2);
        if (literal.size() > 5 && text::equalsIgnoreCase(literal.substr(0, 5), "IPv6:")) {
            literal.erase(0, 5);
        }
        return literal;
    }
    while (!domain.empty() && domain.back() == '.') {
        domain.pop_back();
    }
    if (domain.empty()) {
        return {};
    }
    Channel channel = openChannel(m_servers);
    if (!channel) {
        return {};
    }
    MxAnswer answer;
    ares_query(channel.get(), domain.c_str(), kClassIn, kTypeMx, onMxAnswer, &answer);
    waitForAnswers(channel.get());
    if (answer.status == ARES_SUCCESS && !answer.hosts.empty()) {
        // The first of the lowest preference, in the order the server gave them.
        std::stable_sort(answer.hosts.begin(), answer.hosts.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        const std::string& best = answer.hosts.front().second;
        if (best.empty() || best == ".") {
            return {};  // null MX: the domain accepts no mail
        }
        return best;
    }
    // No MX records (or no such name): the domain's own address, if it has one.
    if (answer.status == ARES_ENODATA || answer.status == ARES_ENOTFOUND ||
        (answer.status == ARES_SUCCESS && answer.hosts.empty())) {
        if (!addresses(domain).empty()) {
            return domain;
        }
    }
    return {};
}

std::vector<std::string> MxResolver::addresses(std::string_view hostText) const {
    const std::string host(text::trim(hostText));
    std::vector<std::string> out;
    if (host.empty()) {
        return out;
    }
    Channel channel = openChannel(m_servers);
    if (!channel) {
        return out;
    }
    ares_addrinfo_hints hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_flags = ARES_AI_NOSORT;
    ares_getaddrinfo(channel.get(), host.c_str(), nullptr, &hints, onAddresses, &out);
    waitForAnswers(channel.get());
    return out;
}

}  // namespace dorvane::mail
