#include "Media/PlayerModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

const PlayerModule* PlayerModule::get()
{
    static const PlayerModule* const module = []() -> const PlayerModule* {
        const QDir programs(QCoreApplication::applicationDirPath());
        QLibrary library(
            QDir::cleanPath(programs.filePath(QStringLiteral(TAMRIK_PLAYER_FROM_PROGRAM))));
        library.setLoadHints(QLibrary::PreventUnloadHint);
        using Entry = const PlayerModule* (*)();
        const auto enter = reinterpret_cast<Entry>(library.resolve(entry));
        return enter ? enter() : nullptr;
    }();
    return module;
}
