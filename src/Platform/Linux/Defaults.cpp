#include "Platform/Defaults.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace {

/// Copies the damaged file that QSettings opened to a name beside it that is still free, so that an
/// earlier copy stays. The same damage is kept once.
void keepAside(const QIODevice& device, const QByteArray& bytes)
{
    const auto* file = qobject_cast<const QFile*>(&device);
    if (!file)
        return;
    const QString base = file->fileName() + QStringLiteral(".unreadable");
    QString aside = base;
    for (int number = 2; QFile::exists(aside); ++number) {
        QFile earlier(aside);
        if (earlier.open(QIODevice::ReadOnly) && earlier.readAll() == bytes)
            return;
        aside = base + QLatin1Char('-') + QString::number(number);
    }
    // Best effort: the program must start whatever state its preferences are in.
    QFile::copy(file->fileName(), aside);
}

/// Reads one JSON object. Anything else is kept aside under another name and reads as empty, so
/// that the next write does not destroy what the user may want to mend.
bool readJson(QIODevice& device, QSettings::SettingsMap& map)
{
    const QByteArray bytes = device.readAll();
    if (bytes.isEmpty())
        return true;
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (document.isObject())
        map = document.object().toVariantMap();
    else
        keepAside(device, bytes);
    return true;
}

bool writeJson(QIODevice& device, const QSettings::SettingsMap& map)
{
    const QByteArray bytes = QJsonDocument(QJsonObject::fromVariantMap(map)).toJson();
    // What stays in the device's buffer could fail unseen when that is closed.
    auto* const file = qobject_cast<QFileDevice*>(&device);
    return device.write(bytes) == bytes.size() && (!file || file->flush());
}

QSettings::Format jsonFormat()
{
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("json"), readJson, writeJson);
    return format;
}

/// QSettings holds a lock file while it writes, which names its process. One that names nobody is
/// what a process left that was killed as it made the file; every write would wait for half a
/// minute before it takes such a lock away.
void removeEmptyLock(const QString& path)
{
    const QFileInfo lock(path);
    if (lock.isFile() && lock.size() == 0)
        QFile::remove(path);
}

} // namespace

std::unique_ptr<QSettings> Platform::openDefaults()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString path = folder + QStringLiteral("/tamrik/preferences.json");
    removeEmptyLock(path + QStringLiteral(".lock"));
    return std::make_unique<QSettings>(path, jsonFormat());
}
