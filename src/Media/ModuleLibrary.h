#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

/// Loads a library that lies at `path`, as seen from the program's folder, for as long as the
/// program runs, and calls its function `entry` for what it has to offer. Null when it is missing.
template <typename Module>
const Module* loadModule(const char* path, const char* entry)
{
    const QDir programs(QCoreApplication::applicationDirPath());
    QLibrary library(QDir::cleanPath(programs.filePath(QString::fromUtf8(path))));
    library.setLoadHints(QLibrary::PreventUnloadHint);
    using Entry = const Module* (*)();
    const auto enter = reinterpret_cast<Entry>(library.resolve(entry));
    return enter ? enter() : nullptr;
}
