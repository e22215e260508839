// Flattens a picture of 3840 x 2160 pixels with the annotations kept for DIR/desktop.png, against
// Qt's saving of the same pixels: bench_flatten DIR CONTENT ROUNDS
//
// Prints a line a round: milliseconds for drawing, for the whole flattened PNG, for QImage::save;
// and the bytes of both.

#include "Editor/AnnotationRenderer.h"
#include "Editor/Sidecar.h"
#include "probes/Contents.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTextStream>

namespace {

constexpr QSize pixels(3840, 2160);
constexpr double density = 2;

template <class Work>
double milliseconds(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    QTextStream out(stdout);
    const QList<Annotation> annotations =
        Sidecar::load(arguments.value(1) + QStringLiteral("/desktop.png"));
    const int rounds = arguments.value(3).toInt();
    if (annotations.isEmpty() || rounds < 1) {
        QTextStream(stderr) << "Usage: bench_flatten DIR mixed|terminal|photograph ROUNDS\n";
        return 2;
    }
    const QImage picture = arguments[2] == u"terminal"     ? Bench::Contents::terminal(pixels)
                           : arguments[2] == u"photograph" ? Bench::Contents::photograph(pixels)
                                                           : Bench::Contents::mixed(pixels);
    const BaseImage base =
        BaseImage::ofDensity(picture.convertToFormat(QImage::Format_RGB32), density);
    for (int round = 0; round < rounds; ++round) {
        QImage drawn;
        const double drawing =
            milliseconds([&] { drawn = AnnotationRenderer::flattened(base, annotations); });
        QByteArray ours;
        const double flattening =
            milliseconds([&] { ours = *AnnotationRenderer::flattenedPng(base, annotations); });
        QByteArray theirs;
        const double saving = milliseconds([&] {
            QBuffer buffer(&theirs);
            buffer.open(QIODevice::WriteOnly);
            drawn.save(&buffer, "PNG");
        });
        if (QImage::fromData(ours).convertToFormat(QImage::Format_RGB32) != drawn) {
            QTextStream(stderr) << "bench_flatten: the PNG has other pixels\n";
            return 1;
        }
        out << drawing << ' ' << flattening << ' ' << saving << ' ' << ours.size() << ' '
            << theirs.size() << Qt::endl;
    }
    return 0;
}
