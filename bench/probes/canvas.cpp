// Drags on the editor's canvas, step by step: bench_canvas COUNT ROUNDS
//
// A window of 1920 x 1080 pixels shows a picture of 3840 x 2160 with COUNT annotations, first all
// of it, then half of its width at its full size. Prints a line a drag and round: the name; COUNT;
// milliseconds of the first step and the longest and the median of the later ones, painting
// included; and of painting what is seen plainly.

#include "Editor/AnnotationRenderer.h"
#include "Editor/CanvasView.h"
#include "Editor/ZoomView.h"
#include "probes/Contents.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPainter>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

constexpr QSize pixels(3840, 2160);
constexpr QSize window(1920, 1080);
constexpr int steps = 60;

template <class Work>
double milliseconds(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// Here the lowest annotation alone can be hit.
constexpr Geometry::Point hole = {1500, 1100};

/// A large ellipse, and above it all kinds in turn, anywhere on the picture.
QList<Annotation> annotations(int count)
{
    std::mt19937 random(1);
    const auto upTo = [&random](int end) {
        return static_cast<double>(random() % static_cast<unsigned>(end));
    };
    QList<Annotation> result;
    Annotation lowest;
    lowest.kind = AnnotationKind::ellipse;
    lowest.start = {hole.x - 200, hole.y - 150};
    lowest.end = {hole.x + 500, hole.y + 250};
    lowest.colorHex = QStringLiteral("#0A84FF");
    lowest.lineWidth = 7;
    result.append(lowest);
    for (int i = 0; result.size() < count; ++i) {
        Annotation a;
        a.kind = static_cast<AnnotationKind>(i % 9);
        a.start = {upTo(pixels.width()), upTo(pixels.height())};
        a.end = {a.start.x + upTo(200) - 100, a.start.y + upTo(200) - 100};
        a.colorHex = QStringLiteral("#FF3B30");
        a.lineWidth = 4;
        if (a.kind == AnnotationKind::freehand || a.kind == AnnotationKind::highlight) {
            a.path = QList<Geometry::Point>{a.start};
            for (int p = 1; p < 30; ++p)
                a.path->append({a.start.x + 4 * p, a.start.y + upTo(40)});
        }
        if (a.kind == AnnotationKind::text)
            a.text = QStringLiteral("Look here");
        if (a.kind == AnnotationKind::counter)
            a.number = i;
        if (!AnnotationRenderer::bounds(a).grown(4).contains(hole))
            result.append(a);
    }
    return result;
}

class Canvas {
public:
    Canvas(const QImage& picture, int count)
        : m_count(count)
        , m_canvas(new CanvasView(BaseImage::ofDensity(picture, 1), annotations(count)))
        , m_view(m_canvas)
    {
        m_view.resize(window);
        m_view.show();
    }

    void look(double zoom)
    {
        m_view.setMagnification(zoom);
        settle();
        m_plain = milliseconds([&] { paintPlainly(); });
    }

    /// Drags from `from` to `to`, in shares of the window; a scribble all over it in between.
    void drag(const char* name, EditorTool tool, QPointF from, QPointF to, bool isScribble = false)
    {
        CanvasModel& model = m_canvas->model();
        model.setTool(tool);
        settle();
        send(QEvent::MouseButtonPress, at(from));
        settle();
        QList<double> times;
        const int points = isScribble ? 20 * steps : steps;
        for (int step = 1; step <= points; ++step) {
            const double share = static_cast<double>(step) / points;
            const QPointF line = from + (to - from) * share;
            const QPointF scribble(0.5 + 0.45 * std::sin(share * 90), 0.5 + 0.45 * std::cos(share * 71));
            times.append(milliseconds([&] {
                send(QEvent::MouseMove, at(isScribble ? scribble : line));
                settle();
            }));
        }
        const double release = milliseconds([&] {
            send(QEvent::MouseButtonRelease, at(to));
            settle();
        });
        const double undo = milliseconds([&] {
            model.undo();
            settle();
        });
        const double first = times.takeFirst();
        std::sort(times.begin(), times.end());
        QTextStream(stdout) << name << ' ' << m_count << ' ' << m_canvas->zoom() << ' ' << first
                            << ' ' << times.last() << ' ' << times[times.size() / 2] << ' '
                            << release << ' ' << undo << ' ' << m_plain << Qt::endl;
    }

    /// Where a point of the picture is, as shares.
    QPointF shareOf(Geometry::Point p) const
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        const QPointF onCanvas(p.x * m_canvas->zoom(),
                               (pixels.height() - p.y) * m_canvas->zoom());
        const QPointF inside = onCanvas - seen.topLeft();
        return {inside.x() / seen.width(), inside.y() / seen.height()};
    }

    QPoint at(QPointF share) const
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        return seen.topLeft() + QPointF(share.x() * seen.width(), share.y() * seen.height()).toPoint();
    }

    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

private:
    void send(QEvent::Type type, QPoint place)
    {
        QMouseEvent event(type, place, m_canvas->mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(m_canvas, &event);
    }

    void paintPlainly() const
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        QImage image(seen.size(), QImage::Format_RGB32);
        QPainter painter(&image);
        painter.translate(-seen.topLeft());
        painter.scale(m_canvas->zoom(), m_canvas->zoom());
        const BaseImage& base = m_canvas->image();
        painter.drawImage(QPointF(), base.pixels);
        const Geometry::Flip flip({0, 0, base.size.width, base.size.height});
        for (const Annotation& annotation : m_canvas->model().annotations())
            AnnotationRenderer::draw(painter, flip, annotation, base);
    }

    int m_count;
    CanvasView* m_canvas;
    ZoomView m_view;
    double m_plain = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const int count = arguments.value(1).toInt();
    const int rounds = arguments.value(2).toInt();
    if (rounds < 1) {
        QTextStream(stderr) << "Usage: bench_canvas COUNT ROUNDS\n";
        return 2;
    }
    const QImage picture = Bench::Contents::mixed(pixels).convertToFormat(QImage::Format_RGB32);
    Canvas bench(picture, count);
    static constexpr std::pair<const char*, EditorTool> drafts[] = {
        {"arrow", EditorTool::arrow},         {"line", EditorTool::line},
        {"rect", EditorTool::rect},           {"ellipse", EditorTool::ellipse},
        {"highlight", EditorTool::highlight}, {"redact", EditorTool::redact},
    };
    for (int round = 0; round < rounds; ++round) {
        for (const double zoom : {0.5, 1.0}) {
            bench.look(zoom);
            for (const auto& [name, tool] : drafts)
                bench.drag(name, tool, {0.1, 0.1}, {0.95, 0.9});
            bench.drag("freehand", EditorTool::freehand, {0.1, 0.1}, {0.9, 0.9}, true);
            const QPointF lowest = bench.shareOf(hole);
            bench.drag("move-lowest", EditorTool::select, lowest, lowest + QPointF(0.2, 0.15));
            bench.drag("move-any", EditorTool::select, {0.31, 0.4}, {0.6, 0.7});
        }
    }
    return 0;
}
