#pragma once

#include <QImage>

namespace Bench {

/// Pictures of the kinds that screens show. The same ones each time, pixel by pixel, for the same
/// fonts.
namespace Contents {

/// A desktop at work: a gradient behind windows of text and lists, and a photograph in one of them.
QImage mixed(QSize size);

/// One terminal over the whole screen: text of a few colours, smoothed, on one background.
QImage terminal(QSize size);

/// Smooth light and shade, edges, fine structure and a sensor's noise, all over the screen.
QImage photograph(QSize size);

} // namespace Contents

} // namespace Bench
