#include "gui/SelectionSessionFixture.h"

using namespace std::chrono_literals;

namespace {

class SelectionSessionTest : public SelectionSessionFixture {};

} // namespace

TEST_F(SelectionSessionTest, CoversEveryScreenAndTheOneUnderThePointerIsKey)
{
    FakePlatform::current().mouse = {1500, 500};
    open(SelectionMode::screenshot);
    ASSERT_EQ(session->windows().size(), 2u);
    EXPECT_EQ(window(0).geometry(), QGuiApplication::screens()[0]->geometry());
    EXPECT_EQ(window(1).geometry(), QGuiApplication::screens()[1]->geometry());
    const auto& platform = FakePlatform::current();
    EXPECT_EQ(platform.front.size(), 2u);
    EXPECT_EQ(platform.key, &window(1));
    EXPECT_EQ(platform.activations, 1);
    EXPECT_EQ(platform.traits.at(&window(0)).level, Platform::WindowLevel::ScreenSaver);
    EXPECT_EQ(view(0).size(), window(0).size());
    EXPECT_EQ(view(0).cursor().shape(), Qt::CrossCursor);
}

TEST_F(SelectionSessionTest, APointerThatIsOnNoScreenLeavesTheKeysToThePrimaryOne)
{
    FakePlatform::current().mouse = {-5, 2000};
    open(SelectionMode::screenshot);
    EXPECT_EQ(FakePlatform::current().key, &window(0));
}

TEST_F(SelectionSessionTest, AnEightByEightDragEndsAScreenshotWithItsGlobalRectangle)
{
    open(SelectionMode::screenshot);
    drag(view(1), {100, 600}, {108, 608});
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(session->windows().empty());
    EXPECT_FALSE(SelectionSession::current);
    clock.advance(180ms);
    // View: y up from 800 - 608 = 192; screen B starts at (1440, 100).
    EXPECT_EQ(results, only(Kind::screenshot, {1540, 292, 8, 8}));
}

TEST_F(SelectionSessionTest, AResultComesEighteenHundredthsAfterTheWindowsWent)
{
    open(SelectionMode::screenshot);
    drag(view(0), {10, 10}, {210, 110});
    EXPECT_EQ(FakePlatform::current().orderedOut.size(), 2u);
    clock.advance(179ms);
    EXPECT_TRUE(results.empty());
    clock.advance(1ms);
    EXPECT_EQ(results.size(), 1u);
}

TEST_F(SelectionSessionTest, EscapeEndsAtOnceWithoutAResult)
{
    open(SelectionMode::screenshot);
    QTest::keyClick(&view(0), Qt::Key_Escape);
    EXPECT_EQ(results, Results{std::nullopt});
    EXPECT_FALSE(SelectionSession::current);
}

TEST_F(SelectionSessionTest, KeysWorkInTheWindowAsInItsView)
{
    open(SelectionMode::screenshot);
    QTest::keyClick(&window(1), Qt::Key_Escape);
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, OtherKeysDoNothing)
{
    open(SelectionMode::screenshot);
    for (const auto key : {Qt::Key_A, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Backspace})
        QTest::keyClick(&view(0), key);
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(SelectionSession::current);
}

TEST_F(SelectionSessionTest, OnlyTheFirstEndingCounts)
{
    open(SelectionMode::screenshot);
    session->finish(std::nullopt);
    session->finish(SelectionResult{Kind::screenshot, {0, 0, 10, 10}});
    clock.advance(1s);
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, AClickCancelsAScreenshot)
{
    open(SelectionMode::screenshot);
    QTest::mouseClick(&view(0), Qt::LeftButton, {}, {50, 50});
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, SevenByAHundredCancels)
{
    open(SelectionMode::screenshot);
    drag(view(0), {50, 50}, {57, 150});
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, OtherButtonsDoNothing)
{
    open(SelectionMode::screenshot);
    QTest::mouseClick(&view(0), Qt::RightButton, {}, {50, 50});
    QTest::mouseClick(&view(0), Qt::MiddleButton, {}, {50, 50});
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(view(0).model().isIn<SelectionModel::Idle>());
}

TEST_F(SelectionSessionTest, ReturnWithoutASelectionIsIgnored)
{
    open(SelectionMode::screenshot);
    QTest::keyClick(&view(0), Qt::Key_Return);
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(SelectionSession::current);
}

TEST_F(SelectionSessionTest, ReturnInMidDragConfirmsWhatIsThereAlsoWithOption)
{
    open(SelectionMode::screenshot);
    QTest::mousePress(&view(0), Qt::LeftButton, {}, {100, 100});
    QTest::mouseMove(&view(0), {400, 300});
    QTest::keyClick(&view(0), Qt::Key_Return, Qt::AltModifier);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::screenshot, {100, 600, 300, 200}));
}

