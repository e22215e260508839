// The video editor by a real mouse and real keys: a film is played, a range of it chosen and saved.

#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "desktop/flow/VideoEditorOnDesktop.h"
#include "desktop/harness/Clipboard.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include <csignal>
#include <optional>

using namespace Desktop;

namespace {

class VideoEditorFlow : public FlowTestOnDesktops {
protected:
    /// Opens the editor of a film by the hot key: it is the last capture.
    void openEditor()
    {
        const auto made = VideoEditorOnDesktop::makeFilm(*desktop);
        ASSERT_TRUE(succeeded(made));
        film = *made;
        tamrik.reset();
        ASSERT_TRUE(succeeded(VideoEditorOnDesktop::makeLastCapture(*desktop, film)));
        auto launched = Tamrik::startAndAwaitKeys(
            *desktop, QStringLiteral(TAMRIK_PROGRAM),
            {{QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:/nowhere")}});
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
        ASSERT_NO_FATAL_FAILURE(openAgain());
    }

    void openAgain()
    {
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+e"))));
        auto opened = VideoEditorOnDesktop::await(*desktop, film);
        ASSERT_TRUE(succeeded(opened));
        editor.emplace(*opened);
        ASSERT_TRUE(succeeded(editor->awaitFrame(0)));
    }

    Outcome<void> press(const char* keys) const { return input().key(QString::fromLatin1(keys)); }

    /// What is on the clipboard.
    QByteArray uris() const
    {
        const auto read = Clipboard(*desktop).read(QStringLiteral("text/uri-list"));
        return read ? read->trimmed() : QByteArray();
    }
    static QByteArray uriOf(const QString& path) { return QUrl::fromLocalFile(path).toEncoded(); }
    QString beside(const char* name) const
    {
        return QFileInfo(film).path() + u'/' + QString::fromLatin1(name);
    }

    void playByKeys()
    {
        ASSERT_TRUE(succeeded(press("space")));
        ASSERT_TRUE(succeeded(
            waitUntil(QStringLiteral("a later frame"), [&] { return editor->frame() > 5; })));
        ASSERT_TRUE(succeeded(press("space")));
        ASSERT_TRUE(succeeded(press("Home")));
        ASSERT_TRUE(succeeded(editor->awaitFrame(0)));
        ASSERT_TRUE(succeeded(press("Right")));
        ASSERT_TRUE(succeeded(editor->awaitFrame(1)));
        ASSERT_TRUE(succeeded(press("End")));
        ASSERT_TRUE(succeeded(editor->awaitFrame(lastFrame)));
    }

    /// From the end of the film on.
    void playByMouse()
    {
        constexpr int early = lastFrame / 10; // so that it plays for long
        ASSERT_TRUE(succeeded(editor->dragPosition(0.1)));
        ASSERT_TRUE(succeeded(editor->awaitFrame(early, 2)));
        ASSERT_TRUE(succeeded(editor->click(Control::Play)));
        ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a later frame"),
                                        [&] { return editor->frame() > early + 5; })));
        ASSERT_TRUE(succeeded(editor->click(Control::Play)));
        const auto paused = editor->awaitStanding();
        ASSERT_TRUE(succeeded(paused));
        EXPECT_LT(*paused, lastFrame);

        ASSERT_TRUE(succeeded(editor->awaitVolume(1)));
        ASSERT_TRUE(succeeded(editor->clickVolume(0.5)));
        ASSERT_TRUE(succeeded(editor->click(Control::Mute)));
        ASSERT_TRUE(succeeded(editor->awaitVolume(0)));
        ASSERT_TRUE(succeeded(editor->click(Control::Mute)));
        ASSERT_TRUE(succeeded(editor->awaitVolume(0.5))); // by the player's own word
    }

    /// The middle third, to within the width of the mouse's pixels.
    void drawHandles()
    {
        using Side = VideoEditorOnDesktop::Side;
        ASSERT_TRUE(succeeded(editor->click(Tool::Trim)));
        ASSERT_TRUE(succeeded(editor->awaitHandles()));
        ASSERT_TRUE(succeeded(editor->dragHandle(Side::Start, 1.0 / 3)));
        ASSERT_TRUE(succeeded(editor->awaitFrame(30, 2)));
        ASSERT_TRUE(succeeded(editor->dragHandle(Side::End, 2.0 / 3)));
        ASSERT_TRUE(succeeded(editor->awaitFrame(59, 2)));
    }

    /// A film that was made of the frames from `first` to `last`, at their times.
    void expectFrames(const QString& made, int first, int last) const
    {
        const auto whole = VideoEditorOnDesktop::frameTimes(film);
        const auto part = VideoEditorOnDesktop::frameTimes(made);
        ASSERT_TRUE(succeeded(whole));
        ASSERT_TRUE(succeeded(part));
        ASSERT_EQ(whole->size(), lastFrame + 1);
        ASSERT_EQ(part->size(), last - first + 1);
        for (int frame = first; frame <= last; ++frame)
            EXPECT_NEAR(part->at(frame - first), whole->at(frame) - whole->at(first), 1e-4);
        EXPECT_GT(whole->at(2) - whole->at(1), 0.01);
        EXPECT_LT(whole->at(2) - whole->at(1), whole->at(1) - whole->at(0) - 0.02) << "uneven";
    }

