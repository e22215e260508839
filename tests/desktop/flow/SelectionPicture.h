#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QColor>
#include <QRect>

/// Waits until the picture of the screen shows the selection `pixels`, each edge to within two: as
/// bright inside as without the overlay, where everything is `plain`, and dimmed beyond its edges.
/// Looks along the selection's middle lines, so labels and corners do not matter.
Desktop::Outcome<void> awaitSelectionOf(const Desktop::VirtualDesktop& desktop, QRect pixels,
                                        QColor plain);
