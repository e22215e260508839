#include "Media/MediaModule.h"

extern "C" const MediaModule* tamrikMediaModule();

// The test program has the module's code in itself, and need not look for it.
const MediaModule* MediaModule::get()
{
    return tamrikMediaModule();
}