    /// A GIF of these frames, which show for so many seconds.
    static void expectGIF(const QString& path, int first, int last, double seconds)
    {
        QImageReader reader(path);
        QList<int> numbers;
        for (QImage frame; reader.read(&frame);) {
            numbers += VideoEditorOnDesktop::numberOf(frame.pixelColor(20, 20));
            EXPECT_EQ(reader.nextImageDelay(), 100);
        }
        ASSERT_NEAR(static_cast<double>(numbers.size()), 10 * seconds, 1);
        EXPECT_EQ(numbers.front(), first);
        EXPECT_LE(numbers.back(), last);
        EXPECT_GE(numbers.back(), last - 6);
    }

    using Tool = VideoEditorOnDesktop::Tool;
    using Control = VideoEditorOnDesktop::Control;
    static constexpr int lastFrame = VideoEditorOnDesktop::frameCount - 1;

    QString film;
    std::optional<VideoEditorOnDesktop> editor;
};

} // namespace

TEST_P(VideoEditorFlow, PlaysTrimsAndGivesAway)
{
    ASSERT_NO_FATAL_FAILURE(openEditor());
    ASSERT_NO_FATAL_FAILURE(playByKeys());
    ASSERT_NO_FATAL_FAILURE(playByMouse());

    ASSERT_TRUE(succeeded(press("End")));
    ASSERT_TRUE(succeeded(editor->awaitFrame(lastFrame)));
    ASSERT_NO_FATAL_FAILURE(drawHandles());
    ASSERT_TRUE(succeeded(editor->click(Control::CancelTrimming)));
    ASSERT_TRUE(succeeded(editor->awaitFrame(lastFrame)));
    ASSERT_NO_FATAL_FAILURE(drawHandles());
    ASSERT_TRUE(succeeded(editor->click(Control::ConfirmTrimming)));

    // What is saved is on the clipboard, and shows just what the editor plays now.
    ASSERT_TRUE(succeeded(editor->click(Tool::SaveTrimmed)));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the title that says so"), [&] {
        return editor->title() == QStringLiteral("Saved ✓ film trimmed.mp4");
    })));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const QString trimmed = beside("film trimmed.mp4");
    EXPECT_EQ(uris(), uriOf(trimmed));
    const auto begins = Film::firstFrame(trimmed);
    const auto ends = Film::lastFrame(trimmed);
    ASSERT_TRUE(succeeded(begins));
    ASSERT_TRUE(succeeded(ends));
    const int first = VideoEditorOnDesktop::numberOf(begins->pixelColor(20, 20));
    const int last = VideoEditorOnDesktop::numberOf(ends->pixelColor(20, 20));
    EXPECT_NEAR(first, 30, 2);
    EXPECT_NEAR(last, 59, 2);
    expectFrames(trimmed, first, last);
    ASSERT_TRUE(succeeded(press("Home")));
    EXPECT_TRUE(succeeded(editor->awaitFrame(first)));
    ASSERT_TRUE(succeeded(press("space")));
    ASSERT_TRUE(succeeded(editor->awaitFrame(last)));
    const auto stopped = editor->awaitStanding();
    ASSERT_TRUE(succeeded(stopped));
    EXPECT_EQ(*stopped, last);

    // So is a GIF, and the film itself.
    ASSERT_TRUE(succeeded(editor->click(Tool::ExportGIF)));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(2)));
    EXPECT_EQ(uris(), uriOf(beside("film.gif")));
    const auto part = Film::read(trimmed);
    ASSERT_TRUE(succeeded(part));
    expectGIF(beside("film.gif"), first, last, part->seconds);
    ASSERT_TRUE(succeeded(editor->click(Tool::CopyFile)));
    EXPECT_TRUE(succeeded(
        waitUntil(QStringLiteral("the film's address"), [&] { return uris() == uriOf(film); })));
    ASSERT_TRUE(succeeded(press("ctrl+w")));
    EXPECT_TRUE(
        succeeded(windows().awaitNone(QStringLiteral("the editor"), [&](const Window& window) {
            return window.id == editor->id();
        })));

    // The program may end while a film plays and another is being written, which is complete then.
    ASSERT_TRUE(QFile::remove(trimmed));
    ASSERT_NO_FATAL_FAILURE(openAgain());
    ASSERT_TRUE(succeeded(press("space")));
    ASSERT_TRUE(
        succeeded(waitUntil(QStringLiteral("a later frame"), [&] { return editor->frame() > 0; })));
    ASSERT_TRUE(succeeded(press("ctrl+s")));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("an export"), [&] {
        return editor->title() != QFileInfo(film).fileName();
    })));
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGTERM)));
    const auto ended = tamrik->app().waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ(tamrik->app().errorOutput().toStdString(), "");
    expectFrames(trimmed, 0, lastFrame);
    tamrik.reset();
}

INSTANTIATE_TEST_SUITE_P(VideoEditors, VideoEditorFlow,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"AtScale2",
                                                     {.scale = 2, .size = {2560, 1600}}}),
                         nameOf);
