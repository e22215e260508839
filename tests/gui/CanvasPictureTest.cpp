#include "Editor/AnnotationRenderer.h"
#include "Editor/CanvasView.h"
#include "Editor/ScaledPicture.h"
#include "Editor/ZoomView.h"
#include "Platform/Colors.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"

#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <random>

using Geometry::Point;

namespace {

constexpr QSize points(300, 200);

BaseImage noise(bool isOpaque)
{
    std::mt19937 random(7);
    QImage image(2 * points, isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const unsigned alpha = isOpaque || x % 97 > 20 ? 255 : y & 0xFF;
            const auto channel = [&] { return static_cast<int>(random() % (alpha + 1)); };
            image.setPixel(x, y, qRgba(channel(), channel(), channel(), static_cast<int>(alpha)));
        }
    }
    return BaseImage::ofDensity(image, 2);
}

/// What a canvas shows, drawn from the lowest to the highest at once.
QImage drawnPlainly(const CanvasView& canvas, double scale)
{
    const BaseImage& base = canvas.image();
    ScaledPicture picture(base.pixels);
    picture.setSize({qRound(base.size.width * scale), qRound(base.size.height * scale)});
    QImage result(picture.size(), QImage::Format_RGB32);
    result.fill(Platform::underPageColor());
    QPainter painter(&result);
    painter.drawImage(QPoint(), picture.part({QPoint(), picture.size()}));
    painter.scale(scale, scale);
    const Geometry::Flip flip({0, 0, base.size.width, base.size.height});
    for (const Annotation& annotation : canvas.model().annotations())
        AnnotationRenderer::draw(painter, flip, annotation, base);
    if (canvas.model().draft())
        AnnotationRenderer::draw(painter, flip, *canvas.model().draft(), base);
    if (const auto selected = canvas.model().selectedIndex()) {
        const Geometry::TopLeftRect box = flip.topLeftFromBottomLeft(
            AnnotationRenderer::bounds(canvas.model().annotations()[*selected]));
        QPainterPath outline;
        outline.addRoundedRect(QRectF(box.x, box.y, box.width, box.height) &
                                   QRectF(-16, -16, base.size.width + 32, base.size.height + 32),
                               4, 4);
        QPainterPathStroker dashes(QPen(Qt::black, 1.5, Qt::SolidLine, Qt::FlatCap));
        dashes.setDashPattern({5 / 1.5, 4 / 1.5});
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(dashes.createStroke(outline), Platform::controlAccentColor());
    }
    return result;
}

/// The largest difference of a channel, 256 for other sizes, and where it is.
std::pair<int, QPoint> difference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return {256, {}};
    std::pair<int, QPoint> worst = {0, {}};
    if (a == b)
        return worst;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            const int here = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                       std::abs(qBlue(p) - qBlue(q))});
            if (here > worst.first)
                worst = {here, {x, y}};
        }
    }
    return worst;
}

/// Somebody who does anything at all on a canvas, and looks at every step.
class Restless {
public:
    Restless(BaseImage image, unsigned seed)
        : m_random(seed)
        , m_canvas(new CanvasView(std::move(image), wideOnes()))
        , m_view(m_canvas)
    {
        m_view.resize(260, 180);
        m_view.show();
        settle();
    }

    /// Annotations that are drawn outside of what is hit.
    static QList<Annotation> wideOnes()
    {
        Annotation counter;
        counter.kind = AnnotationKind::counter;
        counter.start = counter.end = {150, 100};
        counter.number = 12'345'678;
        counter.colorHex = QStringLiteral("#34C759");
        counter.lineWidth = 7;
        Annotation arrow = counter;
        arrow.kind = AnnotationKind::arrow;
        arrow.start = {225, 60};
        arrow.end = {235, 130};
        arrow.number.reset();
        arrow.lineWidth = 30;
        return {counter, arrow};
    }

    CanvasModel& model() { return m_canvas->model(); }
    int upTo(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }

