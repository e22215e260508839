#include "Support/CaptureFiles.h"

#include "Support/ReadFile.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace {

/// The time as the user's locale writes its digits; the locale is asked afresh each time.
QString timestamp(const Clock& clock)
{
    return QLocale::system().toString(clock.now(), QStringLiteral("yyyy-MM-dd 'at' HH.mm.ss"));
}

QUrl fileNamed(const QString& name)
{
    return QUrl::fromLocalFile(CaptureFiles::folder() + QLatin1Char('/') + name);
}

} // namespace

QString CaptureFiles::folder()
{
    return QDir::homePath() + QStringLiteral("/Pictures/Tamrik");
}

void CaptureFiles::createFolder()
{
    QDir().mkpath(folder());
}

QUrl CaptureFiles::newScreenshot(const Clock& clock)
{
    return fileNamed(QStringLiteral("Tamrik ") + timestamp(clock) + QStringLiteral(".png"));
}

QUrl CaptureFiles::newRecording(const Clock& clock)
{
    return fileNamed(QStringLiteral("Tamrik Rec ") + timestamp(clock) + QStringLiteral(".mp4"));
}

QString CaptureFiles::temporaryFolder()
{
    // /tmp may be memory: too small for a long film, and empty after a restart.
    QString lasting = QStringLiteral("/var/tmp");
    if (qEnvironmentVariableIsEmpty("TMPDIR") && QFileInfo(lasting).isWritable())
        return lasting;
    return QDir::tempPath();
}

bool CaptureFiles::exists(const QUrl& file)
{
    return QFileInfo::exists(file.toLocalFile());
}

std::optional<QByteArray> CaptureFiles::contents(const QUrl& url)
{
    const Result<QByteArray> bytes = readFile(url.toLocalFile());
    return bytes ? std::optional(*bytes) : std::nullopt;
}
