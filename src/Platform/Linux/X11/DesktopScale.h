#pragma once

#include <string_view>

namespace X11 {

/// Pixels a point, as Qt 6.4's xcb plugin has it when no QT_ variable says otherwise: the dots an
/// inch of the resource "Xft.dpi", rounded to a whole number, by 96; never below 1. 1 when there is
/// no such resource, or none that makes sense. The screen's own size in millimetres has no say.
///
/// `resources` is the root window's property RESOURCE_MANAGER: lines of "name:\tvalue", of which
/// the last readable one counts.
double desktopScale(std::string_view resources);

} // namespace X11
