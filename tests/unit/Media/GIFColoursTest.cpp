#include "Media/GIF/PackedFrames.h"
#include "Media/GIF/Palette.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace GIF;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

constexpr Pixel black = opaque(0, 0, 0);
constexpr Pixel white = opaque(255, 255, 255);

/// Packs the frames and reads them again.
void expectUnchanged(const std::vector<std::vector<Pixel>>& frames)
{
    PackedFrames packed(frames[0].size());
    for (const auto& frame : frames)
        packed.add(frame);
    ASSERT_EQ(packed.count(), frames.size());
    PackedFrames::Reader reader(packed);
    std::vector<Pixel> read(frames[0].size());
    for (const auto& frame : frames) {
        (void)reader.read(read);
        ASSERT_TRUE(read == frame);
    }
}

} // namespace

TEST(PackedFrames, AreReadAsTheyWere)
{
    std::mt19937 random(1);
    const auto number = [&](int most) {
        return static_cast<int>(random() % (static_cast<unsigned>(most) + 1));
    };
    // Steps from a pixel to the next of every length, and long and short stretches of all kinds.
    std::vector<std::vector<Pixel>> frames(1, std::vector<Pixel>(5000, black));
    for (int i = 0; i < 60; ++i) {
        std::vector<Pixel> frame = frames.back();
        for (std::size_t at = 0; at < frame.size();) {
            const int count = i % 2 == 0 ? number(3) + 1 : number(70) + 1;
            const bool stays = number(2) == 0;
            const bool isSurface = number(2) == 0;
            const int reach = 1 << number(8);
            for (int k = 0; k < count && at < frame.size(); ++k, ++at) {
                if (stays)
                    continue;
                const Pixel left = at == 0 ? black : frame[at - 1];
                const auto moved = [&](int channel) {
                    return (channel + number(2 * reach) - reach) & 255;
                };
                frame[at] = isSurface && k > 0
                                ? left
                                : opaque(moved(red(left)), moved(green(left)), moved(blue(left)));
            }
        }
        frames.push_back(frame);
    }
    expectUnchanged(frames);
    expectUnchanged({std::vector<Pixel>(100'000, white), std::vector<Pixel>(100'000, white),
                     std::vector<Pixel>(100'000, black)});
}

TEST(PackedFrames, TakeLittleRoomWhereNothingMovesOrThereAreSurfaces)
{
    PackedFrames frames(100'000);
    frames.add(std::vector<Pixel>(100'000, white));
    frames.add(std::vector<Pixel>(100'000, white));
    frames.addRepetition();
    EXPECT_LT(frames.bytes(), 20U);
    EXPECT_EQ(frames.count(), 3U);
}

TEST(PackedFrames, CountColoursAsOftenAsTheyShow)
{
    const auto counts = [](const PackedFrames& packed) {
        std::vector<std::pair<Pixel, unsigned>> all;
        for (const ColourCount::Entry& entry : packed.colours().entries())
            all.emplace_back(entry.mean(), entry.count);
        return all;
    };
    const Pixel blue = opaque(0, 0, 255);
    PackedFrames frames(2);
    frames.add(std::vector{black, white});
    frames.addRepetition();
    frames.add(std::vector{black, blue});
    frames.add(std::vector{white, blue});
    EXPECT_THAT(counts(frames), UnorderedElementsAre(std::pair(black, 3U), std::pair(white, 3U),
                                                     std::pair(blue, 2U)));
    frames.clear();
    EXPECT_THAT(counts(frames), IsEmpty());
    frames.add(std::vector{black, blue});
    frames.addRepetition();
    EXPECT_THAT(counts(frames), ElementsAre(std::pair(black, 2U))) << "the blue was there before";
}

TEST(ColourCount, PutsNeighboursTogetherWhenThereAreTooMany)
{
    ColourCount count;
    std::uint64_t sum = 0;
    for (int i = 0; i < 60'000; ++i) {
        const Pixel colour = opaque(i % 256, i / 256, 7);
        count.add(colour, 2);
        sum += 2U * static_cast<unsigned>(red(colour));
    }
    const auto entries = count.entries();
    EXPECT_GT(entries.size(), 10'000U);
    EXPECT_LT(entries.size(), 33'000U);
    std::uint64_t all = 0, reds = 0;
    for (const ColourCount::Entry& entry : entries) {
        all += entry.count;
        reds += entry.red;
        EXPECT_EQ(blue(entry.mean()), 7);
    }
    EXPECT_EQ(all, 120'000U);
    EXPECT_EQ(reds, sum);
    // All of them together are the same.
    ColourCount twice = count;
    twice.add(count);
    EXPECT_EQ(twice.entries().size(), entries.size());
}

TEST(Palette, IsOfTheColoursThemselvesWhenTheyAreFew)
{
    ColourCount count;
    EXPECT_THAT(bestPalette(count, 255), ElementsAre(black)) << "of none there is one";
    for (const int grey : {10, 11, 12, 200})
        count.add(opaque(grey, grey, grey));
    EXPECT_THAT(bestPalette(count, 255),
                UnorderedElementsAre(opaque(10, 10, 10), opaque(11, 11, 11), opaque(12, 12, 12),
                                     opaque(200, 200, 200)));
}

TEST(Palette, IsOfAllColoursHoweverRareOneIs)
{
    ColourCount count;
    std::vector<Pixel> all;
    for (int i = 0; i < 200; ++i) {
        all.push_back(opaque(i, 255 - i, i / 2));
        count.add(all.back(), i % 3 == 0 ? 1 : 1'234'567'891 + static_cast<unsigned>(i));
    }
    EXPECT_THAT(bestPalette(count, 255), testing::UnorderedElementsAreArray(all));
    EXPECT_EQ(meanUnlikeness(count, bestPalette(count, 255)), 0);
    EXPECT_EQ(meanUnlikeness(ColourCount(), {black}), 0);
}

TEST(Palette, IsAsUnlikeAsItsColoursAreInTheMean)
{
    ColourCount count;
    count.add(black, 3);
    count.add(opaque(0, 20, 0), 1);
    EXPECT_DOUBLE_EQ(meanUnlikeness(count, {opaque(0, 2, 0)}), (3 * 4 + 18 * 18) / 4.0);
}

TEST(Palette, HasColoursInTheMiddleUnlessOneIsMostOfWhatTheyStandFor)
{
    ColourCount even;
    even.add(opaque(100, 0, 0), 500);
    even.add(opaque(110, 0, 0), 500);
    EXPECT_THAT(bestPalette(even, 1), ElementsAre(opaque(105, 0, 0)));
    ColourCount surface;
    surface.add(opaque(100, 0, 0), 800);
    surface.add(opaque(110, 0, 0), 200);
    EXPECT_THAT(bestPalette(surface, 1), ElementsAre(opaque(100, 0, 0)));
}

TEST(Palette, IsNearlyAsGoodAsCanBe)
{
    // Of a cube that is full of colours the best 64 are the middles of 64 cubes, 1008 off.
    ColourCount count;
    for (int r = 0; r < 256; r += 8) {
        for (int g = 0; g < 256; g += 8) {
            for (int b = 0; b < 256; b += 8)
                count.add(opaque(r, g, b));
        }
    }
    PaletteSearch search(bestPalette(count, 60));
    double sum = 0;
    const auto entries = count.entries();
    for (const ColourCount::Entry& entry : entries)
        sum += distance(entry.mean(),
                        search.palette()[static_cast<std::size_t>(search.nearest(entry.mean()))]);
    EXPECT_LT(sum / static_cast<double>(entries.size()), 1040);
}

TEST(PaletteSearch, FindsTheNearest)
{
    std::mt19937 random(3);
    Palette palette;
    for (int i = 0; i < 255; ++i)
        palette.push_back(0xff000000 | (static_cast<Pixel>(random()) & 0xffffff));
    PaletteSearch search(palette);
    for (int i = 0; i < 20'000; ++i) {
        const Pixel colour = 0xff000000 | (static_cast<Pixel>(random()) & 0xffffff);
        int least = 1 << 30;
        for (const Pixel other : palette)
            least = std::min(least, distance(other, colour));
        ASSERT_EQ(distance(palette[static_cast<std::size_t>(search.nearest(colour))], colour),
                  least);
    }
}
