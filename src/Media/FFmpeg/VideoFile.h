#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/AllocationLimit.h"
#include "Media/FFmpeg/Patience.h"
#include "Support/RegularFile.h"
#include "Support/Result.h"

#include <memory>
#include <string>

/// An open container. It reads through a file that we opened ourselves, so that FFmpeg never opens
/// anything: no reference in a file, however it is named, leads to another one.
class VideoFile {
public:
    /// `patience`, which outlives this, is asked at every read, and told of one that fails.
    static Result<std::unique_ptr<VideoFile>> open(const std::string& path,
                                                   const Patience& patience);
    VideoFile(const VideoFile&) = delete;
    VideoFile& operator=(const VideoFile&) = delete;

    AVFormatContext& context() { return *m_context; }

    /// In bytes; nothing beyond can be read.
    std::int64_t size() const { return m_file.size; }

private:
    VideoFile(std::string path, RegularFile file, const Patience& patience);
    PossibleFailure openContext();

    static int read(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);

    std::string m_path; // for messages
    RegularFile m_file;
    AllocationLimit m_limit;
    const Patience& m_patience;
    std::int64_t m_position = 0;
    Av::Io m_io;
    Av::Input m_context; // goes before what it reads from
};
