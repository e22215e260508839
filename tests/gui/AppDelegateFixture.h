#pragma once

#include "AppDelegate.h"

#include "Platform/Application.h"
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
        r.recover = [this](auto handOver) { recovered = std::move(handOver); };
        subsystems.loadChipContent = [](const QUrl&, const auto& completion) {
            QImage picture(160, 90, QImage::Format_RGB32);
            picture.fill(Qt::blue);
            completion(ChipContent{picture, {160, 90}, std::nullopt});
        };
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
        subsystems.gif.exportVideo = [this](const QUrl& video, TimeRange range, const QUrl& gif,
                                            auto completion) {
            EXPECT_EQ(range.start, 0);
            EXPECT_TRUE(std::isinf(range.duration));
            gifExports.append({video, gif});
            finishGIF = std::move(completion);
        };
        subsystems.camera.authorization = [this] { return authorization; };
        subsystems.camera.make = [this](QObject&, const auto& completion) {
            completion(cameraExists ? makePanel("camera") : nullptr);
        };
        subsystems.camera.requestAndShow = [this](QObject&, auto completion) {
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
        app->applicationDidFinishLaunching(instance);
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

    /// The files that there are chips of, oldest first.
    QList<QUrl> chips() const
    {
        QList<QUrl> files;
        for (const auto& panel : app->chips().panels())
            files.append(panel->view().fileURL());
        return files;
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
    Platform::SingleInstance instance;
    Subsystems subsystems;
    RecordingState recorderState = RecordingState::idle;
    std::vector<RecordingSession> recordings;
    std::function<void(const QUrl& file, bool asGIF)> recovered;
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
