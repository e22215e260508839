#include "Media/MediaModule.h"
#include "Media/ModuleLibrary.h"

const MediaModule* MediaModule::get()
{
    static const MediaModule* const module =
        loadModule<MediaModule>(TAMRIK_MEDIA_FROM_PROGRAM, entry);
    return module;
}
