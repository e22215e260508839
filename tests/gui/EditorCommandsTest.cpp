// Commands of an editor: keys, buttons, and what is done with marks that a file brought back.

#include "ChromeButton.h"
#include "Editor/AnnotationRenderer.h"
#include "Editor/EditorToolbar.h"
#include "Editor/LabelField.h"
#include "Editor/Sidecar.h"
#include "gui/EditorPictures.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QTest>

namespace {

constexpr Qt::KeyboardModifiers control = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;

class EditorCommands : public EditorPictures {
protected:
    EditorCommands()
    {
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(Qt::white);
        image.setDotsPerMeterX(2835); // a pixel a point
        image.setDotsPerMeterY(2835);
        EXPECT_TRUE(image.save(QString::fromStdString(path())));
        editor = open();
    }

    CanvasModel& model() const { return editor->canvas().model(); }

    /// In points of the picture, y up.
    QPoint at(Geometry::Point p) const
    {
        return QPointF(p.x, editor->canvas().height() - p.y).toPoint();
    }

    void drag(Geometry::Point from, Geometry::Point to) const
    {
        CanvasView* const canvas = &editor->canvas();
        QTest::mousePress(canvas, Qt::LeftButton, {}, at(from));
        QTest::mouseMove(canvas, at({(from.x + to.x) / 2, (from.y + to.y) / 2}));
        QTest::mouseMove(canvas, at(to));
        QTest::mouseRelease(canvas, Qt::LeftButton, {}, at(to));
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(editor->window().focusWidget(), key, modifiers);
        settle();
    }

    void choose(EditorTool tool) const
    {
        for (const auto& [its, button] : editor->toolbar().toolButtons()) {
            if (its == tool)
                QTest::mouseClick(button, Qt::LeftButton);
        }
    }

    void clickButton(const char* tip) const
    {
        for (ChromeButton* button : editor->toolbar().findChildren<ChromeButton*>()) {
            if (button->toolTip() == QString::fromUtf8(tip))
                QTest::mouseClick(button, Qt::LeftButton);
        }
    }

    LabelField* beginLabel(Geometry::Point p) const
    {
        choose(EditorTool::text);
        drag(p, p);
        settle(); // the last field goes a turn of the event loop later
        return editor->canvas().findChild<LabelField*>();
    }

    /// One of each kind, apart from each other: in a grid of fields of 130 by 100 points.
    void drawEveryKind() const
    {
        int field = 0;
        for (const EditorTool tool : everyTool) {
            const Geometry::Point p = fieldOf(field++);
            if (tool == EditorTool::text) {
                QTest::keyClicks(beginLabel({p.x + 20, p.y + 40}), QStringLiteral("label"));
                press(Qt::Key_Return);
                continue;
            }
            choose(tool);
            if (tool == EditorTool::counter)
                drag({p.x + 60, p.y + 50}, {p.x + 60, p.y + 50});
            else
                drag({p.x + 20, p.y + 20}, {p.x + 100, p.y + 80});
        }
    }

    static Geometry::Point fieldOf(int index)
    {
        return {130.0 * (index % 3), 100.0 * (index / 3)}; // NOLINT(bugprone-integer-division)
    }

    static constexpr EditorTool everyTool[] = {
        EditorTool::arrow,   EditorTool::line,     EditorTool::rect,
        EditorTool::ellipse, EditorTool::freehand, EditorTool::highlight,
        EditorTool::text,    EditorTool::counter,  EditorTool::redact};

    std::unique_ptr<EditorWindowController> editor;
};

} // namespace

TEST_F(EditorCommands, ControlAndAnyOtherModifiersAreTheSameCommands)
{
    const auto& pasteboard = FakePlatform::current().pasteboard;
    const QString exported = QString::fromStdString(folder / "picture annotated.png");
    for (const Qt::KeyboardModifiers others :
         {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::AltModifier),
          Qt::KeyboardModifiers(Qt::MetaModifier), Qt::AltModifier | Qt::MetaModifier})
    {
        SCOPED_TRACE(others);
        drag({50, 60}, {150, 160});
        press(Qt::Key_Z, control | others);
        EXPECT_TRUE(model().annotations().isEmpty());
        press(Qt::Key_Z, control | shift | others);
        EXPECT_EQ(model().annotations().size(), 1);
        press(Qt::Key_Z, control | others);
        for (const Qt::KeyboardModifiers shifted : {others, others | shift}) {
            FakePlatform::current().pasteboard.clear();
            press(Qt::Key_C, control | shifted);
            EXPECT_EQ(pasteboard.size(), 1U);
            press(Qt::Key_S, control | shifted);
            EXPECT_TRUE(QFile::remove(exported));
            press(Qt::Key_W, control | shifted);
            EXPECT_FALSE(editor->window().isVisible());
            editor = open();
        }
    }
    // Not without it.
    drag({50, 60}, {150, 160});
    FakePlatform::current().pasteboard.clear();
    for (const Qt::KeyboardModifiers others :
         {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::AltModifier), shift,
          Qt::KeyboardModifiers(Qt::MetaModifier)})
    {
        for (const Qt::Key key : {Qt::Key_Z, Qt::Key_C, Qt::Key_S, Qt::Key_W})
            press(key, others);
    }
    EXPECT_EQ(model().annotations().size(), 1);
    EXPECT_TRUE(pasteboard.empty());
    EXPECT_FALSE(QFile::exists(exported));
    EXPECT_TRUE(editor->window().isVisible());
}

