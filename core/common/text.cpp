// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace dorvane::text {

std::string replaceAll(std::string_view in, std::string_view what, std::string_view with) {
    std::string out;
    if (what.empty()) {
        return std::string(in);
    }
    out.reserve(in.size());
    std::size_t pos = 0;
    while (true) {
        std::size_t hit = in.find(what, pos);
        if (hit == std::string_view::npos) {
            out.append(in.substr(pos));
            break;
        }
        out.append(in.substr(pos, hit - pos));
        out.append(with);
        pos = hit + what.size();
    }
    return out;
}

std::string toLower(std::string_view in) {
    std::string out(in);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

std::string_view trim(std::string_view in) {
    auto space = [](unsigned char c) { return std::isspace(c) != 0; };
    while (!in.empty() && space(static_cast<unsigned char>(in.front()))) {
        in.remove_prefix(1);
    }
    while (!in.empty() && space(static_cast<unsigned char>(in.back()))) {
        in.remove_suffix(1);
    }
    return in;
}

std::vector<std::string> split(std::string_view in, char sep) {
    std::vector<std::string> out;
    std::size_t pos = 0;
    while (true) {
        std::size_t hit = in.find(sep, pos);
        if (hit == std::string_view::npos) {
            out.emplace_back(in.substr(pos));
            return out;
        }
        out.emplace_back(in.substr(pos, hit - pos));
        pos = hit + 1;
    }
}

std::optional<std::int16_t> toInt16(std::string_view in) {
    in = trim(in);
    if (!in.empty() && in.front() == '+') {
        in.remove_prefix(1);
    }
    std::int16_t v = 0;
    auto [end, ec] = std::from_chars(in.data(), in.data() + in.size(), v);
    if (ec != std::errc() || end != in.data() + in.size() || in.empty()) {
        return std::nullopt;
    }
    return v;
}

std::string twoDecimals(double amount) {
    char out[64];
    std::snprintf(out, sizeof out, "%.2f", amount);
    return out;
}

long long toCents(std::string_view amount) {
    return std::llround(std::strtod(std::string(amount).c_str(), nullptr) * 100.0);
}

std::string centsText(long long cents, bool grouped) {
    const unsigned long long whole = cents < 0 ? 0ULL - static_cast<unsigned long long>(cents)
                                               : static_cast<unsigned long long>(cents);
    std::string units = std::to_string(whole / 100);
    for (std::size_t at = units.size(); grouped && at > 3; at -= 3) {
        units.insert(at - 3, ",");
    }
    const unsigned long long rest = whole % 100;
    return (cents < 0 ? "-" : "") + units + (rest < 10 ? ".0" : ".") + std::to_string(rest);
}

std::string signedDecimal(std::uint32_t code) {
    return std::to_string(static_cast<std::int32_t>(code));
}

}  // namespace dorvane::text
