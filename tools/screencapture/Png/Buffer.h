#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Png {

/// Memory that nobody sets to zero first, in large pages where the system has them: of a large
/// screen both take milliseconds otherwise.
class Buffer {
public:
    Buffer() = default; // of no bytes
    /// Throws std::bad_alloc.
    explicit Buffer(std::size_t size);

    std::uint8_t* data() { return m_bytes.get(); }
    std::size_t size() const { return m_size; }
    std::span<const std::uint8_t> bytes() const { return {m_bytes.get(), m_size}; }

    /// To at most the size it was made with. The bytes stay where and what they are.
    void resize(std::size_t size) { m_size = size; }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const;
    };

    std::unique_ptr<std::uint8_t[], Free> m_bytes;
    std::size_t m_size = 0;
};

} // namespace Png
