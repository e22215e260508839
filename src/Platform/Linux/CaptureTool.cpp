#include "Platform/CaptureTool.h"

#include "Platform/Linux/NativeScreen.h"
#include "Support/ScreenTable.h"
#include "Support/ToolParent.h"

#include <QCoreApplication>
#include <QDir>

Platform::CaptureTool Platform::captureTool()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    return {
        .program = QDir::cleanPath(programs.filePath(QStringLiteral(TAMRIK_TOOL_FROM_PROGRAM))),
        .environment = {{QString::fromLatin1(ScreenTable::variable),
                         QString::fromStdString(ScreenTable::write(NativeScreen::table()))},
                        {QString::fromLatin1(ToolParent::variable),
                         QString::number(QCoreApplication::applicationPid())}},
    };
}
