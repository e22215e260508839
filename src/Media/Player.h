#pragma once

#include "Media/Orientation.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// What a player knows and does at a moment. Times are in seconds of the file's time.
struct PlayerState {
    enum class Phase {
        opening,
        ready,
        failed, ///< There is nothing in the file that can be shown.
    };

    Phase phase = Phase::opening;
    QSize size; ///< Upright, with square pixels; empty until the first picture is known.
    std::optional<double> duration;  ///< Absent until it is known, and when the file does not say.
    std::optional<double> frameRate; ///< Frames a second, where the file says that or shows it.
    double time = 0;                 ///< Of the frame that shows, or that is being sought.
    bool playing = false;
    bool seeking = false; ///< The frame that shows is not the one that was asked for yet.
    bool atEnd = false;   ///< Nothing is left to be played.
    bool hasSound = false;
    bool muted = false;
    double volume = 1; ///< From 0 to 1.

    friend bool operator==(const PlayerState&, const PlayerState&) = default;
};

/// Plays one video file, its sound to the loudspeakers and its pictures to whoever asks for them.
///
/// It begins with the first frame, standing still; what it is told before has no effect, and no
/// call waits, its end neither. Main thread only, its callbacks too. Nothing but the file itself is
/// opened, nothing is logged, no settings of the user's are read.
class Player {
public:
    Player() = default;
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    virtual ~Player() = default;

    /// Null when the library that plays videos is missing. A file that cannot be played is told by
    /// the state.
    static std::unique_ptr<Player> open(const QString& path);

    /// The state is another one.
    std::function<void()> onChange;
    /// picture() is another one.
    std::function<void()> onPicture;

    virtual const PlayerState& state() const = 0;

    /// Goes on from where it stands.
    virtual void play() = 0;
    virtual void pause() = 0;

    /// Shows the first frame that begins at `seconds` or later, the last one past the end. Of calls
    /// that come faster than frames can be shown, the last one counts.
    virtual void seek(double seconds) = 0;

    /// Playing stops before the first frame that begins at `seconds` or later; at the file's end
    /// when absent.
    virtual void setEnd(std::optional<double> seconds) = 0;

    /// How stored pictures become upright, where that is known better: a player may see turns
    /// alone, and take a mirror for one.
    virtual void setOrientation(Orientation orientation) = 0;

    virtual void setMuted(bool muted) = 0;
    virtual void setVolume(double volume) = 0;

    /// The frame that shows, upright, as large as `pixels`; null when there is none yet.
    virtual QImage picture(QSize pixels) = 0;
};
