#include "Support/Clock.h"

#include <QCoreApplication>
#include <QTimer>

Clock Clock::system()
{
    return {
        [] { return QDateTime::currentDateTime(); },
        [](std::chrono::milliseconds delay, std::function<void()> work) {
            QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(),
                               std::move(work));
        },
    };
}
