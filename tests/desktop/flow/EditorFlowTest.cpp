// The editor by a real mouse and real keys: marks are drawn, changed, taken back, given away, and
// are there again when the picture is opened once more.

#include "desktop/flow/EditorOnDesktop.h"
#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Clipboard.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <cmath>

using namespace Desktop;
using Tool = EditorOnDesktop::Tool;

namespace {

const QLatin1String startKey("start");
const QLatin1String endKey("end");
const QLatin1String kindKey("kind");

const QColor red(0xFF, 0x3B, 0x30);

class EditorFlow : public FlowTestOnDesktops {
protected:
    /// Takes a picture of 360 x 210 points, a part of the terminal's window in it, and opens it.
    Outcome<EditorOnDesktop> openCapture()
    {
        const QRect window = terminal->window.geometry;
        const auto pixels = [this](double points) { return qRound(points * scale()); };
        const QRect area(window.left() - pixels(60), window.top() - pixels(60), pixels(360),
                         pixels(210));
        if (const auto pressed = tamrik->pressCaptureKey(); !pressed)
            return pressed.failure();
        if (const auto dragged = dragOut(area); !dragged)
            return dragged.failure();
        const auto path = tamrik->awaitCapture(1);
        if (!path)
            return path.failure();
        if (const auto away = tamrik->putChipsAway(); !away)
            return away.failure();
        capture = *path;
        return openEditor();
    }

    Outcome<EditorOnDesktop> openEditor() const
    {
        if (const auto pressed = press("alt+shift+e"); !pressed)
            return pressed.failure();
        return EditorOnDesktop::await(*desktop, capture);
    }

    Outcome<void> press(const char* keys) const { return input().key(QString::fromLatin1(keys)); }

    /// Waits until the screen shows, pixel by pixel, what a picture has.
    Outcome<void> awaitShown(const EditorOnDesktop& editor, const QImage& picture) const
    {
        return waitFor(QStringLiteral("the picture on the screen"), [&]() -> Outcome<void> {
            const auto shown = screen().grab(editor.picture());
            if (!shown)
                return shown.failure();
            const int differing = differingPixels(*shown, picture);
            return differing == 0 ? Outcome<void>()
                                  : Failure{QStringLiteral("%1 pixels differ").arg(differing)};
        });
    }

    /// Draws one mark of every kind, one after the other.
    void drawEveryKind(const EditorOnDesktop& editor)
    {
        const QImage plain(capture);
        int count = 0;
        for (const auto& [tool, kind, from, to] : EditorOnDesktop::strokes()) {
            SCOPED_TRACE(kind);
            ASSERT_TRUE(succeeded(editor.choose(tool)));
            ASSERT_TRUE(succeeded(editor.drag(from, to)));
            const auto now = editor.awaitMarks(++count);
            ASSERT_TRUE(succeeded(now));
            EXPECT_EQ(now->constLast().value(kindKey).toString(), QLatin1String(kind));
            EXPECT_EQ(pointOf(now->constLast(), startKey), from);
            EXPECT_EQ(pointOf(now->constLast(), endKey), to);
        }
        // Lines show their colour in their middle, outlines at the middle of their top.
        for (const QPointF place : {QPointF(60, 170), QPointF(155, 170), QPointF(240, 190),
                                    QPointF(315, 190), QPointF(60, 115)})
            EXPECT_TRUE(succeeded(screen().awaitColor(editor.at(place), red)));
        // A marker lets through what is below it: 0.45 of its colour, multiplied.
        const auto multiplied = [](int paper, int ink) {
            return qRound(paper * (0.55 + 0.45 * ink / 255));
        };
        const QPoint marked = editor.at({155, 115});
        const QColor below = plain.pixelColor(marked - editor.picture().topLeft());
        EXPECT_TRUE(succeeded(screen().awaitColor(marked,
                                                  QColor(multiplied(below.red(), red.red()),
                                                         multiplied(below.green(), red.green()),
                                                         multiplied(below.blue(), red.blue())),
                                                  2)));
        // The edge of the terminal's window is hidden: each block of 9 points is of one colour.
        const QRect hidden(editor.at({25, 81}), editor.at({124, 18}) - QPoint(1, 1));
        const int block = qRound(9 * scale());
        EXPECT_FALSE(isOfBlocks(plain.copy(hidden.translated(-editor.picture().topLeft())), block));
        EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("blocks of one colour"), [&] {
            const auto shown = screen().grab(hidden);
            return shown && isOfBlocks(*shown, block);
        })));

        // Return ends a label, and does nothing else.
        const Clipboard clipboard(*desktop);
        ASSERT_TRUE(succeeded(clipboard.write(QStringLiteral("UTF8_STRING"), "somebody else's")));
        ASSERT_TRUE(succeeded(editor.choose(Tool::Text)));
        ASSERT_TRUE(succeeded(editor.click({206, 100})));
        ASSERT_TRUE(succeeded(input().type(QStringLiteral("Peak 9?"))));
        ASSERT_TRUE(succeeded(press("BackSpace")));
        ASSERT_TRUE(succeeded(press("Return")));
        const auto withLabel = editor.awaitMarks(++count);
        ASSERT_TRUE(succeeded(withLabel));
        EXPECT_EQ(withLabel->constLast().value(QLatin1String("text")).toString(),
                  QStringLiteral("Peak 9"));
        EXPECT_EQ(withLabel->constLast().value(QLatin1String("fontSize")).toDouble(), 19);
        const auto untouched = clipboard.read(QStringLiteral("UTF8_STRING"));
        ASSERT_TRUE(succeeded(untouched));
        EXPECT_EQ(*untouched, QByteArray("somebody else's"));

        ASSERT_TRUE(succeeded(editor.choose(Tool::Counter)));
        ASSERT_TRUE(succeeded(editor.click({330, 116})));
        const auto withCounter = editor.awaitMarks(++count);
        ASSERT_TRUE(succeeded(withCounter));
        EXPECT_EQ(withCounter->constLast().value(QLatin1String("number")).toInt(), 1);
        EXPECT_TRUE(succeeded(screen().awaitColor(editor.at({330, 126}), red)));
    }

    static bool isOfBlocks(const QImage& picture, int block)
    {
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) != picture.pixel(x / block * block, y / block * block))
                    return false;
        return true;
    }

    QString capture;
};

} // namespace

