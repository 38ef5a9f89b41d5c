// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/clock.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace dorvane::clock {
namespace {

const char* fixedToday() {
    const char* fixed = std::getenv("DORVANE_TODAY");
    return fixed && *fixed ? fixed : nullptr;
}

}  // namespace

std::string todayIso() {
    if (const char* fixed = fixedToday()) {
        return fixed;
    }
    std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    char buf[16];
    std::strftime(buf, sizeof buf, "%Y-%m-%d", &local);
    return buf;
}

std::chrono::system_clock::time_point now() {
    const auto real = std::chrono::system_clock::now();
    const char* fixed = fixedToday();
    int year = 0;
    int month = 0;
    int day = 0;
    if (!fixed || std::sscanf(fixed, "%4d-%2d-%2d", &year, &month, &day) != 3) {
        return real;
    }
    std::time_t t = std::chrono::system_clock::to_time_t(real);
    std::tm local{};
    localtime_r(&t, &local);
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_isdst = -1;
    const std::time_t moved = std::mktime(&local);
    if (moved == static_cast<std::time_t>(-1)) {
        return real;
    }
    return std::chrono::system_clock::from_time_t(moved);
}

std::string localDateTimeText(std::chrono::system_clock::time_point when) {
    std::time_t t = std::chrono::system_clock::to_time_t(when);
    std::tm local{};
    localtime_r(&t, &local);
    char buf[64];
    std::size_t n = std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &local);
    return std::string(buf, n);
}

}  // namespace dorvane::clock
