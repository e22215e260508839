#include "probes/Points.h"

#include <algorithm>
#include <stdexcept>

namespace Bench {

namespace {

/// How long the points must stay as they are to be called settled.
constexpr std::chrono::milliseconds settling{250};

/// After how long the points are looked at although nobody said that they changed.
constexpr std::chrono::milliseconds longestBlind{2};

bool allDiffer(const Points::Colours& a, const Points::Colours& b)
{
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](std::uint32_t one, std::uint32_t other) { return one != other; });
}

} // namespace

std::vector<Points::Point> Points::read(const std::vector<std::string>& words)
{
    std::vector<Point> points;
    for (const std::string& word : words) {
        const std::size_t comma = word.find(',');
        if (comma == std::string::npos)
            throw std::runtime_error("a point is X,Y, not " + word);
        points.push_back({std::stoi(word.substr(0, comma)), std::stoi(word.substr(comma + 1))});
    }
    return points;
}

Points::Points(const Connection& connection, std::vector<Point> points)
    : m_connection(connection)
    , m_points(std::move(points))
    , m_damage(xcb_generate_id(connection))
    , m_damageEvent(connection.firstEvent(xcb_damage_id))
{
    const auto version = xcb_damage_query_version(connection, 1, 1);
    connection.take(xcb_damage_query_version_reply(connection, version, nullptr));
    xcb_damage_create(connection, m_damage, connection.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    connection.finish();
}

Points::Colours Points::colours() const
{
    std::vector<xcb_get_image_cookie_t> cookies;
    for (const Point point : m_points) {
        cookies.push_back(xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                        m_connection.root(), static_cast<std::int16_t>(point.x),
                                        static_cast<std::int16_t>(point.y), 1, 1, ~0U));
    }
    Colours colours;
    for (const auto cookie : cookies) {
        const auto image = m_connection.take(xcb_get_image_reply(m_connection, cookie, nullptr));
        const std::uint8_t* const bytes = xcb_get_image_data(image.get());
        colours.push_back(std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 |
                          std::uint32_t{bytes[2]} << 16);
    }
    return colours;
}

template <class Look>
bool Points::watch(Clock::time_point deadline, Look look) const
{
    while (true) {
        // Damage that comes after this one was taken note of makes another event.
        xcb_damage_subtract(m_connection, m_damage, XCB_NONE, XCB_NONE);
        if (look(colours()))
            return true;
        const auto now = Clock::now();
        if (now > deadline)
            return false;
        // Not everything that changes a screen counts as damage: the background that comes to light
        // below a window that goes does not.
        while (const auto event = m_connection.nextEvent(std::min(deadline, now + longestBlind))) {
            if ((event->response_type & 0x7f) == m_damageEvent + XCB_DAMAGE_NOTIFY)
                break;
        }
    }
}

Clock::time_point Points::awaitOtherThan(const Colours& before) const
{
    Colours last;
    Clock::time_point since;
    const bool settled = watch(Clock::now() + patience, [&](const Colours& now) {
        const auto moment = Clock::now();
        if (now != last) {
            last = now;
            since = moment;
        }
        return allDiffer(last, before) && moment - since > settling;
    });
    if (!settled)
        throw std::runtime_error("nothing new came to the screen and stayed");
    return since;
}

Clock::time_point Points::await(const Colours& wanted) const
{
    if (!watch(Clock::now() + patience, [&wanted](const Colours& now) { return now == wanted; }))
        throw std::runtime_error("the screen did not become what it was");
    return Clock::now();
}

} // namespace Bench
