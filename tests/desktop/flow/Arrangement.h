#pragma once

#include "desktop/harness/Monitors.h"

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>

#include <optional>

/// A screen of a desktop, in its own pixels on the root window.
struct ArrangedScreen {
    QString name;
    QRect pixels;
    double scale = 1;

    Desktop::Monitor monitor() const { return {name, pixels}; }
    /// As the first one of a desktop.
    Desktop::Monitor primaryMonitor() const { return {name, pixels, true, true}; }
    /// In points: Qt rounds it.
    QSize size() const;
    /// In points from the top left of the root window: Qt keeps the place in pixels and divides the
    /// size alone.
    QRectF frame() const { return {pixels.topLeft(), QSizeF(size())}; }
};

/// What becomes of a selection.
struct Expected {
    /// What its overlay shows, also where that screen has no pixels.
    QRect shown;
    /// What is saved.
    QRect saved;
    /// How far any edge of either may be off, in pixels.
    int tolerance = 0;
    /// The scales that the picture's density may follow.
    QList<double> scales;
};

/// Screens and what is to be selected on them, worked out from the stated rules alone:
///  - a pointer that names a pixel of a screen means a whole point of it, the nearest one, and on
///    the last point its far edge;
///  - a rectangle goes through one screen, the one it was dragged on; each edge is rounded by
///    itself, halves away from zero, and an edge on the screen's far edge is its far pixel edge;
///  - one that runs onto another screen may have its edges on whole points of that one instead: up
///    to half a point off;
///  - what lies off all screens is cut away.
class Arrangement {
public:
    explicit Arrangement(QList<ArrangedScreen> screens)
        : m_screens(std::move(screens))
    {
    }

    const QList<ArrangedScreen>& screens() const { return m_screens; }

    /// What a drag between two pixels, begun on the screen `on`, selects.
    Expected selected(const ArrangedScreen& on, QPoint from, QPoint to) const;

private:
    QList<ArrangedScreen> m_screens;
};
