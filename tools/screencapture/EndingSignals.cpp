#include "EndingSignals.h"

#include <cassert>
#include <csignal>
#include <cstring>

#include <unistd.h>

namespace EndingSignals {

namespace {

constexpr int endingSignals[] = {SIGHUP, SIGINT, SIGTERM};

// Read by the signals' handler, so written only while the signals are blocked.
volatile std::sig_atomic_t folderToCleanUp = -1;
char nameToRemove[64];

void removeAndEnd(int signal)
{
    if (folderToCleanUp >= 0)
        unlinkat(folderToCleanUp, nameToRemove, 0);
    // The disposition is the default one again (SA_RESETHAND): the signal ends the process as soon
    // as this handler returns and unblocks it.
    raise(signal);
}

void installOnce()
{
    static bool isInstalled = false;
    if (isInstalled)
        return;
    isInstalled = true;
    for (const int signal : endingSignals) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN) // as nohup sets it: stays so
            continue;
        struct sigaction action = {};
        action.sa_handler = removeAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        for (const int other : endingSignals)
            sigaddset(&action.sa_mask, other);
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

struct Block::Mask {
    sigset_t signals;
};

Block::Block()
    : m_before(std::make_unique<Mask>())
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : endingSignals)
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &m_before->signals);
}

Block::~Block()
{
    pthread_sigmask(SIG_SETMASK, &m_before->signals, nullptr);
}

void removeOnArrival(int folder, const char* name)
{
    assert(std::strlen(name) < sizeof nameToRemove);
    const Block block;
    std::strncpy(nameToRemove, name, sizeof nameToRemove - 1);
    folderToCleanUp = folder;
    installOnce();
}

void removeNothing()
{
    const Block block;
    folderToCleanUp = -1;
}

} // namespace EndingSignals
