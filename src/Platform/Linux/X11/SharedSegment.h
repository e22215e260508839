#pragma once

#include "Platform/Linux/X11/Connection.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace X11 {

/// Memory that the X server writes images into and this process reads (the MIT-SHM extension).
///
/// Must not outlive its connection.
class SharedSegment {
public:
    /// Absent when the server has no such extension, is not on this machine, or refuses; images
    /// come through the socket then. Tries a file descriptor first (MIT-SHM 1.2), System V memory
    /// second.
    static std::optional<SharedSegment> create(const Connection& connection, std::size_t bytes);

    const std::uint8_t* data() const { return static_cast<const std::uint8_t*>(m_memory.get()); }
    std::size_t size() const { return m_memory.get_deleter().bytes; }

    /// The server's name for it.
    std::uint32_t id() const { return m_attachment.get_deleter().id; }

private:
    struct Release {
        std::size_t bytes = 0;
        bool isSystemV = false;
        void operator()(void* memory) const;
    };
    using Memory = std::unique_ptr<void, Release>;

    struct Detach {
        std::uint32_t id = 0;
        void operator()(xcb_connection_t* connection) const;
    };
    using Attachment = std::unique_ptr<xcb_connection_t, Detach>; // the connection is borrowed

    SharedSegment(Memory memory, Attachment attachment)
        : m_memory(std::move(memory))
        , m_attachment(std::move(attachment))
    {
    }

    static std::optional<SharedSegment> byDescriptor(xcb_connection_t* connection,
                                                     std::size_t bytes);
    static std::optional<SharedSegment> bySystemV(xcb_connection_t* connection, std::size_t bytes);

    Memory m_memory;
    Attachment m_attachment;
};

} // namespace X11
