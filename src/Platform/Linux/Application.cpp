#include "Platform/Application.h"

#include "Platform/Linux/X11/Connection.h"

#include <QGuiApplication>

namespace {

constexpr const char* platformVariable = "QT_QPA_PLATFORM";

} // namespace

Result<void> Platform::prepareApplication()
{
    // Global hot keys, panels that take no focus and screenshots go through the X server, also
    // where a Wayland session offers one beside itself.
    if (qEnvironmentVariableIsEmpty(platformVariable))
        qputenv(platformVariable, "xcb");
    if (qgetenv(platformVariable).startsWith("xcb") && !X11::canConnect()) {
        return Error{
            QStringLiteral("cannot open display \"%1\"").arg(qEnvironmentVariable("DISPLAY"))};
    }
    return {};
}

void Platform::becomeAccessory()
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

void Platform::activateIgnoringOthers()
{
    // On X11 a window asks for the keyboard when it is made key; there is nothing that makes a
    // whole program the active one.
}
