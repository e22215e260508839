// Drags on the editor's canvas, step by step: bench_canvas COUNT ROUNDS
//
// A window of 3840 x 2160 pixels shows a picture as large with COUNT annotations. Prints a line a
// drag and round: its name; milliseconds of the first step, of the later ones the median and the
// 95th of 100, of letting go, of undoing it, each with painting; and of painting all that is seen
// plainly.

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
#include <cstdlib>
#include <random>

namespace {

constexpr QSize pixels(3840, 2160);
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

/// Here is the highest one.
constexpr Geometry::Point summit = {1300, 1300};

/// All kinds in turn, anywhere on the picture, between two large ellipses.
QList<Annotation> annotations(int count)
{
    std::mt19937 random(1);
    const auto upTo = [&random](int end) {
        return static_cast<double>(random() % static_cast<unsigned>(end));
    };
    QList<Annotation> result;
    Annotation ellipse;
    ellipse.kind = AnnotationKind::ellipse;
    ellipse.start = {hole.x - 200, hole.y - 150};
    ellipse.end = {hole.x + 500, hole.y + 150};
    ellipse.colorHex = QStringLiteral("#0A84FF");
    ellipse.lineWidth = 7;
    result.append(ellipse);
    for (int i = 0; result.size() < count - 1; ++i) {
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
    ellipse.id = QUuid::createUuid();
    ellipse.translate(summit.x - hole.x, summit.y + 50 - hole.y);
    result.append(ellipse);
    return result;
}

/// Counts how often it is painted.
class Paints : public QObject {
public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    int count = 0;
};

class Canvas {
public:
    Canvas(const QImage& picture, int count)
        : m_canvas(new CanvasView(BaseImage::ofDensity(picture, 1), annotations(count)))
        , m_view(m_canvas)
    {
        m_canvas->installEventFilter(&m_paints);
        m_view.resize(pixels);
        m_view.show();
        QElapsedTimer timer;
        timer.start();
        while (m_paints.count == 0 && timer.elapsed() < 10'000)
            QCoreApplication::processEvents();
    }

    int paints() const { return m_paints.count; }

    void look()
    {
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
        const int paintsBefore = m_paints.count;
        const int points = isScribble ? 20 * steps : steps;
        for (int step = 1; step <= points; ++step) {
            const double share = static_cast<double>(step) / points;
            const QPointF line = from + (to - from) * share;
            const QPointF scribble(0.5 + 0.45 * std::sin(share * 90),
                                   0.5 + 0.45 * std::cos(share * 71));
            times.append(milliseconds([&] {
                send(QEvent::MouseMove, at(isScribble ? scribble : line));
                settle();
            }));
        }
        if (m_paints.count < paintsBefore + points) {
            QTextStream(stderr) << "bench_canvas: " << name << " was not painted at every step\n";
            std::exit(1);
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
        QTextStream(stdout) << name << ' ' << first << ' ' << times[times.size() / 2] << ' '
                            << times[times.size() * 95 / 100] << ' ' << release << ' ' << undo
                            << ' ' << m_plain << Qt::endl;
    }

    /// Where a point of the picture is, as shares.
    QPointF shareOf(Geometry::Point p) const
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        const QPointF onCanvas(p.x * m_canvas->zoom(), (pixels.height() - p.y) * m_canvas->zoom());
        const QPointF inside = onCanvas - seen.topLeft();
        return {inside.x() / seen.width(), inside.y() / seen.height()};
    }

    QPoint at(QPointF share) const
    {
        const QRect seen = m_canvas->visibleRegion().boundingRect();
        return seen.topLeft() +
               QPointF(share.x() * seen.width(), share.y() * seen.height()).toPoint();
    }

    /// Paints at once what would be painted in time for the screen's next picture.
    void settle()
    {
        QCoreApplication::sendPostedEvents();
        QEvent now(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(&m_view, &now);
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

    Paints m_paints;
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
        bench.look();
        for (const auto& [name, tool] : drafts)
            bench.drag(name, tool, {0.1, 0.1}, {0.6, 0.5});
        bench.drag("freehand", EditorTool::freehand, {0.1, 0.1}, {0.9, 0.9}, true);
        const QPointF highest = bench.shareOf(summit);
        bench.drag("move-highest", EditorTool::select, highest, highest + QPointF(0.2, 0.15));
        const QPointF lowest = bench.shareOf(hole);
        bench.drag("move-lowest", EditorTool::select, lowest, lowest + QPointF(0.2, 0.15));
    }
    return 0;
}
