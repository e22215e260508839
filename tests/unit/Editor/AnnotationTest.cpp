#include "Editor/Annotation.h"

#include <gtest/gtest.h>

namespace {

QColor colorOf(const char* hex)
{
    return Annotation::color(QString::fromUtf8(hex));
}

} // namespace

TEST(Annotation, HasAnIdOfItsOwnThatMovesKeep)
{
    Annotation one;
    const Annotation other;
    EXPECT_FALSE(one.id.isNull());
    EXPECT_NE(one.id, other.id);
    const QUuid id = one.id;
    one.translate(1, 2);
    EXPECT_EQ(one.id, id);
}

TEST(Annotation, MovesEveryPointAndNothingElse)
{
    Annotation stroke{.kind = AnnotationKind::freehand,
                      .start = {1.5, 2},
                      .end = {30, 40},
                      .path = QList<Geometry::Point>{{1.5, 2}, {7, 8}, {30, 40}},
                      .text = QStringLiteral("a"),
                      .fontSize = 14,
                      .number = 3,
                      .colorHex = QStringLiteral("#34C759"),
                      .lineWidth = 7};
    Annotation expected = stroke;
    expected.start = {11.5, -3};
    expected.end = {40, 35};
    expected.path = QList<Geometry::Point>{{11.5, -3}, {17, 3}, {40, 35}};
    const Annotation before = stroke;
    stroke.translate(10, -5);
    EXPECT_EQ(stroke, expected);
    EXPECT_EQ((*before.path)[1], (Geometry::Point{7, 8})) << "a copy moved too";
}

TEST(Annotation, MovingLeavesAnEmptyPathEmptyAndAnAbsentOneAbsent)
{
    Annotation arrow;
    arrow.translate(1, 1);
    EXPECT_FALSE(arrow.path);
    arrow.path.emplace();
    arrow.translate(1, 1);
    ASSERT_TRUE(arrow.path);
    EXPECT_TRUE(arrow.path->isEmpty());
}

TEST(AnnotationColor, IsTheSameHoweverItIsWritten)
{
    const QColor red(0xFF, 0x3B, 0x30);
    for (const char* hex :
         {"#FF3B30", "#ff3b30", "ff3b30", "##FF#3B#30", " \t\n#FF3B30", "0xFF3B30", "#0Xff3b30",
          "FF3B30 and more", "#00000000FF3B30", "FF3B30G00"})
        EXPECT_EQ(colorOf(hex), red) << hex;
}

TEST(AnnotationColor, IsBlackWhenThereIsNoNumber)
{
    for (const char* hex :
         {"", "#", "#GG0000", "red", "0x", "0xG", "-FF3B30", "+FF3B30", "\xEF\xBC\xA6"})
        EXPECT_EQ(colorOf(hex), QColor(0, 0, 0)) << hex;
}

TEST(AnnotationColor, TakesTheLast24BitsOfAnyNumber)
{
    EXPECT_EQ(colorOf("#12345678"), QColor(0x34, 0x56, 0x78));
    EXPECT_EQ(colorOf("#F"), QColor(0, 0, 0x0F));
    EXPECT_EQ(colorOf("#A1B"), QColor(0, 0x0A, 0x1B));
    EXPECT_EQ(colorOf("FFFFFFFFFF010203"), QColor(1, 2, 3));
    EXPECT_EQ(colorOf("10000000000010203"), QColor(0xFF, 0xFF, 0xFF)) << "the largest of 64 bits";
}

TEST(AnnotationColor, IsOpaque)
{
    EXPECT_EQ(colorOf("#00FF3B30").alpha(), 0xFF);
}
