#pragma once

#include "Editor/FrameGrid.h"
#include "Media/Player.h"

#include <memory>
#include <optional>

/// Plays a film, or a range of it, by frames. Main thread only.
class FilmPlayback {
public:
    /// Without a player there is nothing to be seen.
    explicit FilmPlayback(std::unique_ptr<Player> player);

    std::function<void()> onChange;
    std::function<void()> onPicture;

    const PlayerState& state() const { return m_state; }
    bool isReady() const { return m_state.phase == PlayerState::Phase::ready; }
    QImage picture(QSize pixels);

    const FrameGrid& frames() const { return m_frames; }
    /// Better than what the player knows.
    void setFrames(FrameGrid frames);
    void setOrientation(Orientation orientation);

    /// Nothing outside is played or shown; the whole film when absent. Where the film stands stays.
    void setLimits(std::optional<FilmRange> limits);
    FilmRange limits() const;

    /// From the beginning when nothing is left to be played; as soon as it can when it is only
    /// being opened.
    void play();
    void pause();
    void togglePlaying();
    /// Shows the frame that shows at a time.
    void seek(double time);
    /// From the frame that shows; it stands still then.
    void step(int frames);
    /// Lets go of the player: nothing more shows or sounds.
    void end();
    void toggleMuted();
    /// From 0 to 1; sound that was off comes back, unless there is none at 0 either.
    void setVolume(double volume);
    /// Louder or softer; what is off stays off until it is to be louder.
    void changeVolume(double change);

private:
    void playerChanged();
    bool hasMore() const;
    int firstFrame() const;
    int lastFrame() const;

    std::unique_ptr<Player> m_player;
    PlayerState m_state;
    FrameGrid m_frames;
    bool m_framesAreTheFiles = false;
    bool m_playsWhenReady = false;
    std::optional<FilmRange> m_limits;
};
