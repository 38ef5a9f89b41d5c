// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — output for scripts: `--json` makes a command print one JSON document on standard
// output instead of its text (its messages stay on standard error).
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/options.h"

namespace dorvane::cli {

// Keys keep the order they were written in, as the text output has them.
using Json = nlohmann::ordered_json;

inline constexpr Option kJsonOption{"--json", 0, "",
                                    "print one JSON document on standard output instead of\nthe "
                                    "text (messages stay on standard error)"};

// The document, indented, and a line end. Text that is not valid UTF-8 is replaced, not refused.
inline void printJson(const Json& doc, std::ostream& out) {
    out << doc.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace dorvane::cli
