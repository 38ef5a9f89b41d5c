// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/values.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace dorvane::qbsandbox {

namespace {

std::int64_t roundDiv(__int128 num, __int128 den) {
    if (den == 0) {
        return 0;
    }
    bool negative = (num < 0) != (den < 0);
    if (num < 0) {
        num = -num;
    }
    if (den < 0) {
        den = -den;
    }
    __int128 q = (num + den / 2) / den;
    return static_cast<std::int64_t>(negative ? -q : q);
}

std::string unitsText(std::int64_t units, int minDecimals) {
    bool negative = units < 0;
    std::uint64_t abs =
        negative ? static_cast<std::uint64_t>(-units) : static_cast<std::uint64_t>(units);
    std::uint64_t whole = abs / Decimal::kScale;
    std::uint64_t frac = abs % Decimal::kScale;
    char fracText[8];
    std::snprintf(fracText, sizeof fracText, "%05llu", static_cast<unsigned long long>(frac));
    int decimals = 5;
    while (decimals > minDecimals && fracText[decimals - 1] == '0') {
        --decimals;
    }
    std::string out;
    if (negative && (whole != 0 || frac != 0)) {
        out += '-';
    }
    out += std::to_string(whole);
    if (decimals > 0) {
        out += '.';
        out.append(fracText, static_cast<std::size_t>(decimals));
    }
    return out;
}

bool allDigits(std::string_view s) {
    if (s.empty()) {
        return false;
    }
    for (char c : s) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

int toInt(std::string_view s) {
    int v = 0;
    for (char c : s) {
        v = v * 10 + (c - '0');
    }
    return v;
}

std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text, int maxDecimals) {
    if (text.empty()) {
        return std::nullopt;
    }
    bool negative = false;
    if (text.front() == '-' || text.front() == '+') {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    std::string_view whole = text;
    std::string_view frac;
    if (auto dot = text.find('.'); dot != std::string_view::npos) {
        whole = text.substr(0, dot);
        frac = text.substr(dot + 1);
        if (frac.empty() || !allDigits(frac)) {
            return std::nullopt;
        }
    }
    if (whole.empty() && frac.empty()) {
        return std::nullopt;
    }
    if (!whole.empty() && !allDigits(whole)) {
        return std::nullopt;
    }
    if (whole.size() > 13 || static_cast<int>(frac.size()) > maxDecimals) {
        return std::nullopt;
    }
    std::int64_t units = 0;
    for (char c : whole) {
        units = units * 10 + (c - '0');
    }
    units *= kScale;
    std::int64_t scale = kScale / 10;
    for (char c : frac) {
        units += (c - '0') * scale;
        scale /= 10;
    }
    return fromUnits(negative ? -units : units);
}

std::int64_t Decimal::cents() const {
    return roundDiv(m_units, 1000);
}

Decimal Decimal::times(Decimal o) const {
    return fromUnits(roundDiv(static_cast<__int128>(m_units) * o.m_units, kScale));
}

Decimal Decimal::dividedBy(Decimal o) const {
    return fromUnits(roundDiv(static_cast<__int128>(m_units) * kScale, o.m_units));
}

std::string Decimal::amount() const {
    return unitsText(cents() * 1000, 2);
}
std::string Decimal::price() const {
    return unitsText(m_units, 2);
}
std::string Decimal::quantity() const {
    return unitsText(m_units, 0);
}

int daysInMonth(int year, int month) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month == 2 && ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0)) {
        return 29;
    }
    return days[(month - 1) % 12];
}

Date Date::fromYmd(int y, int m, int d) {
    return Date{daysFromCivil(y, static_cast<unsigned>(m), static_cast<unsigned>(d))};
}

std::optional<Date> Date::parse(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    auto y = text.substr(0, 4), m = text.substr(5, 2), d = text.substr(8, 2);
    if (!allDigits(y) || !allDigits(m) || !allDigits(d)) {
        return std::nullopt;
    }
    int yy = toInt(y), mm = toInt(m), dd = toInt(d);
    if (yy < 1900 || mm < 1 || mm > 12 || dd < 1 || dd > daysInMonth(yy, mm)) {
        return std::nullopt;
    }
    return fromYmd(yy, mm, dd);
}

void Date::ymd(int& y, int& m, int& d) const {
    std::int64_t z = days + 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t yy = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yy + (m <= 2));
}

int Date::weekday() const {
    std::int64_t w = (days + 4) % 7;  // 1970-01-01 was a Thursday
    return static_cast<int>(w < 0 ? w + 7 : w);
}

std::string Date::text() const {
    int y, m, d;
    ymd(y, m, d);
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", y, m, d);
    return buf;
}

Date addMonths(Date date, int months) {
    int y, m, d;
    date.ymd(y, m, d);
    int index = y * 12 + (m - 1) + months;
    int ny = index / 12, nm = index % 12 + 1;
    return Date::fromYmd(ny, nm, std::min(d, daysInMonth(ny, nm)));
}

