#include "Platform/LoginItem.h"

#include "Support/ReplaceFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

/// Where freedesktop.org's autostart standard has a user's own entries.
QString entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/tamrik.desktop");
}

/// A path as the one argument of an Exec line (freedesktop.org's desktop entry standard): in
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

/// The line that starts this program from where it lies now.
QByteArray execLine()
{
    return "Exec=" + execValue(QCoreApplication::applicationFilePath());
}

} // namespace

bool Platform::loginItemEnabled()
{
    QFile entry(entryPath());
    if (!entry.open(QIODevice::ReadOnly))
        return false;
    // An entry of a program that was moved since starts nothing, and desktops switch an entry off
    // without deleting it.
    bool startsUs = false;
    while (!entry.atEnd()) {
        const QByteArray line = entry.readLine().trimmed();
        const QByteArray plain = QByteArray(line).replace(" ", "").toLower();
        if (plain == "hidden=true" || plain == "x-gnome-autostart-enabled=false")
            return false;
        startsUs = startsUs || line == execLine();
    }
    return startsUs;
}

PossibleFailure Platform::enableLoginItem()
{
    const QString path = entryPath();
    QDir().mkpath(QFileInfo(path).path()); // a failure shows when the file cannot be opened
    return replaceFile(path, "[Desktop Entry]\nType=Application\nName=Tamrik\n" + execLine() +
                                 "\nTerminal=false\n");
}

PossibleFailure Platform::disableLoginItem()
{
    QFile entry(entryPath());
    if (!entry.remove())
        return Failure{entry.errorString().toStdString()};
    return std::nullopt;
}
