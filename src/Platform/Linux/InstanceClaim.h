#pragma once

#include "Platform/Application.h"
#include "Support/FileDescriptor.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

/// A claim to be the one process of a user that holds a place.
///
/// The place is a folder of the user's own. The first process keeps a lock on the folder itself,
/// which the kernel drops when the process ends, however it ends, so that no claim is left behind.
/// It listens on a socket in the folder. To connect there is all that a further start has to say,
/// and one byte is the answer: nothing is ever read from those who connect.
///
/// Knows of no event loop: whoever has one calls answerOne when the listener can be read.
class InstanceClaim {
public:
    using Role = Platform::SingleInstance::Role;

    /// `folders` are the places in order of preference. Where there is none of them to be had, the
    /// role is First and nobody is told of further starts: to run twice is better than not at all.
    /// Blocks for at most `patience` (and a little).
    InstanceClaim(const std::vector<std::string>& folders, uid_t user,
                  std::chrono::milliseconds patience);

    Role role() const { return m_role; }

    /// Can be read when a further start waits for its answer; negative when nobody can ask.
    int listener() const { return m_listener.get(); }

    /// Takes one further start, if any waits. Unless that has given up, or is another user's, calls
    /// `startedAgain` and then answers. False when this process has no descriptor left for it: it
    /// goes on waiting, and the listener can be read.
    bool answerOne(const std::function<void()>& startedAgain) const;

    /// Whether the other end of a connected socket is, or was when it began, a process of `user`.
    static bool isPeer(const FileDescriptor& connection, uid_t user);

private:
    Role claim(std::chrono::milliseconds patience);
    void listen();
    bool handOver(std::chrono::steady_clock::time_point deadline) const;

    uid_t m_user;
    FileDescriptor m_folder; // has the lock, when we are first
    FileDescriptor m_listener;
    Role m_role;
};
