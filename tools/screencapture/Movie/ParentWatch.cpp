#include "Movie/ParentWatch.h"

#include "Support/ToolParent.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

pid_t parent()
{
    const char* const given = std::getenv(ToolParent::variable);
    pid_t id = 0;
    if (given && std::from_chars(given, given + std::strlen(given), id).ec == std::errc() && id > 0)
        return id;
    return getppid();
}

} // namespace

ParentWatch::ParentWatch()
    : m_id(parent())
    , m_process(static_cast<int>(syscall(SYS_pidfd_open, m_id, 0)))
{
}

bool ParentWatch::isGone() const
{
    // Somebody else becomes the parent of an orphan.
    return getppid() != m_id;
}
