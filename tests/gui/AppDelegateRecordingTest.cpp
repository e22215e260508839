#include "gui/AppDelegateFixture.h"

#include "ChromeButton.h"

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
    EXPECT_FALSE(recordings[0].asGIF);
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
    EXPECT_TRUE(recordings[0].asGIF);
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
    EXPECT_EQ(chips(), QList<QUrl>{recordings[0].finalURL});
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
    EXPECT_TRUE(chips().isEmpty());
}

TEST_F(AppDelegateTest, AGIFRecordingDeliversTheGIFBesideItsMP4)
{
    launch();
    record(true);
    finishRecording(file("/movies/Tamrik Rec 1.2.mp4"));
    ASSERT_EQ(gifExports.size(), 1);
    EXPECT_EQ(gifExports[0].second, file("/movies/Tamrik Rec 1.2.gif"));
    EXPECT_TRUE(chips().isEmpty());
    finishGIF(true);
    EXPECT_EQ(chips(), QList<QUrl>{file("/movies/Tamrik Rec 1.2.gif")});
    EXPECT_EQ(FakePlatform::current().pasteboard.at(0).fileURL, chips().at(0));
}

TEST_F(AppDelegateTest, AFailedConversionDeliversTheMP4)
{
    launch();
    record(true);
    finishRecording(file("/movies/a.mp4"));
    finishGIF(false);
    EXPECT_EQ(chips(), QList<QUrl>{file("/movies/a.mp4")});
}

TEST_F(AppDelegateTest, AConversionThatTheProgramDoesNotLiveToSeeLeavesTheMP4)
{
    launch();
    CaptureFiles::createFolder();
    const QString film = CaptureFiles::folder() + QStringLiteral("/a.mp4");
    QFile written(film);
    ASSERT_TRUE(written.open(QIODevice::WriteOnly));
    record(true);
    finishRecording(QUrl::fromLocalFile(film));
    ASSERT_EQ(gifExports.size(), 1);
    app.reset();
    finishGIF(true);
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_EQ(QDir(CaptureFiles::folder()).entryList(QDir::Files),
              QStringList{QStringLiteral("a.mp4")});
}

TEST_F(AppDelegateTest, WhatAnInterruptedRecordingLeftIsDeliveredAsAnyOther)
{
    launch();
    ASSERT_TRUE(recovered);
    recovered(file("/movies/a.mp4"), false);
    EXPECT_EQ(chips(), QList<QUrl>{file("/movies/a.mp4")});
    EXPECT_EQ(FakePlatform::current().pasteboard.at(0).fileURL, chips().at(0));
    recovered(file("/movies/b.mp4"), true);
    ASSERT_EQ(gifExports.size(), 1);
    finishGIF(true);
    EXPECT_EQ(chips().back(), file("/movies/b.gif"));
    app.reset();
    recovered(file("/movies/c.mp4"), false);
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

TEST_F(AppDelegateTest, ACameraThatTheUserRefusesWhenAskedIsNotShownAndNothingIsSaid)
{
    authorization = Subsystems::CameraAuthorization::notDetermined;
    launch();
    app->toggleCamera();
    answerCamera(nullptr);
    EXPECT_FALSE(app->hasCameraBubble());
    EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());
    takeNotes();
    app->toggleCamera();
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("camera asked")}) << "it was no call-off";
}

TEST_F(AppDelegateTest, ACameraThatDoesNotAnswerIsCalledOff)
{
    std::vector<std::pair<QPointer<QObject>, Subsystems::Camera::Completion>> searches;
    subsystems.camera.make = [&](QObject& request, auto completion) {
        searches.emplace_back(&request, std::move(completion));
    };
    launch();
    app->toggleCamera();
    app->toggleCamera();
    ASSERT_EQ(searches.size(), 1u);
    EXPECT_FALSE(searches[0].first) << "so that no bubble is made";
    searches[0].second(makePanel("camera"));
    EXPECT_FALSE(app->hasCameraBubble());
    EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());

    app->toggleCamera();
    ASSERT_EQ(searches.size(), 2u);
    searches[0].second(makePanel("camera")); // late, and nobody's any more
    EXPECT_FALSE(app->hasCameraBubble());
    searches[1].second(nullptr);
    EXPECT_FALSE(menuItem("Camera Bubble")->isChecked());
    app->toggleCamera();
    ASSERT_EQ(searches.size(), 3u);
    searches[2].second(makePanel("camera"));
    EXPECT_TRUE(menuItem("Camera Bubble")->isChecked());

    app->toggleCamera();
    app->toggleCamera(); // on its way when the program ends
    app.reset();
    EXPECT_FALSE(searches.back().first);
    searches.back().second(makePanel("camera"));
}

TEST_F(AppDelegateTest, TheBarOfASelectionShowsTheCameraWhenItComesLate)
{
    Subsystems::Camera::Completion found;
    subsystems.camera.make = [&](QObject&, auto completion) { found = std::move(completion); };
    launch();
    app->toggleRecording();
    drag({100, 100}, {400, 300});
    ChromeButton* camera = nullptr;
    for (auto* button : SelectionSession::current->activeView()->findChildren<ChromeButton*>()) {
        if (button->accessibleName() == QLatin1String("Camera bubble on/off"))
            camera = button;
    }
    ASSERT_TRUE(camera);
    camera->click();
    clock.advance(700ms);
    EXPECT_FALSE(camera->isToggledOn());
    found(makePanel("camera"));
    EXPECT_TRUE(camera->isToggledOn());
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
