// The window around the player: its title, its files, what it asks to be written.

#include "gui/VideoEditorFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

using End = MovieExport::End;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

TEST_F(VideoEditorTest, OpensAWindowNamedAfterItsFile)
{
    const QUrl video = file("clip [*].mp4");
    open(video);
    EXPECT_EQ(title(), text("clip [*][*].mp4")); // Qt's way to write it
    EXPECT_EQ(editor->window().windowFilePath(), video.toLocalFile());
    EXPECT_EQ(editor->videoURL(), video);
    EXPECT_EQ(editor->window().minimumSize(), QSize(720, 412));
    // Centred on the visible frame of 1440 x 875.
    EXPECT_EQ(FakePlatform::current().frames[&editor->window()],
              (Geometry::Rect{230, 117.5, 980, 640}));
    EXPECT_EQ(FakePlatform::current().front.back(), &editor->window());
    EXPECT_EQ(editor->window().focusWidget(), &view());
}

TEST_F(VideoEditorTest, AFileThatIsGoneOpensNoEditor)
{
    const QUrl video = file("clip.mp4");
    QFile::remove(video.toLocalFile());
    EXPECT_FALSE(VideoEditorWindowController::open(video, services()));
    EXPECT_FALSE(record.player);
}

TEST_F(VideoEditorTest, TheBarHasFourButtons)
{
    open(file("clip.mp4"));
    QStringList buttons;
    auto* bar = editor->window().findChild<QWidget*>(text("VideoEditorToolbar"));
    ASSERT_TRUE(bar);
    for (auto* child : bar->findChildren<ChromeButton*>())
        buttons += child->text() + u'|' + child->toolTip() +
                   (child->accent() == Chrome::Accent::blue ? text("|blue") : QString());
    EXPECT_EQ(buttons,
              (QStringList{
                  text("Trim|Select a range with the yellow handles, then Done"),
                  text("Save Trimmed|Export the selected range as a new .mov (no re-encode)"),
                  text("Export GIF|Export the selected range as an animated GIF (≤800 px, 10 fps)"),
                  text("Copy File|Put the video file on the clipboard|blue")}));
    EXPECT_EQ(bar->geometry(), QRect(0, 0, 980, 46));
    EXPECT_EQ(view().geometry(), QRect(0, 46, 980, 594));
    EXPECT_EQ(button("Trim")->x(), 10);
    EXPECT_EQ(button("Save Trimmed")->x(), button("Trim")->geometry().right() + 1 + 8);
}

TEST_F(VideoEditorTest, SavingWithoutTrimmingWritesTheWholeVideo)
{
    openReady("clip.mp4");
    QTest::mouseClick(button("Save Trimmed"), Qt::LeftButton);
    EXPECT_EQ(title(), text("Exporting video…"));
    ASSERT_EQ(trims.size(), 1U);
    EXPECT_EQ(trims[0].source, folder.filePath(text("clip.mp4")));
    EXPECT_EQ(trims[0].start, 0);
    EXPECT_EQ(trims[0].end, 10);
    EXPECT_EQ(trims[0].destination, folder.filePath(text("clip trimmed.mp4")));
    trims[0].completion({End::completed, {}});
    EXPECT_EQ(title(), text("Saved ✓ clip trimmed.mp4"));
    EXPECT_THAT(produced, ElementsAre(QUrl::fromLocalFile(trims[0].destination)));
}

TEST_F(VideoEditorTest, BeforeTheFramesAreKnownTheRangeEndsWhereverTheFilmDoes)
{
    open(file("clip.mp4"));
    EXPECT_EQ(editor->exportRange(), (FilmRange{0, std::numeric_limits<double>::infinity()}));
}

TEST_F(VideoEditorTest, SavingTwiceReplacesTheFirstOutput)
{
    openReady("clip.mp4");
    const QString output = folder.filePath(text("clip trimmed.mp4"));
    editor->saveTrimmed();
    file("clip trimmed.mp4");
    trims[0].completion({End::completed, {}});
    editor->saveTrimmed();
    EXPECT_FALSE(QFileInfo::exists(output)); // gone before the export begins
    EXPECT_EQ(trims[1].destination, output);
}

TEST_F(VideoEditorTest, WhateverStandsAtTheOutputGoesButNotWhatALinkLeadsTo)
{
    openReady("clip.mp4");
    const QString output = folder.filePath(text("clip trimmed.mp4"));
    ASSERT_TRUE(QDir().mkpath(output + text("/inside")));
    editor->saveTrimmed();
    EXPECT_FALSE(QFileInfo::exists(output));
    const QString kept = folder.filePath(text("kept"));
    ASSERT_TRUE(QDir().mkpath(kept));
    ASSERT_TRUE(QFile::link(kept, output));
    editor->saveTrimmed();
    EXPECT_FALSE(QFileInfo(output).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(kept));
}

