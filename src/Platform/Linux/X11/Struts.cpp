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

/// Where a band of `depth` pixels ends that starts at `edge` of the screen; bands that reach over
/// the whole screen are no panels.
struct Span {
    int first;
    int last;

    bool meets(int otherFirst, int otherLast) const
    {
        return first <= otherLast && otherFirst <= last;
    }
};

Span span(std::uint32_t first, std::uint32_t last)
{
    constexpr std::uint32_t limit = 1U << 20; // far beyond any X screen, far below overflow
    return {static_cast<int>(std::min(first, limit)), static_cast<int>(std::min(last, limit))};
}

int depth(std::uint32_t value)
{
    return span(value, value).first;
}

} // namespace

std::vector<X11::Strut> X11::struts()
{
    std::vector<Strut> found;
    if (!qtConnection())
        return found;
    for (const xcb_window_t window : property32(qtScreen().root, "_NET_CLIENT_LIST")) {
        auto values = property32(window, "_NET_WM_STRUT_PARTIAL");
        if (values.size() < 12) {
            // The older property reserves whole edges.
            values = property32(window, "_NET_WM_STRUT");
            if (values.size() < 4)
                continue;
            values.resize(4);
            constexpr std::uint32_t whole = 1U << 20;
            values.insert(values.end(), {0, whole, 0, whole, 0, whole, 0, whole});
        }
        Strut strut;
        std::copy_n(values.begin(), strut.values.size(), strut.values.begin());
        found.push_back(strut);
    }
    return found;
}

QRect X11::withoutStruts(QRect screen, QSize root, const std::vector<Strut>& struts)
{
    QRect visible = screen;
    for (const Strut& strut : struts) {
        const auto& v = strut.values;
        const int left = depth(v[0]);
        const int right = root.width() - depth(v[1]);
        const int top = depth(v[2]);
        const int bottom = root.height() - depth(v[3]);
        const bool leftMeets = span(v[4], v[5]).meets(screen.top(), screen.bottom());
        const bool rightMeets = span(v[6], v[7]).meets(screen.top(), screen.bottom());
        const bool topMeets = span(v[8], v[9]).meets(screen.left(), screen.right());
        const bool bottomMeets = span(v[10], v[11]).meets(screen.left(), screen.right());

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

QRect X11::visibleNative(QRect screen)
{
    if (!qtConnection())
        return screen;
    return withoutStruts(screen, rootSize(), struts());
}
