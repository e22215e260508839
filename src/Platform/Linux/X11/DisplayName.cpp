#include "Platform/Linux/X11/DisplayName.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <optional>

namespace {

struct Display {
    QString host;
    int number;
    int screen;
};

std::optional<Display> fromEnvironment()
{
    char* host = nullptr;
    Display display = {};
    if (!xcb_parse_display(nullptr, &host, &display.number, &display.screen))
        return std::nullopt;
    display.host = QString::fromLocal8Bit(host);
    std::free(host);
    if (display.host == QLatin1String("unix")) // says what no host says as well
        display.host.clear();
    return display;
}

} // namespace

QString X11::displayName()
{
    const auto display = fromEnvironment();
    if (!display)
        return {};
    return QStringLiteral("%1:%2.%3").arg(display->host).arg(display->number).arg(display->screen);
}

int X11::displayScreenNumber()
{
    const auto display = fromEnvironment();
    return display ? display->screen : 0;
}
