#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <optional>
#include <string_view>

/// Reads a JSON text (RFC 8259) value by value, as the caller asks for them.
///
/// Qt's own reader makes -0.0 a whole number without a sign, and takes numbers and characters that
/// JSON does not have. This one is exact: a number is what its digits say, and whatever does not
/// belong is an error. It holds nothing but what it is asked for, however deep or long the text is.
///
/// The first error is final: all later calls fail too. So callers need to look at results only
/// where they use them, and in loops.
class JsonReader {
public:
    /// `text` must outlive the reader.
    explicit JsonReader(QByteArrayView text);

    /// Calls `readMember` with each key; it reads the value, or skips it, and returns whether the
    /// reader may go on.
    template <class ReadMember>
    bool readObject(ReadMember readMember)
    {
        if (!take('{'))
            return false;
        for (bool isFirst = true; !leave('}'); isFirst = false) {
            const bool isNext = isFirst || take(',');
            const std::optional<QString> key = isNext ? readString() : std::nullopt;
            if (!key || !take(':') || !readMember(*key))
                return fail();
        }
        return !m_hasFailed;
    }

    /// Calls `readElement` before each element; it reads or skips it and returns whether the reader
    /// may go on.
    template <class ReadElement>
    bool readArray(ReadElement readElement)
    {
        if (!take('['))
            return false;
        for (bool isFirst = true; !leave(']'); isFirst = false) {
            if ((!isFirst && !take(',')) || !readElement())
                return fail();
        }
        return !m_hasFailed;
    }

    std::optional<QString> readString();

    /// The nearest 64-bit float. Fails when it is too large for one, or too small to be told from
    /// zero.
    std::optional<double> readNumber();

    /// Fails unless the number is whole and fits; 3.0 and 3e0 are 3.
    std::optional<std::int64_t> readInteger();

    /// Whether the next value is null; reads it then.
    bool readNull();

    /// Reads a value of any kind and leaves it at that.
    bool skip();

    /// Whether everything has been read, and without an error.
    bool isAtEnd();

private:
    bool fail();
    void skipSpace();
    /// Takes the punctuation `c`; an error when something else is next.
    bool take(char c);
    /// Whether `c` is next, taken then; also when an error ends every loop.
    bool leave(char c);
    bool takeWord(std::string_view word);
    /// The text of a number; empty, and an error, when none is next.
    std::string_view takeNumber();
    bool takeDigits();
    bool takeEscape(QString& result);
    bool skipScalar(); ///< A value that holds no others.

    std::string_view m_text;
    std::size_t m_at = 0;
    bool m_hasFailed = false;
};
