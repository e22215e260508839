#include "Support/JsonReader.h"

#include <QUtf8StringView>

#include <charconv>
#include <cmath>
#include <vector>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<double> parsedDouble(std::string_view digits)
{
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size())
        return {};
    return value;
}

} // namespace

JsonReader::JsonReader(QByteArrayView text)
    : m_text(text.data(), static_cast<std::size_t>(text.size()))
{
    if (m_text.starts_with(byteOrderMark))
        m_at = byteOrderMark.size();
}

bool JsonReader::fail()
{
    m_hasFailed = true;
    return false;
}

void JsonReader::skipSpace()
{
    m_at = std::min(m_text.find_first_not_of(" \t\n\r", m_at), m_text.size());
}

bool JsonReader::leave(char c)
{
    if (m_hasFailed)
        return true;
    skipSpace();
    if (m_at == m_text.size() || m_text[m_at] != c)
        return false;
    ++m_at;
    return true;
}

bool JsonReader::take(char c)
{
    return !m_hasFailed && (leave(c) || fail());
}

bool JsonReader::takeWord(std::string_view word)
{
    if (!m_text.substr(m_at).starts_with(word))
        return fail();
    m_at += word.size();
    return true;
}

bool JsonReader::takeDigits()
{
    const std::size_t start = m_at;
    while (m_at < m_text.size() && isDigit(m_text[m_at]))
        ++m_at;
    return m_at > start;
}

std::string_view JsonReader::takeNumber()
{
    if (m_hasFailed)
        return {};
    skipSpace();
    const std::size_t start = m_at;
    const auto takeOne = [this](std::string_view these) {
        const bool is = m_at < m_text.size() && these.find(m_text[m_at]) != std::string_view::npos;
        m_at += is ? 1 : 0;
        return is;
    };
    takeOne("-");
    const bool isWhole = takeOne("0") || takeDigits();
    const bool isNumber = isWhole && (!takeOne(".") || takeDigits()) &&
                          (!takeOne("eE") || (takeOne("+-"), takeDigits()));
    if (!isNumber) {
        fail();
        return {};
    }
    return m_text.substr(start, m_at - start);
}

std::optional<double> JsonReader::readNumber()
{
    const std::optional<double> value = parsedDouble(takeNumber());
    if (!value)
        fail();
    return value;
}

std::optional<std::int64_t> JsonReader::readInteger()
{
    const std::string_view digits = takeNumber();
    std::int64_t integer = 0;
    const char* const end = digits.data() + digits.size();
    if (const auto parsed = std::from_chars(digits.data(), end, integer);
        !digits.empty() && parsed.ec == std::errc{} && parsed.ptr == end)
        return integer;
    // 2^63 and its negative are floats, 2^63 - 1 is not.
    constexpr double limit = 9223372036854775808.0;
    const std::optional<double> value =
        digits.find_first_of(".eE") == std::string_view::npos ? std::nullopt : parsedDouble(digits);
    if (!value || *value != std::trunc(*value) || *value < -limit || *value >= limit) {
        fail();
        return {};
    }
    return static_cast<std::int64_t>(*value);
}

bool JsonReader::readNull()
{
    if (m_hasFailed)
        return false;
    skipSpace();
    return m_at < m_text.size() && m_text[m_at] == 'n' && takeWord("null");
}

bool JsonReader::takeEscape(QString& result)
{
    static constexpr std::string_view letters = "\"\\/bfnrt";
    static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (m_at == m_text.size())
        return fail();
    const char letter = m_text[m_at++];
    if (const std::size_t index = letters.find(letter); index != std::string_view::npos) {
        result += QLatin1Char(meanings[index]);
        return true;
    }
    constexpr std::size_t digits = 4;
    if (letter != 'u' || m_text.size() - m_at < digits)
        return fail();
    std::uint16_t unit = 0;
    const char* const start = m_text.data() + m_at;
    if (const auto parsed = std::from_chars(start, start + digits, unit, 16);
        parsed.ec != std::errc{} || parsed.ptr != start + digits)
        return fail();
    m_at += digits;
    result += QChar(unit);
    return true;
}

std::optional<QString> JsonReader::readString()
{
    if (!take('"'))
        return {};
    QString result;
    while (true) {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && m_text[m_at] != '"' && m_text[m_at] != '\\' &&
               static_cast<unsigned char>(m_text[m_at]) >= ' ')
            ++m_at;
        // Nothing but strings has other characters than ASCII.
        const QUtf8StringView part(m_text.data() + start, static_cast<qsizetype>(m_at - start));
        if (!part.isValidUtf8()) {
            fail();
            return {};
        }
        result += part.toString();
        const char next = m_at < m_text.size() ? m_text[m_at++] : '\0';
        if (next == '"')
            break;
        if (next != '\\' || !takeEscape(result)) {
            fail();
            return {};
        }
    }
    // Escapes can name halves of characters.
    if (!result.isValidUtf16()) {
        fail();
        return {};
    }
    return result;
}

bool JsonReader::skipScalar()
{
    skipSpace();
    switch (m_at < m_text.size() ? m_text[m_at] : '\0') {
    case '"':
        return readString().has_value();
    case 't':
        return takeWord("true");
    case 'f':
        return takeWord("false");
    case 'n':
        return takeWord("null");
    default:
        return !takeNumber().empty();
    }
}

bool JsonReader::skip()
{
    // The objects and arrays that are open, a bit each: true for an object.
    std::vector<bool> open;
    const auto closing = [&open] { return open.back() ? '}' : ']'; };
    while (!m_hasFailed) {
        // A value is next.
        bool isComplete = false;
        if (const bool isObject = leave('{'); isObject || leave('[')) {
            open.push_back(isObject);
            isComplete = leave(closing());
            if (isComplete)
                open.pop_back();
        } else {
            isComplete = skipScalar();
        }
        // When one is complete, so may be those around it.
        while (isComplete && !open.empty() && !leave(',')) {
            if (!take(closing()))
                return false;
            open.pop_back();
        }
        if (isComplete && open.empty())
            return !m_hasFailed;
        if (!m_hasFailed && open.back() && (!readString() || !take(':')))
            return false;
    }
    return false;
}

bool JsonReader::isAtEnd()
{
    skipSpace();
    return !m_hasFailed && m_at == m_text.size();
}
