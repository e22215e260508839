#include "Media/Player.h"

#include "Media/PlayerModule.h"

std::unique_ptr<Player> Player::open(const QString& path)
{
    const PlayerModule* const module = PlayerModule::get();
    return module ? module->open(path) : nullptr;
}
