#include "Support/ScreenTable.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

using Geometry::TopLeftRect;

namespace ScreenTable {

namespace {

/// Far beyond any root window (X11 ends at 2^15), and small enough that sums of a few edges stay
/// within 32 bits.
constexpr std::int32_t farthestPixel = 1 << 24;

constexpr std::string_view hexDigits = "0123456789abcdef";

/// Control characters and the escape character itself become %xx, so that no name breaks a line.
void appendEscaped(std::string& text, std::string_view name)
{
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7f && byte != '%') {
            text += character;
            continue;
        }
        text += '%';
        text += hexDigits[byte >> 4];
        text += hexDigits[byte & 15];
    }
}

std::optional<std::string> unescaped(std::string_view text)
{
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7f)
            return std::nullopt;
        if (byte != '%') {
            name += text[i];
            continue;
        }
        if (text.size() - i < 3)
            return std::nullopt;
        const std::size_t high = hexDigits.find(text[i + 1]);
        const std::size_t low = hexDigits.find(text[i + 2]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        name += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return name;
}

template <class Number>
void appendNumber(std::string& text, Number number)
{
    std::array<char, 32> digits; // the shortest text that reads back as the same double has 24
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), result.ptr);
    text += ' ';
}

/// Takes a number and the one space behind it off the front of `line`.
template <class Number>
bool takeNumber(std::string_view& line, Number& number)
{
    const char* const end = line.data() + line.size();
    const auto result = std::from_chars(line.data(), end, number);
    if (result.ec != std::errc() || result.ptr == end || *result.ptr != ' ')
        return false;
    line.remove_prefix(static_cast<std::size_t>(result.ptr - line.data()) + 1);
    return true;
}

bool isFarPixel(std::int64_t edge)
{
    return edge < -farthestPixel || edge > farthestPixel;
}

bool isUsable(const Screen& screen)
{
    const auto& [x, y, width, height] = screen.frame;
    const PixelRect& pixels = screen.pixels;
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(screen.scale))
        return false;
    if (!std::isfinite(width) || !std::isfinite(height))
        return false;
    if (width <= 0 || height <= 0 || screen.scale <= 0)
        return false;
    if (pixels.width <= 0 || pixels.height <= 0)
        return false;
    return !isFarPixel(pixels.x) && !isFarPixel(pixels.y) &&
           !isFarPixel(std::int64_t{pixels.x} + pixels.width) &&
           !isFarPixel(std::int64_t{pixels.y} + pixels.height);
}

std::optional<Screen> readLine(std::string_view line)
{
    Screen screen;
    TopLeftRect& frame = screen.frame;
    PixelRect& pixels = screen.pixels;
    const bool numbersRead = takeNumber(line, frame.x) && takeNumber(line, frame.y) &&
                             takeNumber(line, frame.width) && takeNumber(line, frame.height) &&
                             takeNumber(line, pixels.x) && takeNumber(line, pixels.y) &&
                             takeNumber(line, pixels.width) && takeNumber(line, pixels.height) &&
                             takeNumber(line, screen.scale);
    if (!numbersRead || !isUsable(screen))
        return std::nullopt;
    std::optional<std::string> name = unescaped(line);
    if (!name)
        return std::nullopt;
    screen.name = std::move(*name);
    return screen;
}

/// The edges of a pixel rectangle; the far ones lie one past the last pixel.
struct PixelEdges {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
};

std::int32_t nearPixel(std::int64_t edge)
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(edge, -farthestPixel, farthestPixel));
}

PixelEdges edgesOf(const PixelRect& pixels)
{
    return {nearPixel(pixels.x), nearPixel(pixels.y),
            nearPixel(std::int64_t{pixels.x} + pixels.width),
            nearPixel(std::int64_t{pixels.y} + pixels.height)};
}

