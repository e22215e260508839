#include "Movie/Writing.h"

#include <algorithm>

namespace {

constexpr std::size_t mostBytes = 64 << 20; // on their way to a slow disk
constexpr double fragmentSeconds = 0.45;    // a little less than the pace's longest pause

} // namespace

Writing::Writing(MovieFile file, TrackKind video, std::future<TrackKind> sound, const Alarm& alarm)
    : m_file(std::move(file))
    , m_video(std::move(video))
    , m_sound(std::move(sound))
    , m_alarm(alarm)
    , m_queue(mostBytes)
    , m_thread([this] { run(); })
{
}

Writing::~Writing()
{
    m_queue.close();
    if (m_thread.joinable())
        m_thread.join();
}

void Writing::addVideo(Av::Packet packet)
{
    const auto size = static_cast<std::size_t>(packet->size);
    m_queue.push({Kind::Video, std::move(packet)}, size);
}

void Writing::addSound(Av::Packet packet)
{
    const auto size = static_cast<std::size_t>(packet->size);
    m_queue.push({Kind::Sound, std::move(packet)}, size);
}

PossibleFailure Writing::failure() const
{
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

PossibleFailure Writing::finish(std::int64_t end)
{
    m_end = end;
    m_queue.close();
    m_thread.join();
    return m_failure;
}

void Writing::run()
{
    PossibleFailure failure = begin();
    while (!failure) {
        std::optional<Piece> piece = m_queue.pop();
        if (!piece) {
            failure = writeEnd();
            break;
        }
        failure = take(std::move(*piece));
    }
    if (!failure)
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_failure = std::move(failure);
    }
    m_queue.close(); // nobody shall wait for room
    m_alarm.ring();
}

PossibleFailure Writing::begin()
{
    const TrackKind sound = m_sound.get();
    Result<MovieStream> stream = MovieStream::create(*m_video.parameters, m_video.ticksASecond,
                                                     sound.parameters.get(), sound.ticksASecond);
    if (!stream)
        return stream.failure();
    m_stream.emplace(std::move(*stream));
    return std::nullopt;
}

PossibleFailure Writing::take(Piece piece)
{
    switch (piece.kind) {
    case Kind::Video:
        return takeVideo(std::move(piece.packet));
    case Kind::Sound:
        return m_stream->addSound(*piece.packet);
    }
    return std::nullopt;
}

PossibleFailure Writing::takeVideo(Av::Packet packet)
{
    const std::int64_t time = packet->pts;
    if (PossibleFailure failure = releaseHeld(time))
        return failure;
    const bool hadPackets = static_cast<bool>(m_held);
    m_held = std::move(packet);
    const double length = static_cast<double>(time - m_fragmentStart) / m_video.ticksASecond;
    // The first one at once: from then on there is a film whatever happens.
    if (!hadPackets || (m_file.isPublished() && length < fragmentSeconds))
        return std::nullopt;
    m_fragmentStart = time;
    return writeFragment();
}

PossibleFailure Writing::releaseHeld(std::int64_t until)
{
    if (!m_held)
        return std::nullopt;
    m_held->duration = std::max<std::int64_t>(1, until - m_held->pts);
    return m_stream->addVideo(*m_held);
}

PossibleFailure Writing::writeFragment()
{
    if (PossibleFailure failure = m_stream->closeFragment())
        return failure;
    return m_file.append(m_stream->take());
}

PossibleFailure Writing::writeEnd()
{
    if (!m_held)
        return Failure{"there is nothing to write"};
    if (PossibleFailure failure = releaseHeld(m_end))
        return failure;
    return writeFragment();
}
