#include "Platform/Application.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Where a signal leaves its mark: a handler may do hardly anything else.
int markedEnd = -1;

extern "C" void leaveMark(int)
{
    const int error = errno;
    [[maybe_unused]] const auto written = write(markedEnd, "", 1);
    errno = error;
}

/// Whoever started us may have asked for a signal to be ignored, as nohup does.
bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

void Platform::quitOnSignals()
{
    std::array<int, 2> ends{};
    if (markedEnd >= 0 || pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // they end the program all the same, as they do without us
    // Both ends stay open: a signal may come as long as the process lives.
    markedEnd = ends[1];
    auto* marks = new QSocketNotifier(ends[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(marks, &QSocketNotifier::activated, marks, [end = ends[0]] {
        char mark = 0;
        if (read(end, &mark, 1) == 1)
            QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = leaveMark;
    // The second of a kind ends a program that hangs.
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (!isIgnored(signal))
            sigaction(signal, &action, nullptr);
    }
}
