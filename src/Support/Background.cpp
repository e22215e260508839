#include "Support/Background.h"

#include <limits>

QThreadPool& Background::threads()
{
    struct Pool : QThreadPool {
        Pool() { setMaxThreadCount(std::numeric_limits<int>::max()); }
    };
    static Pool pool;
    return pool;
}
