#include "Platform/Linux/X11/SharedSegment.h"

#include "Platform/Linux/X11/Handles.h"

#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace X11 {

namespace {

struct Version {
    int major = 0;
    int minor = 0;
};

std::optional<Version> sharedMemoryVersion(xcb_connection_t* connection)
{
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(connection, &xcb_shm_id);
    if (!extension || !extension->present)
        return std::nullopt;
    const Reply<xcb_shm_query_version_reply_t> reply(
        xcb_shm_query_version_reply(connection, xcb_shm_query_version(connection), nullptr));
    if (!reply)
        return std::nullopt;
    return Version{reply->major_version, reply->minor_version};
}

bool succeeded(xcb_connection_t* connection, xcb_void_cookie_t request)
{
    const Reply<xcb_generic_error_t> error(xcb_request_check(connection, request));
    return !error && !xcb_connection_has_error(connection);
}

} // namespace

void SharedSegment::Release::operator()(void* memory) const
{
    if (isSystemV)
        shmdt(memory);
    else
        munmap(memory, bytes);
}

void SharedSegment::Detach::operator()(xcb_connection_t* connection) const
{
    xcb_shm_detach(connection, id); // with the connection gone the server has let go by itself
    xcb_flush(connection);
}

std::optional<SharedSegment> SharedSegment::byDescriptor(xcb_connection_t* connection,
                                                         std::size_t bytes)
{
    const int file = memfd_create("tamrik-capture", MFD_CLOEXEC);
    if (file < 0)
        return std::nullopt;
    if (ftruncate(file, static_cast<off_t>(bytes)) != 0) {
        close(file);
        return std::nullopt;
    }
    void* const address = mmap(nullptr, bytes, PROT_READ, MAP_SHARED, file, 0);
    if (address == MAP_FAILED) {
        close(file);
        return std::nullopt;
    }
    Memory memory(address, Release{bytes, false});

    const std::uint32_t id = xcb_generate_id(connection);
    // xcb closes the descriptor when it has been sent, and when it cannot be.
    if (!succeeded(connection, xcb_shm_attach_fd_checked(connection, id, file, false)))
        return std::nullopt;
    return SharedSegment(std::move(memory), Attachment(connection, Detach{id}));
}

std::optional<SharedSegment> SharedSegment::bySystemV(xcb_connection_t* connection,
                                                      std::size_t bytes)
{
    const int segment = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (segment < 0)
        return std::nullopt;
    void* const address = shmat(segment, nullptr, SHM_RDONLY);
    // shmat says no with the address -1.
    if (reinterpret_cast<std::intptr_t>(address) == -1) {
        shmctl(segment, IPC_RMID, nullptr);
        return std::nullopt;
    }
    Memory memory(address, Release{bytes, true});

    const std::uint32_t id = xcb_generate_id(connection);
    const bool isAttached =
        succeeded(connection, xcb_shm_attach_checked(connection, id,
                                                     static_cast<std::uint32_t>(segment), false));
    // From here on it lives only as long as both sides have it attached, however they end.
    shmctl(segment, IPC_RMID, nullptr);
    if (!isAttached)
        return std::nullopt;
    return SharedSegment(std::move(memory), Attachment(connection, Detach{id}));
}

std::optional<SharedSegment> SharedSegment::create(const Connection& connection, std::size_t bytes)
{
    const std::optional<Version> version = sharedMemoryVersion(connection.get());
    if (!version)
        return std::nullopt;
    const bool hasDescriptors = version->major > 1 || version->minor >= 2;
    if (hasDescriptors && connection.carriesDescriptors()) {
        if (auto segment = byDescriptor(connection.get(), bytes))
            return segment;
    }
    return bySystemV(connection.get(), bytes);
}

} // namespace X11
