#include "Editor/FilmPlayback.h"

#include <algorithm>
#include <utility>

FilmPlayback::FilmPlayback(std::unique_ptr<Player> player)
    : m_player(std::move(player))
{
    if (!m_player) {
        m_state.phase = PlayerState::Phase::failed;
        return;
    }
    m_state = m_player->state();
    m_player->onChange = [this] { playerChanged(); };
    m_player->onPicture = [this] {
        if (onPicture)
            onPicture();
    };
}

void FilmPlayback::playerChanged()
{
    const PlayerState before = std::exchange(m_state, m_player->state());
    const bool isOther =
        m_state.duration != before.duration || m_state.frameRate != before.frameRate;
    if (!m_framesAreTheFiles && m_state.duration && isOther)
        m_frames = FrameGrid::even(*m_state.duration, m_state.frameRate);
    if (isReady() && std::exchange(m_playsWhenReady, false))
        play();
    if (onChange)
        onChange();
}

QImage FilmPlayback::picture(QSize pixels)
{
    return m_player ? m_player->picture(pixels) : QImage();
}

void FilmPlayback::setFrames(FrameGrid frames)
{
    m_frames = std::move(frames);
    m_framesAreTheFiles = true;
}

void FilmPlayback::setOrientation(Orientation orientation)
{
    if (m_player)
        m_player->setOrientation(orientation);
}

void FilmPlayback::setLimits(std::optional<FilmRange> limits)
{
    m_limits = limits;
    if (!m_player)
        return;
    const bool endsBeforeTheFilm = m_limits && lastFrame() + 1 < m_frames.count();
    m_player->setEnd(endsBeforeTheFilm ? std::optional(m_limits->end) : std::nullopt);
}

FilmRange FilmPlayback::limits() const
{
    return m_limits.value_or(FilmRange{0, m_frames.duration()});
}

int FilmPlayback::firstFrame() const
{
    return m_limits ? m_frames.nearest(m_limits->start) : 0;
}

int FilmPlayback::lastFrame() const
{
    const int last = (m_limits ? m_frames.nearest(m_limits->end) : m_frames.count()) - 1;
    return std::max(last, firstFrame());
}

void FilmPlayback::play()
{
    if (!isReady()) {
        m_playsWhenReady = true;
        return;
    }
    if (!hasMore())
        seek(limits().start);
    m_player->play();
}

bool FilmPlayback::hasMore() const
{
    const int frame = m_frames.frameAt(m_state.time);
    if (m_state.atEnd || frame < firstFrame() || frame > lastFrame())
        return false;
    // At the beginning of the last frame is who went there to see the end. Behind it a film was
    // paused, and sound may go on for long.
    constexpr double inexactness = 0.005; // seconds
    return frame < lastFrame() || m_state.time > m_frames.startOf(frame) + inexactness;
}

void FilmPlayback::pause()
{
    m_playsWhenReady = false;
    if (isReady())
        m_player->pause();
}

void FilmPlayback::togglePlaying()
{
    if (m_playsWhenReady || (m_state.playing && !m_state.atEnd))
        pause();
    else
        play();
}

void FilmPlayback::seek(double time)
{
    if (!isReady())
        return;
    const int frame = std::clamp(m_frames.frameAt(time), firstFrame(), lastFrame());
    m_player->seek(m_frames.startOf(frame));
}

void FilmPlayback::step(int frames)
{
    if (!isReady())
        return;
    pause();
    seek(m_frames.startOf(
        std::clamp(m_frames.frameAt(m_state.time) + frames, 0, m_frames.count() - 1)));
}

void FilmPlayback::end()
{
    m_player.reset();
    m_state = {};
    m_state.phase = PlayerState::Phase::failed;
}

void FilmPlayback::toggleMuted()
{
    if (isReady())
        m_player->setMuted(!m_state.muted);
}

void FilmPlayback::setVolume(double volume)
{
    if (!isReady())
        return;
    if (volume > 0)
        m_player->setMuted(false);
    m_player->setVolume(volume);
}

void FilmPlayback::changeVolume(double change)
{
    if (!m_state.muted || change > 0)
        setVolume(std::clamp(m_state.volume + change, 0.0, 1.0));
}
