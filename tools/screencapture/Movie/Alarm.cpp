#include "Movie/Alarm.h"

#include <sys/eventfd.h>

Alarm::Alarm()
    : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

void Alarm::ring() const
{
    eventfd_write(m_descriptor.get(), 1); // fails only when it rings already
}

void Alarm::clear() const
{
    eventfd_t count = 0;
    eventfd_read(m_descriptor.get(), &count);
}
