#include "Media/GIF/Animation.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/PlayedGIF.h"

#include <QPainter>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <random>

namespace {

using testing::Each;

/// A film whose frames show for a tenth of a second each.
class Slides : public FrameSource {
public:
    explicit Slides(std::vector<QImage> frames)
        : m_frames(std::move(frames))
    {
    }

    QSize size() const override { return m_frames[0].size(); }
    std::optional<double> duration() const override
    {
        return static_cast<double>(m_frames.size()) / 10;
    }

    Result<Showing> goTo(double seconds) override
    {
        m_at = static_cast<std::size_t>(seconds * 10 + 1e-6);
        if (m_at >= m_frames.size())
            return Failure{"there is none"};
        return Showing{static_cast<double>(m_at) / 10, static_cast<double>(m_at + 1) / 10};
    }

    Result<QImage> picture(QSize) override { return m_frames[m_at]; }

private:
    std::vector<QImage> m_frames;
    std::size_t m_at = 0;
};

/// Two pictures in turn for ever, a second each.
class Alternating : public FrameSource {
public:
    Alternating(const std::vector<QImage>& frames, std::atomic<int>& taken)
        : m_frames(frames)
        , m_taken(taken)
    {
    }
    QSize size() const override { return m_frames[0].size(); }
    std::optional<double> duration() const override { return std::nullopt; }
    Result<Showing> goTo(double seconds) override
    {
        m_at = static_cast<std::size_t>(seconds) % 2;
        ++m_taken;
        return Showing{seconds, seconds + 1};
    }
    Result<QImage> picture(QSize) override { return m_frames[m_at]; }

private:
    const std::vector<QImage>& m_frames;
    std::atomic<int>& m_taken;
    std::size_t m_at = 0;
};

class Animation : public testing::Test {
protected:
    /// `slides` as a GIF, read back.
    PlayedGIF animated(const std::vector<QImage>& slides, std::size_t mostKept = GIF::usuallyKept,
                       int delay = 10) const
    {
        AnimatedGIF::Frames frames{{}, delay, {800, 800}};
        for (std::size_t i = 0; i < slides.size(); ++i)
            frames.times.push_back(static_cast<double>(i) / 10);
        std::string file;
        const auto failure = GIF::animate(
            [&] { return Result<std::unique_ptr<FrameSource>>(std::make_unique<Slides>(slides)); },
            frames,
            [&](const GIF::Bytes& bytes) {
                file.append(bytes.begin(), bytes.end());
                return PossibleFailure();
            },
            {}, mostKept);
        EXPECT_FALSE(failure) << failure->message;
        writeFile(m_folder / "gif", file);
        m_size = file.size();
        PlayedGIF gif = PlayedGIF::of(m_folder / "gif");
        EXPECT_EQ(gif.frames.size(), slides.size());
        gif.frames.resize(slides.size());
        return gif;
    }

    TemporaryFolder m_folder;
    mutable std::size_t m_size = 0;
    std::mt19937 m_random{1};
};

QImage plain(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

QImage noise(QSize size, std::mt19937& random, unsigned mask = 0xffffff)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, 0xff000000 | (static_cast<unsigned>(random()) & mask));
    }
    return image;
}

/// The mean of the squares of how far the channels are off.
double unlikeness(const QImage& one, const QImage& other)
{
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y), b = other.pixel(x, y);
            for (const int d : {qRed(a) - qRed(b), qGreen(a) - qGreen(b), qBlue(a) - qBlue(b)})
                sum += d * d;
        }
    }
    return sum / (3.0 * one.width() * one.height());
}

} // namespace

