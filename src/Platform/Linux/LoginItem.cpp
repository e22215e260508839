#include "Platform/LoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

/// Desktop Application Autostart Specification: an entry in the user's autostart folder.
QString entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/tamrik.desktop");
}

/// A path as the one argument of an Exec line (Desktop Entry Specification, "The Exec key"): in
/// double quotes with a backslash before quotes, backticks, dollars and backslashes, per cent signs
/// doubled; then once more every backslash doubled, as in all string values.
QByteArray execValue(const QString& path)
{
    QString quoted;
    for (const QChar c : path) {
        if (QStringLiteral("\"`$\\").contains(c))
            quoted += QLatin1Char('\\');
        quoted += c;
        if (c == QLatin1Char('%'))
            quoted += c;
    }
    quoted.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    return '"' + quoted.toUtf8() + '"';
}

} // namespace

bool Platform::loginItemEnabled()
{
    QFile entry(entryPath());
    if (!entry.open(QIODevice::ReadOnly))
        return false;
    // Desktops switch an entry off without deleting it.
    while (!entry.atEnd()) {
        const QByteArray line = entry.readLine().simplified().replace(" ", "").toLower();
        if (line == "hidden=true" || line == "x-gnome-autostart-enabled=false")
            return false;
    }
    return true;
}

PossibleFailure Platform::enableLoginItem()
{
    const QString path = entryPath();
    QDir().mkpath(QFileInfo(path).path()); // a failure shows when the file cannot be opened
    QSaveFile entry(path);
    if (!entry.open(QIODevice::WriteOnly))
        return Failure{entry.errorString().toStdString()};
    entry.write("[Desktop Entry]\n"
                "Type=Application\n"
                "Name=Tamrik\n"
                "Exec=" +
                execValue(QCoreApplication::applicationFilePath()) +
                "\n"
                "Terminal=false\n");
    if (!entry.commit())
        return Failure{entry.errorString().toStdString()};
    return std::nullopt;
}

PossibleFailure Platform::disableLoginItem()
{
    QFile entry(entryPath());
    if (!entry.remove())
        return Failure{entry.errorString().toStdString()};
    return std::nullopt;
}
