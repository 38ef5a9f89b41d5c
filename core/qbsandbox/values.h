// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — qbXML value formats: decimals, dates, time stamps, durations, and the
// writer that produces answers line by line as QuickBooks does.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace dorvane::qbsandbox {

// A fixed-point number with five decimals, enough for amounts, prices, quantities and
// percentages alike.
class Decimal {
public:
    static constexpr std::int64_t kScale = 100000;
    Decimal() = default;
    static Decimal fromUnits(std::int64_t units) {
        Decimal d;
        d.m_units = units;
        return d;
    }
    static Decimal fromCents(std::int64_t cents) { return fromUnits(cents * 1000); }
    // Accepts an optional sign, digits and up to `maxDecimals` decimals.
    static std::optional<Decimal> parse(std::string_view text, int maxDecimals = 5);

    std::int64_t units() const { return m_units; }
    std::int64_t cents() const;  // rounded half away from zero
    bool isZero() const { return m_units == 0; }

    Decimal operator+(Decimal o) const { return fromUnits(m_units + o.m_units); }
    Decimal operator-(Decimal o) const { return fromUnits(m_units - o.m_units); }
    Decimal operator-() const { return fromUnits(-m_units); }
    Decimal& operator+=(Decimal o) {
        m_units += o.m_units;
        return *this;
    }
    Decimal times(Decimal o) const;      // rounded to five decimals
    Decimal dividedBy(Decimal o) const;  // rounded to five decimals; 0 when o is 0
    Decimal roundedToCents() const { return fromCents(cents()); }
    auto operator<=>(const Decimal&) const = default;

    std::string amount() const;    // always two decimals: "150.00", "-197.02"
    std::string price() const;     // at least two decimals, at most five: "85.00", "12.125"
    std::string quantity() const;  // no forced decimals: "0", "2", "1.5"

private:
    std::int64_t m_units = 0;
};

// A calendar date as days since 1970-01-01.
struct Date {
    std::int64_t days = 0;
    static std::optional<Date> parse(std::string_view text);  // YYYY-MM-DD
    static Date fromYmd(int y, int m, int d);
    void ymd(int& y, int& m, int& d) const;
    int weekday() const;  // 0 = Sunday
    std::string text() const;
    Date plusDays(std::int64_t n) const { return Date{days + n}; }
    auto operator<=>(const Date&) const = default;
};
Date addMonths(Date date, int months);  // day clamped to the month's length
int daysInMonth(int year, int month);

// "Today" for the sandbox: DORVANE_TODAY=YYYY-MM-DD when set, else the local date.
Date today();

// QuickBooks' TimeCreated/TimeModified text for a Unix time: local wall-clock time with the
// zone's standard offset (QuickBooks never writes the daylight-saving offset).
std::string qbDateTime(std::int64_t unixTime);
// Reads a DATETIMETYPE value (a date alone, or date and time with an optional offset) as a
// Unix time; a bare date is the start of that local day, or its end when `endOfDay`.
std::optional<std::int64_t> parseDateTime(std::string_view text, bool endOfDay = false);

// Reads a qbXML duration ([+-]PT#H#M#S, parts optional) as seconds.
std::optional<std::int64_t> parseDuration(std::string_view text);
std::string durationText(std::int64_t seconds);  // PT2H30M0S

// True/false as qbXML reads them (true, false, 1, 0).
std::optional<bool> parseBool(std::string_view text);
inline const char* boolText(bool b) {
    return b ? "true" : "false";
}

// Escapes text for element content and attribute values.
void appendEscaped(std::string& out, std::string_view text);

// Builds an answer the way QuickBooks writes one: every element on its own line, no
// indentation, attributes in the order they are given.
class ResponseWriter {
public:
    explicit ResponseWriter(std::string& out) : m_out(out) {}
    void open(std::string_view name) {
        m_out += '<';
        m_out += name;
        m_out += ">\n";
    }
    void close(std::string_view name) {
        m_out += "</";
        m_out += name;
        m_out += ">\n";
    }
    void leaf(std::string_view name, std::string_view value) {
        m_out += '<';
        m_out += name;
        m_out += '>';
        appendEscaped(m_out, value);
        m_out += "</";
        m_out += name;
        m_out += ">\n";
    }
    std::string& text() { return m_out; }

private:
    std::string& m_out;
};

}  // namespace dorvane::qbsandbox
