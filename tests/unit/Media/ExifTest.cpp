#include "Media/Pictures/Exif.h"

#include "unit/Media/PngFile.h"

#include <gtest/gtest.h>

#include <vector>

TEST(Exif, IsReadInEitherByteOrder)
{
    const Exif little = Exif::read(exifBlock(6, 216));
    EXPECT_EQ(little.orientation.quarterTurns, 1);
    EXPECT_EQ(little.dotsPerInch, 216);
    const std::string big{'M',  'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01,
                          0x12, 0,   3, 0,  0, 0, 1, 0, 6, 0, 0};
    EXPECT_EQ(Exif::read(big).orientation.quarterTurns, 1);
}

TEST(Exif, IsNotReadPastItsEnd)
{
    const std::string block = exifBlock(6, 216);
    for (std::size_t size = 0; size < block.size(); ++size) {
        // Memory of just that size, so that the address sanitizer sees the first byte too many.
        const std::vector<char> part(block.begin(),
                                     block.begin() + static_cast<std::ptrdiff_t>(size));
        const Exif exif = Exif::read(QByteArrayView(part.data(), static_cast<qsizetype>(size)));
        EXPECT_FALSE(exif.dotsPerInch) << "its fraction stands at the very end";
    }
}

TEST(Exif, HasNoDensityOfZeroes)
{
    std::string block = exifBlock(1, 216);
    block.replace(block.size() - 4, 4, std::string(4, '\0'));
    EXPECT_FALSE(Exif::read(block).dotsPerInch);
}
