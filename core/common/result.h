// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a value or an error, for the boundaries of core modules.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace dorvane {

// The error of a failed step: a 32-bit code (an HRESULT, errno or a module's own) and a
// description for people.
struct Error {
    std::int32_t code = 0;
    std::string description;
};

template <class T, class E = Error>
class [[nodiscard]] Result {
public:
    Result(T value) : m_v(std::in_place_index<0>, std::move(value)) {}
    Result(E error) : m_v(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return m_v.index() == 0; }
    explicit operator bool() const { return ok(); }
    T& value() & { return std::get<0>(m_v); }
    const T& value() const& { return std::get<0>(m_v); }
    T&& value() && { return std::get<0>(std::move(m_v)); }
    const E& error() const { return std::get<1>(m_v); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }

private:
    std::variant<T, E> m_v;
};

struct Ok {};

// A step that yields nothing but may fail.
template <class E>
class [[nodiscard]] Result<void, E> {
public:
    Result() = default;
    Result(Ok) {}
    Result(E error) : m_error(std::move(error)), m_ok(false) {}
    bool ok() const { return m_ok; }
    explicit operator bool() const { return m_ok; }
    const E& error() const { return m_error; }

private:
    E m_error{};
    bool m_ok = true;
};

using Status = Result<void>;

}  // namespace dorvane
