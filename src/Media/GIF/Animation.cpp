#include "Media/GIF/Animation.h"

#include "Media/Fitting.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <future>
#include <mutex>
#include <span>
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

/// What `work` comes back with; a failure where it throws.
template <typename Work>
PossibleFailure contained(const Work& work)
{
    try {
        return work();
    } catch (const std::exception& error) { // above all there is no memory left
        return Failure{error.what()};
    }
}

/// Brings the bytes of two halves that are made at the same time into one file. Once one has
/// failed, both are over.
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
        if (m_hasFailed)
            return m_failure;
        if (PossibleFailure failure = putHeld())
            return failure;
        return m_sink(bytes);
    }

    /// The later half has been read.
    void endLater(const PossibleFailure& failure)
    {
        const std::lock_guard lock(m_mutex);
        m_isLaterRead = true;
        end(failure);
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
        end(failure);
    }

    bool hasFailed() const { return m_hasFailed; }

    /// Of the half that failed first. When both are over.
    PossibleFailure failure() const { return m_failure; }

private:
    void end(const PossibleFailure& failure)
    {
        if (failure && !m_hasFailed) {
            m_failure = failure;
            m_hasFailed = true;
        }
        m_changed.notify_all();
    }

    PossibleFailure putHeld()
    {
        const Bytes held = std::exchange(m_held, {});
        return held.empty() ? PossibleFailure() : m_sink(held);
    }

    const Sink& m_sink;
    const std::size_t m_mostHeld;
    std::atomic<bool> m_hasFailed = false;
    std::mutex m_mutex; // for the rest
    std::condition_variable m_changed;
    Bytes m_held;
    bool m_hasLater = false;
    bool m_isLaterRead = false;
    bool m_isEarlierOver = false;
    PossibleFailure m_failure;
};

PossibleFailure animateHalves(const OpenVideo& open, const AnimatedGIF::Frames& frames,
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
    const auto isOver = [&] { return cancellation.isCancelled() || handover.hasFailed(); };
    Section first(layout, Section::Place::AtTheBeginning, sink, isOver);
    Section second(
        layout, Section::Place::Behind,
        [&handover](const Bytes& bytes) { return handover.putLater(bytes); }, isOver);
    bool isApart = false;
    {
        const auto readSecond = [&]() -> PossibleFailure {
            if (middle == times.size())
                return {};
            const auto other = open();
            return other ? second.read(**other, times.subspan(middle))
                         : PossibleFailure(other.failure());
        };
        // Waited for at the end of the block.
        const auto secondReader =
            std::async(std::launch::async, [&] { handover.endLater(contained(readSecond)); });
        const PossibleFailure failure = contained([&]() -> PossibleFailure {
            if (PossibleFailure unread = first.read(**video, times.first(middle)))
                return unread;
            // Frames that are still kept get the same colours in both halves.
            isApart = handover.awaitLater();
            return isApart ? first.finish() : PossibleFailure();
        });
        if (isApart || failure)
            handover.endEarlier(failure);
    }
    if (PossibleFailure failure = handover.failure())
        return failure;
    if (first.isEmpty() && second.isEmpty())
        return Failure{"there is no frame at these times"};
    if (PossibleFailure failure = isApart ? second.finish() : first.finish(&second))
        return failure;
    Bytes end;
    appendEnd(end);
    handover.endEarlier({});
    return handover.putLater(end);
}

} // namespace

PossibleFailure GIF::animate(const OpenVideo& open, const AnimatedGIF::Frames& frames,
                             const Sink& sink, const Cancellation& cancellation,
                             std::size_t mostKept)
{
    return contained([&] { return animateHalves(open, frames, sink, cancellation, mostKept); });
}