TEST_P(EditorFlow, EveryKindIsDrawnChangedTakenBackGivenAwayAndFoundAgain)
{
    const auto editor = openCapture();
    ASSERT_TRUE(succeeded(editor));
    const QByteArray original = contents(capture);
    ASSERT_TRUE(succeeded(awaitShown(*editor, QImage(capture))));
    ASSERT_NO_FATAL_FAILURE(drawEveryKind(*editor));
    const auto drawn = editor->marks();
    ASSERT_EQ(drawn.size(), 9);

    // The arrow is moved, in one step however long the way; the ellipse is deleted.
    ASSERT_TRUE(succeeded(editor->choose(Tool::Select)));
    ASSERT_TRUE(succeeded(editor->drag({60, 170}, {40, 160})));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the moved arrow"), [&] {
        const auto now = editor->marks();
        return now.size() == 9 && pointOf(now.front(), startKey) == QPointF(0, 180) &&
               pointOf(now.front(), endKey) == QPointF(80, 140);
    })));
    ASSERT_TRUE(succeeded(editor->click({315, 190})));
    ASSERT_TRUE(succeeded(press("Delete")));
    ASSERT_TRUE(succeeded(editor->awaitMarks(8)));
    const QByteArray all = contents(editor->sidecar());

    constexpr int steps = 9 + 2;
    for (int i = 0; i < steps; ++i)
        ASSERT_TRUE(succeeded(press("ctrl+z")));
    ASSERT_TRUE(succeeded(editor->awaitMarks(0)));
    EXPECT_TRUE(succeeded(awaitShown(*editor, QImage(capture))));
    for (int i = 0; i < steps; ++i)
        ASSERT_TRUE(succeeded(press("ctrl+shift+z")));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("everything again"),
                                    [&] { return contents(editor->sidecar()) == all; })));

    // What is exported is what is to be seen, and all that the clipboard has.
    ASSERT_TRUE(succeeded(press("ctrl+s")));
    const QString copy = QFileInfo(capture).path() + u'/' + QFileInfo(capture).completeBaseName() +
                         QStringLiteral(" annotated.png");
    ASSERT_TRUE(succeeded(
        waitUntil(QStringLiteral("the exported file"), [&] { return !QImage(copy).isNull(); })));
    EXPECT_TRUE(succeeded(awaitShown(*editor, QImage(copy))));
    EXPECT_GT(differingPixels(QImage(copy), QImage(capture)), 1000);
    ASSERT_TRUE(succeeded(press("Return")));
    const Clipboard clipboard(*desktop);
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the picture on the clipboard"), [&] {
        const auto png = clipboard.read(QStringLiteral("image/png"));
        return png && *png == contents(copy);
    })));
    const auto targets = clipboard.targets();
    ASSERT_TRUE(succeeded(targets));
    EXPECT_FALSE(targets->contains(QStringLiteral("text/uri-list")));

    // Opened once more, everything can still be changed.
    ASSERT_TRUE(succeeded(press("ctrl+w")));
    ASSERT_TRUE(succeeded(windows().awaitNone(
        QStringLiteral("the editor"), [&](const Window& w) { return w.id == editor->id(); })));
    EXPECT_EQ(contents(editor->sidecar()), all);
    const auto again = openEditor();
    ASSERT_TRUE(succeeded(again));
    EXPECT_TRUE(succeeded(awaitShown(*again, QImage(copy))));
    ASSERT_TRUE(succeeded(again->choose(Tool::Select)));
    ASSERT_TRUE(succeeded(again->drag({330, 116}, {320, 60})));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the moved counter"), [&] {
        const auto now = again->marks();
        return now.size() == 8 && pointOf(now.constLast(), startKey) == QPointF(320, 60);
    })));
    EXPECT_TRUE(succeeded(screen().awaitColor(again->at({320, 69}), red)));

    // The picture itself is as it was.
    EXPECT_EQ(contents(capture), original);
}

namespace {

const DesktopCase uncomposited = {"OpenboxUncompositedScaleTwo",
                                  {.scale = 2, .compositor = Compositor::None}};
const DesktopCase xfwm = {"Xfwm4StatusNotifier",
                          {.windowManager = WindowManager::Xfwm4, .tray = Tray::StatusNotifier}};

} // namespace

INSTANTIATE_TEST_SUITE_P(Editors, EditorFlow,
                         testing::Values(DesktopCase{"Openbox", {}}, uncomposited, xfwm), nameOf);
