// For systems that have only what POSIX says.

#include "Platform/NewFiles.h"

#include <cerrno>

#include <fcntl.h>

int Platform::openFolder(const char* path)
{
    return open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

int Platform::openNameless(int)
{
    errno = ENOTSUP;
    return -1;
}

bool Platform::nameNameless(int, int, const char*)
{
    errno = ENOTSUP;
    return false;
}
