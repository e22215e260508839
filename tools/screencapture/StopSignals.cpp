#include "StopSignals.h"

#include <csignal>
#include <cstdlib>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    struct sigaction hangUp = {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

} // namespace

void StopSignals::hold()
{
    const sigset_t signals = stopSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

StopSignals::StopSignals()
{
    hold();
    const sigset_t signals = stopSignals();
    m_descriptor = FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

int StopSignals::take() const
{
    signalfd_siginfo info = {};
    if (read(m_descriptor.get(), &info, sizeof info) != sizeof info)
        return 0;
    return static_cast<int>(info.ssi_signo);
}

void StopSignals::endBy(int signal)
{
    std::signal(signal, SIG_DFL);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signal);
    sigprocmask(SIG_UNBLOCK, &one, nullptr);
    raise(signal);
    std::abort(); // no signal of these lets a process go on
}
