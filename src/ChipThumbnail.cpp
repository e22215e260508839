#include "ChipThumbnail.h"

#include "CaptureKind.h"
#include "ChipPlacement.h"
#include "Media/FrameReader.h"
#include "Media/Picture.h"

#include <QThreadPool>

#include <chrono>
#include <cmath>

using Geometry::Size;

namespace {

constexpr double videoTime = 0.1; // seconds
/// A file that takes longer gets no chip: those of later captures wait for it, and so would a quit.
constexpr std::chrono::seconds patience{2};
constexpr QSize videoBox = {600, 600};

/// Thumbnails are as fine as suits screens of this scale, whatever those are that are there now.
constexpr double density = 2;

QSize thumbnailPixels(Size picture)
{
    const Size chip = ChipPlacement::chipSize(picture);
    return {static_cast<int>(std::lround(chip.width * density)),
            static_cast<int>(std::lround(chip.height * density))};
}

/// The middle part of a frame in the shape of `target`, no larger than it.
QImage cropped(const QImage& frame, QSize target)
{
    const QSize part = target.scaled(frame.size(), Qt::KeepAspectRatio).expandedTo({1, 1});
    const QPoint origin((frame.width() - part.width()) / 2, (frame.height() - part.height()) / 2);
    const QImage middle = frame.copy(QRect(origin, part));
    return part.width() <= target.width()
               ? middle
               : middle.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

std::optional<ChipContent> ofVideo(const QString& path)
{
    auto reader = FrameReader::open(path, {.time = patience, .cancellation = {}});
    if (!reader)
        return std::nullopt;
    const auto frame = reader->frameAt(videoTime, videoBox);
    if (!frame)
        return std::nullopt;
    const Size size = {static_cast<double>(frame->width()), static_cast<double>(frame->height())};
    const auto duration = reader->duration();
    return ChipContent{cropped(*frame, thumbnailPixels(size)), size,
                       duration ? durationBadge(*duration) : std::nullopt};
}

std::optional<ChipContent> ofPicture(const QString& path)
{
    const auto info = Picture::info(path);
    if (!info)
        return std::nullopt;
    const Size size = {info->points().width(), info->points().height()};
    auto thumbnail = Picture::thumbnail(path, thumbnailPixels(size));
    if (!thumbnail)
        return std::nullopt;
    return ChipContent{std::move(*thumbnail), size, std::nullopt};
}

} // namespace

std::optional<ChipContent> ChipThumbnail::load(const QUrl& file)
{
    const QString path = file.toLocalFile();
    return captureKind(file) == CaptureKind::video ? ofVideo(path) : ofPicture(path);
}

void ChipThumbnail::loadInBackground(
    const QUrl& file, std::function<void(const std::optional<ChipContent>& content)> completion)
{
    QThreadPool::globalInstance()->start(
        [file, completion = std::move(completion)] { completion(load(file)); });
}
