#include "Editor/EditorToolbar.h"

#include "ChromeButton.h"
#include "Editor/ColorSwatch.h"
#include "Editor/SegmentedControl.h"
#include "fakes/FakePlatform.h"

#include <QLayout>

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// What a user would call a control, and its size.
QString nameOf(const QWidget& control)
{
    const QString size = QStringLiteral(" %1x%2").arg(control.width()).arg(control.height());
    if (const auto* button = qobject_cast<const ChromeButton*>(&control);
        button && !button->image())
        return button->text() + QStringLiteral(": ") + button->toolTip();
    if (const auto* swatch = qobject_cast<const ColorSwatch*>(&control))
        return swatch->hex() + size;
    if (qobject_cast<const ChromeSeparator*>(&control))
        return QStringLiteral("|") + size;
    return control.toolTip() + size;
}

} // namespace

TEST(EditorToolbar, TheChosenColourHasAWiderBorderInTheAccentColourAndAGapWithinIt)
{
    FakePlatform::reset();
    EditorToolbar bar;
    bar.resize(940, 46);
    ASSERT_TRUE(bar.layout()->activate());
    bar.highlightColor(QStringLiteral("#FFFFFF"));
    for (const auto& [hex, swatch] : bar.colorButtons()) {
        const bool isChosen = hex == QStringLiteral("#FFFFFF");
        for (const double ratio : {2.0, 8.0}) {
            SCOPED_TRACE(testing::Message() << hex.toStdString() << " at " << ratio);
            QImage image(swatch->size() * ratio, QImage::Format_RGB32);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::magenta);
            swatch->render(&image, {}, {}, QWidget::RenderFlags());
            // By the distance from the middle, in points; but for pixels on an edge.
            const double width = isChosen ? 2.5 : 1.5;
            const double gap = isChosen ? 1 : 0;
            const QColor border = isChosen ? QColor(0x0A, 0x84, 0xFF) : QColor(0x40, 0x41, 0x42);
            int bordering = 0;
            int seenThrough = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const double distance =
                        std::hypot((x + 0.5) / ratio - 8, (y + 0.5) / ratio - 8);
                    const double edge = 0.2 + 0.75 / ratio;
                    if (std::abs(distance - 8) < edge || std::abs(distance - 8 + width) < edge ||
                        std::abs(distance - 8 + width + gap) < edge)
                        continue;
                    const bool isBorder = distance < 8 && distance > 8 - width;
                    const bool isGap = distance < 8 - width && distance > 8 - width - gap;
                    bordering += isBorder ? 1 : 0;
                    seenThrough += isGap ? 1 : 0;
                    ASSERT_EQ(image.pixelColor(x, y), distance > 8 || isGap ? QColor(Qt::magenta)
                                                      : isBorder            ? border
                                                                            : QColor(hex))
                        << x << ", " << y;
                }
            }
            EXPECT_GT(bordering, 0);
            EXPECT_EQ(seenThrough > 0, isChosen && ratio == 8);
        }
    }
}

TEST(EditorToolbar, HasEverythingInOrder)
{
    EditorToolbar bar;
    bar.resize(940, 46);
    ASSERT_TRUE(bar.layout()->activate());
    EXPECT_TRUE(bar.isFlat());
    QStringList names;
    int end = 10 - 2; // the inset, less the spacing
    int room = -1;
    for (int i = 0; i < bar.layout()->count(); ++i) {
        QLayoutItem* item = bar.layout()->itemAt(i);
        const bool isBehindRoom = !names.isEmpty() && names.last() == QStringLiteral("room");
        EXPECT_EQ(item->geometry().left(), end + (isBehindRoom ? 0 : 2)) << i;
        end = item->geometry().right() + 1;
        if (const QWidget* control = item->widget()) {
            names += nameOf(*control);
            EXPECT_EQ(control->focusPolicy(), Qt::NoFocus) << i;
            EXPECT_EQ(control->geometry().top() + control->geometry().bottom(), 45) << i;
        } else {
            names += QStringLiteral("room");
            room = item->geometry().width();
        }
    }
    EXPECT_EQ(end, 940 - 10);
    EXPECT_GT(room, 50);
    const QString wanted = QStringLiteral(
        "Select / move (drag), Delete removes 30x24\nArrow 30x24\nLine 30x24\nRectangle 30x24\n"
        "Ellipse 30x24\nFreehand 30x24\nHighlighter 30x24\nText (click to place) 30x24\n"
        "Numbered counter (click to place) 30x24\nPixelate / redact 30x24\n"
        "| 2x22\n"
        "#FF3B30 16x16\n#FF9500 16x16\n#FFCC00 16x16\n#34C759 16x16\n#0A84FF 16x16\n"
        "#BF5AF2 16x16\n#000000 16x16\n#FFFFFF 16x16\n"
        "| 2x22\n"
        "Stroke / text size 90x24\n"
        "room\n"
        "Undo (⌘Z) 30x24\nRedo (⇧⌘Z) 30x24\nRemove all annotations 30x24\n"
        "Copy ⌘C: Copy flattened image — paste straight into Cursor/Claude\n"
        "Export ⌘S: Save flattened copy next to the original");
    EXPECT_EQ(names.join(u'\n').toStdString(), wanted.toStdString());
    for (const auto* button : bar.findChildren<ChromeButton*>()) {
        EXPECT_EQ(button->accent(), button->text() == QStringLiteral("Copy ⌘C")
                                        ? Chrome::Accent::blue
                                        : Chrome::Accent::none);
        if (button->image()) {
            EXPECT_EQ(button->image()->pointSize, 13);
            EXPECT_EQ(button->image()->weight, Symbols::Weight::semibold);
        }
    }
}
