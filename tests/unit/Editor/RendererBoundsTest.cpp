#include "Editor/AnnotationRenderer.h"
#include "Editor/AnnotationText.h"

#include "unit/Editor/Shapes.h"

#include <gtest/gtest.h>

using AnnotationRenderer::bounds;
using Geometry::Rect;
using Kind = AnnotationKind;

TEST(AnnotationBounds, OfTwoPointsAreTheirRectangleWithAMargin)
{
    for (const Kind kind : {Kind::arrow, Kind::line, Kind::rect, Kind::ellipse, Kind::redact}) {
        EXPECT_EQ(bounds(markOf(kind, {90, 20}, {30, 70}, 2)), (Rect{22, 12, 76, 66}));
        EXPECT_EQ(bounds(markOf(kind, {30, 70}, {90, 20}, 20)), (Rect{10, 0, 100, 90}));
    }
}

TEST(AnnotationBounds, OfStrokesHoldEveryPointWithTwiceTheMargin)
{
    for (const Kind kind : {Kind::freehand, Kind::highlight}) {
        EXPECT_EQ(bounds(strokeOf(kind, {{50, 40}, {20, 60}, {30, 10}}, 2)), (Rect{4, -6, 62, 82}));
        EXPECT_EQ(bounds(strokeOf(kind, {{50, 40}, {20, 60}}, 10)), (Rect{0, 20, 70, 60}));
        EXPECT_EQ(bounds(strokeOf(kind, {{50, 40}}, 4)), (Rect{34, 24, 32, 32}));
        EXPECT_EQ(bounds(markOf(kind, {5, 6}, {7, 8}, 4)), Rect{});
        EXPECT_EQ(bounds(strokeOf(kind, {}, 4)), Rect{});
    }
}

TEST(AnnotationBounds, OfLabelsAreTheTextWithSixPointsAround)
{
    Annotation label = markOf(Kind::text, {30, 40}, {0, 0}, 4);
    label.text = QStringLiteral("label");
    for (const std::optional<double> size : {std::optional<double>{}, {14.5}}) {
        label.fontSize = size;
        const Geometry::Size text = AnnotationText::measure(*label.text, size.value_or(18));
        EXPECT_EQ(bounds(label), (Rect{24, 34, text.width + 12, text.height + 12}));
    }
    label.text.reset();
    EXPECT_EQ(bounds(label).width, 12);
}

TEST(AnnotationBounds, OfCountersAreASquareAroundTheDisc)
{
    EXPECT_EQ(bounds(markOf(Kind::counter, {50, 60}, {0, 0}, 3)), (Rect{34, 44, 32, 32}));
    EXPECT_EQ(bounds(markOf(Kind::counter, {50, 60}, {0, 0}, 5)), (Rect{30, 40, 40, 40}));
}
