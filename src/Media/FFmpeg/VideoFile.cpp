#include "Media/FFmpeg/VideoFile.h"

#include "Media/Av/Text.h"
#include "Media/ReadableEnd.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace {

/// Containers whose readers take nothing from outside the file. Each list is FFmpeg's own name.
constexpr const char* readable = "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm";
constexpr unsigned maximumStreams = 16;
constexpr int bufferSize = 1 << 15;

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

int isOver(void* patience)
{
    return static_cast<const Patience*>(patience)->isOver() ? 1 : 0;
}

} // namespace

VideoFile::VideoFile(std::string path, RegularFile file, const Patience& patience)
    : m_path(std::move(path))
    , m_file(std::move(file))
    , m_limit(m_file.size)
    , m_patience(patience)
{
}

Result<std::unique_ptr<VideoFile>> VideoFile::open(const std::string& path,
                                                   const Patience& patience)
{
    av_log_set_level(AV_LOG_QUIET); // for the whole process: FFmpeg has no other
    errno = 0;
    Result<RegularFile> file = RegularFile::open(path);
    if (!file) {
        // What is there and cannot be opened is not the same as nothing.
        if (errno != 0 && errno != ENOENT)
            patience.noteUnreadable(file.failure());
        return file.failure();
    }
    file->size = readableEnd(*file, [&] { return patience.isOver(); });
    std::unique_ptr<VideoFile> video(new VideoFile(path, std::move(*file), patience));
    if (const PossibleFailure failure = video->openContext())
        return Failure{"cannot read " + path + ": " + failure->message};
    return video;
}

PossibleFailure VideoFile::openContext()
{
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    m_io.reset(avio_alloc_context(buffer, bufferSize, 0, this, read, nullptr, seek));
    AVFormatContext* context = avformat_alloc_context();
    if (!buffer || !m_io || !context)
        return Failure{"there is no memory left"};
    context->pb = m_io.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = refuseToOpen;
    // FFmpeg asks it between reads; it does not write to it.
    context->interrupt_callback = {isOver, const_cast<Patience*>(&m_patience)};
    context->format_whitelist = av_strdup(readable);
    context->max_streams = maximumStreams;
    // Frees the context when it fails.
    const int error = avformat_open_input(&context, "", nullptr, nullptr);
    if (error < 0)
        return Failure{Av::text(error)};
    m_context.reset(context);
    return {};
}

int VideoFile::read(void* self, std::uint8_t* bytes, int size)
{
    auto& file = *static_cast<VideoFile*>(self);
    if (file.m_patience.isOver())
        return AVERROR_EXIT;
    const std::int64_t left = std::max<std::int64_t>(file.m_file.size - file.m_position, 0);
    const ssize_t count =
        pread(file.m_file.descriptor.get(), bytes,
              static_cast<std::size_t>(std::min<std::int64_t>(size, left)), file.m_position);
    if (count < 0) {
        const int error = AVERROR(errno);
        file.m_patience.noteUnreadable({"cannot read " + file.m_path + ": " + Av::text(error)});
        return error;
    }
    file.m_position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t VideoFile::seek(void* self, std::int64_t offset, int whence)
{
    auto& file = *static_cast<VideoFile*>(self);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return file.m_file.size;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += file.m_position;
        break;
    case SEEK_END:
        offset += file.m_file.size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    return file.m_position = offset;
}
