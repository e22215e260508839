#pragma once

#include "Media/Mpv/FileStream.h"
#include "Media/Player.h"

#include <QObject>

#include <memory>
#include <optional>

struct mpv_event_property;
struct mpv_handle;
struct mpv_render_context;

/// A Player by libmpv. Its threads only tell that there is something to fetch; everything else
/// happens on the main thread, and no call waits for it.
class MpvPlayer final : public Player {
public:
    static std::unique_ptr<Player> open(const QString& path);
    ~MpvPlayer() override;

    const PlayerState& state() const override { return m_state; }
    void play() override;
    void pause() override;
    void seek(double seconds) override;
    void setEnd(std::optional<double> seconds) override;
    void setMuted(bool muted) override;
    void setVolume(double volume) override;
    QImage picture(QSize pixels) override;

private:
    struct EndPlayer {
        void operator()(mpv_handle* player) const;
    };
    struct EndRendering {
        void operator()(mpv_render_context* context) const;
    };

    explicit MpvPlayer(RegularFile file);

    bool start();
    void observe();
    void fetchEvents();
    void fetchPicture();
    void take(const mpv_event_property& property);
    bool isLoaded() const;
    bool liesOnItsSide() const;
    void setFlag(const char* name, bool on);
    void startSeek(double seconds);
    void arrived();
    void fail();
    void changed();

    FileStream m_file; // outlives who reads it
    PlayerState m_state;
    PlayerState m_told;      ///< The state at the last onChange.
    bool m_hasBegun = false; ///< To stand at the first frame.
    bool m_isSeeking = false;
    std::optional<double> m_nextSeek;
    QSize m_stored;     ///< With square pixels, before it is turned.
    int m_rotation = 0; ///< Degrees, clockwise.
    bool m_hasPicture = false;
    /// What mpv's threads post to: it outlives them, and what was posted ends with it.
    QObject m_mainThread;
    std::unique_ptr<mpv_handle, EndPlayer> m_player;
    std::unique_ptr<mpv_render_context, EndRendering> m_rendering; // ends before the player
};
