// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — a local TCP port that only records whether anybody connected to it.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "common/fd.h"

namespace dorvane::test {

class NetTrap {
public:
    NetTrap() {
        m_fd.reset(::socket(AF_INET, SOCK_STREAM, 0));
        if (!m_fd) {
            throw std::runtime_error("socket");
        }
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        addr.sin_port = 0;
        socklen_t len = sizeof addr;
        if (::bind(m_fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
            ::listen(m_fd.get(), 8) != 0 ||
            ::getsockname(m_fd.get(), reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
            throw std::runtime_error("cannot listen on the loopback interface");
        }
        m_port = ntohs(addr.sin_port);
    }

    std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + "/" + path;
    }

    // Whether a connection is waiting (nobody accepts them, so they stay queued).
    bool contacted() const {
        pollfd p{m_fd.get(), POLLIN, 0};
        return ::poll(&p, 1, 100) > 0 && (p.revents & POLLIN);
    }

private:
    UniqueFd m_fd;
    int m_port = 0;
};

}  // namespace dorvane::test