    /// Of the part of the canvas that is seen.
    QPoint somewhere()
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        return {seen.left() + upTo(seen.width()), seen.top() + upTo(seen.height())};
    }

    void drag()
    {
        const QPoint start = somewhere();
        QTest::mousePress(m_canvas, Qt::LeftButton, {}, start);
        const bool isShort = upTo(6) == 0;
        const int steps = upTo(model().tool() == EditorTool::freehand && !isShort ? 90 : 4);
        for (int step = 0; step < steps; ++step) {
            QTest::mouseMove(m_canvas, isShort ? start + QPoint(upTo(2), upTo(2)) : somewhere());
            if (step % 30 == 0) {
                if (upTo(6) == 0)
                    scroll();
                // While something is seen through others, it is but for rounding.
                look(model().isMoving() ? 3 : 0, "while dragging");
            }
        }
        if (upTo(10) == 0)
            model().undo();
        QTest::mouseRelease(m_canvas, Qt::LeftButton, {}, somewhere());
    }

    /// Types one, and may take it back.
    void label()
    {
        model().commitText(QStringLiteral("Ângström jgq"),
                           {static_cast<double>(upTo(300)), static_cast<double>(upTo(200))});
        look(0, "with a label");
        if (upTo(2) == 0)
            model().undo();
    }

    void scroll()
    {
        const bool isFar = upTo(2) == 0;
        for (QScrollBar* bar : {m_view.horizontalScrollBar(), m_view.verticalScrollBar()})
            bar->setValue(isFar ? upTo(bar->maximum() + 1) : bar->value() + 100 - upTo(200));
    }

    void step()
    {
        static constexpr double zooms[] = {0.15, 0.37, 0.5, 0.9, 1, 1.25, 1.7, 3.1};
        static constexpr double widths[] = {2, 4, 7};
        static constexpr const char* colors[] = {"#FF3B30", "#FFCC00", "#0A84FF", "#000000"};
        model().setStrokeWidth(widths[upTo(3)]);
        model().setColorHex(QString::fromLatin1(colors[upTo(4)]));
        switch (upTo(14)) {
        case 0:
            model().undo();
            break;
        case 1:
            model().redo();
            break;
        case 2:
            model().deleteSelection();
            break;
        case 3:
            m_view.setMagnification(zooms[upTo(8)]);
            break;
        case 4:
            for (int i = 0; i < 3; ++i) {
                scroll();
                look(0, "after scrolling");
            }
            break;
        case 5:
            label();
            break;
        case 6:
            if (upTo(8) == 0)
                model().clear();
            break;
        case 7:
            lookAsOnAnotherScreen();
            break;
        case 8:
            m_view.resize(160 + upTo(200), 120 + upTo(200));
            break;
        case 9:
        case 10:
        case 11:
            model().setTool(EditorTool::select);
            drag();
            break;
        default: {
            static constexpr EditorTool tools[] = {
                EditorTool::arrow,   EditorTool::line,      EditorTool::rect,
                EditorTool::ellipse, EditorTool::freehand,  EditorTool::freehand,
                EditorTool::counter, EditorTool::highlight, EditorTool::redact};
            model().setTool(tools[upTo(9)]);
            drag();
        }
        }
        look(0, "after a step");
        m_most = std::max(m_most, model().annotations().size());
    }

    /// The most annotations that there have been.
    qsizetype most() const { return m_most; }

    void zoomTo(double zoom) { m_view.setMagnification(zoom); }

    void scrollTo(QPoint corner)
    {
        m_view.horizontalScrollBar()->setValue(corner.x());
        m_view.verticalScrollBar()->setValue(corner.y());
    }

    /// From one point of the view to the next, looking every few steps; not let go.
    void dragAlong(const QList<QPoint>& way, int stepsALook, int tolerance)
    {
        const auto at = [this](QPoint p) { return m_canvas->mapFrom(&m_view, p); };
        QTest::mousePress(m_canvas, Qt::LeftButton, {}, at(way.front()));
        for (qsizetype i = 1; i < way.size(); ++i) {
            QTest::mouseMove(m_canvas, at(way[i]));
            if (i % stepsALook == 0)
                look(tolerance, "on the way");
        }
    }

    void letGo() { QTest::mouseRelease(m_canvas, Qt::LeftButton); }

    /// Where the view shows a point of the picture.
    QPoint shown(Point p) const
    {
        return m_canvas
            ->mapTo(&m_view, QPointF(p.x, m_canvas->image().size.height - p.y) * m_canvas->zoom())
            .toPoint();
    }

    /// Compares what is on the screen.
    void look(int tolerance, const char* when)
    {
        settle();
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        const double scale = m_canvas->devicePixelRatioF();
        const QImage window = m_view.screen()->grabWindow(m_view.winId()).toImage();
        const QPoint corner = (QPointF(m_canvas->mapTo(&m_view, QPoint())) * scale).toPoint();
        const QImage plain = drawnPlainly(*m_canvas, m_canvas->zoom() * scale);
        // Pixels that the widget covers in part may be its or not. Of a window with more pixels
        // than points, the offscreen platform shows a part.
        const int edge = scale == std::floor(scale) ? 0 : 1;
        const QRect area = QRectF(QPointF(seen.topLeft()) * scale, QSizeF(seen.size()) * scale)
                               .toRect()
                               .adjusted(edge, edge, -edge, -edge) &
                           plain.rect() & window.rect().translated(-corner);
        const auto [worst, where] =
            difference(window.copy(area.translated(corner)), plain.copy(area));
        EXPECT_LE(worst, tolerance)
            << when << ", at " << where.x() << ", " << where.y() << ", zoom " << m_canvas->zoom();
    }

    void lookAsOnAnotherScreen()
    {
        const double ratio = upTo(2) == 0 ? 2 : 1.5;
        if (m_canvas->zoom() > 2)
            return;
        QImage shown(m_canvas->size() * ratio, QImage::Format_RGB32);
        shown.setDevicePixelRatio(ratio);
        m_canvas->render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
        shown.setDevicePixelRatio(1);
        const QImage plain = drawnPlainly(*m_canvas, m_canvas->zoom() * ratio);
        const auto [worst, where] = difference(shown.copy(plain.rect() & shown.rect()),
                                               plain.copy(plain.rect() & shown.rect()));
        EXPECT_EQ(worst, 0) << "ratio " << ratio << " at " << where.x() << ", " << where.y();
    }

