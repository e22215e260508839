#include "Editor/CanvasModel.h"

#include "support/Printers.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using Geometry::Point;

namespace {

class CanvasModelTest : public testing::Test {
protected:
    CanvasModelTest()
    {
        model.onChange = [this] { ++changes; };
        model.onRedraw = [this](const Geometry::Rect&) { ++redraws; };
    }

    void drag(Point from, Point to)
    {
        model.mouseDown(from);
        model.mouseDragged(to);
        model.mouseUp();
    }

    void drawWith(EditorTool tool, Point from, Point to)
    {
        model.setTool(tool);
        drag(from, to);
    }

    void count(Point p)
    {
        model.setTool(EditorTool::counter);
        model.mouseDown(p);
        model.mouseUp();
    }

    void selectAt(Point p)
    {
        model.setTool(EditorTool::select);
        model.mouseDown(p);
        model.mouseUp();
    }

    QList<std::int64_t> numbers() const
    {
        QList<std::int64_t> result;
        for (const Annotation& a : model.annotations())
            result += a.number.value_or(-1);
        return result;
    }

    CanvasModel model{{}};
    int changes = 0;
    int redraws = 0;
};

} // namespace

TEST_F(CanvasModelTest, StartsAsTheToolbarDoes)
{
    EXPECT_EQ(model.tool(), EditorTool::arrow);
    EXPECT_EQ(model.colorHex(), QStringLiteral("#FF3B30"));
    EXPECT_EQ(model.strokeWidth(), 4);
}

TEST_F(CanvasModelTest, ADragMakesAnAnnotationOfTheToolsKind)
{
    const std::pair<EditorTool, AnnotationKind> kinds[] = {
        {EditorTool::arrow, AnnotationKind::arrow},
        {EditorTool::line, AnnotationKind::line},
        {EditorTool::rect, AnnotationKind::rect},
        {EditorTool::ellipse, AnnotationKind::ellipse},
        {EditorTool::redact, AnnotationKind::redact},
        {EditorTool::freehand, AnnotationKind::freehand},
        {EditorTool::highlight, AnnotationKind::highlight},
    };
    model.setColorHex(QStringLiteral("#34C759"));
    model.setStrokeWidth(7);
    for (const auto& [tool, kind] : kinds) {
        drawWith(tool, {10, 20}, {110, 220});
        const Annotation& made = model.annotations().constLast();
        EXPECT_EQ(made.kind, kind);
        EXPECT_EQ(made.start, (Point{10, 20}));
        EXPECT_EQ(made.end, (Point{110, 220}));
        EXPECT_EQ(made.colorHex, QStringLiteral("#34C759"));
        EXPECT_EQ(made.lineWidth, 7);
        EXPECT_FALSE(made.text || made.fontSize || made.number);
        const bool isStroke = kind == AnnotationKind::freehand || kind == AnnotationKind::highlight;
        EXPECT_EQ(made.path.has_value(), isStroke);
        if (isStroke) {
            EXPECT_EQ(*made.path, (QList<Point>{{10, 20}, {110, 220}}));
        }
    }
    EXPECT_EQ(model.annotations().size(), 7);
    EXPECT_EQ(changes, 7);
    EXPECT_FALSE(model.draft());
}

TEST_F(CanvasModelTest, ADraftIsNotYetInTheList)
{
    model.mouseDown({10, 10});
    EXPECT_TRUE(model.draft());
    model.mouseDragged({50, 50});
    EXPECT_EQ(model.draft()->end, (Point{50, 50}));
    EXPECT_TRUE(model.annotations().isEmpty());
    EXPECT_EQ(changes, 0);
    EXPECT_GT(redraws, 0);
}

TEST_F(CanvasModelTest, AClickMakesNothingAndNoStep)
{
    model.mouseDown({10, 10});
    model.mouseUp();
    EXPECT_TRUE(model.annotations().isEmpty());
    model.undo();
    EXPECT_EQ(changes, 0);
}

TEST_F(CanvasModelTest, ThreePointsAreAClickAndMoreADrag)
{
    drag({10, 10}, {13, 10});
    EXPECT_TRUE(model.annotations().isEmpty());
    drag({10, 10}, {13.1, 10});
    EXPECT_EQ(model.annotations().size(), 1);
}