PixelEdges intersection(const PixelEdges& a, const PixelEdges& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

/// In square points; 0 when they do not meet.
double sharedArea(const TopLeftRect& a, const TopLeftRect& b)
{
    const double width = std::min(a.right(), b.right()) - std::max(a.x, b.x);
    const double height = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return width > 0 && height > 0 ? width * height : 0;
}

const Screen* screenWithMostOf(const TopLeftRect& points, const std::vector<Screen>& screens)
{
    const Screen* most = nullptr;
    double mostArea = 0;
    for (const Screen& screen : screens) {
        const double area = isUsable(screen) ? sharedArea(points, screen.frame) : 0;
        if (area > mostArea) {
            mostArea = area;
            most = &screen;
        }
    }
    return most;
}

/// One edge, in points, as a pixel edge along one axis of one screen.
struct Axis {
    double nearEdge = 0;
    double farEdge = 0;
    std::int32_t nearPixelEdge = 0;
    std::int32_t farPixelEdge = 0;
    double scale = 1;

    std::int32_t pixelEdge(double edge) const
    {
        if (edge == farEdge)
            return farPixelEdge;
        const double pixel = nearPixelEdge + (edge - nearEdge) * scale;
        return static_cast<std::int32_t>(
            std::round(std::clamp<double>(pixel, -farthestPixel, farthestPixel)));
    }
};

/// A pixel edge on the nearest whole point along one axis of one screen.
double pointEdge(const Axis& axis, std::int32_t edge)
{
    if (edge == axis.farPixelEdge)
        return axis.farEdge;
    return axis.nearEdge + std::round((edge - axis.nearPixelEdge) / axis.scale);
}

Axis xAxis(const Screen& screen)
{
    const PixelEdges pixels = edgesOf(screen.pixels);
    return {screen.frame.x, screen.frame.right(), pixels.left, pixels.right, screen.scale};
}

Axis yAxis(const Screen& screen)
{
    const PixelEdges pixels = edgesOf(screen.pixels);
    return {screen.frame.y, screen.frame.bottom(), pixels.top, pixels.bottom, screen.scale};
}

PixelEdges throughScreen(const TopLeftRect& points, const Screen& screen)
{
    const Axis x = xAxis(screen);
    const Axis y = yAxis(screen);
    return {x.pixelEdge(points.x), y.pixelEdge(points.y), x.pixelEdge(points.right()),
            y.pixelEdge(points.bottom())};
}

/// The rectangle whose edges are the whole points of a screen nearest to these.
TopLeftRect wholePoints(const PixelEdges& edges, const Screen& screen)
{
    const Axis x = xAxis(screen);
    const Axis y = yAxis(screen);
    const double left = pointEdge(x, edges.left);
    const double top = pointEdge(y, edges.top);
    return {left, top, pointEdge(x, edges.right) - left, pointEdge(y, edges.bottom) - top};
}

std::int64_t sharedPixels(const PixelEdges& a, const PixelEdges& b)
{
    const PixelEdges shared = intersection(a, b);
    if (shared.isEmpty())
        return 0;
    return (std::int64_t{shared.right} - shared.left) * (std::int64_t{shared.bottom} - shared.top);
}

/// The smallest rectangle around what of `edges` lies on any screen; empty when nothing does.
PixelEdges cutToScreens(const PixelEdges& edges, const std::vector<Screen>& screens)
{
    PixelEdges around;
    for (const Screen& screen : screens) {
        const PixelEdges part = intersection(edges, edgesOf(screen.pixels));
        if (part.isEmpty())
            continue;
        if (around.isEmpty()) {
            around = part;
            continue;
        }
        around = {std::min(around.left, part.left), std::min(around.top, part.top),
                  std::max(around.right, part.right), std::max(around.bottom, part.bottom)};
    }
    return around;
}

} // namespace

std::string write(const std::vector<Screen>& screens)
{
    std::string text;
    for (const Screen& screen : screens) {
        for (const double number :
             {screen.frame.x, screen.frame.y, screen.frame.width, screen.frame.height})
            appendNumber(text, number);
        for (const std::int32_t number :
             {screen.pixels.x, screen.pixels.y, screen.pixels.width, screen.pixels.height})
            appendNumber(text, number);
        appendNumber(text, screen.scale);
        appendEscaped(text, screen.name);
        text += '\n';
    }
    return text;
}

std::optional<std::vector<Screen>> read(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    if (text.back() == '\n')
        text.remove_suffix(1);

    std::vector<Screen> screens;
    for (;;) {
        const std::size_t end = text.find('\n');
        std::optional<Screen> screen = readLine(text.substr(0, end));
        if (!screen)
            return std::nullopt;
        screens.push_back(std::move(*screen));
        if (end == std::string_view::npos)
            return screens;
        text.remove_prefix(end + 1);
    }
}

std::optional<Placement> place(TopLeftRect points, const std::vector<Screen>& screens)
{
    const bool isFinite = std::isfinite(points.x) && std::isfinite(points.y) &&
                          std::isfinite(points.width) && std::isfinite(points.height);
    if (!isFinite)
        return std::nullopt;
    const Screen* const screen = screenWithMostOf(points, screens);
    if (!screen)
        return std::nullopt;
    const PixelEdges edges = cutToScreens(throughScreen(points, *screen), screens);
    if (edges.isEmpty())
        return std::nullopt;
    return Placement{{edges.left, edges.top, edges.right - edges.left, edges.bottom - edges.top},
                     screen->scale};
}

TopLeftRect placeable(TopLeftRect points, const Screen& measuredOn,
                      const std::vector<Screen>& screens)
{
    if (!isUsable(measuredOn) || screenWithMostOf(points, screens) == &measuredOn)
        return points;
    const PixelEdges edges = throughScreen(points, measuredOn);
    TopLeftRect best = points;
    std::int64_t mostPixels = 0;
    for (const Screen& screen : screens) {
        if (!isUsable(screen))
            continue;
        const TopLeftRect candidate = wholePoints(edges, screen);
        const std::int64_t pixels = sharedPixels(edges, edgesOf(screen.pixels));
        if (pixels > mostPixels && screenWithMostOf(candidate, screens) == &screen) {
            mostPixels = pixels;
            best = candidate;
        }
    }
    return best;
}

} // namespace ScreenTable
