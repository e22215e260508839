#include "Support/ReadFile.h"

#include "Support/RegularFile.h"

#include <QFile>

Result<QByteArray> readFile(const QString& path, qint64 most)
{
    const Result<RegularFile> file = RegularFile::open(QFile::encodeName(path).toStdString());
    if (!file)
        return file.failure();
    if (file->size > most)
        return Failure{"cannot read " + path.toStdString() + ": it is too large"};
    QFile device;
    if (!device.open(file->descriptor.get(), QIODevice::ReadOnly))
        return Failure{device.errorString().toStdString()};
    return device.read(file->size);
}
