#include "Media/Mpv/Options.h"

#include <mpv/client.h>

namespace {

struct Option {
    const char* name;
    const char* value;
};

constexpr Option options[] = {
    // No settings, scripts or keys of the user's mpv, and not a word.
    {"config", "no"},
    {"load-scripts", "no"},
    {"ytdl", "no"},
    {"osc", "no"},
    {"load-stats-overlay", "no"},
    {"load-osd-console", "no"},
    {"load-auto-profiles", "no"},
    {"input-default-bindings", "no"},
    {"input-vo-keyboard", "no"},
    {"input-media-keys", "no"},
    {"terminal", "no"},
    {"msg-level", "all=no"},
    {"osd-level", "0"},
    {"resume-playback", "no"},
    {"save-position-on-quit", "no"},
    // Nothing but the file, and of that what FrameReader sees too.
    {"demuxer", "lavf"},
    {"demuxer-lavf-o", "protocol_whitelist=none"},
    {"access-references", "no"},
    {"ordered-chapters", "no"},
    {"autoload-files", "no"},
    {"sub-auto", "no"},
    {"audio-file-auto", "no"},
    {"cover-art-auto", "no"},
    {"audio-display", "no"},
    {"sid", "no"},
    {"cache", "no"},
    // The file's own times, exact to the frame.
    {"rebase-start-time", "no"},
    {"start",
     "0"}, // what trimming left before that, for others to refer to, is no part of the film
    {"hr-seek", "yes"},
    {"keep-open", "yes"},
    {"pause", "yes"},
    {"idle", "yes"},
    // Pictures go to us: as large as we ask, over the whole of what we give.
    {"vo", "libmpv"},
    {"keepaspect", "no"},
    {"video-rotate", "no"}, // its software renderer ends the process over a turned video
    {"hwdec", "no"},
    // A sound server, PipeWire's too, or none: what reaches for the bare device speaks to standard
    // error where there is none.
    {"ao", "pulse,null"},
    {"audio-fallback-to-null", "yes"},
    {"audio-client-name", "Tamrik"},
    {"volume-max", "100"},
};

} // namespace

void setPlayerOptions(mpv_handle* player, const char* format)
{
    // An option that a later mpv does not know any more is one that it does not need.
    for (const Option& option : options)
        mpv_set_option_string(player, option.name, option.value);
    mpv_set_option_string(player, "demuxer-lavf-format", format);
}
