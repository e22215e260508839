#include "AppDelegate.h"

#include "Preferences.h"
#include "SelectionSession.h"
#include "SelectionView.h"
#include "SelectionWindow.h"
#include "Support/CaptureFiles.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/Printers.h"
#include "support/TestLog.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using testing::ElementsAre;

/// The user's desktop, as far as it opens files.
class Workspace : public QObject {
    Q_OBJECT

public:
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }
};

namespace {

constexpr std::uint32_t optionShift = 2560;

/// The controller between a desktop that exists only here and subsystems that note their calls.
class AppDelegateTest : public testing::Test {
protected:
    using Panel = Subsystems::Panel;
    using Editor = Subsystems::Editor;

    AppDelegateTest()
    {
        FakePlatform::reset();
        FakePlatform::current().tool = {QStringLiteral(TAMRIK_FAKE_TOOL), {}};
        QDir(CaptureFiles::folder()).removeRecursively();
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &workspace, "open");
        fillSubsystems();
    }

    ~AppDelegateTest() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    void fillSubsystems()
    {
        auto& r = subsystems.recorder;
        r.state = [this] { return recorderState; };
        r.start = [this](RecordingSession s) {
            recordings.push_back(std::move(s));
            recorderState = RecordingState::recording;
        };
        r.stop = [this](bool discard) {
            notes += discard ? QStringLiteral("discard") : QStringLiteral("stop");
        };
        r.togglePause = note("togglePause");
        r.restart = note("restart");
        r.isPaused = [] { return true; };
        r.elapsed = [] { return 12.5; };
        subsystems.chips.add = [this](const QUrl& file) { chips.append(file); };
        subsystems.chips.layout = [this](bool animated) {
            notes += animated ? QStringLiteral("layout animated") : QStringLiteral("layout");
        };
        subsystems.chips.setOnEdit = [this](auto callback) { onEdit = std::move(callback); };
        subsystems.controls.make = [this](Geometry::Rect near, auto callbacks) {
            controlsNear = near;
            controls = std::move(callbacks);
            return makePanel("controls");
        };
        subsystems.editors.makeImageEditor = [this](const QUrl& url) {
            return makeEditor("image", url);
        };
        subsystems.editors.makeVideoEditor = [this](const QUrl& url) {
            return makeEditor("video", url);
        };
        subsystems.gif.exportVideo = [this](const QUrl& video, Subsystems::TimeRange range,
                                            const QUrl& gif, auto completion) {
            EXPECT_EQ(range.start, 0);
            EXPECT_TRUE(std::isinf(range.duration));
            gifExports.append({video, gif});
            finishGIF = std::move(completion);
        };
        subsystems.camera.authorization = [this] { return authorization; };
        subsystems.camera.make = [this] { return cameraExists ? makePanel("camera") : nullptr; };
        subsystems.camera.requestAndShow = [this](auto completion) {
            notes += QStringLiteral("camera asked");
            answerCamera = std::move(completion);
        };
    }

    std::function<void()> note(const char* what)
    {
        return [this, what] { notes += QString::fromLatin1(what); };
    }

    std::shared_ptr<Panel> makePanel(const char* name)
    {
        const QString prefix = QString::fromLatin1(name);
        const auto say = [this, prefix](const char* what) {
            return
                [this, text = prefix + QLatin1Char(' ') + QLatin1String(what)] { notes += text; };
        };
        return std::make_shared<Panel>(Panel{say("stop"), say("front"), say("close")});
    }

    std::shared_ptr<Editor> makeEditor(const char* kind, const QUrl& url)
    {
        if (!editorsOpen)
            return nullptr;
        notes += QString::fromLatin1(kind) + QLatin1Char(' ') + url.fileName();
        auto editor = std::make_shared<Editor>();
        editor->fileURL = url;
        editor->makeKeyAndOrderFront = [this, name = url.fileName()] {
            notes += name + QStringLiteral(" front");
        };
        madeEditors.push_back(editor);
        return editor;
    }