TEST_F(EditorCommands, ClearingAnEmptyCanvasChangesNothing)
{
    editor->window().close();
    const QString sidecar = Sidecar::path(QString::fromStdString(path()));
    const QByteArray unreadable("{}");
    QFile file(sidecar);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(unreadable);
    file.close();
    editor = open();
    int changes = 0;
    const auto save = std::exchange(model().onChange, [&] { ++changes; });
    clickButton("Remove all annotations");
    EXPECT_EQ(changes, 0); // a change would have removed the file
    model().onChange = save;
    drag({50, 60}, {150, 160});
    press(Qt::Key_Z, control);
    clickButton("Remove all annotations");
    press(Qt::Key_Z, control | shift);
    EXPECT_EQ(model().annotations().size(), 1);
}

TEST_F(EditorCommands, MarksOfEveryKindCanBeChangedWhenTheyAreBack)
{
    drawEveryKind();
    const QList<Annotation> drawn = model().annotations();
    ASSERT_EQ(drawn.size(), 9);
    editor->window().close();
    editor.reset();
    editor = open();
    ASSERT_TRUE(model().annotations() == drawn);

    choose(EditorTool::select);
    QList<Annotation> moved = drawn;
    for (int i = 0; i < 9; ++i) {
        SCOPED_TRACE(i);
        const Geometry::Rect place = AnnotationRenderer::bounds(drawn[i]);
        const Geometry::Point middle{std::round(place.x + place.width / 2),
                                     std::round(place.y + place.height / 2)};
        drag(middle, {middle.x + 7, middle.y - 5});
        EXPECT_EQ(model().selectedID(), drawn[i].id);
        moved[i].start = {drawn[i].start.x + 7, drawn[i].start.y - 5};
        moved[i].end = {drawn[i].end.x + 7, drawn[i].end.y - 5};
        for (qsizetype p = 0; drawn[i].path && p < drawn[i].path->size(); ++p)
            (*moved[i].path)[p] = {(*drawn[i].path)[p].x + 7, (*drawn[i].path)[p].y - 5};
        EXPECT_TRUE(model().annotations() == moved);
    }
    EXPECT_TRUE(runUntil([&] { return Sidecar::load(QString::fromStdString(path())) == moved; }));

    // Once more, and away with them.
    editor->window().close();
    editor.reset();
    editor = open();
    choose(EditorTool::select);
    for (int i = 0; i < 9; ++i) {
        SCOPED_TRACE(i);
        const Geometry::Rect place = AnnotationRenderer::bounds(moved[i]);
        const Geometry::Point middle{place.x + place.width / 2, place.y + place.height / 2};
        drag(middle, middle);
        press(Qt::Key_Delete);
        EXPECT_TRUE(model().annotations() == moved.mid(i + 1));
    }
    EXPECT_TRUE(
        runUntil([&] { return !QFile::exists(Sidecar::path(QString::fromStdString(path()))); }));
    for (int i = 0; i < 9; ++i)
        press(Qt::Key_Z, control);
    EXPECT_TRUE(model().annotations() == moved);
    editor->window().close();
    EXPECT_TRUE(Sidecar::load(QString::fromStdString(path())) == moved);
}

TEST_F(EditorCommands, ALabelStaysWhereItWasTyped)
{
    // The box around all that is red on the canvas, as the screen shows it.
    const auto ink = [this] {
        const QImage shown = editor->canvas().grab().toImage();
        QRect box;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QColor pixel = shown.pixelColor(x, y);
                if (pixel.red() - pixel.green() > 100)
                    box |= QRect(x, y, 1, 1);
            }
        }
        return box;
    };
    for (const double width : {2.0, 4.0, 7.0}) {
        SCOPED_TRACE(width);
        model().setStrokeWidth(width);
        QTest::keyClicks(beginLabel({60, 70}), QStringLiteral("Hagen"));
        const QRect typed = ink();
        press(Qt::Key_Return);
        const QRect placed = ink();
        ASSERT_FALSE(typed.isEmpty());
        // The field has hinted glyphs on whole pixels.
        EXPECT_NEAR(typed.left(), placed.left(), 1);
        EXPECT_NEAR(typed.right(), placed.right(), 2);
        EXPECT_NEAR(typed.top(), placed.top(), 1);
        EXPECT_NEAR(typed.bottom(), placed.bottom(), 1);
        press(Qt::Key_Z, control);
    }
}

TEST_F(EditorCommands, LinesThatArePastedIntoALabelAreItsLines)
{
    LabelField* const field = beginLabel({60, 70});
    ASSERT_TRUE(field);
    QGuiApplication::clipboard()->setText(QStringLiteral("\n first\nsecond\r\nthird \n\n"));
    press(Qt::Key_V, control);
    press(Qt::Key_Return);
    ASSERT_EQ(model().annotations().size(), 1);
    const Annotation label = model().annotations().front();
    EXPECT_EQ(label.text->split(QStringLiteral("\n")).size(), 3) << label.text->toStdString();
    // As high as three lines, and there again.
    Annotation single = label;
    single.text = QStringLiteral("second");
    const double margins = 12;
    EXPECT_DOUBLE_EQ(AnnotationRenderer::bounds(label).height - margins,
                     3 * (AnnotationRenderer::bounds(single).height - margins));
    editor->window().close();
    editor = open();
    EXPECT_EQ(model().annotations().front().text, label.text);
}
