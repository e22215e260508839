#include "NewFile.h"

#include "EndingSignals.h"

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

namespace {

std::string quoted(const std::string& path)
{
    return '"' + path + '"';
}

Failure cannotWrite(const std::string& path, const std::string& reason)
{
    return {"cannot write " + quoted(path) + ": " + reason};
}

/// Finds out early, before any work is done, that the file could not be put in its place.
PossibleFailure checkPlace(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty() || name == "." || name == "..")
        return cannotWrite(path, std::generic_category().message(EISDIR));
    struct stat status = {};
    const bool isFree = lstat(path.c_str(), &status) != 0;
    if (isFree && errno != ENOENT)
        return cannotWrite(path, std::generic_category().message(errno));
    if (isFree || S_ISREG(status.st_mode) || S_ISLNK(status.st_mode))
        return {};
    return cannotWrite(path, "it is not a regular file");
}

void hide(const std::function<void()>& change, int folder, const std::string& name)
{
    const EndingSignals::Block block;
    change();
    if (name.empty())
        EndingSignals::removeNothing();
    else
        EndingSignals::removeOnArrival(folder, name.c_str());
}

} // namespace

Result<std::unique_ptr<OutputFile>> newFile(const std::string& path, OutputFile::Kind kind)
{
    if (const PossibleFailure failure = checkPlace(path))
        return *failure;
    return OutputFile::create(
        path, {.kind = kind, .clearsPlace = false, .nameInFailures = quoted(path), .hiding = hide});
}
