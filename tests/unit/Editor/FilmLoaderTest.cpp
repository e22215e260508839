// What an editor reads of a real film, beside the main thread.

#include "Editor/FilmLoader.h"

#include "Support/Background.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <QCoreApplication>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int frameCount = 20;

class FilmLoading : public testing::Test {
protected:
    /// Grey frames that show for 4, 4 and 1 parts of nine in turn.
    FilmLoading()
    {
        writeFile(m_folder / "raw", Videos::greyFrames(frameCount));
        Videos::encode(m_folder / "raw",
                       {"-vf", "settb=1/90000,setpts=3000*N+1000*mod(N\\,3)", "-fps_mode",
                        "passthrough", "-enc_time_base", "1/90000", "-video_track_timescale",
                        "90000", "-bf", "2"},
                       m_folder / "film.mp4");
    }

    static double timeOf(int frame) { return (3000 * frame + 1000 * (frame % 3)) / 90000.0; }

    std::vector<std::optional<FilmTimes>> readTimes(const char* name,
                                                    const Cancellation& cancellation = {}) const
    {
        std::vector<std::optional<FilmTimes>> all;
        FilmLoader::system().readTimes(
            path(name),
            [&](const std::optional<FilmTimes>& times) {
                EXPECT_NE(QThread::currentThread(), QCoreApplication::instance()->thread());
                all.push_back(times);
            },
            cancellation);
        Background::threads().waitForDone();
        return all;
    }

    QString path(const char* name) const { return QString::fromStdString(m_folder / name); }

    TemporaryFolder m_folder;
};

/// The number of the frame that an image is of.
int numberOf(const QImage& image)
{
    return Videos::numberOf(qGray(image.pixel(image.width() / 2, image.height() / 2)));
}

} // namespace

TEST_F(FilmLoading, TimesOfFramesAreThoseOfTheFileHoweverUneven)
{
    const auto times = readTimes("film.mp4");
    ASSERT_EQ(times.size(), 1U);
    ASSERT_TRUE(times[0]);
    ASSERT_EQ(times[0]->frames.size(), std::size_t{frameCount});
    for (int frame = 0; frame < frameCount; ++frame)
        EXPECT_NEAR(times[0]->frames[static_cast<std::size_t>(frame)], timeOf(frame), 1e-9);
    EXPECT_GT(times[0]->duration, timeOf(frameCount - 1));
    const Cancellation cancelled;
    cancelled.cancel();
    for (const auto& none : {readTimes("none.mp4"), readTimes("film.mp4", cancelled)}) {
        ASSERT_EQ(none.size(), 1U);
        EXPECT_FALSE(none[0]);
    }
}

TEST_F(FilmLoading, FramesAreThoseThatShowAtTheTimes)
{
    std::vector<double> times;
    for (int frame = 0; frame < frameCount; ++frame)
        times.push_back((timeOf(frame) + timeOf(frame + 1)) / 2);
    times.push_back(timeOf(7));
    std::vector<std::pair<int, int>> read;
    FilmLoader::system().readFrames(path("film.mp4"), times, {32, 200},
                                    [&](int index, const QImage& image) {
                                        EXPECT_NE(QThread::currentThread(),
                                                  QCoreApplication::instance()->thread());
                                        EXPECT_EQ(image.size(), QSize(32, 24));
                                        read.emplace_back(index, numberOf(image));
                                    },
                                    {});
    Background::threads().waitForDone();
    std::vector<std::pair<int, int>> expected;
    for (int frame = 0; frame < frameCount; ++frame)
        expected.emplace_back(frame, frame);
    expected.emplace_back(frameCount, 7);
    EXPECT_EQ(read, expected);
}

TEST_F(FilmLoading, NothingComesAfterCancelling)
{
    const Cancellation cancellation;
    std::vector<int> read;
    FilmLoader::system().readFrames(
        path("film.mp4"), {0, 0.1, 0.2, 0.3, 0.4}, {32, 24},
        [&](int index, const QImage&) {
            read.push_back(index);
            if (index == 2)
                cancellation.cancel();
        },
        cancellation);
    Background::threads().waitForDone();
    EXPECT_THAT(read, ElementsAre(0, 1, 2));
    read.clear();
    FilmLoader::system().readFrames(path("none.mp4"), {0, 0.1}, {32, 24},
                                    [&](int index, const QImage&) { read.push_back(index); }, {});
    Background::threads().waitForDone();
    EXPECT_THAT(read, IsEmpty());
}
