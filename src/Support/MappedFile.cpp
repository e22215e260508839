#include "Support/MappedFile.h"

#include <utility>

MappedFile::MappedFile(RegularFile file, std::unique_ptr<QFile> device, QByteArrayView content)
    : m_file(std::move(file))
    , m_device(std::move(device))
    , m_content(content)
{
}

Result<MappedFile> MappedFile::open(const QString& path, qint64 most)
{
    Result<RegularFile> file = RegularFile::open(QFile::encodeName(path).toStdString());
    if (!file)
        return file.failure();
    if (file->size > most)
        return Failure{"cannot read " + path.toStdString() + ": it is too large"};
    auto device = std::make_unique<QFile>();
    if (!device->open(file->descriptor.get(), QIODevice::ReadOnly))
        return Failure{device->errorString().toStdString()};
    const uchar* const bytes = device->map(0, file->size);
    if (!bytes)
        return Failure{device->errorString().toStdString()};
    const QByteArrayView content(bytes, file->size);
    return MappedFile(std::move(*file), std::move(device), content);
}
