#include "Buffer.h"

#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace Png {

namespace {

constexpr std::size_t largePage = 2 << 20;

}

Buffer::Buffer(std::size_t size)
    : m_size(size)
{
    const std::size_t alignment = size < largePage ? alignof(std::max_align_t) : largePage;
    const std::size_t padded = (size + alignment - 1) / alignment * alignment;
    m_bytes.reset(static_cast<std::uint8_t*>(std::aligned_alloc(alignment, padded)));
    if (!m_bytes)
        throw std::bad_alloc();
    if (alignment == largePage) // a wish: no harm when it is not granted
        madvise(m_bytes.get(), padded, MADV_HUGEPAGE);
}

void Buffer::Free::operator()(std::uint8_t* bytes) const
{
    std::free(bytes);
}

} // namespace Png
