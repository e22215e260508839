#include "Platform/Linux/X11/DisplayName.h"

#include <xcb/xcb.h>

#include <cstdlib>

QString X11::displayName()
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &screen))
        return {};
    QString name = QString::fromLocal8Bit(host);
    std::free(host);
    if (name == QLatin1String("unix")) // says what no host says as well
        name.clear();
    return QStringLiteral("%1:%2.%3").arg(name).arg(display).arg(screen);
}
