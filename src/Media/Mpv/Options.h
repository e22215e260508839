#pragma once

struct mpv_handle;

/// Makes `player`, which is not initialised yet, one that plays a single file by what we tell it
/// alone. `format` is the only reader of FFmpeg's that may look at the file.
void setPlayerOptions(mpv_handle* player, const char* format);
