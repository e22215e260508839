// What a player lets be heard, on a sound server of its own.

#include "Media/Player.h"
#include "support/EventLoop.h"
#include "support/Listener.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace {

constexpr int flashes = 6;

class PlayerSound : public testing::Test {
protected:
    PlayerSound()
        : m_usual(qgetenv("PULSE_SERVER"))
    {
        qputenv("PULSE_SERVER", QByteArray::fromStdString(m_server.address()));
        // Every 0.4 s it is white for a moment, and there is a tone.
        Videos::make({"-f", "lavfi", "-i",
                      "color=s=64x48:r=30:d=2.4,geq=lum='if(lt(mod(T+0.201\\,0.4)\\,0.1)\\,235\\,"
                      "16)':cb=128:cr=128",
                      "-f", "lavfi", "-i",
                      "aevalsrc=lt(mod(t+0.2\\,0.4)\\,0.05)*0.6*sin(2*PI*1000*t):s=48000:d=2.4",
                      "-pix_fmt", "yuv420p", m_folder / "film.mp4"});
    }
    ~PlayerSound() override { qputenv("PULSE_SERVER", m_usual); }

    void open()
    {
        m_player = Player::open(QString::fromStdString(m_folder / "film.mp4"));
        ASSERT_TRUE(m_player);
        m_player->onPicture = [this] { look(); };
        ASSERT_TRUE(runUntil([&] {
            return m_player->state().phase == PlayerState::Phase::ready &&
                   m_player->state().hasSound;
        }));
    }

    void look()
    {
        const QImage image = m_player->picture({64, 48});
        const bool isWhite = !image.isNull() && qGray(image.pixel(32, 24)) > 128;
        if (isWhite && !m_isWhite)
            m_seen.push_back(std::chrono::steady_clock::now());
        m_isWhite = isWhite;
    }

    bool playToEnd()
    {
        m_player->play();
        return runUntil([&] { return m_player->state().atEnd && !m_player->state().playing; });
    }

    QByteArray m_usual;
    SoundServer m_server;
    TemporaryFolder m_folder;
    std::unique_ptr<Player> m_player;
    std::vector<Listener::Instant> m_seen;
    bool m_isWhite = false;
};

} // namespace

TEST_F(PlayerSound, IsHeardWhenItsPictureShowsButNotOfAMutedFilm)
{
    ASSERT_NO_FATAL_FAILURE(open());
    const Listener listener(m_server);
    m_player->setMuted(true);
    ASSERT_TRUE(runUntil([&] { return m_player->state().muted; }));
    m_player->seek(1.5);
    ASSERT_TRUE(playToEnd());
    EXPECT_EQ(m_seen.size(), 2U);
    EXPECT_EQ(listener.tones().size(), 0U);

    m_seen.clear();
    m_player->setMuted(false);
    m_player->seek(0);
    ASSERT_TRUE(runUntil([&] { return !m_player->state().seeking && !m_player->state().muted; }));
    ASSERT_TRUE(playToEnd());
    ASSERT_TRUE(runUntil([&] { return listener.tones().size() >= flashes; }));
    const std::vector<Listener::Instant> heard = listener.tones();
    ASSERT_EQ(m_seen.size(), std::size_t{flashes});
    ASSERT_EQ(heard.size(), m_seen.size());
    std::vector<double> apart;
    std::string all; // in milliseconds, in order
    for (std::size_t i = 0; i < heard.size(); ++i) {
        apart.push_back(std::chrono::duration<double>(heard[i] - m_seen[i]).count());
        all += ' ' + std::to_string(std::lround(1000 * apart.back()));
    }
    std::sort(apart.begin(), apart.end());
    // By one in the middle: the machine may be busy when one of them sounds.
    EXPECT_NEAR(apart[flashes / 2], 0, 0.1) << all;
    RecordProperty("apart_milliseconds", all);
}
