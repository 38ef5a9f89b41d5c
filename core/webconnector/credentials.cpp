// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/credentials.h"

#include <cerrno>
#include <crypt.h>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <sys/random.h>
#include <vector>

namespace dorvane::webconnector {
namespace {

void fillRandom(unsigned char* out, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::getrandom(out + done, size - done, 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::runtime_error(std::string("no random numbers: ") + std::strerror(errno));
        }
        done += static_cast<std::size_t>(got);
    }
}

// Wipes a copy of a secret before its memory is given back.
struct Wiped {
    std::string text;
    ~Wiped() {
        volatile char* p = text.data();
        for (std::size_t i = 0; i < text.size(); ++i) {
            p[i] = 0;
        }
    }
};

}  // namespace

std::string randomHex(std::size_t bytes) {
    std::vector<unsigned char> raw(bytes);
    fillRandom(raw.data(), raw.size());
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    out.reserve(bytes * 2);
    for (unsigned char b : raw) {
        out += kDigits[b >> 4];
        out += kDigits[b & 0xF];
    }
    return out;
}

std::string newGuid() {
    unsigned char b[16];
    fillRandom(b, sizeof b);
    b[6] = static_cast<unsigned char>((b[6] & 0x0F) | 0x40);  // version 4
    b[8] = static_cast<unsigned char>((b[8] & 0x3F) | 0x80);  // RFC 4122 variant
    char text[40];
    std::snprintf(text, sizeof text,
                  "{%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X}", b[0],
                  b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13],
                  b[14], b[15]);
    return text;
}

Result<std::string> hashPassword(std::string_view password) {
    if (password.find('\0') != std::string_view::npos) {
        return Error{EINVAL, "A password cannot contain a NUL character."};
    }
    // The library's own cost for yescrypt, and a salt from the kernel's random numbers.
    char* setting = ::crypt_gensalt_ra("$y$", 0, nullptr, 0);
    if (setting == nullptr) {
        return Error{errno, std::string("Could not make a salt: ") + std::strerror(errno)};
    }
    std::unique_ptr<char, decltype(&std::free)> settingOwner(setting, &std::free);
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const Wiped phrase{std::string(password)};
    const char* hashed = ::crypt_r(phrase.text.c_str(), setting, data.get());
    if (hashed == nullptr || hashed[0] == '*') {
        return Error{errno ? errno : EINVAL, "Could not hash the password."};
    }
    std::string out(hashed);
    std::memset(data.get(), 0, sizeof(crypt_data));
    return out;
}

bool verifyPassword(std::string_view password, std::string_view hash) {
    if (hash.empty() || hash[0] != '$' || password.find('\0') != std::string_view::npos) {
        return false;
    }
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const Wiped phrase{std::string(password)};
    const std::string setting(hash);
    const char* hashed = ::crypt_r(phrase.text.c_str(), setting.c_str(), data.get());
    const bool match = hashed != nullptr && hashed[0] != '*' && constantTimeEquals(hashed, setting);
    std::memset(data.get(), 0, sizeof(crypt_data));
    return match;
}

bool constantTimeEquals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    unsigned char diff = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        diff |= static_cast<unsigned char>(a[i] ^ b[i]);
    }
    return diff == 0;
}

}  // namespace dorvane::webconnector
