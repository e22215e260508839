#include "Media/PlayerModule.h"

#include "Media/Mpv/MpvPlayer.h"

#include <QtGlobal>

extern "C" Q_DECL_EXPORT const PlayerModule* tamrikPlayerModule();

const PlayerModule* tamrikPlayerModule()
{
    static const PlayerModule module = {.open = MpvPlayer::open};
    return &module;
}