TEST_F(VideoEditorTest, WhatWasSavedBeforeStaysWhenNothingCanBeSaved)
{
    openReady("clip.mp4");
    const QUrl before = file("clip trimmed.mp4");
    canTrim = false;
    editor->saveTrimmed();
    EXPECT_EQ(title(), text("Export failed"));
    EXPECT_TRUE(trims.empty());
    EXPECT_TRUE(QFileInfo::exists(before.toLocalFile()));
}

TEST_F(VideoEditorTest, OpensWhollyOnASmallScreen)
{
    // What a panel leaves of 960 x 540 points.
    FakePlatform::current().screens.front().visibleFrame = {10, 20, 950, 520};
    open(file("clip.mp4"));
    EXPECT_EQ(FakePlatform::current().frames[&editor->window()],
              (Geometry::Rect{10, 20, 950, 492})); // below a title bar
    EXPECT_EQ(editor->window().minimumSize(), QSize(720, 412));

    FakePlatform::current().screens.front().visibleFrame = {0, 0, 640.5, 400};
    open(file("other.mp4"));
    EXPECT_EQ(FakePlatform::current().frames[&editor->window()],
              (Geometry::Rect{0.25, 0, 640, 372}));
    EXPECT_EQ(editor->window().minimumSize(), QSize(640, 372));
}

TEST_F(VideoEditorTest, NamesAreMadeOfTheVideosOwnName)
{
    openReady("clip trimmed.mp4");
    editor->saveTrimmed();
    EXPECT_EQ(trims[0].destination, folder.filePath(text("clip trimmed trimmed.mp4")));
    trims[0].completion({End::completed, {}});
    editor->exportGIF();
    EXPECT_EQ(gifs[0].destination.fileName(), text("clip trimmed.gif"));
}

TEST_F(VideoEditorTest, AGIFIsNamedAfterTheVideoAfterATrimmedSaveToo)
{
    openReady("2024-05-01 at 10.11.12.mp4");
    editor->saveTrimmed();
    EXPECT_EQ(QFileInfo(trims[0].destination).fileName(),
              text("2024-05-01 at 10.11.12 trimmed.mp4"));
    trims[0].completion({End::completed, {}});
    QTest::mouseClick(button("Export GIF"), Qt::LeftButton);
    EXPECT_EQ(title(), text("Exporting GIF…"));
    ASSERT_EQ(gifs.size(), 1U);
    EXPECT_EQ(gifs[0].video, editor->videoURL());
    EXPECT_EQ(gifs[0].range.start, 0);
    EXPECT_EQ(gifs[0].range.duration, 10);
    EXPECT_EQ(gifs[0].destination.fileName(), text("2024-05-01 at 10.11.12.gif"));
    gifs[0].completion(true);
    EXPECT_EQ(title(), text("GIF ✓ 2024-05-01 at 10.11.12.gif"));
    EXPECT_EQ(produced.size(), 2U);
    EXPECT_EQ(produced.back(), gifs[0].destination);
}

TEST_F(VideoEditorTest, AFailedGIFSaysSoInTheTitleAlone)
{
    openReady();
    editor->exportGIF();
    gifs[0].completion(false);
    EXPECT_EQ(title(), text("GIF export failed"));
    EXPECT_TRUE(produced.empty());
}

TEST_F(VideoEditorTest, AFailedExportIsLogged)
{
    openReady();
    editor->saveTrimmed();
    trims[0].completion({End::failed, "the disk is full"});
    EXPECT_EQ(title(), text("Export failed"));
    EXPECT_EQ(TestLog::takeLines(), QStringList{text("video export failed: the disk is full")});
    EXPECT_TRUE(produced.empty());
}

TEST_F(VideoEditorTest, AnExportThatCannotBeginIsNot)
{
    openReady();
    editor->saveTrimmed();
    trims[0].completion({End::impossible, "there is no library"});
    EXPECT_EQ(title(), text("Export failed"));
    EXPECT_TRUE(produced.empty());
}

TEST_F(VideoEditorTest, AnExportEndsOnAnotherThread)
{
    openReady();
    editor->saveTrimmed();
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        trims[0].completion({End::completed, {}});
    }));
    thread->start();
    thread->wait();
    EXPECT_TRUE(produced.empty());
    settle();
    EXPECT_EQ(produced.size(), 1U);
}

TEST_F(VideoEditorTest, WhatEndsAfterTheEditorIsDroppedButAFailureIsLogged)
{
    openReady();
    editor->saveTrimmed();
    editor->saveTrimmed();
    editor->exportGIF();
    editor->window().close();
    editor.reset();
    settle();
    EXPECT_FALSE(record.player);
    trims[0].completion({End::completed, {}});
    gifs[0].completion(true);
    EXPECT_TRUE(produced.empty());
    trims[1].completion({End::failed, "no"});
    EXPECT_EQ(TestLog::takeLines(), QStringList{text("video export failed: no")});
    // What reads the film knows as well.
    gotTimes(FilmTimes{{0}, 1, {}});
    clock.advance(5s);
}

