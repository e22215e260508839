#include "Platform/Application.h"

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/EventTimes.h"

#include <QGuiApplication>

namespace {

constexpr const char* platformVariable = "QT_QPA_PLATFORM";

} // namespace

PossibleFailure Platform::prepareApplication()
{
    // Global hot keys, panels that take no focus and screenshots go through the X server, also
    // where a Wayland session offers one beside itself.
    if (qEnvironmentVariableIsEmpty(platformVariable))
        qputenv(platformVariable, "xcb");
    if (qgetenv(platformVariable).startsWith("xcb")) {
        if (const auto connection = X11::Connection::open(); !connection)
            return connection.failure();
    }
    return std::nullopt;
}

void Platform::becomeAccessory()
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    X11::watchEventTimes();
}

void Platform::activateIgnoringOthers()
{
    // On X11 a window asks for the keyboard when it is made key; there is nothing that makes a
    // whole program the active one.
}
