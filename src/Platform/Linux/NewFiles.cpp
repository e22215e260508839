#include "Platform/NewFiles.h"

#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string pathOf(int file)
{
    return "/proc/self/fd/" + std::to_string(file);
}

} // namespace

int Platform::openFolder(const char* path)
{
    return open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
}

int Platform::openNameless(int folder)
{
    const int file = openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    // It gets its name through /proc, which a container may lack.
    if (file >= 0 && access(pathOf(file).c_str(), F_OK) != 0) {
        close(file);
        return -1;
    }
    return file;
}

bool Platform::nameNameless(int file, int folder, const char* name)
{
    return linkat(AT_FDCWD, pathOf(file).c_str(), folder, name, AT_SYMLINK_FOLLOW) == 0;
}
