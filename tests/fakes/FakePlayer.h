#pragma once

#include "Media/Player.h"

#include <utility>
#include <vector>

/// A player without a film. A test says what it shows, and sees what it was asked for.
class FakePlayer final : public Player {
public:
    /// What outlives the player.
    struct Record {
        FakePlayer* player = nullptr; ///< Null once it is gone.
        std::vector<double> seeks;
        std::optional<double> end;
        Orientation orientation;
        int plays = 0;
        int pauses = 0;
    };

    explicit FakePlayer(Record& record)
        : m_record(record)
    {
        m_record.player = this;
    }
    ~FakePlayer() override
    {
        if (m_record.player == this)
            m_record.player = nullptr;
    }

    void become(PlayerState state)
    {
        m_state = std::move(state);
        if (onChange)
            onChange();
    }

    const PlayerState& state() const override { return m_state; }
    void play() override
    {
        ++m_record.plays;
        m_state.playing = true;
        become(m_state);
    }
    void pause() override
    {
        ++m_record.pauses;
        m_state.playing = false;
        become(m_state);
    }
    void seek(double seconds) override
    {
        m_record.seeks.push_back(seconds);
        m_state.time = seconds;
        m_state.atEnd = false;
        become(m_state);
    }
    void setEnd(std::optional<double> seconds) override { m_record.end = seconds; }
    void setOrientation(Orientation orientation) override { m_record.orientation = orientation; }
    void setMuted(bool muted) override
    {
        m_state.muted = muted;
        become(m_state);
    }
    void setVolume(double volume) override
    {
        m_state.volume = volume;
        become(m_state);
    }
    QImage picture(QSize pixels) override
    {
        if (m_state.phase != PlayerState::Phase::ready || pixels.isEmpty())
            return {};
        QImage image(pixels, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return image;
    }

private:
    Record& m_record;
    PlayerState m_state;
};