TEST_F(Animation, OfFewColoursIsExact)
{
    // Steps of 64 a channel: 64 colours, and no two that are nearly the same.
    std::vector<QImage> slides;
    for (int i = 0; i < 20; ++i) {
        QImage slide = i == 0 ? noise({61, 47}, m_random, 0xc0c0c0) : slides.back();
        QPainter(&slide).drawImage(3 * i, i, noise({7, 5}, m_random, 0xc0c0c0));
        slides.push_back(i % 5 == 4 ? slides.back() : slide);
    }
    const PlayedGIF gif = animated(slides);
    for (std::size_t i = 0; i < slides.size(); ++i)
        EXPECT_TRUE(gif.frames[i] == slides[i]) << i;
    EXPECT_TRUE(gif.isEndless);
    EXPECT_THAT(gif.delays, Each(10));
}

TEST_F(Animation, WorksForEverySizeAndNumberOfColours)
{
    const std::vector<std::pair<QSize, unsigned>> kinds = {
        {{1, 1}, 0},          {{2, 1}, 0x80},       {{1, 300}, 0xc0c0c0}, {{300, 1}, 0xe0e0c0},
        {{3, 3}, 0xe00000},   {{17, 5}, 0xf00000},  {{64, 64}, 0xe080e0}, {{200, 150}, 0xc0e0c0},
        {{300, 300}, 0x8080}, {{90, 90}, 0xe0c0c0}, {{255, 2}, 0x80e0e0}};
    for (const auto& [size, mask] : kinds) {
        const std::vector<QImage> slides = {noise(size, m_random, mask),
                                            noise(size, m_random, mask)};
        const PlayedGIF gif = animated(slides);
        EXPECT_TRUE(gif.frames[0] == slides[0]) << size.width() << ' ' << mask;
        EXPECT_TRUE(gif.frames[1] == slides[1]) << size.width() << ' ' << mask;
    }
}

TEST_F(Animation, OfAPictureWhoseLowerHalfIsLikeNothingAboveIsSmall)
{
    // Many colours above, few below: four bits a pixel.
    QImage slide = noise({300, 300}, m_random, 0x00e0e0);
    QPainter(&slide).drawImage(0, 100, noise({300, 200}, m_random, 0xc00080));
    EXPECT_TRUE(animated({slide}).frames[0] == slide);
    EXPECT_LT(m_size, 75'000U);
}

TEST_F(Animation, KeepsSurfacesOfOneColourAmongMany)
{
    QImage slide = plain({100, 90}, QColor(0xf5f6f7));
    QPainter(&slide).drawImage(0, 0, noise({100, 30}, m_random));
    const PlayedGIF gif = animated({slide});
    for (int y = 30; y < 90; y += 7) {
        for (int x = 0; x < 100; x += 3)
            ASSERT_EQ(gif.frames[0].pixel(x, y), 0xfff5f6f7);
    }
    // 254 colours for all that there are.
    EXPECT_LT(unlikeness(gif.frames[0].copy(0, 0, 100, 30), slide.copy(0, 0, 100, 30)), 300);
}

TEST_F(Animation, OfAGradientHasStepsThatAreHardlySeen)
{
    QImage slide({256, 100}, QImage::Format_RGB32);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 256; ++x)
            slide.setPixel(x, y, qRgb(x, 128, y));
    }
    EXPECT_LT(unlikeness(animated({slide}).frames[0], slide), 12);
}

TEST_F(Animation, WritesWhatChangesOnly)
{
    const QImage desk = noise({200, 200}, m_random, 0xc0c0c0);
    (void)animated({desk});
    const std::size_t one = m_size;
    std::vector<QImage> slides;
    for (int i = 0; i < 30; ++i) {
        slides.push_back(desk);
        QPainter(&slides.back()).fillRect(5 * i, 100, 4, 4, Qt::white);
    }
    (void)animated(slides);
    EXPECT_LT(m_size, one + 30 * 120);
}

