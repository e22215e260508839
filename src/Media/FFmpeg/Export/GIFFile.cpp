#include "Media/FFmpeg/Export/GIFFile.h"

#include "Media/FFmpeg/Video.h"
#include "Media/GIF/Animation.h"
#include "Support/OutputFile.h"

#include <QFile>

PossibleFailure writeGIF(const QString& video, const AnimatedGIF::Frames& frames,
                         const QString& destination, const Cancellation& cancellation)
{
    const auto open = [&] {
        FrameReaderLimits limits;
        limits.cancellation = cancellation;
        return Video::open(video, limits);
    };
    // Not before there is something to write. What stands there stays until this is complete.
    std::unique_ptr<OutputFile> file;
    const auto write = [&](const GIF::Bytes& bytes) -> PossibleFailure {
        if (!file) {
            auto created = OutputFile::create(QFile::encodeName(destination).toStdString(),
                                              {.clearsPlace = false});
            if (!created)
                return created.failure();
            file = std::move(*created);
        }
        return file->write(bytes, file->size());
    };
    if (PossibleFailure failure = GIF::animate(open, frames, write, cancellation))
        return failure;
    return file->publish();
}
