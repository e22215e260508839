#include "Media/ModuleLibrary.h"
#include "Media/PlayerModule.h"

const PlayerModule* PlayerModule::get()
{
    static const PlayerModule* const module =
        loadModule<PlayerModule>(TAMRIK_PLAYER_FROM_PROGRAM, entry);
    return module;
}