TEST_F(Animation, KeepsEveryLevelOf255Colours)
{
    // Greys, of which neighbours are as like as what is noise elsewhere.
    const auto grey = [](unsigned level) { return 0xff000000 | level * 0x010101; };
    std::vector<QImage> slides;
    for (unsigned i = 0; i < 20; ++i) {
        QImage slide = i == 0 ? plain({100, 60}, Qt::black) : slides.back();
        for (int x = 0; x < 100; ++x) {
            for (int y = 0; y < 60; ++y) {
                const unsigned before = slide.pixel(x, y) & 255;
                if (y < 2)
                    slide.setPixel(x, y, grey((static_cast<unsigned>(x) * 2 + 1) % 255));
                else if (y < 4)
                    slide.setPixel(x, y, grey((static_cast<unsigned>(x) * 5 + i) % 255));
                else if (m_random() % 4 == 0)
                    slide.setPixel(x, y, grey(before == 254 ? 253 : before + 1));
            }
        }
        slides.push_back(slide);
    }
    for (const std::size_t mostKept : {GIF::usuallyKept, std::size_t{5'000}}) { // in pieces
        const PlayedGIF gif = animated(slides, mostKept);
        for (std::size_t i = 0; i < slides.size(); ++i)
            EXPECT_TRUE(gif.frames[i] == slides[i]) << mostKept << ' ' << i;
    }
}

TEST_F(Animation, KeepsWhatShowsOftenOfAFewColoursMore)
{
    // 250 common ones on a surface, and now and then one of a hundred that are hardly different.
    std::vector<QImage> slides;
    for (int i = 0; i < 10; ++i) {
        QImage slide = i == 0 ? plain({100, 100}, QColor(0xfefefe)) : slides.back();
        for (int k = 0; k < 1000; ++k) {
            const auto kind = static_cast<int>(m_random() % 250);
            const QRgb common = qRgb(kind, 255 - kind, 40);
            const QRgb rare = qRgb(kind % 100, 255 - kind % 100, 41);
            slide.setPixel(static_cast<int>(m_random() % 100), static_cast<int>(m_random() % 100),
                           k % 100 == 0 ? rare : common);
        }
        slides.push_back(slide);
    }
    const PlayedGIF gif = animated(slides);
    for (std::size_t i = 0; i < slides.size(); ++i) {
        int others = 0;
        for (int y = 0; y < 100; ++y) {
            for (int x = 0; x < 100; ++x)
                others += slides[i].pixel(x, y) == gif.frames[i].pixel(x, y) ? 0 : 1;
        }
        EXPECT_LE(others, 100) << i << ": the rare ones";
    }
}

TEST_F(Animation, OfMoreColoursThanAFileHasDoesWithoutNoise)
{
    std::vector<QImage> slides;
    for (int i = 0; i < 10; ++i) {
        QImage slide({256, 100}, QImage::Format_RGB32);
        for (int y = 0; y < 100; ++y) {
            for (int x = 0; x < 256; ++x)
                slide.setPixel(x, y,
                               qRgb(x, 128, y) ^ (static_cast<unsigned>(m_random()) & 0x010101));
        }
        slides.push_back(slide);
    }
    (void)animated({slides[0]});
    const std::size_t one = m_size;
    const PlayedGIF gif = animated(slides);
    EXPECT_LT(m_size, 3.5 * static_cast<double>(one));
    EXPECT_LT(unlikeness(gif.frames[9], slides[9]), 12);
}

TEST_F(Animation, ThatDoesNotFitIntoMemoryIsWrittenInPieces)
{
    // Every piece has colours of its own.
    std::vector<QImage> slides;
    for (int i = 0; i < 16; ++i) {
        slides.push_back(noise({60, 60}, m_random, i < 8 ? 0xff0000 : 0xffff));
        // And columns that stay.
        for (int x = 0; x < 60; x += 12)
            QPainter(&slides.back()).fillRect(x, 0, 6, 60, QColor(0x336699));
    }
    for (const std::size_t mostKept : {std::size_t{1}, std::size_t{20'000}}) {
        const PlayedGIF gif = animated(slides, mostKept);
        for (std::size_t i = 0; i < slides.size(); ++i)
            ASSERT_LT(unlikeness(gif.frames[i], slides[i]), i < 8 ? 0.2 : 40)
                << mostKept << ' ' << i;
    }
    EXPECT_GT(unlikeness(animated(slides).frames[0], slides[0]), 0.4) << "the same for all";
}

TEST_F(Animation, OnlyTheSecondHalfOfWhichDoesNotFitIsWhole)
{
    std::vector<QImage> slides(20, plain({60, 60}, Qt::red));
    for (std::size_t i = 10; i < 20; ++i)
        slides[i] = noise({60, 60}, m_random, 0xff00);
    for (int turn = 0; turn < 2; ++turn) {
        const PlayedGIF gif = animated(slides, 5'000);
        for (std::size_t i = 0; i < slides.size(); ++i)
            ASSERT_LT(unlikeness(gif.frames[i], slides[i]), 10) << turn << ' ' << i;
        std::rotate(slides.begin(), slides.begin() + 10, slides.end());
    }
}

TEST_F(Animation, TheLastFrameOfWhichFillsTheMemoryIsWhole)
{
    std::vector<QImage> slides(7, plain({60, 60}, Qt::red));
    slides.push_back(noise({60, 60}, m_random, 0xc08080));
    const PlayedGIF gif = animated(slides, 3'000);
    for (std::size_t i = 0; i < slides.size(); ++i)
        EXPECT_TRUE(gif.frames[i] == slides[i]) << i;
}

TEST_F(Animation, ShowsEachFrameAsLongAsIsSaid)
{
    for (const int delay : {2, 13, 4660, 65'535}) {
        const PlayedGIF gif = animated(std::vector(3, plain({9, 9}, Qt::red)), 1, delay);
        EXPECT_THAT(gif.delays, testing::ElementsAre(delay, delay, delay));
        EXPECT_TRUE(gif.isEndless);
    }
}

TEST_F(Animation, KeepsFewFramesHoweverManyThereAre)
{
    // Each takes some 40 KB, and half of that in the file.
    const std::vector<QImage> slides = {noise({100, 100}, m_random, 0xe0e0c0),
                                        noise({100, 100}, m_random, 0xe0e0c0)};
    constexpr int half = 40;
    AnimatedGIF::Frames frames{{}, 10, {800, 800}};
    for (int i = 0; i < 2 * half; ++i)
        frames.times.push_back(i);
    std::array<std::atomic<int>, 2> taken{};
    std::size_t opened = 0;
    int beforeTheFirst = 0, ahead = 0;
    EXPECT_FALSE(GIF::animate(
        [&] {
            return Result<std::unique_ptr<FrameSource>>(
                std::make_unique<Alternating>(slides, taken.at(opened++)));
        },
        frames,
        [&](const GIF::Bytes&) {
            if (beforeTheFirst == 0)
                beforeTheFirst = taken[0];
            if (taken[0] < half)
                ahead = std::max(ahead, taken[1].load());
            return PossibleFailure();
        },
        {}, 50'000));
    EXPECT_LE(beforeTheFirst, 2);
    EXPECT_LE(ahead, 8);
    EXPECT_EQ(taken[0], half);
    EXPECT_EQ(taken[1], half);
}

TEST_F(Animation, FitsFramesOfAnotherShape)
{
    const PlayedGIF gif = animated({plain({40, 40}, Qt::white), plain({20, 40}, Qt::green)});
    EXPECT_EQ(gif.frames[1].pixel(20, 20), QColor(Qt::green).rgb());
    EXPECT_EQ(gif.frames[1].pixel(5, 20), QColor(Qt::black).rgb());
    EXPECT_EQ(gif.frames[1].pixel(35, 20), QColor(Qt::black).rgb());
}

TEST_F(Animation, OfNothingIsNoFile)
{
    int bytes = 0;
    const auto failure = GIF::animate(
        [&] {
            return Result<std::unique_ptr<FrameSource>>(
                std::make_unique<Slides>(std::vector{plain({9, 9}, Qt::red)}));
        },
        {{5, 6, 7}, 10, {800, 800}},
        [&](const GIF::Bytes&) {
            ++bytes;
            return PossibleFailure();
        },
        {});
    EXPECT_TRUE(failure);
    EXPECT_EQ(bytes, 0);
}
