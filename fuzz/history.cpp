// SPDX-License-Identifier: GPL-3.0-or-later
// The logs the history reads, as a user may have edited them: the first byte chooses the sent
// log, the reminder log, the import log or the activity log, the rest is its text. Joined,
// summed up and filtered as `dorvane history` and the History window do.
#include "history/history.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzzkit.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    history::LogTexts logs;
    std::string* texts[] = {&logs.sent, &logs.reminders, &logs.imports, &logs.activity};
    *texts[data[0] % 4] = std::string(fuzz::text(data + 1, size - 1));
    const auto events = history::joinHistory(logs);
    (void)history::summaryText(events);
    (void)history::filterHistory(
        events, {.type = "invoice", .since = "2026-01-01", .until = "2026-12-31", .customer = "a"});
    return 0;
}
