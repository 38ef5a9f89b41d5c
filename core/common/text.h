// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — small text helpers shared by every subsystem.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorvane::text {

// Replaces every occurrence of `what` (case-sensitive); an empty `what` changes nothing.
std::string replaceAll(std::string_view in, std::string_view what, std::string_view with);

std::string toLower(std::string_view in);
bool equalsIgnoreCase(std::string_view a, std::string_view b);
std::string_view trim(std::string_view in);
std::vector<std::string> split(std::string_view in, char sep);

// Reads a whole decimal number the way a 16-bit integer conversion would; nullopt when the
// text is not a number or does not fit.
std::optional<std::int16_t> toInt16(std::string_view in);

// An amount as two decimals ("1234.50"), no thousands separator.
std::string twoDecimals(double amount);
// An amount as QuickBooks writes it ("1234.5", "-80.00") in whole cents; 0 when it does not read.
long long toCents(std::string_view amount);
// Cents as two decimals ("1234.50"); `grouped` puts commas between thousands ("1,234.50").
std::string centsText(long long cents, bool grouped = false);

// A signed 32-bit code as decimal text (0x80040416 becomes -2147220458).
std::string signedDecimal(std::uint32_t code);

}  // namespace dorvane::text
