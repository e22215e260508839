#include "Media/GIF/Animation.h"

#include "Media/Fitting.h"

#include <algorithm>
#include <span>
#include <thread>

using namespace GIF;

namespace {

/// Fewer are not worth a second reader, which has to find its place in the film.
constexpr std::size_t fewFrames = 8;
/// A reader keeps up to 17 frames in memory: of larger ones there is one reader.
constexpr qint64 mostPixelsForTwo = qint64{1} << 22;

/// How many of the first frames are for the first reader.
std::size_t half(const FrameSource& video, std::size_t frames)
{
    const bool isLarge = qint64{video.size().width()} * video.size().height() > mostPixelsForTwo;
    return frames < fewFrames || isLarge ? frames : (frames + 1) / 2;
}

} // namespace

PossibleFailure GIF::animate(const OpenVideo& open, const AnimatedGIF::Frames& frames,
                             const Sink& sink, const Cancellation& cancellation,
                             std::size_t mostKept)
{
    const auto video = open();
    if (!video)
        return video.failure();
    const Section::Layout layout{fitted((*video)->size(), frames.box), frames.box, frames.delay,
                                 mostKept};
    const std::span<const double> times = frames.times;
    const std::size_t middle = half(**video, times.size());

    // The second half is written to memory, since what comes before it in the file is not known.
    Bytes later;
    const auto keep = [&later](const Bytes& bytes) {
        later.insert(later.end(), bytes.begin(), bytes.end());
        return PossibleFailure();
    };
    Section first(layout, Section::Place::AtTheBeginning, sink, cancellation);
    Section second(layout, Section::Place::Behind, keep, cancellation);
    PossibleFailure secondFailure;
    std::thread secondReader([&] {
        if (middle == times.size())
            return;
        const auto other = open();
        secondFailure =
            other ? second.read(**other, times.subspan(middle)) : PossibleFailure(other.failure());
    });
    PossibleFailure failure = first.read(**video, times.first(middle));
    secondReader.join();
    if (failure || secondFailure)
        return failure ? failure : secondFailure;
    if (first.isEmpty() && second.isEmpty())
        return Failure{"there is no frame at these times"};

    failure = first.finish(second.hasWritten() ? nullptr : &second);
    if (!failure && second.hasWritten())
        failure = second.finish();
    if (failure)
        return failure;
    appendEnd(later);
    return sink(later);
}
