#include "Platform/Screens.h"

#include "Platform/Backdrop.h"
#include "Platform/CaptureTool.h"
#include "Support/ScreenTable.h"
#include "desktop/seam/Xdotool.h"
#include "support/EventLoop.h"
#include "support/Printers.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

// Each suite below names the desktop that it is run on.

namespace {

std::vector<ScreenTable::Screen> toolTable()
{
    const auto tool = Platform::captureTool();
    const QString text = tool.environment.value(QString::fromLatin1(ScreenTable::variable));
    return ScreenTable::read(text.toStdString()).value_or(std::vector<ScreenTable::Screen>());
}

} // namespace

// One screen of 1920 x 1080 with a panel of 32 pixels at its bottom, composited.

TEST(OneScreen, HasAFrameAndAVisibleFrameWithoutThePanel)
{
    const auto screens = Platform::screens();
    ASSERT_EQ(screens.size(), 1u);
    EXPECT_EQ(screens[0].frame, (Geometry::Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(screens[0].visibleFrame, (Geometry::Rect{0, 32, 1920, 1048}));
    EXPECT_EQ(screens[0].scale, 1);
    EXPECT_EQ(screens[0].handle, QGuiApplication::primaryScreen());
}

TEST(OneScreen, ThePointerIsMeasuredFromTheBottomLeft)
{
    xdotool(QStringLiteral("mousemove 100 200"));
    EXPECT_TRUE(runUntil([] { return Platform::mouseLocation() == Geometry::Point{100, 880}; }));
}

TEST(OneScreen, NeedsNoBackdropWithACompositor)
{
    EXPECT_FALSE(Platform::frozenBackdrop(Platform::screens().front()));
}

TEST(OneScreen, TellsTheToolItsTable)
{
    EXPECT_EQ(toolTable(), (std::vector<ScreenTable::Screen>{
                               {QGuiApplication::primaryScreen()->name().toStdString(),
                                {0, 0, 1920, 1080},
                                {0, 0, 1920, 1080},
                                1}}));
}

// 1920 x 1080 at scale 2 with a panel at its bottom, 1280 x 1024 at scale 2 right of it, no
// compositor.

TEST(TwoScreensAtTwo, HaveFramesInPointsAndKeepNativeOrigins)
{
    const auto screens = Platform::screens();
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[0].frame, (Geometry::Rect{0, 0, 960, 540}));
    EXPECT_EQ(screens[1].frame, (Geometry::Rect{1920, 540 - 512, 640, 512}));
    EXPECT_EQ(screens[0].scale, 2);
    EXPECT_EQ(screens[1].scale, 2);
}

TEST(TwoScreensAtTwo, OnlyTheScreenWithThePanelIsCut)
{
    const auto screens = Platform::screens();
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[1].visibleFrame, screens[1].frame);
    EXPECT_LT(screens[0].visibleFrame.height, screens[0].frame.height);
    EXPECT_EQ(screens[0].visibleFrame.maxY(), screens[0].frame.maxY());
    EXPECT_EQ(screens[0].visibleFrame.width, screens[0].frame.width);
}

TEST(TwoScreensAtTwo, ThePointerIsFoundOnEither)
{
    xdotool(QStringLiteral("mousemove 100 200"));
    EXPECT_TRUE(runUntil([] { return Platform::mouseLocation() == Geometry::Point{50, 440}; }));
    xdotool(QStringLiteral("mousemove 2020 200"));
    EXPECT_TRUE(runUntil([] { return Platform::mouseLocation() == Geometry::Point{1970, 440}; }));
}

TEST(TwoScreensAtTwo, ThePointerOnTheLastPixelIsStillOnTheScreen)
{
    xdotool(QStringLiteral("mousemove 1919 1079"));
    EXPECT_TRUE(runUntil([] { return Platform::mouseLocation() == Geometry::Point{959.5, 0.5}; }));
    EXPECT_TRUE(Platform::screens().front().frame.containsPointer(Platform::mouseLocation()));
}

TEST(TwoScreensAtTwo, TellTheToolTheirPixels)
{
    const auto table = toolTable();
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].pixels, (ScreenTable::PixelRect{0, 0, 1920, 1080}));
    EXPECT_EQ(table[1].pixels, (ScreenTable::PixelRect{1920, 0, 1280, 1024}));
    EXPECT_EQ(table[1].frame, (Geometry::TopLeftRect{1920, 0, 640, 512}));
    EXPECT_EQ(table[1].scale, 2);
}

TEST(TwoScreensAtTwo, TheBackdropIsEachScreensPictureInPixels)
{
    // No two columns are the same, and no two screens.
    output(QStringLiteral("hsetroot"),
           {QStringLiteral("-add"), QStringLiteral("#204060"), QStringLiteral("-add"),
            QStringLiteral("#f0c010"), QStringLiteral("-gradient"), QStringLiteral("90")});
    for (const Platform::Screen& screen : Platform::screens()) {
        const auto backdrop = Platform::frozenBackdrop(screen);
        ASSERT_TRUE(backdrop);
        EXPECT_EQ(backdrop->size(), QSize(static_cast<int>(screen.frame.width * 2),
                                          static_cast<int>(screen.frame.height * 2)));
        EXPECT_EQ(backdrop->devicePixelRatio(), 1);
        const QImage seenByQt =
            screen.handle->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
        EXPECT_NE(seenByQt.pixel(0, 300), seenByQt.pixel(seenByQt.width() - 1, 300));
        EXPECT_TRUE(backdrop->toImage().convertToFormat(QImage::Format_RGB32) == seenByQt);
    }
}

// The primary screen, 1920 x 1080, stands right of one of 1280 x 1024.

TEST(ScreenLeftOfThePrimary, HasNegativeCoordinates)
{
    const auto screens = Platform::screens();
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[0].frame, (Geometry::Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(screens[1].frame, (Geometry::Rect{-1280, 1080 - 1024, 1280, 1024}));
    const auto table = toolTable();
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].frame, (Geometry::TopLeftRect{0, 0, 1920, 1080}));
    EXPECT_EQ(table[1].frame, (Geometry::TopLeftRect{-1280, 0, 1280, 1024}));
    EXPECT_EQ(table[1].pixels, (ScreenTable::PixelRect{0, 0, 1280, 1024}));
}
