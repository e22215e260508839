#include "ChromeButton.h"
#include "Editor/AnnotationRenderer.h"
#include "Editor/CanvasView.h"
#include "Editor/ColorSwatch.h"
#include "Editor/EditorToolbar.h"
#include "Editor/EditorWindowController.h"
#include "Editor/LabelField.h"
#include "Editor/SegmentedControl.h"
#include "Editor/Sidecar.h"
#include "Editor/ZoomView.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/Printers.h"
#include "support/TestLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QInputMethodEvent>
#include <QShortcut>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class EditorTest : public testing::Test {
protected:
    EditorTest() { FakePlatform::reset(); }

    /// A white picture of so many points, of density 2.
    QUrl picture(const char* name, int width, int height) const
    {
        QImage image(2 * width, 2 * height, QImage::Format_RGB32);
        image.fill(Qt::white);
        constexpr double metresAnInch = 0.0254;
        image.setDotsPerMeterX(qRound(144 / metresAnInch));
        image.setDotsPerMeterY(qRound(144 / metresAnInch));
        const QString path = folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(image.save(path));
        return QUrl::fromLocalFile(path);
    }

    EditorWindowController& open(const QUrl& file)
    {
        editor = EditorWindowController::open(file, clock.clock());
        EXPECT_TRUE(editor);
        editor->makeKeyAndOrderFront();
        settle();
        return *editor;
    }

    CanvasView& canvas() { return editor->canvas(); }
    CanvasModel& model() { return editor->canvas().model(); }

    /// Points of the picture, y up; shown at magnification 1.
    void drag(QPoint from, QPoint to)
    {
        const int height = canvas().height();
        const auto place = [height](QPoint p) { return QPoint(p.x(), height - p.y()); };
        QTest::mousePress(&canvas(), Qt::LeftButton, {}, place(from));
        QTest::mouseMove(&canvas(), place((from + to) / 2));
        QTest::mouseMove(&canvas(), place(to));
        QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, place(to));
    }

    void click(QPoint p) { drag(p, p); }

    void chooseTool(EditorTool tool)
    {
        for (const auto& [its, button] : editor->toolbar().toolButtons()) {
            if (its == tool)
                QTest::mouseClick(button, Qt::LeftButton);
        }
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget* focused = editor->window().focusWidget();
        QTest::keyClick(focused ? focused : &editor->window(), key, modifiers);
        settle();
    }

    /// Where a label is being typed.
    LabelField* field()
    {
        settle(); // the last one goes a turn of the event loop later
        return canvas().findChild<LabelField*>();
    }

    ChromeButton* button(const char* tip)
    {
        for (ChromeButton* child : editor->toolbar().findChildren<ChromeButton*>()) {
            if (child->toolTip() == QString::fromUtf8(tip))
                return child;
        }
        return nullptr;
    }

    QString sidecar(const QUrl& file) const { return Sidecar::path(file.toLocalFile()); }

    QTemporaryDir folder;
    FakeClock clock;
    std::unique_ptr<EditorWindowController> editor;
};

} // namespace

TEST_F(EditorTest, OnASmallScreenTheWindowFitsAndTheToolbarToo)
{
    FakePlatform::current().screens.front().visibleFrame = {0, 0, 853, 460};
    open(picture("shot.png", 400, 300));
    EXPECT_EQ(FakePlatform::current().frames[&editor->window()], (Geometry::Rect{0, 57, 853, 346}));
    EXPECT_EQ(editor->window().minimumSize(), QSize(853, 332));
    editor->window().resize(853, 346);
    settle();
    const auto* last = button("Save flattened copy next to the original");
    EXPECT_EQ(last->geometry().right(), 853 - 1 - 10);
    EXPECT_EQ(last->width(), last->sizeHint().width());
}

TEST_F(EditorTest, APictureOpensAtItsSizeOnScreen)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("shot.png"));
    EXPECT_EQ(editor->window().windowFilePath(), file.toLocalFile());
    EXPECT_EQ(editor->window().minimumSize(), QSize(940, 332));
    EXPECT_EQ(canvas().size(), QSize(400, 300));
    EXPECT_EQ(FakePlatform::current().front.back(), &editor->window());
    // Centred on the visible frame of 1440 x 875.
    EXPECT_EQ(FakePlatform::current().frames[&editor->window()],
              (Geometry::Rect{250, 264.5, 940, 346}));
    EXPECT_EQ(editor->window().focusWidget(), &canvas());
}