    AppDelegate& launch()
    {
        app = std::make_unique<AppDelegate>(preferences, clock.clock(), subsystems);
        app->applicationDidFinishLaunching();
        return *app;
    }

    /// Drags a rectangle on the open selection, from the screen's top left.
    void drag(QPoint from, QPoint to)
    {
        ASSERT_TRUE(SelectionSession::current);
        SelectionView& view = SelectionSession::current->windows().front()->view();
        QTest::mousePress(&view, Qt::LeftButton, {}, from);
        QTest::mouseMove(&view, to);
        QTest::mouseRelease(&view, Qt::LeftButton, {}, to);
    }

    void confirm(bool gif)
    {
        ASSERT_TRUE(SelectionSession::current);
        SelectionSession::current->confirmActiveSelection(gif);
        clock.advance(180ms);
    }

    void takeScreenshot()
    {
        app->captureArea();
        drag({100, 100}, {400, 300});
        clock.advance(180ms);
        ASSERT_TRUE(runUntil([this] { return !app->capture().isCapturing(); }));
    }

    void record(bool gif)
    {
        app->toggleRecording();
        drag({100, 100}, {400, 300});
        confirm(gif);
    }

    void finishRecording(const QUrl& file)
    {
        recorderState = RecordingState::idle;
        recordings.back().completion(file);
    }

    QStringList takeNotes() { return std::exchange(notes, {}); }

    QAction* menuItem(const char* title) const
    {
        for (QAction* action : app->statusMenu()->menu().actions()) {
            if (action->text() == QString::fromUtf8(title))
                return action;
        }
        return nullptr;
    }

    static QUrl file(const char* path) { return QUrl::fromLocalFile(QString::fromUtf8(path)); }

    QTemporaryDir folder;
    Preferences preferences{std::make_unique<QSettings>(
        folder.filePath(QStringLiteral("store.ini")), QSettings::IniFormat)};
    FakeClock clock;
    Subsystems subsystems;
    RecordingState recorderState = RecordingState::idle;
    std::vector<RecordingSession> recordings;
    QList<QUrl> chips;
    std::function<void(const QUrl&)> onEdit;
    Geometry::Rect controlsNear;
    Subsystems::RecordingControlsCallbacks controls;
    QList<std::pair<QUrl, QUrl>> gifExports;
    std::function<void(bool)> finishGIF;
    Subsystems::CameraAuthorization authorization = Subsystems::CameraAuthorization::authorized;
    bool cameraExists = true;
    Subsystems::Camera::Completion answerCamera;
    bool editorsOpen = true;
    std::vector<std::weak_ptr<Editor>> madeEditors;
    QStringList notes;
    Workspace workspace;
    std::unique_ptr<AppDelegate> app;
};

} // namespace

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
    app->applicationDidFinishLaunching();
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
    EXPECT_EQ(chips, QList<QUrl>{expected});
}

