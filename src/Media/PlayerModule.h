#pragma once

#include "Media/Player.h"

/// The library that plays videos: like MediaModule, it is loaded when it is first needed, since it
/// brings yet more along.
struct PlayerModule {
    /// As Player::open, never null.
    std::unique_ptr<Player> (*open)(const QString& path);

    /// The module, loaded by the first call; null when it is missing.
    static const PlayerModule* get();

    /// The name of the function in the library that returns the module.
    static constexpr const char* entry = "tamrikPlayerModule";
};
