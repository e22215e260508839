#include "Media/MediaModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

const MediaModule* MediaModule::get()
{
    static const MediaModule* const module = []() -> const MediaModule* {
        const QDir programs(QCoreApplication::applicationDirPath());
        QLibrary library(
            QDir::cleanPath(programs.filePath(QStringLiteral(TAMRIK_MEDIA_FROM_PROGRAM))));
        library.setLoadHints(QLibrary::PreventUnloadHint);
        using Entry = const MediaModule* (*)();
        const auto enter = reinterpret_cast<Entry>(library.resolve(entry));
        return enter ? enter() : nullptr;
    }();
    return module;
}