TEST_F(AppDelegateTest, AScreenshotWithoutAFileDoesNothing)
{
    FakePlatform::current().tool.program = QStringLiteral("/bin/true");
    launch();
    takeScreenshot();
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_FALSE(app->lastCaptureURL());
    EXPECT_TRUE(chips.isEmpty());
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

TEST_F(AppDelegateTest, TheHooksTellAndToggleMicrophoneAndCamera)
{
    launch();
    app->toggleRecording();
    const SelectionHooks hooks = SelectionSession::current->hooks();
    EXPECT_FALSE(hooks.isMicOn());
    EXPECT_FALSE(hooks.isCameraOn());
    hooks.toggleMic();
    hooks.toggleCamera();
    EXPECT_TRUE(hooks.isMicOn());
    EXPECT_TRUE(hooks.isCameraOn());
    EXPECT_TRUE(preferences.recordMic());
    EXPECT_TRUE(menuItem("Record Microphone Audio")->isChecked());
    app.reset();
    EXPECT_FALSE(hooks.isMicOn());
    EXPECT_FALSE(hooks.isCameraOn());
    hooks.toggleMic();
    EXPECT_TRUE(preferences.recordMic());
}

TEST_F(AppDelegateTest, ARecordingStartsWithItsRectangleNameAndMicrophone)
{
    preferences.setRecordMic(true);
    launch();
    record(false);
    ASSERT_EQ(recordings.size(), 1u);
    EXPECT_EQ(recordings[0].rect, (Geometry::Rect{100, 600, 300, 200}));
    EXPECT_TRUE(recordings[0].micEnabled);
    EXPECT_TRUE(recordings[0].showClicks);
    EXPECT_EQ(recordings[0].finalURL,
              QUrl::fromLocalFile(CaptureFiles::folder() +
                                  QStringLiteral("/Tamrik Rec 2024-03-05 at 14.07.09.mp4")));
    EXPECT_TRUE(QDir(CaptureFiles::folder()).exists());
}

TEST_F(AppDelegateTest, AGIFRecordingNeverCarriesAudio)
{
    preferences.setRecordMic(true);
    launch();
    record(true);
    ASSERT_EQ(recordings.size(), 1u);
    EXPECT_FALSE(recordings[0].micEnabled);
}

TEST_F(AppDelegateTest, AStartedRecordingShowsInTheMenuAndItsControls)
{
    launch();
    record(false);
    EXPECT_TRUE(menuItem("Start Recording"));
    recordings[0].started();
    EXPECT_TRUE(menuItem("Stop Recording"));
    EXPECT_TRUE(app->hasRecordingControls());
    EXPECT_EQ(controlsNear, recordings[0].rect);
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("controls front")});

    EXPECT_TRUE(controls.isPaused());
    EXPECT_EQ(controls.elapsed(), 12.5);
    controls.onPauseResume();
    controls.onStop();
    controls.onRestart();
    controls.onDelete();
    EXPECT_EQ(takeNotes().join(QLatin1Char(' ')),
              QStringLiteral("togglePause stop restart discard"));
    app.reset();
    EXPECT_FALSE(controls.isPaused());
    EXPECT_EQ(controls.elapsed(), 0);
    controls.onStop();
    EXPECT_TRUE(takeNotes().isEmpty());
}

TEST_F(AppDelegateTest, TheRecordCommandStopsWhateverARecordingIsDoing)
{
    launch();
    for (const auto state :
         {RecordingState::recording, RecordingState::pausing, RecordingState::paused,
          RecordingState::stopping, RecordingState::restarting})
    {
        recorderState = state;
        app->toggleRecording();
        EXPECT_FALSE(SelectionSession::current);
        EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("stop")});
    }
}

TEST_F(AppDelegateTest, AFinishedRecordingIsOnThePasteboardAsAFileAndAChip)
{
    launch();
    record(false);
    recordings[0].started();
    takeNotes();
    finishRecording(recordings[0].finalURL);
    EXPECT_TRUE(menuItem("Start Recording"));
    EXPECT_FALSE(app->hasRecordingControls());
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("controls stop|controls close"));
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_EQ(pasteboard[0].fileURL, recordings[0].finalURL);
    EXPECT_FALSE(pasteboard[0].png);
    EXPECT_EQ(chips, QList<QUrl>{recordings[0].finalURL});
    EXPECT_FALSE(app->lastCaptureURL());
}

TEST_F(AppDelegateTest, ARecordingWithoutAFileOnlyResetsTheMenu)
{
    launch();
    record(false);
    recordings[0].started();
    finishRecording({});
    EXPECT_TRUE(menuItem("Start Recording"));
    EXPECT_FALSE(app->hasRecordingControls());
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_TRUE(chips.isEmpty());
}

TEST_F(AppDelegateTest, AGIFRecordingDeliversTheGIFBesideItsMP4)
{
    launch();
    record(true);
    finishRecording(file("/movies/Tamrik Rec 1.2.mp4"));
    ASSERT_EQ(gifExports.size(), 1);
    EXPECT_EQ(gifExports[0].second, file("/movies/Tamrik Rec 1.2.gif"));
    EXPECT_TRUE(chips.isEmpty());
    finishGIF(true);
    EXPECT_EQ(chips, QList<QUrl>{file("/movies/Tamrik Rec 1.2.gif")});
    EXPECT_EQ(FakePlatform::current().pasteboard.at(0).fileURL, chips[0]);
}

