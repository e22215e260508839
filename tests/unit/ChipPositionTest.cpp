#include "ChipPosition.h"

#include "support/Printers.h"

#include <gtest/gtest.h>

TEST(ChipPosition, EveryPositionComesBackFromItsRawValue)
{
    for (const ChipPosition position : allChipPositions)
        EXPECT_EQ(chipPositionFromRawValue(rawValue(position)), position);
}

TEST(ChipPosition, RawValuesAndTitlesStandInTheOrderOfTheMenu)
{
    QStringList raws;
    QStringList titles;
    for (const ChipPosition position : allChipPositions) {
        raws += rawValue(position);
        titles += menuTitle(position);
    }
    EXPECT_EQ(
        raws.join(QLatin1Char(' ')),
        QStringLiteral("bottomLeft bottomCenter bottomRight topLeft topCenter topRight custom"));
    EXPECT_EQ(titles.join(QLatin1Char('|')),
              QStringLiteral("Bottom Left|Bottom Center|Bottom Right|Top Left|Top Center|Top Right|"
                             "Custom (⌘-drag a thumbnail)"));
}

TEST(ChipPosition, UnknownNamesAreNoPosition)
{
    for (const char* name : {"", "BottomLeft", "middle", "bottomLeft "})
        EXPECT_FALSE(chipPositionFromRawValue(QString::fromLatin1(name))) << name;
}
