#include "desktop/flow/RecordingFlow.h"

#include "desktop/harness/TrayIcon.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

using namespace Desktop;

namespace {

/// The parent of a process; 0 when there is none of that number.
pid_t parentOf(const QString& process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = file.readAll();
    // The name in parentheses may hold anything; then come the state and the parent.
    return line.mid(line.lastIndexOf(')') + 2).split(' ').value(1).toInt();
}

} // namespace

void RecordingFlow::select()
{
    ASSERT_TRUE(succeeded(tamrik->pressRecordKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    button = QPoint();
    const auto found = awaitRecordButton(*desktop, area());
    ASSERT_TRUE(succeeded(found));
    button = *found;
}

void RecordingFlow::record(const char* key)
{
    ASSERT_NO_FATAL_FAILURE(select());
    ASSERT_TRUE(succeeded(input().key(QString::fromLatin1(key))));
    ASSERT_NO_FATAL_FAILURE(awaitFilming(1));
}

void RecordingFlow::awaitFilming(int count)
{
    auto shown = RecordingControls::await(*desktop, *tamrik);
    ASSERT_TRUE(succeeded(shown));
    controls = *shown;
    ASSERT_TRUE(
        succeeded(waitUntil(QStringLiteral("a film"), [&] { return segments().size() == count; })));
}

QStringList RecordingFlow::segments() const
{
    return QDir(temporaryFolder(*desktop)).entryList({QStringLiteral("tamrik-seg-*.mov")});
}

QList<pid_t> RecordingFlow::tools() const
{
    QList<pid_t> found;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        if (name.front().isDigit() && parentOf(name) == tamrik->app().pid())
            found += name.toInt();
    }
    return found;
}

Outcome<void> RecordingFlow::awaitNoTool() const
{
    return waitUntil(QStringLiteral("the capture tool's end"), [&] { return tools().isEmpty(); });
}

void RecordingFlow::clickAgain() const
{
    ASSERT_TRUE(succeeded(input().press()));
    ASSERT_TRUE(succeeded(input().release()));
}

Outcome<QString> RecordingFlow::awaitFilm() const
{
    if (const auto shown = tamrik->awaitChips(1); !shown)
        return shown.failure();
    const QStringList all = tamrik->captures();
    if (all.size() != 1)
        return Failure{QStringLiteral("there are %1 files").arg(all.size())};
    return all.front();
}

Outcome<void> RecordingFlow::awaitRedIcon(bool wanted) const
{
    return waitFor(QStringLiteral("the icon"), [&]() -> Outcome<void> {
        const auto icon = findTrayIcon(*desktop, tamrik->app().pid());
        if (!icon)
            return icon.failure();
        const auto image = screen().grab(*icon);
        if (!image)
            return image.failure();
        const int red = redPixels(*image);
        // Of a disc that fills the icon but for its rim; a tray may give the icon more room.
        const int side = qRound(22 * scale());
        const bool isRed = red > side * side / 3;
        return (wanted ? isRed : red == 0) ? Outcome<void>()
                                           : Failure{QStringLiteral("%1 red").arg(red)};
    });
}

void RecordingFlow::wantMicrophone() const
{
    const QString folder = desktop->home() + QStringLiteral("/.config/tamrik");
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile preferences(folder + QStringLiteral("/preferences.json"));
    ASSERT_TRUE(preferences.open(QIODevice::WriteOnly));
    preferences.write(R"({"recordMic": true})");
}

void RecordingFlow::restart(const QMap<QString, QString>& extra)
{
    auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM), extra);
    ASSERT_TRUE(succeeded(launched));
    tamrik = std::move(*launched);
}

void RecordingFlow::startWithMounts(const QString& mounts, const QMap<QString, QString>& extra)
{
    ASSERT_TRUE(succeeded(tamrik->app().stop()));
    const QString root = geteuid() == 0 ? QString() : QStringLiteral("--map-root-user ");
    const QString path = desktop->home() + QStringLiteral("/with-mounts");
    ASSERT_NO_FATAL_FAILURE(
        writeScript(path, QStringLiteral("exec unshare --mount %1sh -c '%2exec \"%3\"'\n")
                              .arg(root, mounts, QStringLiteral(TAMRIK_PROGRAM))));
    auto launched = Tamrik::startAndAwaitKeys(*desktop, path, extra);
    ASSERT_TRUE(succeeded(launched));
    tamrik = std::move(*launched);
}

void RecordingFlow::write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

void RecordingFlow::writeScript(const QString& path, const QString& lines)
{
    ASSERT_NO_FATAL_FAILURE(write(path, "#!/bin/sh\n" + lines.toUtf8()));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
