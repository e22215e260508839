#include "Platform/Linux/InstanceClaim.h"

#include "Platform/Linux/PrivateFolder.h"

#include <algorithm>
#include <cerrno>
#include <thread>

#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

constexpr const char* socketName = "socket";
/// Between two looks at an instance that has its lock and not yet its socket.
constexpr auto retryInterval = 5ms;
constexpr char answer = '!';

FileDescriptor newSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

sockaddr_un addressIn(const FileDescriptor& folder)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    PrivateFolder::pathIn(folder, socketName)
        .copy(address.sun_path, sizeof address.sun_path - 1); // a few dozen characters
    return address;
}

/// Waits until one of `events` happens on a socket, or its other end goes; what happened.
short happened(const FileDescriptor& file, short events, std::chrono::milliseconds patience)
{
    pollfd entry = {file.get(), events, 0};
    if (poll(&entry, 1, static_cast<int>(std::max(patience, 0ms).count())) <= 0)
        return 0;
    return entry.revents;
}

bool hasGivenUp(const FileDescriptor& connection)
{
    return (happened(connection, 0, 0ms) & POLLHUP) != 0;
}

} // namespace

InstanceClaim::InstanceClaim(const std::vector<std::string>& folders, uid_t user,
                             std::chrono::milliseconds patience)
    : m_user(user)
    , m_folder(PrivateFolder::open(folders, user))
    , m_role(m_folder ? claim(patience) : Role::First)
{
}

InstanceClaim::Role InstanceClaim::claim(std::chrono::milliseconds patience)
{
    const auto deadline = steady_clock::now() + patience;
    for (;;) {
        if (flock(m_folder.get(), LOCK_EX | LOCK_NB) == 0) {
            listen();
            return Role::First;
        }
        if (errno != EWOULDBLOCK) // a file system without locks
            return Role::First;
        if (handOver(deadline))
            return Role::HandedOver;
        // Also when the other instance ended meanwhile: then the lock is ours next time.
        if (steady_clock::now() >= deadline)
            return Role::Unanswered;
        std::this_thread::sleep_for(retryInterval);
    }
}

void InstanceClaim::listen()
{
    FileDescriptor listener = newSocket();
    const sockaddr_un address = addressIn(m_folder);
    (void)unlink(address.sun_path); // of an instance that was killed; only we have the lock
    if (listener &&
        bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(listener.get(), SOMAXCONN) == 0)
        m_listener = std::move(listener);
}

bool InstanceClaim::handOver(steady_clock::time_point deadline) const
{
    const FileDescriptor connection = newSocket();
    const sockaddr_un address = addressIn(m_folder);
    // Never waits: where too many wait already, connecting is refused.
    if (!connection ||
        connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
            0 ||
        !isPeer(connection, m_user))
        return false;
    using std::chrono::ceil, std::chrono::milliseconds;
    if (!happened(connection, POLLIN, ceil<milliseconds>(deadline - steady_clock::now())))
        return false;
    char received = 0;
    return recv(connection.get(), &received, 1, 0) == 1 && received == answer;
}

bool InstanceClaim::answerOne(const std::function<void()>& startedAgain) const
{
    const FileDescriptor connection(
        accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection)
        return errno != EMFILE && errno != ENFILE;
    if (!isPeer(connection, m_user) || hasGivenUp(connection))
        return true;
    startedAgain();
    // One that leaves now is not worth a word.
    (void)send(connection.get(), &answer, 1, MSG_NOSIGNAL);
    return true;
}

bool InstanceClaim::isPeer(const FileDescriptor& connection, uid_t user)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == user;
}
