#include "Media/GIF/Animation.h"

#include "Media/Fitting.h"

#include <condition_variable>
#include <mutex>
#include <span>
#include <thread>
#include <utility>

using namespace GIF;

namespace {

/// Fewer are not worth a second reader, which has to find its place in the film.
constexpr std::size_t fewFrames = 8;
/// A reader keeps up to 17 frames in memory: of larger ones there is one reader.
constexpr qint64 mostPixelsForTwo = qint64{3} << 20;

/// How many of the first frames are for the first reader.
std::size_t half(const FrameSource& video, std::size_t frames)
{
    const bool isLarge = qint64{video.size().width()} * video.size().height() > mostPixelsForTwo;
    return frames < fewFrames || isLarge ? frames : (frames + 1) / 2;
}

/// Brings the bytes of two halves that are made at the same time into one file.
class Handover {
public:
    Handover(const Sink& sink, std::size_t mostHeld)
        : m_sink(sink)
        , m_mostHeld(mostHeld)
    {
    }

    /// Holds bytes of the later half until the earlier one is in the file; when they are too many,
    /// waits for that.
    PossibleFailure putLater(const Bytes& bytes)
    {
        std::unique_lock lock(m_mutex);
        m_hasLater = true;
        m_changed.notify_all();
        if (!m_isEarlierOver && m_held.size() + bytes.size() <= m_mostHeld) {
            m_held.insert(m_held.end(), bytes.begin(), bytes.end());
            return {};
        }
        m_changed.wait(lock, [this] { return m_isEarlierOver; });
        if (m_failure)
            return m_failure;
        if (PossibleFailure failure = putHeld())
            return failure;
        return m_sink(bytes);
    }

    /// The later half has been read.
    void endLater()
    {
        const std::lock_guard lock(m_mutex);
        m_isLaterRead = true;
        m_changed.notify_all();
    }

    /// Waits until it is known whether the later half has written something before all of it was
    /// read.
    bool awaitLater()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_hasLater || m_isLaterRead; });
        return m_hasLater;
    }

    /// The earlier half is in the file, or will never be.
    void endEarlier(const PossibleFailure& failure)
    {
        const std::lock_guard lock(m_mutex);
        m_isEarlierOver = true;
        m_failure = failure;
        m_changed.notify_all();
    }

private:
    PossibleFailure putHeld()
    {
        const Bytes held = std::exchange(m_held, {});
        return held.empty() ? PossibleFailure() : m_sink(held);
    }

    const Sink& m_sink;
    const std::size_t m_mostHeld;
    std::mutex m_mutex; // for the rest
    std::condition_variable m_changed;
    Bytes m_held;
    bool m_hasLater = false;
    bool m_isLaterRead = false;
    bool m_isEarlierOver = false;
    PossibleFailure m_failure;
};

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

    Handover handover(sink, mostKept);
    Section first(layout, Section::Place::AtTheBeginning, sink, cancellation);
    Section second(
        layout, Section::Place::Behind,
        [&handover](const Bytes& bytes) { return handover.putLater(bytes); }, cancellation);
    PossibleFailure secondFailure;
    std::thread secondReader([&] {
        if (middle < times.size()) {
            const auto other = open();
            secondFailure = other ? second.read(**other, times.subspan(middle))
                                  : PossibleFailure(other.failure());
        }
        handover.endLater();
    });
    PossibleFailure failure = first.read(**video, times.first(middle));
    // Frames that are still kept get the same colours in both halves.
    const bool isApart = !failure && handover.awaitLater();
    if (isApart)
        failure = first.finish();
    if (isApart || failure)
        handover.endEarlier(failure);
    secondReader.join();
    if (failure || secondFailure)
        return failure ? failure : secondFailure;
    if (first.isEmpty() && second.isEmpty())
        return Failure{"there is no frame at these times"};
    failure = isApart ? second.finish() : first.finish(&second);
    if (failure)
        return failure;
    Bytes end;
    appendEnd(end);
    handover.endEarlier({});
    return handover.putLater(end);
}
