#include "screencapture/movie/Film.h"
#include "support/RootPainter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>

#include <sys/stat.h>

namespace {

using Film::Recorder;
using Film::Seconds;
using std::chrono::steady_clock;

/// A screen of blocks in colours of their own, large enough that a codec leaves their middles be.
class Board {
public:
    static constexpr int side = 20;

    Board(const XServer& server, int columns, int rows)
        : m_painter(server.display())
        , m_columns(columns)
    {
        std::mt19937 random(31);
        for (int i = 0; i < columns * rows; ++i)
            paint(i, static_cast<std::uint32_t>(random()) & 0xffffff);
    }

    void paint(int block, std::uint32_t colour)
    {
        m_colours.resize(std::max(m_colours.size(), static_cast<std::size_t>(block) + 1));
        m_colours[static_cast<std::size_t>(block)] = colour;
        m_painter.paintRectangle(block % m_columns * side, block / m_columns * side, side, side,
                                 colour);
    }

    /// Whether a picture whose corner lies at (left, top) shows it.
    testing::AssertionResult isIn(const PngImage& image, int left = 0, int top = 0) const
    {
        int compared = 0;
        for (std::size_t i = 0; i < m_colours.size(); ++i) {
            const int x = static_cast<int>(i) % m_columns * side + side / 2 - left;
            const int y = static_cast<int>(i) / m_columns * side + side / 2 - top;
            if (x < 0 || y < 0 || x >= static_cast<int>(image.width) ||
                y >= static_cast<int>(image.height))
                continue;
            ++compared;
            const std::uint32_t seen =
                image.pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            if (!Film::isLike(seen, m_colours[i]))
                return testing::AssertionFailure()
                       << std::hex << seen << " instead of " << m_colours[i] << std::dec << " at "
                       << x << ',' << y;
        }
        if (compared == 0)
            return testing::AssertionFailure() << "there is nothing to compare";
        return testing::AssertionSuccess();
    }

    RootPainter& painter() { return m_painter; }

private:
    RootPainter m_painter;
    int m_columns;
    std::vector<std::uint32_t> m_colours;
};

/// A movie of a screen that nobody touches: its first picture, and the last one.
std::vector<PngImage>
film(const XServer& server, const std::string& rectangle,
     const std::vector<std::string>& options = {"-C"},
     const std::map<std::string, std::optional<std::string>>& environment = {})
{
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, rectangle, file, options, environment);
    recorder.awaitFile();
    recorder.stop();
    std::vector<PngImage> pictures = Film::pictures(file);
    if (pictures.empty())
        pictures.resize(1);
    return pictures;
}

TEST(MoviePicture, ShowsTheScreenForAsLongAsItWasFilmed)
{
    const XServer server("320x240x24");
    const Board board(server, 16, 12);
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    const auto started = steady_clock::now();
    Recorder recorder(server, "0,0,320,240", file);
    recorder.awaitFile();
    const auto there = steady_clock::now();
    recorder.awaitGrowth();
    // The end falls between two frames: the last one has to last until then.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto asked = steady_clock::now();
    recorder.stop();
    const auto ended = steady_clock::now();

    const Film::Facts facts = Film::read(file);
    EXPECT_EQ(facts.codec, "h264");
    EXPECT_EQ(facts.pixels, "yuv420p tv bt709 bt709 bt709");
    EXPECT_EQ(facts.bFrames, 0);
    EXPECT_EQ(facts.width, 320);
    EXPECT_EQ(facts.height, 240);
    EXPECT_EQ(facts.soundCodec, "");
    EXPECT_GE(facts.duration, Seconds(asked - there).count());
    EXPECT_LE(facts.duration, Seconds(ended - started).count());
    EXPECT_EQ(facts.frames.front().time, 0);
    for (const PngImage& picture : Film::pictures(file))
        EXPECT_TRUE(board.isIn(picture));
    struct stat status = {};
    ASSERT_EQ(lstat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0600U);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"film.mov"});
}

