/// Makes an MP4 of segments as the program does at the end of a recording:
///
///     bench_export OUTPUT SEGMENT...
///
/// One segment is copied, several are joined. Prints the seconds that it took.

#include "Media/MovieExport.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 3) {
        std::fprintf(stderr, "usage: bench_export OUTPUT SEGMENT...\n");
        return 2;
    }
    const QStringList segments = words.mid(2);
    QElapsedTimer timer;
    timer.start();
    const MovieExport::Outcome outcome = segments.size() == 1
                                             ? MovieExport::remux(segments.front(), words[1])
                                             : MovieExport::concatenate(segments, words[1]);
    if (!outcome.succeeded()) {
        std::fprintf(stderr, "%s\n", outcome.reason.c_str());
        return 1;
    }
    std::printf("%.3f\n", static_cast<double>(timer.elapsed()) / 1000);
    return 0;
}