TEST_F(CanvasModelTest, ASmallScribbleIsKept)
{
    for (const EditorTool tool : {EditorTool::freehand, EditorTool::highlight}) {
        model.setTool(tool);
        model.mouseDown({10, 10});
        model.mouseDragged({11, 11});
        model.mouseDragged({10, 10});
        model.mouseUp();
    }
    EXPECT_EQ(model.annotations().size(), 2);
    // Two points are not enough, and other kinds have none.
    drawWith(EditorTool::freehand, {10, 10}, {11, 11});
    drawWith(EditorTool::line, {10, 10}, {11, 11});
    EXPECT_EQ(model.annotations().size(), 2);
}

TEST_F(CanvasModelTest, CountersFollowTheLargestNumber)
{
    for (int i = 0; i < 3; ++i)
        count({100.0 * i, 100});
    EXPECT_EQ(numbers(), (QList<std::int64_t>{1, 2, 3}));
    EXPECT_EQ(changes, 3);
    selectAt({100, 100});
    model.deleteSelection();
    count({300, 300});
    EXPECT_EQ(numbers(), (QList<std::int64_t>{1, 3, 4}));
    selectAt({300, 300});
    model.deleteSelection();
    count({300, 300});
    EXPECT_EQ(numbers(), (QList<std::int64_t>{1, 3, 4}));
    EXPECT_EQ(model.annotations().constLast().start, model.annotations().constLast().end);
}

TEST_F(CanvasModelTest, CountersGoOnFromNumbersBelowZeroAndStopAtTheLast)
{
    constexpr auto last = std::numeric_limits<std::int64_t>::max();
    for (const auto& [there, next] : {std::pair(std::int64_t{-5}, std::int64_t{-4}),
                                      std::pair(last - 1, last), std::pair(last, last)})
    {
        QList<Annotation> counters(1);
        counters.front().kind = AnnotationKind::counter;
        counters.front().number = there;
        CanvasModel other(std::move(counters));
        other.setTool(EditorTool::counter);
        other.mouseDown({10, 10});
        EXPECT_EQ(other.annotations().back().number, next);
    }
}

TEST_F(CanvasModelTest, APressWhoseReleaseNeverCameIsOver)
{
    model.setTool(EditorTool::arrow);
    model.mouseDown({10, 10});
    model.mouseDragged({50, 50});
    model.setTool(EditorTool::counter);
    EXPECT_FALSE(model.draft());
    count({100, 100});
    EXPECT_EQ(model.annotations().size(), 1);

    // What was moved stays moved, and is saved.
    model.setTool(EditorTool::select);
    model.mouseDown({100, 100});
    model.mouseDragged({120, 100});
    const int before = changes;
    model.mouseDown({300, 300});
    EXPECT_EQ(changes, before + 1);
    EXPECT_EQ(model.annotations().front().start, (Point{120, 100}));
    model.mouseDragged({310, 300});
    EXPECT_EQ(model.annotations().front().start, (Point{120, 100}));
}

