#include "Support/RemoveFile.h"

#include "Support/Background.h"
#include "Support/FileDescriptor.h"

#include <QFile>

#include <memory>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

void removeFile(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    // For as long as it is open it keeps its space. What cannot be opened is freed here.
    auto file = std::make_shared<FileDescriptor>(
        open(name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    unlink(name.constData());
    if (*file)
        Background::threads().start([file = std::move(file)]() mutable { file.reset(); });
}

void removeFiles(const QList<QUrl>& files)
{
    for (const QUrl& file : files)
        removeFile(file.toLocalFile());
}
