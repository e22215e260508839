/// Makes a GIF of a video as the program does:
///
///     bench_gif OUTPUT VIDEO [START DURATION]
///
/// Prints the seconds that it took, and the most memory that was resident, in MB.

#include "GIFExporter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

namespace {

double peakMegabytes()
{
    std::ifstream status("/proc/self/status");
    double kilobytes = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:")
            status >> kilobytes;
    }
    return kilobytes / 1000;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 3 && words.size() != 5) {
        std::fprintf(stderr, "usage: bench_gif OUTPUT VIDEO [START DURATION]\n");
        return 2;
    }
    TimeRange range{0, std::numeric_limits<double>::infinity()};
    if (words.size() == 5)
        range = {words[3].toDouble(), words[4].toDouble()};
    QElapsedTimer timer;
    timer.start();
    GIFExporter::exportVideo(
        QUrl::fromLocalFile(words[2]), range, QUrl::fromLocalFile(words[1]), [&](bool succeeded) {
            std::printf("%.3f %.0f\n", static_cast<double>(timer.elapsed()) / 1000,
                        peakMegabytes());
            QCoreApplication::exit(succeeded ? 0 : 1);
        });
    return QCoreApplication::exec();
}
