#include "Support/FileDescriptor.h"

#include <unistd.h>

FileDescriptor::~FileDescriptor()
{
    if (m_number >= 0)
        close(m_number);
}