TEST_F(VideoEditorTest, CopyingPutsTheFileAloneOnThePasteboard)
{
    openReady();
    QTest::mouseClick(button("Copy File"), Qt::LeftButton);
    ASSERT_EQ(FakePlatform::current().pasteboard.size(), 1U);
    EXPECT_EQ(FakePlatform::current().pasteboard[0].fileURL, editor->videoURL());
    EXPECT_FALSE(FakePlatform::current().pasteboard[0].png);
    EXPECT_EQ(title(), text("Copied ✓"));
    clock.advance(1599ms);
    EXPECT_EQ(title(), text("Copied ✓"));
    clock.advance(1ms);
    EXPECT_EQ(title(), text("clip.mp4"));
}

TEST_F(VideoEditorTest, EachMessageIsTakenBackByItself)
{
    openReady();
    editor->copyFile();
    clock.advance(1s);
    editor->exportGIF();
    EXPECT_EQ(title(), text("Exporting GIF…"));
    clock.advance(600ms);
    EXPECT_EQ(title(), text("clip.mp4")); // by the first one's end
    editor->window().setWindowTitle(text("something"));
    clock.advance(999ms);
    EXPECT_EQ(title(), text("something"));
    clock.advance(1ms);
    EXPECT_EQ(title(), text("clip.mp4"));
}

TEST_F(VideoEditorTest, WhatCannotBeTrimmedSaysSo)
{
    open(file("clip.mp4"));
    const auto refuses = [&] {
        QTest::mouseClick(button("Trim"), Qt::LeftButton);
        const bool said = title() == text("Trimming unavailable") && !view().trimming().isOn();
        clock.advance(2s);
        return said;
    };
    EXPECT_FALSE(refuses()); // it is not there yet
    PlayerState state = readyState();
    state.duration.reset();
    record.player->become(state); // it has no length
    EXPECT_EQ(title(), text("Trimming unavailable"));
    clock.advance(2s);
    EXPECT_TRUE(refuses());
    state = {};
    state.phase = PlayerState::Phase::failed;
    record.player->become(state);
    EXPECT_TRUE(refuses());
    EXPECT_FALSE(view().controlsShow());
}

TEST_F(VideoEditorTest, TrimmingThatWasAskedForTooEarlyBeginsWhenTheFilmIsOpen)
{
    open(file("clip.mp4"));
    QTest::mouseClick(button("Trim"), Qt::LeftButton);
    EXPECT_FALSE(view().trimming().isOn());
    record.player->become(readyState());
    EXPECT_TRUE(view().trimming().isOn());
    view().trimming().cancel();
    record.player->become(readyState());
    EXPECT_FALSE(view().trimming().isOn()) << "once";

    open(file("other.mp4"));
    QTest::mouseClick(button("Trim"), Qt::LeftButton);
    editor.reset(); // it does not wait then
    settle();
}

TEST_F(VideoEditorTest, WithoutAPlayerTheWindowStillCopies)
{
    VideoEditorServices none = services();
    none.openPlayer = {};
    none.canTrim = {};
    none.exportGIF = {};
    editor = VideoEditorWindowController::open(file("clip.mp4"), none);
    ASSERT_TRUE(editor);
    editor->window().show();
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_End, Qt::Key_M, Qt::Key_Return})
        press(key);
    editor->trimClicked();
    EXPECT_EQ(title(), text("Trimming unavailable"));
    editor->saveTrimmed();
    EXPECT_EQ(title(), text("Export failed"));
    editor->exportGIF();
    EXPECT_EQ(title(), text("GIF export failed"));
    editor->copyFile();
    EXPECT_EQ(title(), text("Copied ✓"));
    EXPECT_EQ(editor->exportRange(), (FilmRange{0, std::numeric_limits<double>::infinity()}));
}

TEST_F(VideoEditorTest, ClosingPausesAndTellsOnce)
{
    openReady();
    int closed = 0;
    editor->onClose = [&](VideoEditorWindowController* who) {
        EXPECT_EQ(who, editor.get());
        EXPECT_EQ(record.pauses, 1);
        ++closed;
    };
    record.player->play();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(closed, 1);
    editor->window().close();
    EXPECT_EQ(closed, 1);
}

TEST_F(VideoEditorTest, KeysDoWhatTheButtonsDo)
{
    openReady();
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(trims.size(), 1U);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(FakePlatform::current().pasteboard.size(), 1U);
    press(Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(view().trimming().isOn());
}
