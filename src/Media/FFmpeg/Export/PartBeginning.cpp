#include "Media/FFmpeg/Export/PartBeginning.h"

#include "Media/FFmpeg/Ticks.h"

#include <algorithm>

namespace {

/// How long what is not to be seen shows in a player that shows it, in seconds: less than screens
/// notice, more than players take for the same time.
constexpr double hiddenTime = 0.01;

/// Moves all that comes before it together, since nobody is to see it: some players (mpv) do show
/// what an edit list leaves out. But not up to it, since they take what is near a time that they
/// seek for what is there.
void hurryUpTo(const AVPacket& shown, std::deque<Av::Packet>& pictures, AVRational ticks)
{
    const auto end = std::find_if(pictures.begin(), pictures.end(), [&](const Av::Packet& picture) {
        return picture.get() == &shown;
    });
    if (std::any_of(pictures.begin(), end,
                    [](const Av::Packet& picture) { return picture->pts != picture->dts; }))
        return;
    const std::int64_t gap = ticksAt(hiddenTime, ticks) + 1;
    std::int64_t time = shown.dts - gap - (end - pictures.begin());
    for (auto picture = pictures.begin(); picture != end; ++picture, ++time)
        (*picture)->pts = (*picture)->dts = time;
}

} // namespace

bool beginPart(std::deque<Av::Packet>& pictures, TrackPart part, std::int64_t sound,
               AVRational ticks)
{
    AVPacket* shown = nullptr;
    for (const Av::Packet& picture : pictures) {
        if (picture->pts <= part.begin && (!shown || picture->pts >= shown->pts))
            shown = picture.get();
    }
    if (!shown)
        return !pictures.empty() && pictures.front()->pts < part.end;
    const bool isLast = pictures.back()->dts <= part.begin; // or else that one would be there
    shown->duration -= part.begin - shown->pts;
    if (isLast && shown->duration <= 0) {
        if (sound <= 0)
            return false;
        shown->duration = sound;
    }
    if (shown->dts == shown->pts)
        shown->dts = part.begin;
    shown->pts = part.begin;
    hurryUpTo(*shown, pictures, ticks);
    return true;
}
