#pragma once

#include <memory>

/// What a process does about the signals that ask it to end: SIGHUP, SIGINT and SIGTERM.
namespace EndingSignals {

/// Keeps them away from this thread for as long as it lives; one that comes meanwhile acts at the
/// end.
class Block {
public:
    Block();
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

private:
    struct Mask;
    std::unique_ptr<Mask> m_before;
};

/// Should one of the signals end the process, removes `name` from `folder` first. `name` is at most
/// 63 bytes long; the folder's descriptor is borrowed. One file at a time.
void removeOnArrival(int folder, const char* name);

/// From now on there is nothing to remove.
void removeNothing();

} // namespace EndingSignals
