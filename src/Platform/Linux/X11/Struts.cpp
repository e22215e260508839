#include "Platform/Linux/X11/Struts.h"

#include "Platform/Linux/X11/QtConnection.h"

#include <algorithm>

namespace {

/// The root window's size now: screens may have come and gone since the connection was made.
QSize rootSize()
{
    const auto cookie = xcb_get_geometry(X11::qtConnection(), X11::qtScreen().root);
    const X11::Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(X11::qtConnection(), cookie, nullptr));
    return reply ? QSize(reply->width, reply->height) : QSize();
}

/// Far beyond any X screen, far below overflow.
constexpr std::uint32_t farAway = 1U << 20;

int clamped(std::uint32_t value)
{
    return static_cast<int>(std::min(value, farAway));
}

/// Whether a band that runs along an edge from pixel `first` to pixel `last` passes the pixels from
/// `low` to `high`.
bool meets(std::uint32_t first, std::uint32_t last, int low, int high)
{
    return clamped(first) <= high && low <= clamped(last);
}

/// The older property of four depths, as bands along whole edges.
std::vector<std::uint32_t> alongWholeEdges(std::vector<std::uint32_t> depths)
{
    depths.resize(4);
    depths.insert(depths.end(), {0, farAway, 0, farAway, 0, farAway, 0, farAway});
    return depths;
}

} // namespace

X11::Reserved X11::reserved()
{
    if (!qtConnection())
        return {};
    Reserved result{rootSize(), {}};
    const auto windows = property32(qtScreen().root, "_NET_CLIENT_LIST");
    const auto partial = properties32(windows, "_NET_WM_STRUT_PARTIAL");
    const auto whole = properties32(windows, "_NET_WM_STRUT");
    for (std::size_t i = 0; i < windows.size(); ++i) {
        auto values = partial[i];
        if (values.size() < 12 && whole[i].size() >= 4)
            values = alongWholeEdges(whole[i]);
        if (values.size() < 12)
            continue;
        Strut strut;
        std::copy_n(values.begin(), strut.values.size(), strut.values.begin());
        result.struts.push_back(strut);
    }
    return result;
}

QRect X11::withoutStruts(QRect screen, QSize root, const std::vector<Strut>& struts)
{
    QRect visible = screen;
    for (const Strut& strut : struts) {
        const auto& v = strut.values;
        const int left = clamped(v[0]);
        const int right = root.width() - clamped(v[1]);
        const int top = clamped(v[2]);
        const int bottom = root.height() - clamped(v[3]);
        const bool leftMeets = meets(v[4], v[5], screen.top(), screen.bottom());
        const bool rightMeets = meets(v[6], v[7], screen.top(), screen.bottom());
        const bool topMeets = meets(v[8], v[9], screen.left(), screen.right());
        const bool bottomMeets = meets(v[10], v[11], screen.left(), screen.right());

        // A band counts for a screen that it begins or ends in; one that covers the screen from
        // side to side belongs to a screen beyond it.
        if (v[0] > 0 && leftMeets && left > screen.left() && left <= screen.right())
            visible.setLeft(std::max(visible.left(), left));
        if (v[1] > 0 && rightMeets && right > screen.left() && right <= screen.right())
            visible.setRight(std::min(visible.right(), right - 1));
        if (v[2] > 0 && topMeets && top > screen.top() && top <= screen.bottom())
            visible.setTop(std::max(visible.top(), top));
        if (v[3] > 0 && bottomMeets && bottom > screen.top() && bottom <= screen.bottom())
            visible.setBottom(std::min(visible.bottom(), bottom - 1));
    }
    return visible.isValid() ? visible : screen;
}
