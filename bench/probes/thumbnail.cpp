// `bench_thumbnail ROUNDS FILE`: reads what a chip shows of a file, in turns with what a program
// does without it: QImage for a picture, the ffmpeg program's first frame for a video. Prints the
// two medians in milliseconds.

#include "CaptureKind.h"
#include "ChipThumbnail.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

double milliseconds(const std::function<bool()>& work)
{
    QElapsedTimer timer;
    timer.start();
    if (!work()) {
        std::fprintf(stderr, "bench_thumbnail: the file cannot be read\n");
        std::exit(1);
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

bool ffmpegReads(const QString& path)
{
    const QStringList words = {QStringLiteral("-v"),        QStringLiteral("error"),
                               QStringLiteral("-ss"),       QStringLiteral("0.1"),
                               QStringLiteral("-i"),        path,
                               QStringLiteral("-frames:v"), QStringLiteral("1"),
                               QStringLiteral("-vf"),       QStringLiteral("scale=600:-1"),
                               QStringLiteral("-f"),        QStringLiteral("null"),
                               QStringLiteral("-")};
    return QProcess::execute(QStringLiteral("ffmpeg"), words) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.size() == 3 ? arguments[1].toInt() : 0;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: bench_thumbnail ROUNDS FILE\n");
        return 2;
    }
    const QUrl file = QUrl::fromLocalFile(arguments[2]);
    const bool isVideo = captureKind(file) == CaptureKind::video;
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = -1; i < rounds; ++i) { // the first only warms up
        const double our = milliseconds([&] { return ChipThumbnail::load(file).has_value(); });
        const double their = milliseconds([&] {
            return isVideo ? ffmpegReads(file.toLocalFile()) : !QImage(file.toLocalFile()).isNull();
        });
        if (i >= 0) {
            ours.push_back(our);
            theirs.push_back(their);
        }
    }
    std::printf("%.2f %.2f\n", median(ours), median(theirs));
    return 0;
}
