#pragma once

#include "Editor/CanvasLayer.h"
#include "Editor/CanvasModel.h"
#include "Editor/ScaledPicture.h"

#include <QColor>

#include <optional>

/// A picture with its annotations as a canvas shows it. What lies still is painted once, as far as
/// it is seen; what changes is painted with what it meets. All but the annotations is in pixels of
/// the screen from the canvas's top left corner.
class CanvasPicture {
public:
    /// `background` is seen through a picture that is not opaque.
    CanvasPicture(const BaseImage& image, const CanvasModel& model, const QColor& background);

    /// Pixels a point of the picture.
    void setScale(double scale);
    /// All of the canvas.
    QRect canvas() const { return {QPoint(), m_base.size()}; }

    /// To be called when annotations changed.
    void annotationsChanged(const Geometry::Rect& area);
    /// To be called when one more is on top.
    void annotationAppended();
    /// To be called when the selected annotation was moved on.
    void selectionMoved(const Geometry::Rect& from, const Geometry::Rect& to);

    /// What drawing in an area of the picture can change.
    QRect pixels(const Geometry::Rect& area) const;

    /// Paints `area`; `seen` is all that is seen of the canvas and holds it.
    void paint(QPainter& painter, const QRegion& area, const QRect& seen);

private:
    void beginMove(qsizetype index, const Geometry::Rect& place);
    void settle();
    void paintBase(QPainter& painter, const QRect& area);
    void drawAnnotations(QPainter& painter, const QRect& area, qsizetype begin,
                         qsizetype end) const;
    void draw(QPainter& painter, const Annotation& annotation) const;
    void completeStill(const QRegion& area, const QRect& seen);
    QImage withDraft(const QRect& area) const;
    void prepareMove(const QRegion& moving, const QRect& seen);
    bool isBelowOthers() const;
    void prepareTiles(const QRegion& tiles);
    QRect nextTile(const QRegion& moving, const QRect& seen) const;
    QImage withMoving(const QRect& area) const;

    const BaseImage& m_image;
    const CanvasModel& m_model;
    QColor m_background;
    double m_scale = 0;
    ScaledPicture m_base;
    CanvasLayer m_still; ///< The picture and all annotations, but for a draft and one that moves.

    /// While the selected annotation moves.
    struct Move {
        qsizetype index;
        Geometry::Rect place; ///< Where it is now.
        QPointF heading;      ///< The way it moved last, y down.
        CanvasLayer below;    ///< The picture and the annotations below.
        // What the annotations above make of black and of white. As each of them changes a channel
        // linearly, that says what they make of anything.
        CanvasLayer onBlack;
        CanvasLayer onWhite;
    };
    std::optional<Move> m_move;
};
