#include "screencapture/movie/Film.h"
#include "support/Beeper.h"
#include "support/RootPainter.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"
#include "support/Tones.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

using Film::Recorder;

using Tones::rate;

/// The loudest of some stretch of sound; times in seconds, cut to what there is.
float peak(const std::vector<float>& sound, double from, double until)
{
    const auto at = [&](double time) {
        return static_cast<std::ptrdiff_t>(
            std::clamp(time * rate, 0.0, static_cast<double>(sound.size())));
    };
    float loudest = 0;
    for (std::ptrdiff_t i = at(from); i < at(until); ++i)
        loudest = std::max(loudest, std::abs(sound[static_cast<std::size_t>(i)]));
    return loudest;
}

class MovieSound : public testing::Test {
protected:
    std::map<std::string, std::optional<std::string>> environment() const
    {
        return {{"PULSE_SERVER", m_sound.address()}, {"HOME", m_folder.path().string()}};
    }

    SoundServer m_sound;
    XServer m_server{"320x240x24"};
    TemporaryFolder m_folder;
    std::string m_file = m_folder / "film.mov";
};

class MovieSoundOn : public testing::TestWithParam<SoundServer::Kind> {};

TEST_P(MovieSoundOn, IsHeardWhenItsPictureIsSeen)
{
    const SoundServer sound(GetParam());
    const XServer server("320x240x24");
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    RootPainter painter(server.display());
    Beeper beeper(sound);
    Recorder recorder(server, "0,0,320,240", file, {"-g"},
                      {{"PULSE_SERVER", sound.address()}, {"HOME", folder.path().string()}});
    recorder.awaitGrowth();
    // Each beep turns the screen white or black.
    constexpr int beeps = 10;
    for (int i = 1; i <= beeps; ++i) {
        std::this_thread::sleep_until(beeper.beep());
        painter.paintRectangle(0, 0, 320, 240, i % 2 == 1 ? 0xffffff : 0);
        // Uneven, so that no beep that is late falls in with the next one's flash.
        std::this_thread::sleep_for(std::chrono::milliseconds(200 + i * 7 % 5 * 100));
    }
    recorder.stop();

    const Film::Facts facts = Film::read(file);
    EXPECT_EQ(facts.soundCodec, "aac");
    const std::vector<PngImage> pictures = Film::pictures(file);
    ASSERT_EQ(pictures.size(), facts.frames.size());
    std::vector<double> seen;
    for (std::size_t i = 1; i < pictures.size(); ++i) {
        if ((pictures[i].pixel(9, 9) > 0x808080) != (pictures[i - 1].pixel(9, 9) > 0x808080))
            seen.push_back(facts.frames[i].time);
    }
    const std::vector<float> samples = Tones::soundOf(file);
    const std::vector<double> heard = Tones::beginningsIn(samples);
    // A busy machine may look too late for some, and tear a tone in two.
    ASSERT_GE(seen.size(), beeps / 2);
    ASSERT_LE(seen.size(), beeps);
    ASSERT_GE(heard.size(), beeps / 2);
    std::vector<double> apart;
    for (const double flash : seen)
        apart.push_back(Tones::nearest(heard, flash) - flash);
    std::string all; // in milliseconds, in order
    for (const double each : apart)
        all += ' ' + std::to_string(std::lround(1000 * each));
    // When they sound is the server's own word. That of PulseAudio is wrong from the first time on
    // that the machine was too busy to play, and PipeWire's wanders by some sixty milliseconds.
    const bool isPulseAudio = GetParam() == SoundServer::Kind::PulseAudio;
    const double trusted = isPulseAudio ? 1.0 / 30 : 1.0 / 6;
    const auto enough = isPulseAudio ? 3 : std::ssize(apart) / 2;
    const auto inTime = std::count_if(apart.begin(), apart.end(), [trusted](double seconds) {
        return std::abs(seconds) < trusted;
    });
    EXPECT_GE(inTime, enough) << all;
    EXPECT_NEAR(static_cast<double>(samples.size()) / rate, facts.duration, .05);
    EXPECT_LT(peak(samples, 0, heard.front() - .02), .05F);
}

