#include "gui/ChipFixture.h"

using Geometry::Point;
using testing::ElementsAre;

namespace {

class ChipManagerTest : public ChipFixture {};

} // namespace

TEST_F(ChipManagerTest, AChipStandsInTheFirstSlotAtOnceAndIsInFront)
{
    content = contentOf({200, 100});
    manager->add(file(QStringLiteral("1.png")));
    ASSERT_EQ(manager->panels().size(), 1u);
    ChipPanel& panel = *manager->panels().front();
    EXPECT_EQ(panel.frame(), (Geometry::Rect{24, 24, 200, 100}));
    // The window is larger by the shadow.
    EXPECT_EQ(FakePlatform::current().frames[&panel], (Geometry::Rect{6, 6, 236, 136}));
    EXPECT_EQ(FakePlatform::current().bodies[&panel], QRect(18, 18, 200, 100));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(FakePlatform::current().front.back(), &panel);
    const auto traits = FakePlatform::current().traits[&panel];
    EXPECT_EQ(traits.level, Platform::WindowLevel::StatusPanel);
    EXPECT_TRUE(traits.nonActivating);
    EXPECT_TRUE(traits.translucent);
}

TEST_F(ChipManagerTest, AFileThatCannotBeShownGetsNoChip)
{
    content.reset();
    manager->add(file(QStringLiteral("1.png")));
    EXPECT_TRUE(manager->panels().empty());
}

TEST_F(ChipManagerTest, ChipsComeInTheOrderOfTheirCapturesHoweverLongEachTakes)
{
    holdsBack = true;
    for (const char* name : {"1.png", "2.png", "3.png"})
        manager->add(file(QString::fromLatin1(name)));
    heldBack[QStringLiteral("3.png")](contentOf({200, 100}));
    EXPECT_TRUE(manager->panels().empty());
    heldBack[QStringLiteral("1.png")](contentOf({200, 100}));
    EXPECT_EQ(names(), QStringList{QStringLiteral("1.png")});
    heldBack[QStringLiteral("2.png")](std::nullopt); // cannot be shown, and holds nobody up
    EXPECT_EQ(names().join(QLatin1Char(' ')), QStringLiteral("1.png 3.png"));
}

TEST_F(ChipManagerTest, WhatIsLoadedAfterTheManagerIsGoneIsDropped)
{
    holdsBack = true;
    manager->add(file(QStringLiteral("1.png")));
    manager.reset();
    heldBack[QStringLiteral("1.png")](contentOf({200, 100}));
    settle();
    EXPECT_TRUE(FakePlatform::current().front.empty());
}

TEST_F(ChipManagerTest, OlderChipsMoveAwayFromTheEdgeSmoothly)
{
    const ChipPanel& first = add(QStringLiteral("1.png"), {200, 90});
    content = contentOf({220, 100});
    manager->add(file(QStringLiteral("2.png")));
    EXPECT_EQ(first.frame().origin(), (Point{24, 24})); // not yet
    std::vector<double> way;
    ASSERT_TRUE(runUntil([&] {
        way.push_back(first.frame().y);
        return first.frame().y == 24 + 100 + 12;
    }));
    EXPECT_TRUE(std::is_sorted(way.begin(), way.end()));
    EXPECT_TRUE(std::any_of(way.begin(), way.end(), [](double y) { return y > 24 && y < 136; }));
    EXPECT_EQ(manager->panels().back()->frame().origin(), (Point{24, 24}));
}

TEST_F(ChipManagerTest, TheSixthCaptureFadesTheOldestOut)
{
    for (int i = 1; i <= 5; ++i)
        add(QStringLiteral("%1.png").arg(i));
    content = contentOf({200, 100});
    manager->add(file(QStringLiteral("6.png")));
    EXPECT_EQ(manager->panels().size(), 6u); // until it has faded
    const QWidget* oldest = manager->panels().front().get();
    const QPointer<const QWidget> lives = oldest;
    ASSERT_TRUE(runUntil([&] { return manager->panels().size() == 5; }));
    EXPECT_EQ(names().join(QLatin1Char(' ')), QStringLiteral("2.png 3.png 4.png 5.png 6.png"));
    const auto& opacities = FakePlatform::current().opacities[oldest];
    EXPECT_TRUE(std::is_sorted(opacities.rbegin(), opacities.rend()));
    EXPECT_GT(opacities.size(), 3u);
    EXPECT_EQ(opacities.back(), 0);
    settle();
    EXPECT_FALSE(lives);
    rest();
    EXPECT_THAT(origins(), ElementsAre(Point{24, 472}, Point{24, 360}, Point{24, 248},
                                       Point{24, 136}, Point{24, 24}));
}

TEST_F(ChipManagerTest, ASeventhWhileTheOldestStillFadesLeavesSixOpen)
{
    for (int i = 1; i <= 5; ++i)
        add(QStringLiteral("%1.png").arg(i));
    content = contentOf({200, 100});
    manager->add(file(QStringLiteral("6.png")));
    int closings = 0;
    auto& oldest = *manager->panels().front();
    oldest.onClosed = [&, before = oldest.onClosed](ChipPanel* panel) {
        ++closings;
        before(panel);
    };
    manager->add(file(QStringLiteral("7.png")));
    EXPECT_EQ(manager->panels().size(), 7u);
    ASSERT_TRUE(runUntil([&] { return manager->panels().size() == 6; }));
    QTest::qWait(600); // twice as long as a fade
    EXPECT_EQ(names().join(QLatin1Char(' ')),
              QStringLiteral("2.png 3.png 4.png 5.png 6.png 7.png"));
    EXPECT_EQ(closings, 1);
    // The next addition fades one more.
    manager->add(file(QStringLiteral("8.png")));
    ASSERT_TRUE(runUntil([&] { return manager->panels().size() == 6; }));
    EXPECT_EQ(names().front(), QStringLiteral("3.png"));
}