TEST_F(EditorTest, WhatIsNoPictureDoesNotOpen)
{
    EXPECT_FALSE(EditorWindowController::open(
        QUrl::fromLocalFile(folder.filePath(QStringLiteral("none.png"))), clock.clock()));
}

TEST_F(EditorTest, EveryChangeIsInTheSidecarSoon)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    drag({50, 60}, {150, 160});
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations()[0].start, (Geometry::Point{50, 60}));
    EXPECT_EQ(model().annotations()[0].end, (Geometry::Point{150, 160}));
    // No further change and no close brings it about.
    const auto isSaved = [&] {
        return Sidecar::load(file.toLocalFile()) == model().annotations() &&
               QFile::exists(sidecar(file)) != model().annotations().isEmpty();
    };
    EXPECT_TRUE(runUntil(isSaved));
    QTest::mouseClick(button("Remove all annotations"), Qt::LeftButton);
    EXPECT_TRUE(runUntil(isSaved));
    QTest::mouseClick(button("Undo (⌘Z)"), Qt::LeftButton);
    EXPECT_EQ(model().annotations().size(), 1);
    EXPECT_TRUE(runUntil(isSaved));
    QTest::mouseClick(button("Redo (⇧⌘Z)"), Qt::LeftButton);
    EXPECT_TRUE(runUntil(isSaved));
}

TEST_F(EditorTest, ReopeningBringsTheAnnotationsBack)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    drag({50, 60}, {150, 160});
    const auto before = model().annotations();
    editor->window().close();
    editor.reset();
    open(file);
    EXPECT_EQ(model().annotations(), before);
}

TEST_F(EditorTest, ClosingSavesAndTellsOnce)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    int closings = 0;
    editor->onClose = [&](const EditorWindowController* closed) {
        EXPECT_EQ(closed, editor.get());
        ++closings;
    };
    QFile stale(sidecar(file));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();
    editor->window().close();
    editor->window().close();
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(QFile::exists(sidecar(file))); // there are no annotations
}

TEST_F(EditorTest, TheToolbarHasEveryToolInOrderUnderItsNameAndChooses)
{
    open(picture("shot.png", 400, 300));
    QStringList tips;
    for (const auto& [tool, toolButton] : editor->toolbar().toolButtons()) {
        tips += toolButton->toolTip();
        QTest::mouseClick(toolButton, Qt::LeftButton);
        EXPECT_EQ(model().tool(), tool);
        for (const auto& [its, other] : editor->toolbar().toolButtons())
            EXPECT_EQ(other->isToggledOn(), its == tool);
        EXPECT_EQ(canvas().cursor().shape(),
                  tool == EditorTool::select ? Qt::ArrowCursor : Qt::CrossCursor);
    }
    EXPECT_EQ(tips.join(u'|'),
              QStringLiteral("Select / move (drag), Delete removes|Arrow|Line|Rectangle|Ellipse|"
                             "Freehand|Highlighter|Text (click to place)|"
                             "Numbered counter (click to place)|Pixelate / redact"));
}

TEST_F(EditorTest, AColourIsForWhatIsDrawnNext)
{
    open(picture("shot.png", 400, 300));
    drag({50, 60}, {150, 160});
    QStringList hexes;
    for (const auto& [hex, swatch] : editor->toolbar().colorButtons())
        hexes += hex;
    EXPECT_EQ(hexes.join(u' '), QStringLiteral("#FF3B30 #FF9500 #FFCC00 #34C759 #0A84FF #BF5AF2 "
                                               "#000000 #FFFFFF"));
    EXPECT_TRUE(editor->toolbar().colorButtons().front().second->isHighlighted());
    ColorSwatch* white = editor->toolbar().colorButtons().back().second;
    QTest::mouseClick(white, Qt::LeftButton);
    for (const auto& [hex, swatch] : editor->toolbar().colorButtons()) {
        EXPECT_EQ(swatch->borderWidth(), swatch == white ? 2.5 : 1.5);
        EXPECT_EQ(swatch->borderColor(),
                  swatch == white ? QColor(0x0A, 0x84, 0xFF) : QColor(0x40, 0x41, 0x42));
    }
    drag({200, 60}, {250, 160});
    EXPECT_EQ(model().annotations()[0].colorHex, QStringLiteral("#FF3B30"));
    EXPECT_EQ(model().annotations()[1].colorHex, QStringLiteral("#FFFFFF"));
}

