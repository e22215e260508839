#pragma once

#include "Support/RegularFile.h"

#include <memory>

struct mpv_handle;

/// One file that mpv reads through a descriptor that we opened: it opens nothing by itself, however
/// the file is named and whatever it refers to.
class FileStream {
public:
    /// What mpv is to load.
    static constexpr const char* address = "tamrik://video";

    explicit FileStream(RegularFile file);

    /// The name of the only reader of FFmpeg's that may look at it.
    const char* format() const;

    /// Lets `player` read it. This outlives the player.
    bool registerAt(mpv_handle* player) const;

private:
    RegularFile m_file;
};
