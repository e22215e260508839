#pragma once

#include "Media/Mpv/MpvFilm.h"
#include "Media/Player.h"

#include <QObject>

#include <memory>
#include <optional>

struct mpv_event;
struct mpv_event_property;

/// A Player by libmpv. The film is opened and ended on other threads, and libmpv's own only tell
/// that there is something to fetch; everything else happens on the main thread, and no call waits.
class MpvPlayer final : public Player {
public:
    static std::unique_ptr<Player> open(const QString& path);
    ~MpvPlayer() override;

    const PlayerState& state() const override { return m_state; }
    void play() override;
    void pause() override;
    void seek(double seconds) override;
    void setEnd(std::optional<double> seconds) override;
    void setOrientation(Orientation orientation) override;
    void setMuted(bool muted) override;
    void setVolume(double volume) override;
    QImage picture(QSize pixels) override;

private:
    MpvPlayer() = default;

    void begin(const QString& path);
    void take(std::shared_ptr<MpvFilm> film);
    void fetchEvents();
    void fetchPicture();
    void take(const mpv_event& event);
    void take(const mpv_event_property& property);
    bool isLoaded() const;
    void startSeek(double seconds);
    void arrived();
    void fail();
    void changed();

    Cancellation m_ending;
    PlayerState m_state;
    PlayerState m_told;      ///< The state at the last onChange.
    bool m_hasBegun = false; ///< To stand at the first frame.
    bool m_isSeeking = false;
    std::optional<double> m_nextSeek;
    QSize m_stored; ///< With square pixels, before it is turned.
    Orientation m_orientation;
    bool m_isOrientationTold = false; ///< By somebody who knows better than libmpv.
    bool m_hasPicture = false;
    /// What mpv's threads post to: it outlives them, and what was posted ends with it.
    QObject m_mainThread;
    std::shared_ptr<MpvFilm> m_film; ///< Null until it is open.
};
