// An editor's window among others: its size, and what is typed in it while others come and go.

#include "desktop/flow/EditorOnDesktop.h"
#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/FullScreenWindow.h"
#include "desktop/harness/Grab.h"
#include "desktop/harness/TrayIcon.h"

using namespace Desktop;
using Tool = EditorOnDesktop::Tool;

namespace {

class EditorWindow : public FlowTest {
protected:
    /// Takes a picture of 400 x 300 points and opens it.
    void beginWithEditor(const Options& options)
    {
        begin(options);
        ASSERT_FALSE(HasFatalFailure());
        ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
        ASSERT_TRUE(succeeded(dragOut(QRect(QPoint(200, 160), QSize(400, 300) * scale()))));
        const auto path = tamrik->awaitCapture(1);
        ASSERT_TRUE(succeeded(path));
        ASSERT_TRUE(succeeded(tamrik->putChipsAway()));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+e"))));
        const auto opened = EditorOnDesktop::await(*desktop, *path);
        ASSERT_TRUE(succeeded(opened));
        editor.emplace(*opened);
    }

    QRect geometry() const
    {
        const QList<Window> found =
            windows().where([this](const Window& window) { return window.id == editor->id(); });
        return found.isEmpty() ? QRect() : found.front().geometry;
    }

    /// Asks for a size in points, as a user does who drags the window's corner.
    Outcome<void> resize(QSize size) const
    {
        const QSize pixels = size * scale();
        const auto done = run(QStringLiteral("xdotool"),
                              {QStringLiteral("windowsize"), QString::number(editor->id()),
                               QString::number(pixels.width()), QString::number(pixels.height())},
                              desktop->environment());
        return done ? Outcome<void>() : done.failure();
    }

    Outcome<void> awaitSize(QSize size) const
    {
        return waitFor(QStringLiteral("the window's size"), [&]() -> Outcome<void> {
            const QSize now = geometry().size();
            if (now == size * scale())
                return {};
            return Failure{QStringLiteral("%1 x %2").arg(now.width()).arg(now.height())};
        });
    }

    Outcome<void> type(const char* text) const { return input().type(QString::fromLatin1(text)); }
    Outcome<void> press(const char* key) const { return input().key(QString::fromLatin1(key)); }

    std::optional<EditorOnDesktop> editor;
};

} // namespace

TEST_F(EditorWindow, IsWhollyOnASmallScreenItsToolbarToo)
{
    constexpr QSize size = {853, 480};
    beginWithEditor({.size = size});
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_TRUE(QRect(QPoint(), size).contains(geometry()));
    // A toolbar that is cut off does without its last button.
    const QRect bar(geometry().topLeft(), QSize(geometry().width(), 46));
    const QPoint last = bar.center() + QPoint(bar.width() / 2 - 50, 0);
    ASSERT_TRUE(succeeded(input().click(last)));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the flattened copy"), [&] {
        return tamrik->captures().filter(QStringLiteral("annotated")).size() == 1;
    })));
}

TEST_F(EditorWindow, OfASmallPictureIsAsWideAsTheToolbarAndNeverSmaller)
{
    beginWithEditor({.scale = 2, .windowManager = WindowManager::Xfwm4});
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_TRUE(succeeded(awaitSize({940, 346})));
    // The picture is shown at its size.
    EXPECT_EQ(editor->picture().size(), QSize(800, 600));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the picture on the screen"), [&] {
        const auto shown = screen().grab(editor->picture());
        return shown && differingPixels(*shown, QImage(editor->path())) == 0;
    })));

    // 360 points high with a title bar of 28.
    ASSERT_TRUE(succeeded(resize({300, 200})));
    EXPECT_TRUE(succeeded(awaitSize({940, 332})));
    ASSERT_TRUE(succeeded(resize({950, 400})));
    EXPECT_TRUE(succeeded(awaitSize({950, 400})));
    ASSERT_TRUE(succeeded(resize({950, 10})));
    EXPECT_TRUE(succeeded(awaitSize({950, 332})));
}

TEST_F(EditorWindow, HasRoomForItsToolbarOnAScreenOfALargerScaleToo)
{
    beginWithEditor({.screens = 2, .scale = 1, .secondScale = 2, .secondSize = {2560, 1600}});
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(succeeded(awaitSize({940, 346})));
    ASSERT_TRUE(succeeded(run(QStringLiteral("xdotool"),
                              {QStringLiteral("windowmove"), QString::number(editor->id()),
                               QString::number(1920 + 500), QString::number(500)},
                              desktop->environment())));
    EXPECT_TRUE(succeeded(awaitSize(2 * QSize(940, 332))));
    ASSERT_TRUE(succeeded(resize({2000, 700})));
    EXPECT_TRUE(succeeded(awaitSize({2000, 700})));
    ASSERT_TRUE(succeeded(resize({950, 350})));
    EXPECT_TRUE(succeeded(awaitSize(2 * QSize(940, 332))));
}

TEST_F(EditorWindow, ALabelIsTypedOnWhateverOtherWindowsCome)
{
    beginWithEditor({});
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(succeeded(editor->choose(Tool::Text)));
    ASSERT_TRUE(succeeded(editor->click({30, 200})));
    ASSERT_TRUE(succeeded(type("a")));

    // A window over it that bypasses the window manager, as those of input methods do.
    {
        const auto above = FullScreenWindow::show(*desktop, FullScreenWindow::Kind::Bypass);
        ASSERT_TRUE(succeeded(above));
        ASSERT_TRUE(succeeded(type("b")));
    }
    // Another program's menu, which takes the keys for a while.
    {
        const auto menu = Grab::take(*desktop, Grab::Device::Keyboard);
        ASSERT_TRUE(succeeded(menu));
        ASSERT_TRUE(succeeded(type("x")));
    }
    ASSERT_TRUE(succeeded(type("c")));
    // The field's own menu.
    ASSERT_TRUE(succeeded(input().click(editor->at({100, 210}), Button::Right)));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(press("Escape")));
    ASSERT_TRUE(succeeded(tamrik->awaitNoMenu()));
    ASSERT_TRUE(succeeded(type("d")));
    // The program's.
    const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
    ASSERT_TRUE(succeeded(icon));
    ASSERT_TRUE(succeeded(input().click(icon->center())));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(press("Escape")));
    ASSERT_TRUE(succeeded(tamrik->awaitNoMenu()));
    ASSERT_TRUE(succeeded(windows().awaitFocused(editor->id())));
    ASSERT_TRUE(succeeded(type("e")));
    // Somebody else's window, in which more is typed than takes the tenth of a second after which
    // Qt believes that the focus has gone.
    ASSERT_TRUE(succeeded(windows().activate(terminal->window.id)));
    ASSERT_TRUE(succeeded(windows().awaitFocused(terminal->window.id)));
    ASSERT_TRUE(succeeded(type("something else altogether")));
    ASSERT_TRUE(succeeded(press("Return")));
    EXPECT_TRUE(succeeded(awaitTyped("something else altogether\n")));
    EXPECT_TRUE(editor->marks().isEmpty());
    ASSERT_TRUE(succeeded(windows().activate(editor->id())));
    ASSERT_TRUE(succeeded(windows().awaitFocused(editor->id())));
    ASSERT_TRUE(succeeded(type("f")));

    EXPECT_TRUE(editor->marks().isEmpty());
    ASSERT_TRUE(succeeded(press("Return")));
    const auto marks = editor->awaitMarks(1);
    ASSERT_TRUE(succeeded(marks));
    EXPECT_EQ(marks->front().value(QLatin1String("text")).toString(), QStringLiteral("abcdef"));
}