TEST_F(SelectionSessionTest, ARecordingsDragWaitsToBeAdjustedAndConfirmed)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    EXPECT_TRUE(session->hadSelection());
    EXPECT_TRUE(view(0).model().isIn<SelectionModel::Adjusting>());
    EXPECT_TRUE(results.empty());
    QTest::keyClick(&view(0), Qt::Key_Enter);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {100, 600, 300, 200}));
}

TEST_F(SelectionSessionTest, OptionReturnRecordsAGIF)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    QTest::keyClick(&view(0), Qt::Key_Return, Qt::AltModifier);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordGIF, {100, 600, 300, 200}));
}

TEST_F(SelectionSessionTest, ARecordingsSelectionMovesAndResizes)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    drag(view(0), {250, 200}, {260, 180}); // inside: moves by (10, -20)
    drag(view(0), {110, 80}, {60, 40});    // top left corner
    QTest::keyClick(&view(0), Qt::Key_Return);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {60, 900 - 280, 350, 240}));
}

TEST_F(SelectionSessionTest, AfterASelectionAClickOnlyClears)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    QTest::mouseClick(&view(0), Qt::LeftButton, {}, {800, 700});
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(SelectionSession::current);
    EXPECT_TRUE(view(0).model().isIn<SelectionModel::Idle>());
    EXPECT_FALSE(view(0).globalSelectionRect());
}

TEST_F(SelectionSessionTest, AClickBeforeAnySelectionCancelsARecording)
{
    open(SelectionMode::record);
    QTest::mouseClick(&view(1), Qt::LeftButton, {}, {50, 50});
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, APressOnAnotherScreenClearsTheFirstOnesSelection)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    QTest::mousePress(&view(1), Qt::LeftButton, {}, {10, 10});
    EXPECT_TRUE(view(0).model().isIn<SelectionModel::Idle>());
    EXPECT_FALSE(view(0).globalSelectionRect());
    EXPECT_EQ(session->activeView(), &view(1));
    QTest::mouseMove(&view(1), {110, 110});
    QTest::mouseRelease(&view(1), Qt::LeftButton, {}, {110, 110});
    QTest::keyClick(&view(0), Qt::Key_Return); // the keyboard may be with the other screen
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {1450, 100 + 800 - 110, 100, 100}));
}

TEST_F(SelectionSessionTest, AWholeScreenCanBeDraggedOut)
{
    open(SelectionMode::screenshot);
    drag(view(0), {0, 899}, {1439, 0});
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::screenshot, {0, 0, 1440, 900}));
}

TEST_F(SelectionSessionTest, ADragMayRunOffItsScreen)
{
    open(SelectionMode::screenshot);
    drag(view(0), {1400, 100}, {1500, 200});
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::screenshot, {1400, 700, 100, 100}));
}

TEST_F(SelectionSessionTest, ThePlatformNamesTheRectangleThatWasMeasuredOnAScreen)
{
    QScreen* const b = FakePlatform::current().screens[1].handle;
    FakePlatform::current().nameable = [b](Geometry::Rect rect, const QScreen* screen) {
        return screen == b ? rect.translated(0.5, 7) : Geometry::Rect();
    };
    open(SelectionMode::screenshot);
    drag(view(1), {100, 600}, {150, 650});
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::screenshot, {1540.5, 257, 50, 50}));
}

TEST_F(SelectionSessionTest, WithoutScreensItStaysOpen)
{
    FakePlatform::current().screens.clear();
    open(SelectionMode::screenshot);
    EXPECT_TRUE(session->windows().empty());
    EXPECT_TRUE(SelectionSession::current);
    EXPECT_TRUE(results.empty());
    session->finish(std::nullopt);
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionSessionTest, AViewWhoseSessionIsGoneEntersAdjusting)
{
    open(SelectionMode::screenshot);
    SelectionView orphan({0, 0, 1440, 900}, {}, std::nullopt, nullptr);
    orphan.resize(1440, 900);
    drag(orphan, {100, 100}, {200, 200});
    EXPECT_TRUE(orphan.model().isIn<SelectionModel::Adjusting>());
    QTest::keyClick(&orphan, Qt::Key_Escape);
    EXPECT_TRUE(results.empty());
}

TEST_F(SelectionSessionTest, WindowsAreDeletedAfterTheEnd)
{
    open(SelectionMode::screenshot);
    const QPointer<QWidget> overlay = &window(0);
    session->finish(std::nullopt);
    settle();
    EXPECT_FALSE(overlay);
}
