#pragma once

#include "ChromeButton.h"
#include "Editor/PlayerBar.h"
#include "Editor/PlayerSlider.h"
#include "Editor/PlayerView.h"
#include "Editor/TrimBar.h"
#include "Editor/TrimHandle.h"
#include "Editor/TrimStrip.h"
#include "Editor/VideoEditorWindowController.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "fakes/FakePlayer.h"
#include "support/EventLoop.h"
#include "support/TestLog.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

/// An editor of a film of ten seconds with a frame every 0.1 s, which exists only in the test.
class VideoEditorTest : public testing::Test {
protected:
    struct Trim {
        QString source;
        double start;
        double end;
        QString destination;
        MovieExport::Completion completion;
    };
    struct GIF {
        QUrl video;
        TimeRange range;
        QUrl destination;
        std::function<void(bool)> completion;
    };
    struct Frames {
        std::vector<double> times;
        QSize box;
        FilmLoader::GotFrame got;
        Cancellation cancellation;
    };

    VideoEditorTest() { FakePlatform::reset(); }
    ~VideoEditorTest() override
    {
        editor.reset();
        settle(); // the window goes later, with its player
    }

    QUrl file(const char* name) const
    {
        const QString path = folder.filePath(QString::fromUtf8(name));
        QFile made(path);
        EXPECT_TRUE(made.open(QFile::WriteOnly));
        return QUrl::fromLocalFile(path);
    }

    VideoEditorServices services()
    {
        return {
            .clock = clock.clock(),
            .openPlayer = [this](const QString&) { return std::make_unique<FakePlayer>(record); },
            .loader = {.readTimes = [this](const QString&, FilmLoader::GotTimes got,
                                           const Cancellation&) { gotTimes = std::move(got); },
                       .readFrames =
                           [this](const QString&, const std::vector<double>& times, QSize box,
                                  FilmLoader::GotFrame got, const Cancellation& cancellation) {
                               strips.push_back({times, box, std::move(got), cancellation});
                           }},
            .canTrim = [this] { return canTrim; },
            .trim =
                [this](const QString& source, double start, double end, const QString& destination,
                       MovieExport::Completion completion) {
                    trims.push_back({source, start, end, destination, std::move(completion)});
                },
            .exportGIF =
                [this](const QUrl& video, TimeRange range, const QUrl& destination,
                       std::function<void(bool)> completion) {
                    gifs.push_back({video, range, destination, std::move(completion)});
                }};
    }

    void open(const QUrl& video)
    {
        editor = VideoEditorWindowController::open(video, services());
        ASSERT_TRUE(editor);
        editor->onFileProduced = [this](const QUrl& made) { produced.push_back(made); };
        editor->makeKeyAndOrderFront();
        editor->window().resize(980, 640);
        editor->window().show();
        settle();
    }

    static PlayerState readyState()
    {
        PlayerState state;
        state.phase = PlayerState::Phase::ready;
        state.size = {1920, 1080};
        state.duration = 10;
        return state;
    }

    /// Opens a film that plays, its frames known.
    void openReady(const char* name = "clip.mp4")
    {
        open(file(name));
        record.player->become(readyState());
        ASSERT_TRUE(gotTimes);
        FilmTimes times;
        for (int frame = 0; frame < 100; ++frame)
            times.frames.push_back(frame / 10.0);
        times.duration = 10;
        gotTimes(times);
        settle();
    }

    PlayerView& view() { return editor->playerView(); }
    TrimStrip& strip() { return view().trimBar().strip(); }
    TrimHandle& handle(TrimModel::Handle side) { return strip().handle(side); }
    QString title() const { return editor->window().windowTitle(); }

    ChromeButton* button(const char* text)
    {
        for (auto* child : editor->window().findChildren<ChromeButton*>()) {
            if (child->text() == QLatin1String(text) && child->isVisible())
                return child;
        }
        return nullptr;
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget* focused = editor->window().focusWidget();
        QTest::keyClick(focused ? focused : &editor->window(), key, modifiers);
        settle();
    }

    /// Draws a handle so that its edge lies at a time.
    void drag(TrimModel::Handle side, double time)
    {
        TrimHandle& it = handle(side);
        const int from = it.width() / 2;
        const double now = side == TrimModel::Handle::start ? it.width() : 0;
        const QPoint to(qRound(strip().line().x(time) - it.x() - now) + from, 10);
        QTest::mousePress(&it, Qt::LeftButton, {}, {from, 10});
        const QPoint inStrip = it.mapTo(&strip(), to);
        QTest::mouseMove(&it, it.mapFrom(&strip(), inStrip));
        QTest::mouseRelease(&it, Qt::LeftButton, {}, it.mapFrom(&strip(), inStrip));
        settle();
    }

    QTemporaryDir folder;
    FakeClock clock;
    FakePlayer::Record record;
    FilmLoader::GotTimes gotTimes;
    std::vector<Frames> strips;
    bool canTrim = true;
    std::vector<Trim> trims;
    std::vector<GIF> gifs;
    std::vector<QUrl> produced;
    std::unique_ptr<VideoEditorWindowController> editor;
};
