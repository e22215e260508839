#include "support/Beeper.h"

#include <utility>

namespace {

constexpr double ahead = 0.08; // a tone's delay too
constexpr double toneSeconds = 0.05;
constexpr double silenceSeconds = 0.01; // at a time

} // namespace

Beeper::Beeper(const SoundServer& server)
    : m_player(server, ahead)
    , m_thread([this] { run(); })
{
}

Beeper::~Beeper()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }
    m_thread.join();
}

Beeper::Instant Beeper::beep()
{
    std::future<Instant> moment;
    {
        const std::lock_guard lock(m_mutex);
        moment = m_wish.emplace().get_future();
    }
    return moment.get();
}

void Beeper::run()
{
    for (;;) {
        std::optional<std::promise<Instant>> wish;
        {
            const std::lock_guard lock(m_mutex);
            if (m_isOver)
                return;
            wish = std::exchange(m_wish, std::nullopt);
        }
        if (!wish) {
            m_player.playSilence(silenceSeconds);
            continue;
        }
        const std::chrono::duration<double> delay(m_player.delay());
        wish->set_value(std::chrono::steady_clock::now() +
                        std::chrono::duration_cast<Instant::duration>(delay));
        m_player.playTone(toneSeconds);
    }
}
