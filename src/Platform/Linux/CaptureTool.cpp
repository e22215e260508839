#include "Platform/CaptureTool.h"

#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/QtGeometry.h"
#include "Support/ScreenTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QScreen>

namespace {

/// The program's screens for the tool: points from the top left of the primary screen.
std::vector<ScreenTable::Screen> screenTable()
{
    std::vector<ScreenTable::Screen> table;
    const QScreen* primary = QGuiApplication::primaryScreen();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect pixels = NativeScreen::pixels(*screen);
        const QRectF frame =
            QRectF(screen->geometry()).translated(-QPointF(primary->geometry().topLeft()));
        const auto place = screen == primary ? table.begin() : table.end();
        table.insert(place, {
                                .name = screen->name().toStdString(),
                                .frame = topLeftRect(frame),
                                .pixels = {pixels.x(), pixels.y(), pixels.width(), pixels.height()},
                                .scale = screen->devicePixelRatio(),
                            });
    }
    return table;
}

} // namespace

Platform::CaptureTool Platform::captureTool()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    return {
        .program = QDir::cleanPath(programs.filePath(QStringLiteral(TAMRIK_TOOL_FROM_PROGRAM))),
        .environment = {{QString::fromLatin1(ScreenTable::variable),
                         QString::fromStdString(ScreenTable::write(screenTable()))}},
    };
}