TEST(MoviePicture, AStillScreenCostsFewFramesButNeverNoneForASecond)
{
    const XServer server("320x240x24");
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "0,0,320,240", file);
    recorder.awaitFile();
    for (int i = 0; i < 2; ++i)
        recorder.awaitGrowth();
    recorder.stop();
    const Film::Facts facts = Film::read(file);
    EXPECT_LE(static_cast<double>(facts.frames.size()), 3 + facts.duration * 2.5);
    double last = 0;
    double lastKey = 0;
    for (const Film::Frame& frame : facts.frames) {
        EXPECT_LE(frame.time - last, 1);
        last = frame.time;
        EXPECT_LE(frame.time - lastKey, 1.2); // on a busy machine
        if (frame.isKey)
            lastKey = frame.time;
    }
    EXPECT_GT(lastKey, 0);
}

TEST(MoviePicture, FollowsWhatChangesInOrder)
{
    const XServer server("320x240x24");
    Board board(server, 16, 12);
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "0,0,320,240", file);
    recorder.awaitFile();
    constexpr int changes = 40;
    for (int i = 0; i < changes; ++i) {
        board.paint(i * 4, 0xffffff);
        board.paint(i * 4, i % 2 == 0 ? 0xff00ff : 0x00ff00);
        if (i == 20)
            recorder.awaitGrowth();
    }
    recorder.awaitGrowth();
    recorder.stop();

    const std::vector<PngImage> pictures = Film::pictures(file);
    ASSERT_FALSE(pictures.empty());
    EXPECT_TRUE(board.isIn(pictures.back()));
    // What has changed stays so, and nothing changes before what came earlier.
    std::size_t seen = 0;
    for (const PngImage& picture : pictures) {
        std::size_t count = 0;
        for (int i = 0; i < changes; ++i) {
            const int block = i * 4;
            const std::uint32_t colour =
                picture.pixel(static_cast<std::uint32_t>(block % 16 * Board::side + 10),
                              static_cast<std::uint32_t>(block / 16 * Board::side + 10));
            if (!Film::isLike(colour, i % 2 == 0 ? 0xff00ff : 0x00ff00, 40))
                break;
            ++count;
        }
        EXPECT_GE(count, seen);
        seen = count;
    }
    EXPECT_EQ(seen, static_cast<std::size_t>(changes));
}

TEST(MoviePicture, MotionFarApartIsFilmedAsItHappens)
{
    const XServer server("1280x960x24");
    RootPainter painter(server.display());
    const auto paint = [&](int i) {
        painter.paintRectangle(10, 10, 40, 40, i % 2 == 0 ? 0xff0000 : 0xb00000);
        painter.paintRectangle(1230, 910, 40, 40, i % 2 == 0 ? 0x0000ff : 0x0000b0);
    };
    paint(0);
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "0,0,1280,960", file);
    recorder.awaitFile();
    constexpr int changes = 40;
    for (int i = 0; i < changes; ++i) {
        paint(i);
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    recorder.stop();
    const std::vector<PngImage> pictures = Film::pictures(file);
    // Were it not told of changes, it would look every half second.
    EXPECT_GT(pictures.size(), std::size_t{changes} / 4);
    for (const PngImage& picture : pictures) {
        const std::uint32_t red = picture.pixel(30, 30);
        const std::uint32_t blue = picture.pixel(1250, 930);
        EXPECT_TRUE(Film::isLike(red, 0xff0000) || Film::isLike(red, 0xb00000)) << red;
        EXPECT_TRUE(Film::isLike(blue, 0x0000ff) || Film::isLike(blue, 0x0000b0)) << blue;
    }
}

TEST(MoviePicture, EverySizeIsRoundedUpToAnEvenOneWithItsEdgeRepeated)
{
    const XServer server("640x480x24");
    Board board(server, 32, 24);
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {3, 1}, {1, 50}, {301, 201}}) {
        SCOPED_TRACE(std::to_string(width) + 'x' + std::to_string(height));
        // The corner of a large white rectangle: all that is to be seen is white.
        board.painter().paintRectangle(0, 0, width, height, 0xffffff);
        const auto pictures =
            film(server, "0,0," + std::to_string(width) + ',' + std::to_string(height), {});
        for (const PngImage& picture : pictures) {
            ASSERT_EQ(picture.width, static_cast<std::uint32_t>(width + width % 2));
            ASSERT_EQ(picture.height, static_cast<std::uint32_t>(height + height % 2));
            for (std::uint32_t y = 0; y < picture.height; ++y) {
                for (std::uint32_t x = 0; x < picture.width; ++x)
                    ASSERT_TRUE(Film::isLike(picture.pixel(x, y), 0xffffff)) << x << ',' << y;
            }
        }
    }
}