TEST_F(AppDelegateTest, AFailedConversionDeliversTheMP4)
{
    launch();
    record(true);
    finishRecording(file("/movies/a.mp4"));
    finishGIF(false);
    EXPECT_EQ(chips, QList<QUrl>{file("/movies/a.mp4")});
}

TEST_F(AppDelegateTest, ARecordingWithoutAScreenEndsAtOnce)
{
    launch();
    app->toggleRecording();
    drag({100, 100}, {400, 300});
    SelectionSession::current->confirmActiveSelection(false);
    FakePlatform::current().screens.clear();
    clock.advance(180ms);
    EXPECT_TRUE(recordings.empty());
    EXPECT_FALSE(QDir(CaptureFiles::folder()).exists());
    EXPECT_TRUE(menuItem("Start Recording"));
}

TEST_F(AppDelegateTest, ARecordingWhileTheRecorderIsBusyEndsAtOnce)
{
    launch();
    app->toggleRecording();
    drag({100, 100}, {400, 300});
    SelectionSession::current->confirmActiveSelection(false);
    recorderState = RecordingState::stopping;
    clock.advance(180ms);
    EXPECT_TRUE(recordings.empty());
}

TEST_F(AppDelegateTest, TheCameraBubbleTogglesWithItsTick)
{
    launch();
    app->toggleCamera();
    EXPECT_TRUE(app->hasCameraBubble());
    EXPECT_TRUE(menuItem("Camera Bubble")->isChecked());
    app->toggleCamera();
    EXPECT_FALSE(app->hasCameraBubble());
    EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("camera stop|camera close"));
}

TEST_F(AppDelegateTest, WithoutACameraTheTickStaysOff)
{
    cameraExists = false;
    launch();
    menuItem("Camera Bubble")->trigger();
    EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());
    EXPECT_FALSE(app->hasCameraBubble());
}

TEST_F(AppDelegateTest, AnUndecidedCameraIsAskedFor)
{
    authorization = Subsystems::CameraAuthorization::notDetermined;
    launch();
    app->toggleCamera();
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("camera asked")});
    EXPECT_FALSE(app->hasCameraBubble());
    answerCamera(makePanel("camera"));
    EXPECT_TRUE(app->hasCameraBubble());
    EXPECT_TRUE(menuItem("Camera Bubble")->isChecked());
}

TEST_F(AppDelegateTest, ARefusedCameraIsLogged)
{
    for (const auto refusal :
         {Subsystems::CameraAuthorization::denied, Subsystems::CameraAuthorization::restricted})
    {
        authorization = refusal;
        launch();
        app->toggleCamera();
        EXPECT_EQ(TestLog::takeLines(),
                  QStringList{QStringLiteral(
                      "camera access denied — System Settings → Privacy & Security → Camera")});
        EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());
    }
}

TEST_F(AppDelegateTest, TheBubbleStaysUpAfterARecording)
{
    launch();
    app->toggleCamera();
    record(false);
    finishRecording({});
    EXPECT_TRUE(app->hasCameraBubble());
}

TEST_F(AppDelegateTest, EditorsOpenByTheKindOfFile)
{
    launch();
    app->openEditor(file("/a/FILM.MP4"));
    app->openEditor(file("/a/film.MoV"));
    app->openEditor(file("/a/picture.jpg"));
    app->openEditor(file("/a/none"));
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')),
              QStringLiteral("video FILM.MP4|FILM.MP4 front|video film.MoV|film.MoV front|"
                             "image picture.jpg|picture.jpg front|image none|none front"));
    EXPECT_EQ(FakePlatform::current().activations, 4);
}

