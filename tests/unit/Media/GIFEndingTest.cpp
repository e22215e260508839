#include "Media/GIF/Animation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <new>
#include <optional>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr int frameCount = 20'000;
constexpr int half = frameCount / 2;

/// What a reader does instead of giving its tenth frame.
enum class Trouble { None, Failure, Throwing, NoEnd };

/// A still film with as many frames as one will ever look at.
class Still : public FrameSource {
public:
    Still(Trouble trouble, std::atomic<int>& taken)
        : m_trouble(trouble)
        , m_taken(taken)
    {
    }

    QSize size() const override { return {4, 4}; }
    std::optional<double> duration() const override { return frameCount; }

    Result<Showing> goTo(double seconds) override
    {
        m_at = seconds;
        ++m_taken;
        if (m_trouble == Trouble::NoEnd) // within reason
            std::this_thread::sleep_for(1ms);
        if (m_trouble == Trouble::Throwing && ++m_asked == 10)
            throw std::bad_alloc();
        return Showing{seconds, seconds + 1};
    }

    Result<QImage> picture(QSize) override
    {
        QImage image(4, 4, QImage::Format_RGB32);
        image.fill(static_cast<unsigned>(m_at));
        return image;
    }

private:
    const Trouble m_trouble;
    std::atomic<int>& m_taken;
    int m_asked = 0;
    double m_at = 0;
};

/// Makes a GIF of two halves, and says why there is none.
class GIFEnding : public testing::Test {
protected:
    std::optional<std::string> failure(Trouble first, Trouble second,
                                       std::size_t mostKept = GIF::usuallyKept)
    {
        AnimatedGIF::Frames frames{{}, 10, {800, 800}};
        for (int i = 0; i < frameCount; ++i)
            frames.times.push_back(i);
        const auto failure = GIF::animate(
            [&]() -> Result<std::unique_ptr<FrameSource>> {
                const bool isFirst = m_opened++ == 0;
                const Trouble trouble = isFirst ? first : second;
                if (trouble == Trouble::Failure)
                    return Failure{"cannot be opened"};
                return std::unique_ptr<FrameSource>(
                    std::make_unique<Still>(trouble, isFirst ? m_takenFirst : m_takenSecond));
            },
            frames, m_sink, m_cancellation, mostKept);
        return failure ? std::optional(failure->message) : std::nullopt;
    }

    GIF::Sink m_sink = [](const GIF::Bytes&) { return PossibleFailure(); };
    Cancellation m_cancellation;
    std::atomic<int> m_opened = 0;
    std::atomic<int> m_takenFirst = 0;
    std::atomic<int> m_takenSecond = 0;
};

} // namespace

TEST_F(GIFEnding, OfOneHalfIsThatOfTheOther)
{
    EXPECT_EQ(failure(Trouble::NoEnd, Trouble::Failure), "cannot be opened");
    EXPECT_LT(m_takenFirst, half);
    m_opened = 0;
    m_takenFirst = 0;
    EXPECT_EQ(failure(Trouble::NoEnd, Trouble::Throwing), "std::bad_alloc");
    EXPECT_LT(m_takenFirst, half);
    m_opened = 0;
    m_takenSecond = 0;
    EXPECT_EQ(failure(Trouble::Throwing, Trouble::NoEnd), "std::bad_alloc");
    EXPECT_LT(m_takenSecond, half);
}

TEST_F(GIFEnding, OfAFullDiskIsThatOfBothHalves)
{
    m_sink = [](const GIF::Bytes&) { return Failure{"the disk is full"}; };
    EXPECT_EQ(failure(Trouble::None, Trouble::NoEnd, 1), "the disk is full");
    EXPECT_LT(m_takenFirst, half);
    EXPECT_LT(m_takenSecond, half);
    // The later half has more than is kept for it, and waits.
    m_opened = 0;
    m_takenFirst = 0;
    EXPECT_EQ(failure(Trouble::NoEnd, Trouble::None, 1), "the disk is full");
    EXPECT_LT(m_takenFirst, half);
}

TEST_F(GIFEnding, OfWhatThrowsWhileItIsWrittenIsAFailure)
{
    m_sink = [](const GIF::Bytes&) -> PossibleFailure { throw std::bad_alloc(); };
    EXPECT_EQ(failure(Trouble::None, Trouble::None), "std::bad_alloc");
    m_opened = 0;
    EXPECT_EQ(failure(Trouble::None, Trouble::None, 1'000), "std::bad_alloc");
}

TEST_F(GIFEnding, ComesSoonWhenItIsCancelled)
{
    m_sink = [this](const GIF::Bytes&) {
        m_cancellation.cancel();
        return PossibleFailure();
    };
    EXPECT_EQ(failure(Trouble::NoEnd, Trouble::NoEnd, 1), "it was cancelled");
    EXPECT_LT(m_takenFirst, half);
    EXPECT_LT(m_takenSecond, half);
    // And while it is written.
    m_opened = 0;
    m_cancellation = {};
    int pieces = 0;
    m_sink = [&](const GIF::Bytes&) {
        ++pieces;
        m_cancellation.cancel();
        return PossibleFailure();
    };
    EXPECT_EQ(failure(Trouble::None, Trouble::None), "it was cancelled");
    EXPECT_LT(pieces, 20);
}
