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

/// What all panels and docks reserve, and the size of the root window that it is measured on.
struct Reserved {
    QSize root;
    std::vector<Strut> struts;
};

/// Asks the server, in three round trips however many windows there are. Nothing is reserved when
/// Qt does not run on X11.
Reserved reserved();

/// `screen` less the bands that lie in it. All in native pixels of a root window of `root` size.
QRect withoutStruts(QRect screen, QSize root, const std::vector<Strut>& struts);

} // namespace X11
