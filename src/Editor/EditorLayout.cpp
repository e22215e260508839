#include "Editor/EditorLayout.h"

namespace {

/// How much of the screen a window may take at first.
constexpr double share = 0.85;

} // namespace

double EditorLayout::initialMagnification(Geometry::Size picture, Geometry::Size visible)
{
    return std::min({std::max(visible.width * share, smallestWindow.width) / picture.width,
                     (visible.height * share - toolbarHeight) / picture.height, 1.0});
}

Geometry::Size EditorLayout::contentSize(Geometry::Size picture, double magnification)
{
    return {std::max(picture.width * magnification, smallestWindow.width),
            picture.height * magnification + toolbarHeight};
}