INSTANTIATE_TEST_SUITE_P(Servers, MovieSoundOn,
                         testing::Values(SoundServer::Kind::PulseAudio,
                                         SoundServer::Kind::PipeWire),
                         [](const testing::TestParamInfo<SoundServer::Kind>& instance) {
                             return instance.param == SoundServer::Kind::PulseAudio ? "PulseAudio"
                                                                                    : "PipeWire";
                         });

TEST_F(MovieSound, BecomesSilenceWhenTheMicrophoneGoesAway)
{
    Recorder recorder(m_server, "0,0,320,240", m_file, {"-g"}, environment());
    recorder.awaitFile();
    {
        SoundServer::Player player(m_sound);
        player.playTone(1.3);
    }
    m_sound.kill();
    recorder.awaitGrowth();
    recorder.awaitGrowth();
    // The silence is on the disk in time, not only at the end.
    EXPECT_GT(static_cast<double>(Tones::soundOf(m_file).size()) / rate,
              Film::read(m_file).duration - 1.5);
    recorder.stop();

    const Film::Facts facts = Film::read(m_file);
    const std::vector<float> sound = Tones::soundOf(m_file);
    EXPECT_NEAR(static_cast<double>(sound.size()) / rate, facts.duration, .05);
    EXPECT_GT(peak(sound, 0, facts.duration / 2), .2F);
    EXPECT_LT(peak(sound, facts.duration - 1, facts.duration), .01F);
}

TEST_F(MovieSound, IsHeardAgainWhenTheMicrophoneIsBack)
{
    Recorder recorder(m_server, "0,0,320,240", m_file, {"-g"}, environment());
    recorder.awaitFile();
    m_sound.kill();
    recorder.awaitGrowth();
    m_sound.start();
    {
        SoundServer::Player player(m_sound);
        player.playTone(2.5);
    }
    recorder.stop();

    const Film::Facts facts = Film::read(m_file);
    const std::vector<float> sound = Tones::soundOf(m_file);
    EXPECT_NEAR(static_cast<double>(sound.size()) / rate, facts.duration, .05);
    EXPECT_LT(peak(sound, 0, facts.duration - 3), .01F);
    EXPECT_GT(peak(sound, facts.duration - 1, facts.duration), .2F);
}

TEST_F(MovieSound, IsThereOnlyWhenItIsWanted)
{
    Recorder recorder(m_server, "0,0,320,240", m_file, {}, environment());
    recorder.awaitFile();
    recorder.stop();
    EXPECT_EQ(Film::read(m_file).soundCodec, "");
}

TEST_F(MovieSound, ASignalAtAnyMomentLeavesAMovieOrNothing)
{
    constexpr std::chrono::milliseconds last(165);
    for (auto delay = std::chrono::milliseconds(0); delay <= last;
         delay += std::chrono::milliseconds(15))
    {
        SCOPED_TRACE(delay.count());
        Recorder recorder(m_server, "0,0,320,240", m_file, {"-g"}, environment());
        if (delay == last)
            recorder.awaitFile();
        else
            std::this_thread::sleep_for(delay);
        recorder.send(SIGINT);
        const Outcome outcome = recorder.wait();
        EXPECT_EQ(outcome.error, "");
        if (outcome.signal != 0) {
            EXPECT_NE(delay, last);
            EXPECT_EQ(outcome.signal, SIGINT);
            EXPECT_FALSE(std::filesystem::exists(m_file));
            continue;
        }
        EXPECT_EQ(outcome.status, 0);
        EXPECT_GT(Film::read(m_file).duration, 0);
        std::filesystem::remove(m_file);
    }
}

TEST(MovieWithoutMicrophone, HasNoSoundAndSaysSo)
{
    const XServer server("320x240x24");
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(
        server, "0,0,320,240", file, {"-g"},
        {{"PULSE_SERVER", "unix:" + (folder / "nobody")}, {"HOME", folder.path().string()}});
    recorder.awaitFile();
    recorder.send(SIGINT);
    const Outcome outcome = recorder.wait();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error,
              "screencapture: there is no microphone to record; the movie has no sound\n");
    const Film::Facts facts = Film::read(file);
    EXPECT_EQ(facts.soundCodec, "");
    EXPECT_EQ(facts.codec, "h264");
}

} // namespace