TEST_F(ChipManagerTest, AClosedChipLeavesTheListAndTheOthersCloseUp)
{
    add(QStringLiteral("1.png"));
    ChipPanel& second = add(QStringLiteral("2.png"));
    add(QStringLiteral("3.png"));
    second.close();
    EXPECT_EQ(names().join(QLatin1Char(' ')), QStringLiteral("1.png 3.png"));
    rest();
    EXPECT_THAT(origins(), ElementsAre(Point{24, 136}, Point{24, 24}));
}

TEST_F(ChipManagerTest, DismissingAChipThatFadesReportsItsClosingOnce)
{
    ChipPanel& panel = add(QStringLiteral("1.png"));
    int closings = 0;
    panel.onClosed = [&](ChipPanel*) { ++closings; };
    panel.fadeClose();
    QTest::mouseClick(button(panel, "Dismiss"), Qt::LeftButton);
    panel.close();
    QTest::qWait(600);
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(panel.isVisible());
}

TEST_F(ChipManagerTest, TheStackStandsOnTheScreenUnderThePointer)
{
    FakePlatform::current().mouse = {2000, 500};
    add(QStringLiteral("1.png"));
    EXPECT_THAT(origins(), ElementsAre(Point{1464, 164}));
    // It stays there when only the pointer moves,
    FakePlatform::current().mouse = {200, 200};
    manager->layout(false);
    EXPECT_THAT(origins(), ElementsAre(Point{1464, 164}));
    // and follows with the next capture.
    add(QStringLiteral("2.png"));
    EXPECT_THAT(origins(), ElementsAre(Point{24, 136}, Point{24, 24}));
}

TEST_F(ChipManagerTest, APointerOnTheEdgeOfTwoScreensIsOnTheFirst)
{
    FakePlatform::current().mouse = {1440, 500};
    add(QStringLiteral("1.png"));
    EXPECT_THAT(origins(), ElementsAre(Point{24, 24}));
}

TEST_F(ChipManagerTest, APointerOnNoScreenMeansTheMainOne)
{
    FakePlatform::current().mouse = {1500, 50};
    add(QStringLiteral("1.png"));
    EXPECT_THAT(origins(), ElementsAre(Point{24, 24}));
}

TEST_F(ChipManagerTest, WithoutAScreenAChipIsKeptAndShownWhereItIs)
{
    FakePlatform::current().screens.clear();
    add(QStringLiteral("1.png"));
    EXPECT_EQ(names(), QStringList{QStringLiteral("1.png")});
    EXPECT_TRUE(manager->panels().front()->isVisible());
    EXPECT_THAT(origins(), ElementsAre(Point{0, 0}));
}

TEST_F(ChipManagerTest, AScreenThatGoesSendsTheStackToTheMainOne)
{
    auto& platform = FakePlatform::current();
    platform.mouse = {2000, 500};
    add(QStringLiteral("1.png"));
    platform.changeScreens({platform.screens.front()});
    EXPECT_THAT(origins(), ElementsAre(Point{24, 24}));
    // The desktop's own panels take their time to move.
    platform.screens.front().visibleFrame = {0, 48, 1440, 852};
    clock.advance(std::chrono::milliseconds(500));
    EXPECT_THAT(origins(), ElementsAre(Point{24, 72}));
}

TEST_F(ChipManagerTest, AScreenThatChangesKeepsTheStack)
{
    auto& platform = FakePlatform::current();
    platform.mouse = {2000, 500};
    add(QStringLiteral("1.png"));
    auto screens = platform.screens;
    screens[1].frame = {1440, 0, 640, 400};
    screens[1].visibleFrame = {1440, 20, 640, 380};
    platform.changeScreens(screens);
    EXPECT_THAT(origins(), ElementsAre(Point{1464, 44}));
}

TEST_F(ChipManagerTest, AStoredCustomOriginIsUsed)
{
    preferences.saveCustom({500, 300});
    add(QStringLiteral("1.png"), {200, 100});
    add(QStringLiteral("2.png"), {200, 120});
    EXPECT_THAT(origins(), ElementsAre(Point{500, 432}, Point{500, 300}));
}

TEST_F(ChipManagerTest, CustomWithoutAStoredOriginIsTheCorner)
{
    preferences.save(ChipPosition::custom);
    add(QStringLiteral("1.png"));
    EXPECT_THAT(origins(), ElementsAre(Point{24, 24}));
}

TEST_F(ChipManagerTest, MovingTheStackMovesEveryChipAtOnce)
{
    add(QStringLiteral("1.png"));
    add(QStringLiteral("2.png"));
    manager->moveStack(10.5, -4);
    EXPECT_THAT(origins(), ElementsAre(Point{34.5, 132}, Point{34.5, 20}));
}

TEST_F(ChipManagerTest, LettingGoOfTheStackStoresTheNewestChipsOrigin)
{
    add(QStringLiteral("1.png"), {200, 100});
    add(QStringLiteral("2.png"), {200, 100});
    manager->moveStack(300, 600);
    manager->stackMoved();
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::custom);
    EXPECT_EQ(preferences.chipCustomOrigin(), (Point{324, 624}));
    rest();
    // It is in the upper half now: the older one hangs below.
    EXPECT_THAT(origins(), ElementsAre(Point{324, 512}, Point{324, 624}));
}
