// The tour: `tour PROGRAM FOLDER [SCALE]` plays the program's main jobs on a virtual desktop of its
// own and leaves pictures and index.html in FOLDER. Exits with 0 when every step held.

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/TrayIcon.h"
#include "support/VirtualCamera.h"
#include "tour/Legs.h"
#include "tour/Tour.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>
#include <optional>
#include <stdexcept>

int main(int argc, char** argv)
{
    // Only for its fonts: nothing of Qt's is shown, and what is started has a display of its own.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    qunsetenv("QT_QPA_PLATFORM");
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: tour PROGRAM FOLDER [SCALE]\n");
        return 2;
    }
    const QString program = QFileInfo(arguments.at(1)).absoluteFilePath();
    const QString folder = arguments.at(2);
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "tour: cannot create %s\n", qUtf8Printable(folder));
        return 1;
    }

    Desktop::Options options;
    if (arguments.size() > 3)
        options.scale = arguments.at(3).toDouble();
    const auto desktop = Desktop::VirtualDesktop::start(options);
    if (!desktop) {
        std::fprintf(stderr, "tour: %s\n", qUtf8Printable(desktop.error()));
        return 1;
    }

    std::optional<VirtualCamera> camera;
    try {
        camera.emplace((*desktop)
                           ->environment()
                           .value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"))
                           .toStdString());
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "tour: %s\n", error.what());
        return 1;
    }

    Tour tour(**desktop, folder);
    std::unique_ptr<Tamrik> tamrik;
    tour.leg(QStringLiteral("Start"));
    tour.step(QStringLiteral("Tamrik starts and stands in the status area"),
              [&]() -> Desktop::Outcome<void> {
                  auto started =
                      Tamrik::startAndAwaitKeys(**desktop, program,
                                                {{QStringLiteral("PIPEWIRE_RUNTIME_DIR"),
                                                  QString::fromStdString(camera->folder())}});
                  if (!started)
                      return started.failure();
                  tamrik = std::move(*started);
                  const auto icon = Desktop::awaitTrayIcon(**desktop, tamrik->app().pid());
                  return icon ? Desktop::Outcome<void>() : icon.failure();
              });
    if (tamrik) {
        Legs::screenshot(tour, **desktop, *tamrik);
        Legs::chips(tour, **desktop, *tamrik);
        Legs::editor(tour, **desktop, *tamrik);
        Legs::adjusting(tour, **desktop, *tamrik);
        Legs::camera(tour, **desktop, *tamrik);
        Legs::recording(tour, **desktop, *tamrik);
        Legs::videoEditor(tour, **desktop, *tamrik);
        Legs::recordingAsGIF(tour, **desktop, *tamrik);
        Legs::secondStart(tour, **desktop, *tamrik, program);
        Legs::statusMenu(tour, **desktop, *tamrik);
    }
    if (!tour.writeContactSheet()) {
        std::fprintf(stderr, "tour: cannot write %s/index.html\n", qUtf8Printable(folder));
        return 1;
    }
    return tour.passed() ? 0 : 1;
}
