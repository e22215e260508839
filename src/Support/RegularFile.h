#pragma once

#include "Support/FileDescriptor.h"
#include "Support/Result.h"

#include <cstdint>
#include <string>

/// A file that is open for reading and holds bytes: no folder, no device, no pipe.
struct RegularFile {
    FileDescriptor descriptor;
    std::int64_t size; ///< In bytes, when it was opened.

    /// Never waits, not even for somebody to write into a pipe.
    static Result<RegularFile> open(const std::string& path);
};
