#include "Editor/CanvasPicture.h"

#include "Editor/AnnotationRenderer.h"

#include <QElapsedTimer>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

/// When no more are above a moving annotation, what is below it is taken from what has been
/// painted.
constexpr qsizetype fewAbove = 32;

/// What an annotation moves through is prepared in squares of so many pixels: only there, and not
/// at each step anew.
constexpr int tile = 128;
/// So many squares are prepared ahead of it at a step, so that it seldom meets several that are
/// not: one at least, more while there is time.
constexpr int mostTilesAhead = 4;
constexpr int millisecondsAhead = 4;

QRegion tilesOf(const QRegion& area)
{
    QRegion result;
    for (const QRect& part : area) {
        const QPoint first(part.left() / tile, part.top() / tile);
        const QPoint last(part.right() / tile, part.bottom() / tile);
        result += QRect(first * tile, (last + QPoint(1, 1)) * tile - QPoint(1, 1));
    }
    return result;
}

/// Applies what turned black and white into `onBlack` and `onWhite` to what is between them.
void applyAbove(QImage& image, const QImage& onBlack, const QImage& onWhite)
{
    for (int y = 0; y < image.height(); ++y) {
        uchar* const to = image.scanLine(y);
        const uchar* const low = onBlack.constScanLine(y);
        const uchar* const high = onWhite.constScanLine(y);
        for (int i = 0; i < 4 * image.width(); ++i) {
            const int span = std::max(high[i] - low[i], 0);
            const auto product = static_cast<std::uint16_t>(to[i] * span + 128);
            to[i] = static_cast<uchar>(low[i] + ((product + (product >> 8)) >> 8));
        }
    }
}

} // namespace

CanvasPicture::CanvasPicture(const BaseImage& image, const CanvasModel& model,
                             const QColor& background)
    : m_image(image)
    , m_model(model)
    , m_background(background)
    , m_base(image.pixels)
{
    setScale(1);
}

void CanvasPicture::setScale(double scale)
{
    if (scale == m_scale)
        return;
    m_scale = scale;
    const auto length = [scale](double points) {
        return std::max(static_cast<int>(std::lround(points * scale)), 1);
    };
    m_base.setSize({length(m_image.size.width), length(m_image.size.height)});
    m_still.clear();
    if (m_move) {
        m_move->below.clear();
        m_move->onBlack.clear();
        m_move->onWhite.clear();
    }
}

QRect CanvasPicture::pixels(const Geometry::Rect& area) const
{
    const double margin = 2 + std::ceil(m_scale / m_image.pixelsPerPointX());
    const Geometry::Rect all =
        Geometry::Rect{0, 0, m_image.size.width, m_image.size.height}.grown(margin / m_scale);
    const double left = std::max(area.minX(), all.minX());
    const double right = std::min(area.maxX(), all.maxX());
    const double bottom = std::max(area.minY(), all.minY());
    const double top = std::min(area.maxY(), all.maxY());
    if (left > right || bottom > top)
        return {};
    const QRectF place(left * m_scale, (m_image.size.height - top) * m_scale,
                       (right - left) * m_scale, (top - bottom) * m_scale);
    return place.adjusted(-margin, -margin, margin, margin).toAlignedRect() & canvas();
}

void CanvasPicture::annotationsChanged(const Geometry::Rect& area)
{
    settle();
    m_still.invalidate(pixels(area));
}

void CanvasPicture::annotationAppended()
{
    settle();
    m_still.paintOver([this](QPainter& painter) { draw(painter, m_model.annotations().back()); });
}

void CanvasPicture::selectionMoved(const Geometry::Rect& from, const Geometry::Rect& to)
{
    const qsizetype index = *m_model.selectedIndex();
    if (m_move && m_move->index != index)
        settle();
    if (!m_move)
        beginMove(index, from);
    const QPointF heading(to.minX() - m_move->place.minX(), m_move->place.minY() - to.minY());
    if (!heading.isNull())
        m_move->heading = heading;
    m_move->place = to;
}

void CanvasPicture::beginMove(qsizetype index, const Geometry::Rect& place)
{
    m_still.invalidate(pixels(place));
    m_move.emplace(Move{
        .index = index, .place = place, .heading = {}, .below = {}, .onBlack = {}, .onWhite = {}});
    const qsizetype end = m_model.annotations().size();
    if (end - index > fewAbove)
        return;
    m_move->below = m_still;
    for (qsizetype i = index + 1; i < end; ++i)
        m_move->below.invalidate(pixels(m_model.places()[i].painted));
}

void CanvasPicture::settle()
{
    if (!m_move)
        return;
    m_still.invalidate(pixels(m_move->place));
    m_move.reset();
}

// Painting

void CanvasPicture::draw(QPainter& painter, const Annotation& annotation) const
{
    painter.save();
    painter.scale(m_scale, m_scale);
    const Geometry::Flip flip({0, 0, m_image.size.width, m_image.size.height});
    AnnotationRenderer::draw(painter, flip, annotation, m_image);
    painter.restore();
}

