#include "Movie/ParentWatch.h"

#include <sys/syscall.h>
#include <unistd.h>

ParentWatch::ParentWatch()
    : m_id(getppid())
    , m_process(static_cast<int>(syscall(SYS_pidfd_open, m_id, 0)))
{
}

bool ParentWatch::isGone() const
{
    // Somebody else becomes the parent of an orphan.
    return getppid() != m_id;
}
