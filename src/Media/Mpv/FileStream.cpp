#include "Media/Mpv/FileStream.h"

#include <mpv/client.h>
#include <mpv/stream_cb.h>

#include <algorithm>
#include <array>
#include <utility>

#include <unistd.h>

namespace {

/// One opening of the file; mpv may have several, each on a thread of its own.
struct Reading {
    const RegularFile& file;
    std::int64_t position = 0;
};

Reading& reading(void* cookie)
{
    return *static_cast<Reading*>(cookie);
}

std::int64_t read(void* cookie, char* bytes, std::uint64_t most)
{
    Reading& it = reading(cookie);
    const std::int64_t left = std::max<std::int64_t>(it.file.size - it.position, 0);
    const ssize_t count = pread(
        it.file.descriptor.get(), bytes,
        static_cast<std::size_t>(std::min(most, static_cast<std::uint64_t>(left))), it.position);
    if (count > 0)
        it.position += count;
    return count;
}

std::int64_t seek(void* cookie, std::int64_t position)
{
    if (position < 0)
        return MPV_ERROR_GENERIC;
    return reading(cookie).position = position;
}

std::int64_t size(void* cookie)
{
    return reading(cookie).file.size;
}

void close(void* cookie)
{
    delete &reading(cookie);
}

int open(void* file, char*, mpv_stream_cb_info* info)
{
    info->cookie = new Reading{*static_cast<const RegularFile*>(file)};
    info->read_fn = read;
    info->seek_fn = seek;
    info->size_fn = size;
    info->close_fn = close;
    return 0;
}

} // namespace

FileStream::FileStream(RegularFile file)
    : m_file(std::move(file))
{
}

const char* FileStream::format() const
{
    constexpr std::array<unsigned char, 4> ebml = {0x1A, 0x45, 0xDF, 0xA3};
    std::array<unsigned char, 4> start = {};
    const bool isMatroska =
        pread(m_file.descriptor.get(), start.data(), start.size(), 0) == ssize_t{start.size()} &&
        start == ebml;
    return isMatroska ? "matroska" : "mov";
}

bool FileStream::registerAt(mpv_handle* player) const
{
    // It is only read.
    return mpv_stream_cb_add_ro(player, "tamrik", const_cast<RegularFile*>(&m_file), open) >= 0;
}
