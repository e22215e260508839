#include "Arguments.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

using Geometry::TopLeftRect;

namespace {

std::string quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

/// Takes one number off the front of `text`.
std::optional<double> takeNumber(std::string_view& text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || !std::isfinite(number))
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return number;
}

/// Walks over the words one by one.
class Reader {
public:
    explicit Reader(std::span<const char* const> words)
        : m_words(words)
    {
    }

    Result<Arguments> read()
    {
        while (isAtOption()) {
            const std::string_view word = m_words.front();
            m_words = m_words.subspan(1);
            if (word == "--")
                break;
            if (const PossibleFailure failure = readCluster(word.substr(1)))
                return *failure;
        }
        return finished();
    }

private:
    bool isAtOption() const
    {
        if (m_words.empty())
            return false;
        const std::string_view word = m_words.front();
        return word.size() > 1 && word.front() == '-';
    }

    /// The letters of one word, without its hyphen.
    PossibleFailure readCluster(std::string_view letters)
    {
        while (!letters.empty()) {
            const char letter = letters.front();
            letters.remove_prefix(1);
            switch (letter) {
            case 'x':
                break; // no sound of a camera: there is never one
            case 'v':
                m_read.isMovie = true;
                break;
            case 'C':
                m_read.showsPointer = true;
                break;
            case 'k':
                m_read.showsClicks = true;
                break;
            case 'g':
                m_read.hasSound = true;
                break;
            case 't':
                return readType(takeValue(letters));
            case 'R':
                return readRectangle(takeValue(letters));
            default:
                return Failure{"unknown option " + quoted(std::string("-") + letter)};
            }
        }
        return std::nullopt;
    }

    /// The rest of an option's own word or, when that is empty, the next word.
    std::optional<std::string_view> takeValue(std::string_view attached)
    {
        if (!attached.empty())
            return attached;
        if (m_words.empty())
            return std::nullopt;
        const std::string_view value = m_words.front();
        m_words = m_words.subspan(1);
        return value;
    }

    PossibleFailure readType(std::optional<std::string_view> value)
    {
        if (!value)
            return Failure{"option -t wants a format"};
        if (*value != "png")
            return Failure{"unknown format " + quoted(*value) + "; there is only png"};
        m_hasType = true;
        return std::nullopt;
    }

    PossibleFailure readRectangle(std::optional<std::string_view> value)
    {
        if (!value)
            return Failure{"option -R wants a rectangle x,y,w,h"};
        m_rectangle = parseRectangle(*value);
        if (!m_rectangle)
            return Failure{quoted(*value) + " is not a rectangle x,y,w,h in decimal numbers"};
        if (m_rectangle->width <= 0 || m_rectangle->height <= 0)
            return Failure{"the rectangle " + quoted(*value) + " is empty"};
        return std::nullopt;
    }

    Result<Arguments> finished() const
    {
        if (m_read.isMovie && m_hasType)
            return Failure{"option -t is for stills: it does not go with -v"};
        if (!m_read.isMovie && (m_read.showsPointer || m_read.showsClicks || m_read.hasSound))
            return Failure{"options -C, -k and -g are for movies: they want -v"};
        if (!m_rectangle)
            return Failure{"option -R x,y,w,h is missing"};
        if (m_words.empty() || !*m_words.front())
            return Failure{"the name of the file is missing"};
        if (m_words.size() > 1)
            return Failure{"extra argument " + quoted(m_words[1])};
        Arguments arguments = m_read;
        arguments.rectangle = *m_rectangle;
        arguments.file = m_words.front();
        return arguments;
    }

    std::span<const char* const> m_words;
    Arguments m_read;
    bool m_hasType = false;
    std::optional<TopLeftRect> m_rectangle;
};

} // namespace

std::optional<TopLeftRect> parseRectangle(std::string_view text)
{
    std::array<double, 4> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0) {
            if (!text.starts_with(','))
                return std::nullopt;
            text.remove_prefix(1);
        }
        const std::optional<double> number = takeNumber(text);
        if (!number)
            return std::nullopt;
        numbers[i] = *number;
    }
    if (!text.empty())
        return std::nullopt;
    return TopLeftRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

Result<Arguments> parseArguments(std::span<const char* const> words)
{
    return Reader(words).read();
}
