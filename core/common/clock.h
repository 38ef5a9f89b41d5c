// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — today's date, which DORVANE_TODAY=YYYY-MM-DD fixes for tests and demonstrations.
#pragma once

#include <string>

namespace dorvane::clock {

// Today as YYYY-MM-DD: $DORVANE_TODAY when it is set, else the local date.
std::string todayIso();

}  // namespace dorvane::clock