private:
    std::mt19937 m_random;
    qsizetype m_most = 0;
    CanvasView* m_canvas;
    ZoomView m_view;
};

class CanvasPictureTest : public testing::Test {
protected:
    CanvasPictureTest() { FakePlatform::reset(); }
};

class CanvasPictureSeeds : public CanvasPictureTest,
                           public testing::WithParamInterface<unsigned> {};

} // namespace

TEST_P(CanvasPictureSeeds, WhateverIsDoneTheScreenShowsAPlainDrawing)
{
    const unsigned seed = GetParam();
    Restless user(noise(seed % 3 != 0), seed);
    for (int step = 0; step < 60; ++step) {
        user.step();
        ASSERT_FALSE(HasFailure()) << "seed " << seed << ", step " << step;
    }
    EXPECT_GT(user.most(), 4);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CanvasPictureSeeds, testing::Range(0U, 4U));

TEST_F(CanvasPictureTest, WhatIsDrawnPastItsBoundsMovesAsAWhole)
{
    Restless user(noise(true), 1);
    // Translucent strokes above what moves leave rounding behind.
    user.model().setTool(EditorTool::highlight);
    for (const int y : {150, 165, 180}) {
        user.dragAlong({user.shown({60, y + 3.0}), user.shown({240, y - 3.0})}, 1, 0);
        user.letGo();
    }
    const QList<QPoint> way{user.shown({150, 100}), user.shown({150, 120}), user.shown({130, 167})};
    for (const bool isDeselected : {false, true}) {
        user.model().setTool(EditorTool::select);
        user.dragAlong(way, 1, 3);
        ASSERT_EQ(user.model().selectedIndex(), 0); // the counter
        if (isDeselected)
            user.model().deselect();
        else
            user.letGo();
        user.look(0, "moved");
        user.letGo();
        user.model().undo();
        user.look(0, "taken back");
    }
}

TEST_F(CanvasPictureTest, ScrollingShowsEveryPart)
{
    Restless user(noise(true), 2);
    user.zoomTo(4.2);
    user.look(0, "at first");
    for (int way = 0; way <= 1000; way += 85) {
        user.scrollTo({way, way / 2});
        user.look(0, "there");
    }
    for (int way = 1000; way >= 0; way -= 210) {
        user.scrollTo({way, 300 - way / 4});
        user.look(0, "back");
    }
}

TEST_F(CanvasPictureTest, RedactionsComeAndGoByWholePixels)
{
    Restless user(noise(true), 3);
    user.model().setTool(EditorTool::redact);
    for (int i = 0; i < 12; ++i) {
        user.zoomTo(i % 2 == 0 ? 3.1 : 7.3);
        const QPoint start(40 + i, 50 - i);
        user.dragAlong({start, start + QPoint(100 - 3 * i, 70 + i)}, 1, 0);
        user.letGo();
        user.look(0, "hidden");
        user.model().undo();
        user.look(0, "shown again");
    }
}

TEST_F(CanvasPictureTest, AStrokeIsDrawnWholeFromItsNearbyParts)
{
    Restless user(noise(true), 4);
    for (const EditorTool tool : {EditorTool::freehand, EditorTool::highlight}) {
        user.model().setTool(tool);
        user.model().setStrokeWidth(7);
        user.zoomTo(1.7);
        QList<QPoint> way{{130, 90}};
        for (int i = 0; i < 240; ++i) // to and fro, and over itself
            way.append({130 + i % 23 * (i % 46 < 23 ? 1 : -1) + i / 8, 60 + i / 4 + i % 5});
        user.dragAlong(way, 12, 0);
        user.letGo();
        user.look(0, "let go");
    }
}
