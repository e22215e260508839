// An editor that is open when the program ends.

#include "desktop/flow/EditorOnDesktop.h"
#include "desktop/flow/FlowTest.h"
#include "desktop/harness/TrayIcon.h"

#include <csignal>

using namespace Desktop;
using Tool = EditorOnDesktop::Tool;

namespace {

class EditorEnd : public FlowTest {
protected:
    /// Takes a picture, opens it, draws an arrow, and begins a label without ending it.
    void SetUp() override
    {
        begin({});
        ASSERT_FALSE(HasFatalFailure());
        ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
        ASSERT_TRUE(succeeded(dragOut(area())));
        const auto path = tamrik->awaitCapture(1);
        ASSERT_TRUE(succeeded(path));
        ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+e"))));
        const auto opened = EditorOnDesktop::await(*desktop, *path);
        ASSERT_TRUE(succeeded(opened));
        editor.emplace(*opened);
        ASSERT_TRUE(succeeded(editor->drag({20, 100}, {100, 60})));
        ASSERT_TRUE(succeeded(editor->awaitMarks(1)));
        ASSERT_TRUE(succeeded(editor->choose(Tool::Text)));
        ASSERT_TRUE(succeeded(editor->click({30, 30})));
        ASSERT_TRUE(succeeded(input().type(QStringLiteral("half"))));
    }

    /// The leak checker, where there is one, would say what is left behind.
    void expectGoodEnd()
    {
        const auto ended = tamrik->app().waitForExit();
        ASSERT_TRUE(succeeded(ended));
        EXPECT_EQ(*ended, (Exit{0, false}));
        EXPECT_EQ(tamrik->app().errorOutput(), QString());
        const QList<QJsonObject> marks = editor->marks();
        ASSERT_EQ(marks.size(), 2);
        EXPECT_EQ(marks[0][QStringLiteral("kind")], QStringLiteral("arrow"));
        EXPECT_EQ(marks[1][QStringLiteral("text")], QStringLiteral("half"));
        tamrik.reset();
    }

    std::optional<EditorOnDesktop> editor;
};

} // namespace

TEST_F(EditorEnd, ASignalSavesWhatIsOpen)
{
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGTERM)));
    expectGoodEnd();
}

TEST_F(EditorEnd, QuitSavesWhatIsOpen)
{
    const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
    ASSERT_TRUE(succeeded(icon));
    ASSERT_TRUE(succeeded(input().click(icon->center())));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up")))); // the last item
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    expectGoodEnd();
}
