#include "Platform/Linux/X11/DesktopScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

namespace X11 {

namespace {

constexpr double pointsAnInch = 96; // of a logical desktop, by convention
constexpr double mostDots = 100 * pointsAnInch;

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<double> readDots(std::string_view value)
{
    value = trimmed(value);
    if (value.starts_with('+'))
        value.remove_prefix(1);
    double dots = 0;
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, dots);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(dots))
        return std::nullopt;
    return std::round(dots);
}

} // namespace

double desktopScale(std::string_view resources)
{
    constexpr std::string_view name = "Xft.dpi:\t";
    double dots = pointsAnInch;
    while (!resources.empty()) {
        const std::size_t end = std::min(resources.find('\n'), resources.size());
        const std::string_view line = resources.substr(0, end);
        if (line.starts_with(name))
            dots = readDots(line.substr(name.size())).value_or(dots);
        resources.remove_prefix(std::min(end + 1, resources.size()));
    }
    return dots > mostDots ? 1 : std::max(1.0, dots / pointsAnInch);
}

} // namespace X11
