// `export_program OUTPUT SEGMENT...` copies one segment or joins several, `export_program --trim
// START END OUTPUT FILM` copies a part; says on standard output why that failed. A program of its
// own, so that it can be killed and run on other disks.

#include "Media/MovieExport.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

MovieExport::Outcome exported(const QStringList& words)
{
    if (words.value(0) == QLatin1String("--trim"))
        return MovieExport::trim(words.value(4), words.value(1).toDouble(),
                                 words.value(2).toDouble(), words.value(3));
    const QStringList segments = words.mid(1);
    return segments.size() == 1 ? MovieExport::remux(segments.front(), words.value(0))
                                : MovieExport::concatenate(segments, words.value(0));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const MovieExport::Outcome outcome = exported(QCoreApplication::arguments().mid(1));
    std::puts(outcome.reason.c_str());
    return outcome.succeeded() ? 0 : 1;
}
