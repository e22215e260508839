// Prints the screens as Qt has them, the primary one first and at the origin: one line each with
// position and size in points, scale, and name.

#include <QGuiApplication>
#include <QScreen>

#include <cstdio>

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const QPoint origin = QGuiApplication::primaryScreen()->geometry().topLeft();
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* const screen : screens) {
        const QRect frame = screen->geometry().translated(-origin);
        std::printf("%d,%d %dx%d scale %.6f %s\n", frame.x(), frame.y(), frame.width(),
                    frame.height(), screen->devicePixelRatio(), qPrintable(screen->name()));
    }
    return 0;
}
