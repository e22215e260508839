// `gif_program VIDEO OUTPUT`: begins a GIF, and ends at once. Says so on standard output should it
// be told of the GIF.

#include "GIFExporter.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    GIFExporter::exportVideo(QUrl::fromLocalFile(words.value(1)), {0, 0},
                             QUrl::fromLocalFile(words.value(2)),
                             [](bool succeeded) { std::puts(succeeded ? "made" : "not made"); });
    return 0;
}