TEST_F(EditorTest, StrokesAreTwoFourOrSeven)
{
    open(picture("shot.png", 400, 300));
    auto* strokes = editor->toolbar().findChild<SegmentedControl*>();
    ASSERT_TRUE(strokes);
    EXPECT_EQ(strokes->toolTip(), QStringLiteral("Stroke / text size"));
    EXPECT_EQ(strokes->selectedSegment(), 1);
    const auto segments = strokes->findChildren<QAbstractButton*>();
    const double widths[] = {2, 4, 7};
    for (int i = 0; i < 3; ++i) {
        QTest::mouseClick(segments[i], Qt::LeftButton);
        EXPECT_EQ(model().strokeWidth(), widths[i]);
        EXPECT_EQ(strokes->selectedSegment(), i);
    }
}

TEST_F(EditorTest, ALabelIsTypedWhereItStands)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    ASSERT_TRUE(field());
    EXPECT_EQ(field()->placeholderText(), QStringLiteral("Text…"));
    // 320 wide, 12 higher than its text of 19; its bottom left corner at the point.
    EXPECT_EQ(field()->geometry(), QRect(60, 300 - 70 - 31, 320, 31));
    QTest::keyClicks(field(), QStringLiteral(" Look "));
    press(Qt::Key_Return);
    EXPECT_FALSE(canvas().isTyping());
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations()[0].text, QStringLiteral("Look"));
    EXPECT_EQ(model().annotations()[0].start, (Geometry::Point{60, 70}));
    // Return did not copy, and the canvas has the keys again.
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_EQ(editor->window().focusWidget(), &canvas());
    press(Qt::Key_Return);
    EXPECT_EQ(FakePlatform::current().pasteboard.size(), 1u);
}

TEST_F(EditorTest, AnotherPressCommitsWhatIsTyped)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    QTest::keyClicks(field(), QStringLiteral("one"));
    click({60, 170});
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_TRUE(canvas().isTyping());
    QTest::keyClicks(field(), QStringLiteral("two"));
    chooseTool(EditorTool::arrow);
    EXPECT_EQ(model().annotations().size(), 2);
    EXPECT_FALSE(canvas().isTyping());
}

TEST_F(EditorTest, WhileALabelIsTypedUndoIsItsOwn)
{
    open(picture("shot.png", 400, 300));
    drag({50, 60}, {150, 160});
    chooseTool(EditorTool::text);
    click({60, 70});
    QTest::keyClicks(field(), QStringLiteral("one"));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model().annotations().size(), 1);
    EXPECT_NE(field()->text(), QStringLiteral("one"));
}

TEST_F(EditorTest, ALabelsKeysAreItsOwnAndTheClipboardToo)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    QTest::keyClicks(field(), QStringLiteral("one"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(field()->text(), QString());
    press(Qt::Key_V, Qt::ControlModifier);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(field()->text(), QStringLiteral("oneone"));
    for (const Qt::Key key : {Qt::Key_C, Qt::Key_S, Qt::Key_W})
        press(key, Qt::ControlModifier);
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("shot.png"));
    EXPECT_TRUE(editor->window().isVisible());
    // There is no next field: Tab ends it, and what is seen stays.
    editor->zoomView().setMagnification(8);
    const QPoint place = canvas().pos();
    press(Qt::Key_Tab);
    EXPECT_FALSE(canvas().isTyping());
    EXPECT_EQ(canvas().pos(), place);
    EXPECT_EQ(editor->window().focusWidget(), &canvas());
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations().front().text, QStringLiteral("oneone"));
}

TEST_F(EditorTest, WhatAnInputMethodWasStillAtIsPartOfTheLabel)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    QTest::keyClicks(field(), QStringLiteral("a "));
    QInputMethodEvent composing(QStringLiteral("かな"), {});
    QCoreApplication::sendEvent(field(), &composing);
    QTest::mouseClick(button("Save flattened copy next to the original"), Qt::LeftButton);
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations().front().text, QStringLiteral("a かな"));

    // What it has given away is there once.
    click({60, 170});
    QCoreApplication::sendEvent(field(), &composing);
    QInputMethodEvent done(QString(), {});
    done.setCommitString(QStringLiteral("仮名"));
    QCoreApplication::sendEvent(field(), &done);
    press(Qt::Key_Return);
    EXPECT_EQ(model().annotations().back().text, QStringLiteral("仮名"));
}

