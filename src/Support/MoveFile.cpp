#include "Support/MoveFile.h"

#include "Support/OutputFile.h"
#include "Support/RegularFile.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <unistd.h>

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;

PossibleFailure copyFile(const std::string& from, const std::string& to,
                         const std::function<bool()>& isCancelled)
{
    const Result<RegularFile> source = RegularFile::open(from);
    if (!source)
        return source.failure();
    const auto target = OutputFile::create(to);
    if (!target)
        return target.failure();
    std::vector<std::uint8_t> piece(pieceSize);
    for (;;) {
        if (isCancelled())
            return Failure{"it was cancelled"};
        const ssize_t count =
            pread(source->descriptor.get(), piece.data(), piece.size(), (*target)->size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return Failure{"cannot read " + from + ": " + std::strerror(errno)};
        if (count == 0)
            return (*target)->publish();
        if (PossibleFailure failure =
                (*target)->append({piece.data(), static_cast<std::size_t>(count)}))
            return failure;
    }
}

} // namespace

PossibleFailure moveFile(const QString& from, const QString& to,
                         const std::function<bool()>& isCancelled)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (std::rename(source.constData(), target.constData()) == 0)
        return {};
    if (PossibleFailure failure = copyFile(source.toStdString(), target.toStdString(), isCancelled))
        return failure;
    QFile::remove(from); // one that stays does no harm
    return {};
}
