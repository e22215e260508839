#include "Support/RegularFile.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

Result<RegularFile> RegularFile::open(const std::string& path)
{
    // O_NONBLOCK: opening a pipe would otherwise wait for its other end. Regular files ignore it.
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!descriptor || fstat(descriptor.get(), &status) != 0)
        return Failure{"cannot open " + path + ": " + std::strerror(errno)};
    if (!S_ISREG(status.st_mode))
        return Failure{"cannot open " + path + ": it is not a regular file"};
    return RegularFile{std::move(descriptor), status.st_size};
}
