#include "Platform/Linux/PrivateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr mode_t ownerOnly = 0700;
constexpr mode_t othersRights = 0077;

bool isPrivate(const FileDescriptor& folder, uid_t user)
{
    struct stat status = {};
    return fstat(folder.get(), &status) == 0 && status.st_uid == user &&
           (status.st_mode & othersRights) == 0;
}

} // namespace

FileDescriptor PrivateFolder::open(const std::vector<std::string>& paths, uid_t user)
{
    for (const std::string& path : paths) {
        (void)mkdir(path.c_str(), ownerOnly); // often it is there already; opening it tells
        FileDescriptor folder(
            ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (folder && isPrivate(folder, user))
            return folder;
    }
    return FileDescriptor();
}

std::string PrivateFolder::pathIn(const FileDescriptor& folder, const char* name)
{
    return "/proc/self/fd/" + std::to_string(folder.get()) + '/' + name;
}
