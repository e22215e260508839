#pragma once

#include <QRect>
#include <QSize>

#include <array>
#include <cstdint>
#include <vector>

namespace X11 {

/// What one panel or dock reserves, in native pixels, as _NET_WM_STRUT_PARTIAL gives it (Extended
/// Window Manager Hints 1.5): the depth taken from the left, right, top and bottom edge of the root
/// window, then the first and last pixel of each of those bands along its edge.
struct Strut {
    std::array<std::uint32_t, 12> values{};
};

/// The struts of all windows that the window manager manages.
std::vector<Strut> struts();

/// `screen` less the bands that lie in it. All in native pixels of a root window of `root` size.
QRect withoutStruts(QRect screen, QSize root, const std::vector<Strut>& struts);

/// `screen` less the panels and docks there are now; `screen` itself when Qt does not run on X11.
QRect visibleNative(QRect screen);

} // namespace X11
