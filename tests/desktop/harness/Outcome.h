#pragma once

#include <QtCore/QString>

#include <optional>
#include <utility>

namespace Desktop {

/// Why something could not be done, in words for whoever reads the test's output.
struct Failure {
    QString text;
};

/// What a step on the desktop brought: a value, or why there is none.
template <typename T>
class [[nodiscard]] Outcome {
public:
    Outcome(T value)
        : m_value(std::move(value))
    {
    }
    Outcome(Failure failure)
        : m_error(std::move(failure.text))
    {
    }

    explicit operator bool() const { return m_value.has_value(); }
    T& operator*() { return *m_value; }
    const T& operator*() const { return *m_value; }
    T* operator->() { return &*m_value; }
    const T* operator->() const { return &*m_value; }

    /// Empty when there is a value.
    const QString& error() const { return m_error; }
    Failure failure() const { return {m_error}; }

private:
    std::optional<T> m_value;
    QString m_error;
};

/// What a step brought that has no value: it was done, or why not.
template <>
class [[nodiscard]] Outcome<void> {
public:
    Outcome() = default;
    Outcome(Failure failure)
        : m_failed(true)
        , m_error(std::move(failure.text))
    {
    }

    explicit operator bool() const { return !m_failed; }
    const QString& error() const { return m_error; }
    Failure failure() const { return {m_error}; }

private:
    bool m_failed = false;
    QString m_error;
};

} // namespace Desktop
