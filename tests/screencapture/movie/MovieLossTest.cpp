// What is not in a movie of all that was on the screen: no more than the last second.

#include "screencapture/movie/Film.h"
#include "support/RootPainter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Film::Instant;
using Film::Recorder;
using std::chrono::steady_clock;

constexpr auto step = 100ms;
constexpr int steps = 40;
constexpr int width = 16; // of each step's column, in pixels

/// How many columns from the left are white.
int columnsIn(const PngImage& picture)
{
    int columns = 0;
    while (columns < steps &&
           picture.pixel(static_cast<std::uint32_t>(columns * width + width / 2), 16) > 0x808080)
        ++columns;
    return columns;
}

TEST(MovieLoss, BeingKilledAtTwentyMomentsLosesNoMoreThanTheLastSecond)
{
    const char* const given = std::getenv("TAMRIK_TEST_SEED");
    const unsigned seed =
        given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device()();
    std::cout << "TAMRIK_TEST_SEED=" << seed << std::endl;
    std::mt19937 random(seed);

    struct Victim {
        std::string file;
        std::unique_ptr<Recorder> recorder;
        std::chrono::milliseconds delay;
        Instant killed;
    };
    const XServer server(std::to_string(steps * width) + "x32x24");
    RootPainter painter(server.display());
    const TemporaryFolder folder;
    std::vector<Victim> victims(20);
    for (std::size_t i = 0; i < victims.size(); ++i) {
        victims[i].file = folder / (std::to_string(i) + ".mov");
        victims[i].delay = std::chrono::milliseconds(random() % 2500);
        victims[i].recorder =
            std::make_unique<Recorder>(server, "0,0," + std::to_string(steps * width) + ",32",
                                       victims[i].file, std::vector<std::string>{});
    }
    for (const Victim& victim : victims)
        victim.recorder->awaitFile();
    std::sort(victims.begin(), victims.end(),
              [](const Victim& a, const Victim& b) { return a.delay < b.delay; });

    // A column turns white with each step.
    std::vector<Instant> painted;
    const Instant start = steady_clock::now();
    const auto paintUntil = [&](Instant end) {
        while (start + painted.size() * step < end) {
            std::this_thread::sleep_until(start + painted.size() * step);
            painter.paintRectangle(static_cast<int>(painted.size()) * width, 0, width, 32,
                                   0xffffff);
            painted.push_back(steady_clock::now());
        }
    };
    for (Victim& victim : victims) {
        paintUntil(start + victim.delay);
        std::this_thread::sleep_until(start + victim.delay);
        victim.killed = steady_clock::now();
        victim.recorder->send(SIGKILL);
    }
    for (const Victim& victim : victims) {
        SCOPED_TRACE(victim.delay.count());
        EXPECT_EQ(victim.recorder->wait().signal, SIGKILL);
        const std::vector<PngImage> pictures = Film::pictures(victim.file);
        ASSERT_FALSE(pictures.empty());
        const auto old =
            std::upper_bound(painted.begin(), painted.end(), victim.killed - 1s) - painted.begin();
        EXPECT_GE(columnsIn(pictures.back()), old);
    }
}

/// Makes all of a screen white without the server's knowledge, so that it tells nobody.
void whitenBehindTheServer(const std::string& screenFile)
{
    std::fstream file(screenFile, std::ios::in | std::ios::out | std::ios::binary);
    const auto number = [&](int index) {
        unsigned char bytes[4] = {};
        file.seekg(index * 4);
        file.read(reinterpret_cast<char*>(bytes), 4);
        return static_cast<std::size_t>(bytes[0]) << 24U |
               static_cast<std::size_t>(bytes[1]) << 16U |
               static_cast<std::size_t>(bytes[2]) << 8U | static_cast<std::size_t>(bytes[3]);
    };
    // The format of xwd: rows of so many bytes are the end of the file.
    const std::size_t height = number(5);
    const std::size_t row = number(12);
    file.seekp(-static_cast<std::streamoff>(height * row), std::ios::end);
    const std::string white(height * row, '\xff');
    file.write(white.data(), static_cast<std::streamsize>(white.size()));
    ASSERT_TRUE(file.flush());
}

TEST(MovieLoss, WhatTheServerDoesNotTellIsSeenHalfASecondLater)
{
    const TemporaryFolder memory;
    const XServer server("320x240x24", {"-fbdir", memory.path().string()});
    RootPainter painter(server.display());
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "0,0,320,240", file, {});
    recorder.awaitFile();
    const Instant telling = steady_clock::now();
    painter.paintRectangle(0, 0, 20, 20, 0xffffff); // it does tell this
    ASSERT_NO_FATAL_FAILURE(whitenBehindTheServer(memory / "Xvfb_screen0"));
    const Instant white = steady_clock::now();
    recorder.awaitGrowth();
    recorder.awaitGrowth();
    recorder.stop();

    const Film::Facts facts = Film::read(file);
    const std::vector<PngImage> pictures = Film::pictures(file);
    ASSERT_EQ(pictures.size(), facts.frames.size());
    const auto isWhite = [&](std::size_t i, std::uint32_t x, std::uint32_t y) {
        return pictures[i].pixel(x, y) > 0x808080;
    };
    std::size_t told = 0;
    while (told < pictures.size() && !isWhite(told, 10, 10))
        ++told;
    ASSERT_GT(told, 0u);
    ASSERT_LT(told, pictures.size());
    // There is a frame every half second; at every other one at the latest all is looked at.
    int wrong = 0;
    for (std::size_t i = told; i < pictures.size(); ++i) {
        // The one that shows what was told was looked at after that, so this one no earlier.
        const Film::Seconds later(facts.frames[i].time - facts.frames[told].time);
        wrong += telling + later > white && !isWhite(i, 300, 200) ? 1 : 0;
    }
    EXPECT_LE(wrong, 1);
    EXPECT_TRUE(isWhite(pictures.size() - 1, 300, 200));
}

} // namespace
