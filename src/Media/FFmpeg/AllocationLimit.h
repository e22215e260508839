#pragma once

#include <cstdint>

/// How much FFmpeg may allocate at once, for as long as this lives: by default anything, and a few
/// bytes of an index may claim any number of frames.
///
/// It is one limit for the whole process, the highest of those that are alive, and libmpv's too,
/// which uses the same library. So when none is alive any more it is the highest that there was: a
/// film that we have read may still be playing. Any thread.
class AllocationLimit {
public:
    /// For a file of so many bytes, or for several at once. Room for a frame of 8K in any case, and
    /// for all the frames that so many bytes can hold in fact.
    explicit AllocationLimit(std::int64_t fileSize);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;

    static constexpr std::int64_t lowest = std::int64_t{128} << 20; // five million frames

private:
    std::int64_t m_bytes;
};
