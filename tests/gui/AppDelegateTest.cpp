#include "gui/AppDelegateFixture.h"

TEST_F(AppDelegateTest, LaunchingMakesAnAccessoryWithAMenuAndThreeHotKeys)
{
    launch();
    const auto& platform = FakePlatform::current();
    EXPECT_EQ(platform.accessory, 1);
    EXPECT_EQ(platform.hotKeys.size(), 3u);
    EXPECT_EQ(platform.captureRequests, 0);
    EXPECT_TRUE(app->statusMenu());
}

TEST_F(AppDelegateTest, TheScreenIsAskedForOnceOnlyWhereItIsNotAllowed)
{
    FakePlatform::current().captureAllowed = false;
    launch();
    EXPECT_EQ(FakePlatform::current().captureRequests, 1);
    takeScreenshot();
    EXPECT_EQ(FakePlatform::current().captureRequests, 1);
}

TEST_F(AppDelegateTest, ATakenCaptureKeyIsOneLogLineAndTheMenuStillCaptures)
{
    FakePlatform::current().refusedKeyCodes = {1};
    launch();
    EXPECT_EQ(
        TestLog::takeLines(),
        QStringList{QStringLiteral("hotkey registration failed (already taken by another app?)")});
    EXPECT_EQ(FakePlatform::current().hotKeys.size(), 2u);
    menuItem("Capture Area")->trigger();
    EXPECT_TRUE(SelectionSession::current);
}

TEST_F(AppDelegateTest, TheOtherTwoHotKeysFailSilently)
{
    FakePlatform::current().refusedKeyCodes = {14, 15};
    launch();
    EXPECT_EQ(FakePlatform::current().hotKeys.size(), 1u);
}

TEST_F(AppDelegateTest, TheCaptureKeyComesFromThePreferences)
{
    auto store = std::make_unique<QSettings>(folder.filePath(QStringLiteral("other.json")),
                                             QSettings::IniFormat);
    store->setValue(QStringLiteral("hotKeyCode"), 2);
    store->setValue(QStringLiteral("hotKeyModifiers"), 4096);
    // Before a store is synced with its file it gives back what was set, types and all.
    Preferences custom(std::move(store));
    app = std::make_unique<AppDelegate>(custom, clock.clock(), subsystems);
    app->applicationDidFinishLaunching(instance);
    FakePlatform::current().press(1, optionShift);
    EXPECT_FALSE(SelectionSession::current);
    FakePlatform::current().press(2, 4096);
    EXPECT_TRUE(SelectionSession::current);
    app.reset();
}

TEST_F(AppDelegateTest, AScreenshotGoesToPasteboardLastCaptureAndChip)
{
    launch();
    FakePlatform::current().press(1, optionShift);
    takeScreenshot();
    const QUrl expected = QUrl::fromLocalFile(CaptureFiles::folder() +
                                              QStringLiteral("/Tamrik 2024-03-05 at 14.07.09.png"));
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_EQ(pasteboard[0].fileURL, expected);
    QFile written(expected.toLocalFile());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(pasteboard[0].png, written.readAll());
    EXPECT_EQ(app->lastCaptureURL(), expected);
    EXPECT_EQ(chips(), QList<QUrl>{expected});
}

TEST_F(AppDelegateTest, AScreenshotWithoutAFileDoesNothing)
{
    FakePlatform::current().tool.program = QStringLiteral("/bin/true");
    launch();
    takeScreenshot();
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_FALSE(app->lastCaptureURL());
    EXPECT_TRUE(chips().isEmpty());
}

TEST_F(AppDelegateTest, ACancelledSelectionDoesNothing)
{
    launch();
    app->captureArea();
    SelectionSession::current->finish(std::nullopt);
    clock.advance(1s);
    EXPECT_FALSE(app->capture().isCapturing());
}

TEST_F(AppDelegateTest, CommandsWhileASelectionIsOpenAreIgnored)
{
    launch();
    app->captureArea();
    const auto open = SelectionSession::current;
    app->captureArea();
    app->toggleRecording();
    EXPECT_EQ(SelectionSession::current, open);
    EXPECT_EQ(open->mode(), SelectionMode::screenshot);
}

TEST_F(AppDelegateTest, AFurtherStartOpensTheMenu)
{
    launch();
    FakePlatform::current().startedAgain();
    EXPECT_THAT(FakePlatform::current().poppedUp, ElementsAre(&app->statusMenu()->menu()));
}

TEST_F(AppDelegateTest, AFurtherStartLeavesAnOpenSelectionAlone)
{
    launch();
    app->captureArea();
    FakePlatform::current().startedAgain();
    EXPECT_TRUE(FakePlatform::current().poppedUp.empty());
    EXPECT_TRUE(SelectionSession::current);
    SelectionSession::current->finish(std::nullopt);
    FakePlatform::current().startedAgain();
    EXPECT_EQ(FakePlatform::current().poppedUp.size(), 1u);
}

TEST_F(AppDelegateTest, AFurtherStartAfterTheControllerIsGoneDoesNothing)
{
    launch();
    app.reset();
    FakePlatform::current().startedAgain();
    EXPECT_TRUE(FakePlatform::current().poppedUp.empty());
}

TEST_F(AppDelegateTest, AControllerThatIsGoneIgnoresTheSelectionsResult)
{
    launch();
    app->captureArea();
    drag({100, 100}, {400, 300});
    app.reset();
    clock.advance(180ms);
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_FALSE(QDir(CaptureFiles::folder()).exists());
}

TEST_F(AppDelegateTest, ChoosingAPositionMovesTheStackAnimated)
{
    launch();
    takeScreenshot();
    ASSERT_EQ(chips().size(), 1);
    const ChipPanel& chip = *app->chips().panels().front();
    const Geometry::Point before = chip.frame().origin();
    app->statusMenu()->positionMenu().actions().at(5)->trigger(); // "Top Right"
    EXPECT_EQ(chip.frame().origin(), before);                     // it is on its way
    const Geometry::Point topRight = {1440 - 24 - 160, 875 - 24 - 90};
    EXPECT_TRUE(runUntil([&] { return chip.frame().origin() == topRight; }));
}

TEST_F(AppDelegateTest, CommandsOfSubsystemsThatAreNotBuiltInDoNothing)
{
    subsystems = {};
    launch();
    record(false);
    record(true);
    app->toggleCamera();
    app->openEditor(file("/a/1.png"));
    app->openEditor(file("/a/1.mp4"));
    app->statusMenu()->positionMenu().actions().at(1)->trigger();
    takeScreenshot();
    EXPECT_TRUE(app->lastCaptureURL());
    EXPECT_FALSE(app->hasCameraBubble());
    EXPECT_FALSE(app->hasRecordingControls());
}
