// Saves a list with a stroke of many points, as the editor does after every change:
// bench_sidecar FOLDER POINTS ROUNDS
//
// Prints a line a round: milliseconds that the caller waits; until the file is there, from the same
// start; of the next change, which copies the points while they are still being written; of writing
// the same in the foreground; and the file's bytes.

#include "Editor/Sidecar.h"
#include "Editor/SidecarWriter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>

#include <cmath>

namespace {

/// A stroke as a hand draws it: no point has round numbers.
Annotation strokeOf(int points)
{
    Annotation stroke{
        .kind = AnnotationKind::freehand, .colorHex = QStringLiteral("#FF3B30"), .lineWidth = 4};
    QList<Geometry::Point> path;
    for (int i = 0; i < points; ++i)
        path.append({960 + 900 * std::sin(i / 700.0), 540 + 500 * std::cos(i / 900.0)});
    stroke.path = path;
    return stroke;
}

double milliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int points = arguments.value(2).toInt();
    const int rounds = arguments.value(3).toInt();
    if (points < 1 || rounds < 1) {
        QTextStream(stderr) << "Usage: bench_sidecar FOLDER POINTS ROUNDS\n";
        return 2;
    }
    const QString image = arguments[1] + QStringLiteral("/picture.png");
    QList<Annotation> list{strokeOf(points)};
    QTextStream out(stdout);
    for (int round = 0; round < rounds; ++round) {
        SidecarWriter writer(image);
        QElapsedTimer timer;
        timer.start();
        writer.save(list);
        const double waited = milliseconds(timer);
        const QList<Annotation> saved = list;
        QElapsedTimer changing;
        changing.start();
        list.first().translate(0.25, 0.5);
        const double changed = milliseconds(changing);
        writer.finish();
        const double written = milliseconds(timer);
        if (Sidecar::load(image) != saved) {
            QTextStream(stderr) << "bench_sidecar: the file has another list\n";
            return 1;
        }
        timer.start();
        Sidecar::save(saved, image);
        const double foreground = milliseconds(timer);
        out << waited << ' ' << written << ' ' << changed << ' ' << foreground << ' '
            << QFileInfo(Sidecar::path(image)).size() << Qt::endl;
    }
    return 0;
}