TEST_F(CanvasModelTest, APressThatWasNotMeantChangesNothing)
{
    drawWith(EditorTool::rect, {10, 10}, {100, 100});
    drawWith(EditorTool::rect, {200, 10}, {290, 100});
    drawWith(EditorTool::rect, {10, 200}, {100, 290});
    model.undo(); // there is something to redo
    const QList<Annotation> before = model.annotations();
    const auto expectAsBefore = [&] {
        EXPECT_FALSE(model.draft());
        EXPECT_EQ(model.annotations(), before);
        model.mouseDragged({150, 150}); // the finger is still down
        model.mouseUp();
        EXPECT_EQ(model.annotations(), before);
        model.undo();
        EXPECT_EQ(model.annotations(), before.mid(0, 1)) << "there was another step";
        model.redo();
        model.redo();
        EXPECT_EQ(model.annotations().size(), 3) << "it cannot be redone any more";
        model.undo();
    };
    for (const EditorTool tool : {EditorTool::arrow, EditorTool::freehand, EditorTool::counter}) {
        model.setTool(tool);
        model.mouseDown({50, 50});
        model.mouseDragged({80, 90});
        model.cancelPress();
        expectAsBefore();
    }
    model.setTool(EditorTool::select);
    model.mouseDown({250, 50});
    model.mouseUp();
    const auto selected = model.selectedID();
    model.mouseDown({50, 50});
    model.mouseDragged({80, 90});
    model.mouseDragged({85, 95});
    model.cancelPress();
    EXPECT_EQ(model.selectedID(), selected);
    EXPECT_FALSE(model.isMoving());
    expectAsBefore();

    // What keys did meanwhile stays, as does a press that is over.
    model.mouseDown({50, 50});
    model.mouseDragged({52, 52});
    model.deleteSelection();
    model.cancelPress();
    EXPECT_EQ(model.annotations(), before.mid(1));
    EXPECT_FALSE(model.selectedID());
    model.mouseDown({250, 50});
    model.mouseUp();
    model.mouseDown({250, 50});
    model.deleteSelection();
    model.cancelPress();
    EXPECT_TRUE(model.annotations().isEmpty());
    EXPECT_FALSE(model.selectedID());
    model.undo();
    count({5, 5});
    model.cancelPress();
    EXPECT_EQ(model.annotations().size(), 2);
}

TEST_F(CanvasModelTest, TheTextToolAsksForALabel)
{
    model.setTool(EditorTool::text);
    EXPECT_EQ(model.mouseDown({40, 50}), CanvasModel::Press::beginsText);
    model.mouseUp();
    EXPECT_TRUE(model.annotations().isEmpty());
}

TEST_F(CanvasModelTest, ALabelIsTrimmedAndSizedByTheStroke)
{
    model.setStrokeWidth(7);
    model.commitText(QStringLiteral(" \n Look here\t"), {40, 50});
    ASSERT_EQ(model.annotations().size(), 1);
    const Annotation& label = model.annotations().front();
    EXPECT_EQ(label.kind, AnnotationKind::text);
    EXPECT_EQ(label.text, QStringLiteral("Look here"));
    EXPECT_EQ(label.fontSize, 26);
    EXPECT_EQ(label.start, (Point{40, 50}));
    EXPECT_EQ(label.end, (Point{40, 50}));
    EXPECT_EQ(CanvasModel::textSize(2), 14);
    EXPECT_EQ(CanvasModel::textSize(4), 19);
    EXPECT_EQ(CanvasModel::textSize(2.99), 14);
    EXPECT_EQ(CanvasModel::textSize(5), 26);
}

TEST_F(CanvasModelTest, AnEmptyLabelIsDroppedWithoutAStep)
{
    model.commitText(QStringLiteral(" \n "), {40, 50});
    EXPECT_TRUE(model.annotations().isEmpty());
    model.undo();
    EXPECT_EQ(changes, 0);
}

TEST_F(CanvasModelTest, TheTopmostUnderThePointerIsSelected)
{
    drawWith(EditorTool::rect, {10, 10}, {100, 100});
    drawWith(EditorTool::ellipse, {50, 50}, {150, 150});
    selectAt({75, 75});
    EXPECT_EQ(model.selectedID(), model.annotations()[1].id);
    selectAt({20, 20});
    EXPECT_EQ(model.selectedID(), model.annotations()[0].id);
    selectAt({500, 500});
    EXPECT_FALSE(model.selectedID());
    EXPECT_FALSE(model.selectedIndex());
}

TEST_F(CanvasModelTest, ALongMoveIsOneStep)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    const QList<Annotation> before = model.annotations();
    changes = 0;
    model.setTool(EditorTool::select);
    model.mouseDown({50, 50});
    for (int i = 1; i <= 20; ++i)
        model.mouseDragged({50.0 + i, 50.0 - 2 * i});
    EXPECT_EQ(changes, 0);
    model.mouseUp();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(model.annotations()[0].start, (Point{30, -30}));
    EXPECT_EQ(model.annotations()[0].id, before[0].id);
    model.undo();
    EXPECT_EQ(model.annotations(), before);
    model.redo();
    EXPECT_EQ(model.annotations()[0].end, (Point{120, 60}));
}

