// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — an owned file descriptor, closed when its owner goes.
#pragma once

#include <unistd.h>
#include <utility>

namespace dorvane {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    ~UniqueFd() { reset(); }
    UniqueFd(UniqueFd&& other) noexcept : m_fd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    int get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }
    // Gives the descriptor up unclosed: for a close whose failure counts.
    int release() { return std::exchange(m_fd, -1); }
    // Closes the descriptor held and takes `fd`.
    void reset(int fd = -1) {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

}  // namespace dorvane