Date today() {
    if (const char* fixed = std::getenv("DORVANE_TODAY"); fixed && *fixed) {
        if (auto d = Date::parse(fixed)) {
            return *d;
        }
    }
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return Date::fromYmd(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

std::string qbDateTime(std::int64_t unixTime) {
    std::time_t t = static_cast<std::time_t>(unixTime);
    std::tm local{};
    localtime_r(&t, &local);
    long offset = local.tm_gmtoff - (local.tm_isdst > 0 ? 3600 : 0);
    char sign = offset < 0 ? '-' : '+';
    long abs = offset < 0 ? -offset : offset;
    char buf[80];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld",
                  local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec, sign, abs / 3600, (abs % 3600) / 60);
    return buf;
}

std::optional<std::int64_t> parseDateTime(std::string_view text, bool endOfDay) {
    auto date = Date::parse(text.substr(0, std::min<std::size_t>(10, text.size())));
    if (!date) {
        return std::nullopt;
    }
    int y, m, d;
    date->ymd(y, m, d);
    std::tm tm{};
    tm.tm_year = y - 1900;
    tm.tm_mon = m - 1;
    tm.tm_mday = d;
    tm.tm_isdst = -1;
    if (text.size() == 10) {
        if (endOfDay) {
            tm.tm_hour = 23;
            tm.tm_min = 59;
            tm.tm_sec = 59;
        }
        return static_cast<std::int64_t>(std::mktime(&tm));
    }
    std::string_view rest = text.substr(10);
    if (rest.size() < 9 || rest[0] != 'T' || rest[3] != ':' || rest[6] != ':' ||
        !allDigits(rest.substr(1, 2)) || !allDigits(rest.substr(4, 2)) ||
        !allDigits(rest.substr(7, 2))) {
        return std::nullopt;
    }
    int hh = toInt(rest.substr(1, 2)), mi = toInt(rest.substr(4, 2)), ss = toInt(rest.substr(7, 2));
    if (hh > 23 || mi > 59 || ss > 60) {
        return std::nullopt;
    }
    rest.remove_prefix(9);
    std::int64_t dayStart =
        daysFromCivil(y, static_cast<unsigned>(m), static_cast<unsigned>(d)) * 86400;
    std::int64_t wall = dayStart + hh * 3600 + mi * 60 + ss;
    if (rest.empty()) {
        tm.tm_hour = hh;
        tm.tm_min = mi;
        tm.tm_sec = ss;
        return static_cast<std::int64_t>(std::mktime(&tm));
    }
    if (rest == "Z") {
        return wall;
    }
    if (rest.size() != 6 || (rest[0] != '+' && rest[0] != '-') || rest[3] != ':' ||
        !allDigits(rest.substr(1, 2)) || !allDigits(rest.substr(4, 2))) {
        return std::nullopt;
    }
    int off = toInt(rest.substr(1, 2)) * 3600 + toInt(rest.substr(4, 2)) * 60;
    return rest[0] == '+' ? wall - off : wall + off;
}

std::optional<std::int64_t> parseDuration(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    if (text.size() < 2 || text.substr(0, 2) != "PT") {
        return std::nullopt;
    }
    text.remove_prefix(2);
    std::int64_t total = 0;
    const char units[] = {'H', 'M', 'S'};
    const std::int64_t factors[] = {3600, 60, 1};
    std::size_t next = 0;
    while (!text.empty()) {
        std::size_t i = 0;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
            ++i;
        }
        if (i == 0 || i == text.size() || i > 9) {
            return std::nullopt;
        }
        char unit = text[i];
        std::size_t k = next;
        while (k < 3 && units[k] != unit) {
            ++k;
        }
        if (k == 3) {
            return std::nullopt;
        }
        total += toInt(text.substr(0, i)) * factors[k];
        next = k + 1;
        text.remove_prefix(i + 1);
    }
    return negative ? -total : total;
}

std::string durationText(std::int64_t seconds) {
    std::string out = seconds < 0 ? "-PT" : "PT";
    if (seconds < 0) {
        seconds = -seconds;
    }
    out += std::to_string(seconds / 3600) + "H" + std::to_string((seconds % 3600) / 60) + "M" +
           std::to_string(seconds % 60) + "S";
    return out;
}

std::optional<bool> parseBool(std::string_view text) {
    if (text == "true" || text == "1") {
        return true;
    }
    if (text == "false" || text == "0") {
        return false;
    }
    return std::nullopt;
}

void appendEscaped(std::string& out, std::string_view text) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* rep = nullptr;
        switch (text[i]) {
            case '&':
                rep = "&amp;";
                break;
            case '<':
                rep = "&lt;";
                break;
            case '>':
                rep = "&gt;";
                break;
            case '"':
                rep = "&quot;";
                break;
            case '\'':
                rep = "&apos;";
                break;
            default:
                continue;
        }
        out.append(text.substr(start, i - start));
        out += rep;
        start = i + 1;
    }
    out.append(text.substr(start));
}

}  // namespace dorvane::qbsandbox
