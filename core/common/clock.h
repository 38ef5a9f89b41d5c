// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — today's date, which DORVANE_TODAY=YYYY-MM-DD fixes for tests and demonstrations.
#pragma once

#include <chrono>
#include <string>

namespace dorvane::clock {

// Today as YYYY-MM-DD: $DORVANE_TODAY when it is set, else the local date.
std::string todayIso();

// The current moment; with $DORVANE_TODAY set, the current local time of day on that date.
std::chrono::system_clock::time_point now();

// A moment as the logs write it: the local date and time, "YYYY-MM-DD HH:MM:SS".
std::string localDateTimeText(std::chrono::system_clock::time_point when);

}  // namespace dorvane::clock