TEST_F(AppDelegateTest, AGIFOpensInTheUsersDefaultApplication)
{
    launch();
    QFile gif(folder.filePath(QStringLiteral("a.Gif")));
    ASSERT_TRUE(gif.open(QIODevice::WriteOnly));
    app->openEditor(QUrl::fromLocalFile(gif.fileName()));
    EXPECT_EQ(workspace.opened, QList<QUrl>{QUrl::fromLocalFile(gif.fileName())});
    EXPECT_TRUE(takeNotes().isEmpty());
}

TEST_F(AppDelegateTest, TheSameFileIsNeverOpenedTwice)
{
    launch();
    app->openEditor(file("/a/1.png"));
    app->openEditor(file("/a/2.png"));
    takeNotes();
    app->openEditor(file("/a/1.png"));
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("1.png front")});
    EXPECT_EQ(madeEditors.size(), 2u);

    const auto first = madeEditors[0].lock();
    first->onClose(first.get());
    app->openEditor(file("/a/1.png"));
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("image 1.png|1.png front"));
    EXPECT_FALSE(madeEditors[1].expired());
}

TEST_F(AppDelegateTest, AnEditorIsKeptUntilItClosesAndThenDropped)
{
    launch();
    app->openEditor(file("/a/1.mp4"));
    ASSERT_FALSE(madeEditors[0].expired());
    auto editor = madeEditors[0].lock();
    editor->onClose(editor.get());
    editor.reset();
    EXPECT_TRUE(madeEditors[0].expired());
}

TEST_F(AppDelegateTest, AnEditorThatCannotOpenIsNotKept)
{
    editorsOpen = false;
    launch();
    app->openEditor(file("/a/1.png"));
    EXPECT_TRUE(takeNotes().isEmpty());
    EXPECT_EQ(FakePlatform::current().activations, 0);
}

TEST_F(AppDelegateTest, AFileThatAVideoEditorWroteIsDelivered)
{
    launch();
    app->openEditor(file("/a/1.mp4"));
    madeEditors[0].lock()->onFileProduced(file("/a/1 trimmed.mp4"));
    EXPECT_EQ(chips, QList<QUrl>{file("/a/1 trimmed.mp4")});
    EXPECT_EQ(FakePlatform::current().pasteboard.at(0).fileURL, chips[0]);
}

TEST_F(AppDelegateTest, AChipsEditOpensItsEditor)
{
    launch();
    onEdit(file("/a/1.png"));
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("image 1.png|1.png front"));
    app.reset();
    onEdit(file("/a/2.png"));
    EXPECT_TRUE(takeNotes().isEmpty());
}

TEST_F(AppDelegateTest, AnnotateLastOpensTheLastScreenshotWhileItsFileExists)
{
    launch();
    app->annotateLast();
    EXPECT_TRUE(takeNotes().isEmpty());
    takeScreenshot();
    FakePlatform::current().press(14, optionShift);
    EXPECT_EQ(takeNotes().size(), 2);
    Q_EMIT app->statusMenu()->menu().aboutToShow();
    EXPECT_TRUE(menuItem("Annotate Last Capture")->isEnabled());

    QFile::remove(app->lastCaptureURL()->toLocalFile());
    app->annotateLast();
    EXPECT_TRUE(takeNotes().isEmpty());
    EXPECT_TRUE(preferences.lastCapturePath());
    Q_EMIT app->statusMenu()->menu().aboutToShow();
    EXPECT_FALSE(menuItem("Annotate Last Capture")->isEnabled());
}

TEST_F(AppDelegateTest, OpenFolderOpensTheCapturesFolderIfThereIsOne)
{
    launch();
    app->openFolder();
    EXPECT_TRUE(workspace.opened.isEmpty());
    CaptureFiles::createFolder();
    app->openFolder();
    EXPECT_EQ(workspace.opened, QList<QUrl>{QUrl::fromLocalFile(CaptureFiles::folder())});
}

TEST_F(AppDelegateTest, ChoosingAPositionMovesTheStackAnimated)
{
    launch();
    app->statusMenu()->positionMenu().actions().at(5)->trigger();
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("layout animated")});
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

#include "AppDelegateTest.moc"