TEST(MoviePicture, WhatLiesOffTheDesktopIsCutAway)
{
    const XServer server("320x240x24");
    const Board board(server, 16, 12);
    const struct {
        const char* rectangle;
        std::uint32_t width;
        std::uint32_t height;
        int left;
        int top;
    } rows[] = {{"-40,-20,100,100", 60, 80, 0, 0},
                {"270,190,100,100", 50, 50, 270, 190},
                {"-1000,-1000,5000,5000", 320, 240, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rectangle);
        const auto pictures = film(server, row.rectangle);
        EXPECT_EQ(pictures.front().width, row.width);
        EXPECT_EQ(pictures.front().height, row.height);
        EXPECT_TRUE(board.isIn(pictures.front(), row.left, row.top));
    }
}

TEST(MoviePicture, EveryScreenAndScaleKeepsNativePixels)
{
    const XServer server("640x240x24");
    const Board board(server, 32, 12);
    const std::string table = "0 0 160 120 0 0 320 240 2 A\n320 0 320 240 320 0 320 240 1 B\n";
    const auto left = film(server, "10,20,100,50", {}, {{"TAMRIK_SCREENS", table}});
    EXPECT_EQ(left.front().width, 200U);
    EXPECT_EQ(left.front().height, 100U);
    EXPECT_TRUE(board.isIn(left.front(), 20, 40));
    const auto right = film(server, "340,60,100,50", {}, {{"TAMRIK_SCREENS", table}});
    EXPECT_EQ(right.front().width, 100U);
    EXPECT_TRUE(board.isIn(right.front(), 340, 60));
}

TEST(MoviePicture, WhatAShrinkingDesktopLeavesIsBlack)
{
    const XServer server("640x480x24");
    RootPainter painter(server.display());
    painter.paintRectangle(0, 0, 640, 480, 0x00ff00);
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "300,200,301,201", file, {"-C", "-k"});
    recorder.awaitFile();
    const std::string script = "xrandr --newmode small 10 400 410 420 430 300 310 320 330 && "
                               "xrandr --addmode screen small && "
                               "xrandr --output screen --mode small";
    const Outcome shrunk = run({{"sh", "-c", script}, {{"DISPLAY", server.display()}}});
    ASSERT_EQ(shrunk.status, 0) << shrunk.error;
    painter.paintRectangle(0, 0, 400, 300, 0x00ff00);
    recorder.awaitGrowth();
    recorder.stop();
    const std::vector<PngImage> pictures = Film::pictures(file);
    EXPECT_TRUE(Film::isLike(pictures.front().pixel(280, 180), 0x00ff00));
    EXPECT_TRUE(Film::isLike(pictures.back().pixel(280, 180), 0x000000));
    EXPECT_TRUE(Film::isLike(pictures.back().pixel(90, 90), 0x00ff00));
    EXPECT_EQ(pictures.back().width, 302U);
}

TEST(MoviePicture, WorksWithoutWhatAServerMayLack)
{
    struct Lacking {
        explicit Lacking(const std::string& extension_)
            : extension(extension_)
            , server("320x240x24", {"-extension", extension})
            , board(server, 16, 12)
            , recorder(server, "0,0,320,240", folder / "film.mov", {"-C", "-k"})
        {
        }

        std::string extension;
        XServer server;
        Board board;
        TemporaryFolder folder;
        Recorder recorder;
    };
    std::vector<std::unique_ptr<Lacking>> all; // at once, since each takes a second
    for (const char* const extension : {"MIT-SHM", "DAMAGE", "XFIXES", "XInputExtension"})
        all.push_back(std::make_unique<Lacking>(extension));
    for (const auto& each : all) {
        each->recorder.awaitFile();
        each->board.paint(50, 0xff00ff);
    }
    for (const auto& each : all) {
        SCOPED_TRACE(each->extension);
        each->recorder.awaitGrowth();
        each->recorder.stop();
        EXPECT_TRUE(each->board.isIn(Film::pictures(each->folder / "film.mov").back()));
    }
}

