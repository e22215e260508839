#include "Support/Background.h"

#include <limits>

QThreadPool& Background::threads()
{
    struct Pool : QThreadPool {
        Pool()
        {
            setMaxThreadCount(std::numeric_limits<int>::max());
            // A thread goes with its work: its priority may be low, and none can raise that again.
            setExpiryTimeout(0);
        }
    };
    static Pool pool;
    return pool;
}
