// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Web Connector's login: the stored password hash, session tickets, and the
// GUIDs that name Dorvane and the company file to the Web Connector.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::webconnector {

// `bytes` random bytes from the kernel, as lower-case hexadecimal.
std::string randomHex(std::size_t bytes);

// A random (version 4) GUID as Windows writes it: "{1B3A6C2E-0F4D-4E2A-8B1C-5D6E7F809A1B}".
std::string newGuid();

// A salted slow hash of `password` (yescrypt, as /etc/shadow keeps them). The hash names its
// method and salt, so it alone verifies a password later.
Result<std::string> hashPassword(std::string_view password);

// Whether `password` matches `hash`. A malformed or empty hash matches nothing.
bool verifyPassword(std::string_view password, std::string_view hash);

// Compares in time that depends on the lengths only, not on where the texts differ.
bool constantTimeEquals(std::string_view a, std::string_view b);

}  // namespace dorvane::webconnector
