// The status item as the program shows it, with a recording that its menu starts and stops. Says
// what the menu offers after each.
#include "Preferences.h"
#include "StatusMenu.h"

#include "Platform/Application.h"
#include "Platform/Defaults.h"

#include <QAction>
#include <QApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    if (Platform::prepareApplication())
        return EXIT_FAILURE;
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tamrik"));
    Platform::becomeAccessory();
    Preferences preferences(Platform::openDefaults());

    bool recording = false;
    StatusMenu* menu = nullptr;
    StatusMenu status(preferences, {.captureArea = [] {},
                                    .toggleRecording =
                                        [&] {
                                            recording = !recording;
                                            menu->setRecording(recording);
                                            QTextStream(stdout)
                                                << menu->menu().actions().at(1)->text() << Qt::endl;
                                        },
                                    .annotateLast = [] {},
                                    .openFolder = [] {},
                                    .toggleCamera = [] {},
                                    .toggleMic = [] {},
                                    .hasLastCapture = [] { return false; },
                                    .mayPopUp = [] { return true; },
                                    .chipPositionChanged = [] {}});
    menu = &status;
    status.show();
    return QApplication::exec();
}