TEST_F(EditorTest, AHeldKeyDoesOneThing)
{
    open(picture("shot.png", 400, 300));
    drag({50, 60}, {150, 160});
    chooseTool(EditorTool::select);
    click({100, 110});
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QString(), false);
    QKeyEvent again(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QString(), true);
    QCoreApplication::sendEvent(&canvas(), &escape);
    EXPECT_FALSE(model().selectedID());
    QCoreApplication::sendEvent(&canvas(), &again);
    EXPECT_TRUE(editor->window().isVisible());
    for (const QShortcut* shortcut : editor->window().findChildren<QShortcut*>()) {
        const QString keys = shortcut->key().toString();
        EXPECT_EQ(shortcut->autoRepeat(), !keys.endsWith(u'C') && !keys.endsWith(u'S') &&
                                              !keys.endsWith(u'W') && !keys.endsWith(u'0'))
            << keys.toStdString();
    }
}

TEST_F(EditorTest, AnotherWindowOrAMenuDoesNotEndTyping)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    for (const Qt::FocusReason reason : {Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
        QFocusEvent out(QEvent::FocusOut, reason);
        QCoreApplication::sendEvent(field(), &out);
        EXPECT_TRUE(canvas().isTyping());
    }
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QCoreApplication::sendEvent(field(), &out);
    EXPECT_FALSE(canvas().isTyping());
}

TEST_F(EditorTest, KeysUndoRedoCopyExportAndClose)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    drag({50, 60}, {150, 160});
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(model().annotations().isEmpty());
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(model().annotations().size(), 1);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(FakePlatform::current().pasteboard.size(), 1u);
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("shot annotated.png"))));
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(editor->window().isVisible());
}

TEST_F(EditorTest, DeleteRemovesTheSelectionAndEscapeDeselectsBeforeItCloses)
{
    open(picture("shot.png", 400, 300));
    for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Delete}) {
        chooseTool(EditorTool::rect);
        drag({50, 60}, {150, 160});
        chooseTool(EditorTool::select);
        click({100, 100});
        EXPECT_TRUE(model().selectedID());
        press(key);
        EXPECT_TRUE(model().annotations().isEmpty());
    }
    chooseTool(EditorTool::rect);
    drag({50, 60}, {150, 160});
    chooseTool(EditorTool::select);
    click({100, 100});
    press(Qt::Key_Escape);
    EXPECT_FALSE(model().selectedID());
    EXPECT_TRUE(editor->window().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(editor->window().isVisible());
}

TEST_F(EditorTest, ACopyIsThePixelsAloneAndTheTitleSaysSoForAWhile)
{
    open(picture("shot.png", 400, 300));
    drag({50, 60}, {150, 160});
    press(Qt::Key_Return);
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_FALSE(pasteboard[0].fileURL);
    QImage copy;
    ASSERT_TRUE(copy.loadFromData(*pasteboard[0].png, "PNG"));
    EXPECT_EQ(copy.size(), QSize(800, 600));
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Copied ✓"));
    clock.advance(1399ms);
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Copied ✓"));
    clock.advance(1ms);
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("shot.png"));
}

TEST_F(EditorTest, OnlyReturnItselfCopies)
{
    open(picture("shot.png", 400, 300));
    press(Qt::Key_Enter);
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(FakePlatform::current().pasteboard.empty());
    press(Qt::Key_Return);
    EXPECT_EQ(FakePlatform::current().pasteboard.size(), 1u);
}

TEST_F(EditorTest, AnExportLiesBesideThePictureAndReplacesTheLast)
{
    open(picture("a.b.png", 400, 300));
    QTest::mouseClick(button("Save flattened copy next to the original"), Qt::LeftButton);
    const QString path = folder.filePath(QStringLiteral("a.b annotated.png"));
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Exported ✓ a.b annotated.png"));
    const QImage first(path);
    EXPECT_EQ(first.size(), QSize(800, 600));
    drag({50, 60}, {150, 160});
    QTest::mouseClick(button("Save flattened copy next to the original"), Qt::LeftButton);
    EXPECT_NE(QImage(path), first);
}

