#include "Support/Background.h"

#include <QCoreApplication>

#include <limits>

QThreadPool& Background::threads()
{
    struct Pool : QThreadPool {
        Pool()
        {
            setMaxThreadCount(std::numeric_limits<int>::max());
            // A thread goes with its work: its priority may be low, and none can raise that again.
            setExpiryTimeout(0);
            // What ends may still call upon the application object, and on libraries that are
            // loaded.
            qAddPostRoutine([] { threads().waitForDone(); });
        }
    };
    static Pool pool;
    return pool;
}
