// The video editor by a real mouse and real keys: a film is played, a range of it chosen and saved.

#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "desktop/flow/VideoEditorOnDesktop.h"
#include "desktop/harness/Clipboard.h"

#include <QFile>
#include <QFileInfo>
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
        auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM));
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
    }

    Outcome<void> press(const char* keys) const { return input().key(QString::fromLatin1(keys)); }

    QString film;
    std::optional<VideoEditorOnDesktop> editor;
};

} // namespace

TEST_P(VideoEditorFlow, PlaysTrimsAndGivesAway)
{
    ASSERT_NO_FATAL_FAILURE(openEditor());
    ASSERT_TRUE(succeeded(editor->awaitFrame(0)));

    // Keys play, pause and go by frames.
    ASSERT_TRUE(succeeded(press("space")));
    ASSERT_TRUE(
        succeeded(waitUntil(QStringLiteral("a later frame"), [&] { return editor->frame() > 5; })));
    ASSERT_TRUE(succeeded(press("space")));
    ASSERT_TRUE(succeeded(press("Home")));
    ASSERT_TRUE(succeeded(editor->awaitFrame(0)));
    ASSERT_TRUE(succeeded(press("Right")));
    ASSERT_TRUE(succeeded(editor->awaitFrame(1)));
    ASSERT_TRUE(succeeded(press("End")));
    ASSERT_TRUE(succeeded(editor->awaitFrame(VideoEditorOnDesktop::frameCount - 1)));

    // The handles by mouse: the frame under each shows, to within the width of the mouse's pixels.
    using Side = VideoEditorOnDesktop::Side;
    ASSERT_TRUE(succeeded(editor->click(VideoEditorOnDesktop::Tool::Trim)));
    ASSERT_TRUE(succeeded(editor->awaitHandles()));
    ASSERT_TRUE(succeeded(editor->dragHandle(Side::Start, 1.0 / 3)));
    ASSERT_TRUE(succeeded(editor->awaitFrame(30, 2)));
    ASSERT_TRUE(succeeded(editor->dragHandle(Side::End, 2.0 / 3)));
    ASSERT_TRUE(succeeded(editor->awaitFrame(59, 2)));
    ASSERT_TRUE(succeeded(press("Return")));

    // What is saved is on the clipboard, and shows just what the editor plays now.
    ASSERT_TRUE(succeeded(editor->click(VideoEditorOnDesktop::Tool::SaveTrimmed)));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    EXPECT_EQ(editor->title(), QStringLiteral("Saved ✓ film trimmed.mp4"));
    const QString trimmed = QFileInfo(film).path() + QStringLiteral("/film trimmed.mp4");
    const auto begins = Film::firstFrame(trimmed);
    const auto ends = Film::lastFrame(trimmed);
    ASSERT_TRUE(succeeded(begins));
    ASSERT_TRUE(succeeded(ends));
    const int first = VideoEditorOnDesktop::numberOf(begins->pixelColor(20, 20));
    const int last = VideoEditorOnDesktop::numberOf(ends->pixelColor(20, 20));
    EXPECT_NEAR(first, 30, 2);
    EXPECT_NEAR(last, 59, 2);
    ASSERT_TRUE(succeeded(press("Home")));
    EXPECT_TRUE(succeeded(editor->awaitFrame(first)));
    ASSERT_TRUE(succeeded(press("space")));
    EXPECT_TRUE(succeeded(editor->awaitFrame(last))); // where it ends
    const Clipboard clipboard(*desktop);
    const auto uris = [&] {
        const auto read = clipboard.read(QStringLiteral("text/uri-list"));
        return read ? read->trimmed() : QByteArray();
    };
    EXPECT_EQ(uris(), QUrl::fromLocalFile(trimmed).toEncoded());
    ASSERT_TRUE(succeeded(editor->clickCopyFile()));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the film's address"), [&] {
        return uris() == QUrl::fromLocalFile(film).toEncoded();
    })));
    ASSERT_TRUE(succeeded(press("ctrl+w")));
    EXPECT_TRUE(
        succeeded(windows().awaitNone(QStringLiteral("the editor"), [&](const Window& window) {
            return window.id == editor->id();
        })));

    // The program may end while a film plays and another is being written.
    ASSERT_NO_FATAL_FAILURE(openAgain());
    ASSERT_TRUE(succeeded(press("space")));
    ASSERT_TRUE(
        succeeded(waitUntil(QStringLiteral("a later frame"), [&] { return editor->frame() > 0; })));
    ASSERT_TRUE(succeeded(press("ctrl+s")));
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGTERM)));
    const auto ended = tamrik->app().waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ(tamrik->app().errorOutput().toStdString(), "");
    EXPECT_TRUE(QFileInfo::exists(trimmed));
    tamrik.reset();
}

INSTANTIATE_TEST_SUITE_P(VideoEditors, VideoEditorFlow,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"AtScale2",
                                                     {.scale = 2, .size = {2560, 1600}}}),
                         nameOf);