TEST_F(EditorTest, AFailedExportSaysSoAndLeavesALine)
{
    const QUrl file = picture("shot.png", 400, 300);
    open(file);
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("shot annotated.png/in the way"))));
    editor->exportFlattened();
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Export failed"));
    const QStringList lines = TestLog::takeLines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("export failed: "))) << qPrintable(lines[0]);
}

TEST_F(EditorTest, TheMagnificationHasItsLimitsAndKeepsTheMiddle)
{
    open(picture("shot.png", 400, 300));
    ZoomView& view = editor->zoomView();
    view.setMagnification(100);
    EXPECT_EQ(view.magnification(), 8);
    EXPECT_EQ(canvas().size(), QSize(3200, 2400));
    view.setMagnification(0.001);
    EXPECT_EQ(view.magnification(), 0.15);
    view.setMagnification(1);
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(view.magnification(), 1.25);
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(view.magnification(), 1);
    press(Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(view.magnification(), 1.25);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(view.magnification(), 1);
    // The middle of what is seen stays there.
    view.setMagnification(4);
    const QPoint middle = view.viewport()->rect().center();
    const auto shown = [&] {
        return QPointF(canvas().mapFrom(view.viewport(), middle)) / canvas().zoom();
    };
    const QPointF before = shown();
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_NEAR(shown().x(), before.x(), 1);
    EXPECT_NEAR(shown().y(), before.y(), 1);
}

TEST_F(EditorTest, ALabelBeingTypedFollowsColourAndSize)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::text);
    click({60, 70});
    QTest::keyClicks(field(), QStringLiteral("Look here"));
    field()->setSelection(2, 4);
    QTest::mouseClick(editor->toolbar().colorButtons().back().second, Qt::LeftButton);
    EXPECT_EQ(field()->palette().color(QPalette::Text), QColor(Qt::white));
    const auto* strokes = editor->toolbar().findChild<SegmentedControl*>();
    QTest::mouseClick(strokes->findChildren<QAbstractButton*>()[2], Qt::LeftButton);
    EXPECT_EQ(field()->font().pixelSize(), 26);
    EXPECT_EQ(field()->geometry(), QRect(60, 300 - 70 - 38, 320, 38));
    // Typing goes on where it was.
    EXPECT_TRUE(field()->hasFocus());
    EXPECT_EQ(field()->selectionStart(), 2);
    EXPECT_EQ(field()->selectedText(), QStringLiteral("ok h"));
    press(Qt::Key_Return);
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations()[0].colorHex, QStringLiteral("#FFFFFF"));
    EXPECT_EQ(model().annotations()[0].fontSize, 26);
}

TEST_F(EditorTest, PointsAreThePicturesAtEveryMagnification)
{
    open(picture("shot.png", 400, 300));
    editor->zoomView().setMagnification(0.5);
    QTest::mousePress(&canvas(), Qt::LeftButton, {}, {25, 120});
    QTest::mouseMove(&canvas(), {75, 70});
    QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, {75, 70});
    ASSERT_EQ(model().annotations().size(), 1);
    EXPECT_EQ(model().annotations()[0].start, (Geometry::Point{50, 60}));
    EXPECT_EQ(model().annotations()[0].end, (Geometry::Point{150, 160}));
}

TEST_F(EditorTest, TheScreenShowsWhatACopyWillHave)
{
    open(picture("shot.png", 400, 300));
    chooseTool(EditorTool::rect);
    drag({50, 60}, {150, 160});
    chooseTool(EditorTool::highlight);
    drag({30, 200}, {300, 220});
    const QImage copy = AnnotationRenderer::flattened(canvas().image(), model().annotations());
    QImage shown(canvas().size() * 2, QImage::Format_RGB32);
    shown.setDevicePixelRatio(2);
    canvas().render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
    int differing = 0;
    for (int y = 0; y < copy.height(); ++y) {
        for (int x = 0; x < copy.width(); ++x) {
            const QColor a = copy.pixelColor(x, y);
            const QColor b = shown.pixelColor(x, y);
            differing += std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                                     std::abs(a.blue() - b.blue()) >
                                 6
                             ? 1
                             : 0;
        }
    }
    EXPECT_EQ(differing, 0);
}
