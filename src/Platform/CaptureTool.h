#pragma once

#include <QMap>
#include <QString>

namespace Platform {

/// The program that takes pictures and records.
struct CaptureTool {
    /// Absolute path of the executable.
    QString program;
    /// What its environment needs on top of ours.
    QMap<QString, QString> environment;
};

/// The tool, with its environment for the screens as they are now.
CaptureTool captureTool();

} // namespace Platform