void CanvasPicture::drawAnnotations(QPainter& painter, const QRect& area, qsizetype begin,
                                    qsizetype end) const
{
    for (qsizetype i = begin; i < end; ++i) {
        if (pixels(m_model.places()[i].painted).intersects(area))
            draw(painter, m_model.annotations()[i]);
    }
}

void CanvasPicture::completeStill(const QRegion& area, const QRect& seen)
{
    m_still.show(seen, canvas());
    m_still.complete(area, [this](QPainter& painter, const QRect& part) {
        paintBase(painter, part);
        const qsizetype end = m_model.annotations().size();
        drawAnnotations(painter, part, 0, m_move ? m_move->index : end);
        if (m_move)
            drawAnnotations(painter, part, m_move->index + 1, end);
    });
}

void CanvasPicture::paintBase(QPainter& painter, const QRect& area)
{
    painter.fillRect(area, m_background);
    painter.drawImage(area.topLeft(), m_base.part(area));
}

QImage CanvasPicture::withDraft(const QRect& area) const
{
    QImage result = m_still.part(area);
    QPainter painter(&result);
    painter.translate(-area.topLeft());
    painter.setClipRect(area);
    draw(painter, *m_model.draft());
    return result;
}

/// What moves.
bool CanvasPicture::isBelowOthers() const
{
    return m_move->index + 1 < m_model.annotations().size();
}

void CanvasPicture::prepareMove(const QRegion& moving, const QRect& seen)
{
    if (moving.isEmpty())
        return;
    m_move->below.show(seen, canvas());
    if (isBelowOthers()) {
        m_move->onBlack.show(seen, canvas());
        m_move->onWhite.show(seen, canvas());
    }
    prepareTiles(tilesOf(moving) & seen);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < mostTilesAhead && (i == 0 || timer.elapsed() < millisecondsAhead); ++i) {
        const QRect next = nextTile(moving, seen);
        if (next.isEmpty())
            break;
        prepareTiles(next);
    }
}

/// Of those around what moves that are not prepared, the one farthest ahead; empty when there is
/// none.
QRect CanvasPicture::nextTile(const QRegion& moving, const QRect& seen) const
{
    const QRect met = tilesOf(moving).boundingRect();
    const QPointF middle = QRectF(met).center();
    QRect next;
    double farthest = 0;
    for (int y = met.top() - tile; y <= met.bottom() + 1; y += tile) {
        for (int x = met.left() - tile; x <= met.right() + 1; x += tile) {
            const QRect candidate = QRect(x, y, tile, tile) & seen;
            const bool isPrepared = m_move->below.has(candidate) &&
                                    (!isBelowOthers() || m_move->onWhite.has(candidate));
            if (isPrepared)
                continue;
            const double ahead =
                QPointF::dotProduct(QRectF(candidate).center() - middle, m_move->heading);
            if (next.isEmpty() || ahead > farthest) {
                next = candidate;
                farthest = ahead;
            }
        }
    }
    return next;
}

void CanvasPicture::prepareTiles(const QRegion& tiles)
{
    const qsizetype index = m_move->index;
    const qsizetype end = m_model.annotations().size();
    const auto fill = [&](const QColor& color) {
        return [this, color, index, end](QPainter& painter, const QRect& area) {
            painter.fillRect(area, color);
            drawAnnotations(painter, area, index + 1, end);
        };
    };
    m_move->below.complete(tiles, [&](QPainter& painter, const QRect& area) {
        paintBase(painter, area);
        drawAnnotations(painter, area, 0, index);
    });
    if (!isBelowOthers())
        return;
    m_move->onBlack.complete(tiles, fill(Qt::black));
    m_move->onWhite.complete(tiles, fill(Qt::white));
}

QImage CanvasPicture::withMoving(const QRect& area) const
{
    QImage result = m_move->below.part(area);
    {
        QPainter painter(&result);
        painter.translate(-area.topLeft());
        painter.setClipRect(area);
        draw(painter, m_model.annotations()[m_move->index]);
    }
    if (isBelowOthers())
        applyAbove(result, m_move->onBlack.view(area), m_move->onWhite.view(area));
    return result;
}

void CanvasPicture::paint(QPainter& painter, const QRegion& area, const QRect& seen)
{
    if (!m_model.isMoving())
        settle();
    completeStill(area, seen);
    QRegion still = area & canvas();
    // What an annotation moves through is only nearly right, so no more of that is shown than must
    // be.
    if (m_move) {
        const QRegion moving = still & pixels(m_move->place);
        prepareMove(moving, seen);
        for (const QRect& part : moving)
            painter.drawImage(part.topLeft(), withMoving(part));
        still -= moving;
    }
    if (m_model.draft()) {
        for (const QRect& part : still)
            painter.drawImage(part.topLeft(), withDraft(part));
        return;
    }
    for (const QRect& part : still)
        painter.drawImage(part.topLeft(), m_still.pixels(), part.translated(-m_still.origin()));
}
