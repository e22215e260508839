#include "MovieProgram.h"

#include "StopSignals.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <climits>
#include <unistd.h>

namespace {

std::string siblingPath(const char* name)
{
    std::string path(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    path.resize(path.rfind('/') + 1); // nothing at all when there is no slash
    return path + name;
}

} // namespace

Failure becomeMovieProgram(char** words)
{
    const std::string path = siblingPath("screencapture-movie");
    // What is blocked stays blocked and what is pending stays pending across an exec.
    StopSignals::hold();
    execv(path.c_str(), words);
    return {"cannot run \"" + path + "\": " + std::generic_category().message(errno)};
}