TEST(MoviePicture, ColoursAreRightAtADepthOf16)
{
    const XServer server("101x80x16");
    RootPainter(server.display()).paintRectangle(0, 0, 101, 80, 0xf81f); // full red and blue
    for (const PngImage& picture : film(server, "0,0,101,80", {}))
        EXPECT_TRUE(Film::isLike(picture.pixel(50, 40), 0xff00ff));
}

/// How many pixels of a picture are like a colour.
std::size_t count(const PngImage& picture, std::uint32_t colour, int tolerance)
{
    std::size_t number = 0;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x)
            number += Film::isLike(picture.pixel(x, y), colour, tolerance);
    }
    return number;
}

TEST(MoviePicture, ThePointerIsInItWhereItIsWhenItIsWanted)
{
    const XServer server("320x240x24");
    RootPainter painter(server.display());
    painter.paintRectangle(0, 0, 320, 240, 0x0000ff);
    painter.showPointerAt(100, 60);
    EXPECT_EQ(count(film(server, "0,0,320,240", {}).front(), 0x0000ff, 30), 320U * 240);
    const TemporaryFolder folder;
    const std::string file = folder / "film.mov";
    Recorder recorder(server, "20,20,280,200", file);
    recorder.awaitFile();
    painter.showPointerAt(200, 151);
    recorder.awaitGrowth();
    recorder.stop();
    const auto pictures = Film::pictures(file);
    const auto isThere = [](const PngImage& picture, std::uint32_t x, std::uint32_t y) {
        std::size_t foreign = 0;
        for (std::uint32_t row = y - 4; row <= y + 4; ++row) {
            for (std::uint32_t column = x - 4; column <= x + 4; ++column)
                foreign += !Film::isLike(picture.pixel(column, row), 0x0000ff, 60);
        }
        return foreign > 8;
    };
    EXPECT_TRUE(isThere(pictures.front(), 80, 40));
    EXPECT_FALSE(isThere(pictures.front(), 180, 131));
    EXPECT_FALSE(isThere(pictures.back(), 80, 40));
    EXPECT_TRUE(isThere(pictures.back(), 180, 131));
}

/// How much of a ring of that colour a picture has around a place.
int ringAround(const PngImage& picture, std::uint32_t x, std::uint32_t y, std::uint32_t below)
{
    int found = 0;
    for (const auto& [dx, dy] : {std::pair{18, 0},
                                 {-18, 0},
                                 {0, 18},
                                 {0, -18},
                                 {13, 13},
                                 {-13, 13},
                                 {13, -13},
                                 {-13, -13}})
        found += !Film::isLike(
            picture.pixel(x + static_cast<std::uint32_t>(dx), y + static_cast<std::uint32_t>(dy)),
            below, 80);
    return found;
}

TEST(MoviePicture, AClickHasARingForAWhileWhenThatIsWanted)
{
    const XServer server("320x240x24");
    RootPainter painter(server.display());
    painter.paintRectangle(0, 0, 320, 240, 0x0000ff);
    for (const bool isWanted : {true, false}) {
        SCOPED_TRACE(isWanted);
        const TemporaryFolder folder;
        const std::string file = folder / "film.mov";
        Recorder recorder(server, "0,0,320,240", file,
                          isWanted ? std::vector<std::string>{"-k"} : std::vector<std::string>{});
        recorder.awaitFile();
        const Outcome click = run(
            {{"xdotool", "mousemove", "101", "90", "click", "1"}, {{"DISPLAY", server.display()}}});
        ASSERT_EQ(click.status, 0) << click.error;
        recorder.awaitGrowth();
        recorder.stop();
        const auto pictures = Film::pictures(file);
        int most = 0;
        for (const PngImage& picture : pictures)
            most = std::max(most, ringAround(picture, 101, 90, 0x0000ff));
        EXPECT_EQ(most, isWanted ? 8 : 0);
        EXPECT_EQ(ringAround(pictures.front(), 101, 90, 0x0000ff), 0);
        EXPECT_EQ(ringAround(pictures.back(), 101, 90, 0x0000ff), 0);
    }
}

} // namespace
