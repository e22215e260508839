// `export_program OUTPUT SEGMENT...`: copies one segment or joins several, and says on standard
// output why that failed. A program of its own, so that it can be killed and run on other disks.

#include "Media/MovieExport.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QString output = QCoreApplication::arguments().value(1);
    const QStringList segments = QCoreApplication::arguments().mid(2);
    const MovieExport::Outcome outcome = segments.size() == 1
                                             ? MovieExport::remux(segments.front(), output)
                                             : MovieExport::concatenate(segments, output);
    std::puts(outcome.reason.c_str());
    return outcome.succeeded() ? 0 : 1;
}
