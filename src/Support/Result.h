#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>
#include <variant>

/// Why something could not be done, as one line for people: no line end, no full stop.
struct Failure {
    std::string message;
};

/// What a function that only acts comes back with: nothing, or why it failed.
using PossibleFailure = std::optional<Failure>;

/// A value, or why there is none. Free of Qt, so that the capture tool can use it.
template <class Value>
class [[nodiscard]] Result {
public:
    // Implicit, so that a function returns a value or a failure as it is.
    Result(Value value) // NOLINT(google-explicit-constructor)
        : m_content(std::in_place_index<0>, std::move(value))
    {
    }
    Result(Failure failure) // NOLINT(google-explicit-constructor)
        : m_content(std::in_place_index<1>, std::move(failure))
    {
    }

    explicit operator bool() const { return m_content.index() == 0; }

    /// Only when there is a value.
    Value& operator*()
    {
        assert(*this);
        return *std::get_if<0>(&m_content);
    }
    const Value& operator*() const
    {
        assert(*this);
        return *std::get_if<0>(&m_content);
    }
    Value* operator->() { return &**this; }
    const Value* operator->() const { return &**this; }

    /// Only when there is no value.
    const Failure& failure() const
    {
        assert(!*this);
        return *std::get_if<1>(&m_content);
    }

private:
    std::variant<Value, Failure> m_content;
};