TEST_F(CanvasModelTest, ASelectionThatIsOnlyClickedMakesNoStep)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    changes = 0;
    selectAt({50, 50});
    model.mouseDown({50, 50});
    model.mouseDragged({50, 50}); // told of, but without a way
    model.mouseUp();
    EXPECT_EQ(changes, 0);
    model.undo();
    EXPECT_TRUE(model.annotations().isEmpty());
}

TEST_F(CanvasModelTest, AnotherToolClearsTheSelection)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    selectAt({50, 50});
    EXPECT_TRUE(model.selectedID());
    model.setTool(EditorTool::line);
    EXPECT_FALSE(model.selectedID());
}

TEST_F(CanvasModelTest, DeletingWithoutASelectionDoesNothing)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    changes = 0;
    model.deleteSelection();
    EXPECT_EQ(model.annotations().size(), 1);
    EXPECT_EQ(changes, 0);
}

TEST_F(CanvasModelTest, ANewChangeForgetsWhatWasUndone)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    drawWith(EditorTool::line, {10, 10}, {100, 100});
    model.undo();
    EXPECT_EQ(model.annotations().size(), 1);
    count({5, 5});
    const QList<Annotation> now = model.annotations();
    model.redo();
    EXPECT_EQ(model.annotations(), now);
}

TEST_F(CanvasModelTest, UndoClearsTheSelection)
{
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    drawWith(EditorTool::line, {300, 300}, {400, 400});
    selectAt({50, 50});
    model.undo();
    EXPECT_FALSE(model.selectedID());
    selectAt({50, 50});
    model.redo();
    EXPECT_FALSE(model.selectedID());
}

TEST_F(CanvasModelTest, ClearIsOneStepAndNoneWhenEmpty)
{
    model.clear();
    EXPECT_EQ(changes, 0);
    drawWith(EditorTool::arrow, {10, 10}, {100, 100});
    count({5, 5});
    const QList<Annotation> before = model.annotations();
    model.clear();
    EXPECT_TRUE(model.annotations().isEmpty());
    const int changesBefore = changes;
    model.clear();
    EXPECT_EQ(changes, changesBefore);
    model.undo();
    EXPECT_EQ(model.annotations(), before);
    model.undo();
    model.undo();
    model.clear();
    model.redo();
    model.redo();
    EXPECT_EQ(model.annotations(), before) << "what was undone is forgotten";
}

TEST_F(CanvasModelTest, OutOfPlaceInputIsIgnored)
{
    model.mouseDragged({5, 5});
    model.mouseUp();
    model.setTool(EditorTool::select);
    model.mouseDragged({5, 5});
    model.mouseUp();
    EXPECT_EQ(changes, 0);
}

TEST_F(CanvasModelTest, UndoingEverythingAndRedoingItPassesThroughEveryState)
{
    std::mt19937 random(20261121);
    const auto somewhere = [&random] {
        return Point{static_cast<double>(random() % 900), static_cast<double>(random() % 900)};
    };
    QList<QList<Annotation>> states = {model.annotations()};
    model.onChange = [&] { states += model.annotations(); };
    for (int i = 0; i < 400; ++i) {
        switch (random() % 6) {
        case 0:
            count(somewhere());
            break;
        case 1:
            model.commitText(QStringLiteral("label %1").arg(i), somewhere());
            break;
        case 2:
            model.setTool(EditorTool::select);
            drag(somewhere(), somewhere());
            break;
        case 3:
            selectAt(somewhere());
            model.deleteSelection();
            break;
        case 4:
            drawWith(EditorTool::freehand, somewhere(), somewhere());
            break;
        default:
            if (random() % 40 == 0)
                model.clear();
            break;
        }
    }
    model.onChange = {};
    ASSERT_GT(states.size(), 200);
    for (qsizetype i = states.size() - 1; i >= 0; --i) {
        ASSERT_EQ(model.annotations(), states[i]) << i;
        model.undo();
    }
    for (const QList<Annotation>& state : states) {
        ASSERT_EQ(model.annotations(), state);
        model.redo();
    }
}
