#pragma once

#include <QString>

#include <utility>
#include <variant>

/// Why something failed, in words for a log line: no prefix, no final full stop.
struct Error {
    QString text;
};

/// A value, or the reason why there is none.
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value)
        : m_content(std::in_place_index<0>, std::move(value))
    {
    }
    Result(Error error)
        : m_content(std::in_place_index<1>, std::move(error))
    {
    }

    bool ok() const { return m_content.index() == 0; }
    explicit operator bool() const { return ok(); }
    /// Only when ok().
    T& value() { return std::get<0>(m_content); }
    const T& value() const { return std::get<0>(m_content); }
    /// Only when not ok().
    const QString& error() const { return std::get<1>(m_content).text; }

private:
    std::variant<T, Error> m_content;
};

/// Success, or the reason for the failure.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error)
        : m_error(std::move(error.text))
        , m_ok(false)
    {
    }

    bool ok() const { return m_ok; }
    explicit operator bool() const { return m_ok; }
    /// Only when not ok().
    const QString& error() const { return m_error; }

private:
    QString m_error;
    bool m_ok = true;
};
