#pragma once

#include <QIcon>

/// The image of the status item.
namespace StatusIcon {

/// A camera in a viewfinder or, while recording, a red stop sign. It carries its own dark rim, so
/// that it is legible on light and on dark panels.
QIcon icon(bool recording);

} // namespace StatusIcon
