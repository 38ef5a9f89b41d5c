// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/clock.h"

#include <cstdlib>
#include <ctime>

namespace dorvane::clock {

std::string todayIso() {
    if (const char* fixed = std::getenv("DORVANE_TODAY"); fixed && *fixed) {
        return fixed;
    }
    std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    char buf[16];
    std::strftime(buf, sizeof buf, "%Y-%m-%d", &local);
    return buf;
}

}  // namespace dorvane::clock
