#include "Media/GIF/Palette.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

using namespace GIF;

namespace {

constexpr int refinements = 6;
/// A colour with so large a part of what is shown in its place is kept as it is, so that a surface
/// of one colour looks as it did.
constexpr double dominance = 0.7;

using Entry = ColourCount::Entry;
using Place = std::array<double, 3>;

Place placeOf(const Entry& entry)
{
    const auto count = static_cast<double>(entry.count);
    return {static_cast<double>(entry.red) / count, static_cast<double>(entry.green) / count,
            static_cast<double>(entry.blue) / count};
}

struct Colour {
    Place place;
    double weight;
};

/// Neighbouring colours of a list, and along which channel they differ most.
struct Box {
    std::size_t begin, end;
    std::size_t channel = 0;
    double spread = 0; // weighted squares along the channel
};

struct Sums {
    double weight = 0;
    Place first{}, second{};

    void add(const Colour& colour)
    {
        weight += colour.weight;
        for (std::size_t i = 0; i < 3; ++i) {
            first[i] += colour.place[i] * colour.weight;
            second[i] += colour.place[i] * colour.place[i] * colour.weight;
        }
    }
};

Box boxOf(const std::vector<Colour>& colours, std::size_t begin, std::size_t end)
{
    Box box{begin, end};
    if (end - begin == 1)
        return box; // whatever rounding makes of it
    Sums sums;
    for (std::size_t i = begin; i < end; ++i)
        sums.add(colours[i]);
    for (std::size_t i = 0; i < 3; ++i) {
        const double spread = sums.second[i] - sums.first[i] * sums.first[i] / sums.weight;
        if (spread > box.spread) {
            box.spread = spread;
            box.channel = i;
        }
    }
    return box;
}

/// Where to cut a box so that what is left of its spread is least. Sorts it.
std::size_t bestCut(std::vector<Colour>& colours, const Box& box)
{
    const auto begin = colours.begin() + static_cast<std::ptrdiff_t>(box.begin);
    const auto end = colours.begin() + static_cast<std::ptrdiff_t>(box.end);
    const std::size_t channel = box.channel;
    std::sort(begin, end, [channel](const Colour& one, const Colour& other) {
        return one.place[channel] < other.place[channel];
    });
    double weight = 0, sum = 0;
    for (auto colour = begin; colour != end; ++colour) {
        weight += colour->weight;
        sum += colour->weight * colour->place[channel];
    }
    double best = -1, leftWeight = 0, leftSum = 0;
    std::size_t cut = box.begin + 1;
    for (std::size_t i = box.begin; i + 1 < box.end; ++i) {
        leftWeight += colours[i].weight;
        leftSum += colours[i].weight * colours[i].place[channel];
        const double rightSum = sum - leftSum;
        const double between =
            leftSum * leftSum / leftWeight + rightSum * rightSum / (weight - leftWeight);
        if (between > best) {
            best = between;
            cut = i + 1;
        }
    }
    return cut;
}

Pixel pixelAt(const Place& place)
{
    const auto rounded = [](double value) { return static_cast<int>(std::lround(value)); };
    return opaque(rounded(place[0]), rounded(place[1]), rounded(place[2]));
}

Palette cutApart(std::vector<Colour>& colours, std::size_t size)
{
    std::vector<Box> boxes{boxOf(colours, 0, colours.size())};
    while (boxes.size() < size) {
        const auto widest =
            std::max_element(boxes.begin(), boxes.end(), [](const Box& one, const Box& other) {
                return one.spread < other.spread;
            });
        if (widest->spread <= 0)
            break;
        const Box box = *widest;
        const std::size_t cut = bestCut(colours, box);
        *widest = boxOf(colours, box.begin, cut);
        boxes.push_back(boxOf(colours, cut, box.end));
    }
    Palette palette;
    for (const Box& box : boxes) {
        Sums sums;
        for (std::size_t i = box.begin; i < box.end; ++i)
            sums.add(colours[i]);
        Place mean;
        for (std::size_t i = 0; i < 3; ++i)
            mean[i] = sums.first[i] / sums.weight;
        palette.push_back(pixelAt(mean));
    }
    return palette;
}

/// What is shown by one colour of a palette.
struct Cluster {
    Sums sums;
    Colour largest{};
};

std::vector<Cluster> clustersOf(const std::vector<Colour>& colours, const Palette& palette)
{
    PaletteSearch search(palette);
    std::vector<Cluster> clusters(palette.size());
    for (const Colour& colour : colours) {
        Cluster& cluster =
            clusters[static_cast<std::size_t>(search.nearest(pixelAt(colour.place)))];
        cluster.sums.add(colour);
        if (colour.weight > cluster.largest.weight)
            cluster.largest = colour;
    }
    return clusters;
}

} // namespace

Palette GIF::bestPalette(const ColourCount& count, std::size_t size)
{
    std::vector<Colour> colours;
    for (const Entry& entry : count.entries())
        colours.push_back({placeOf(entry), static_cast<double>(entry.count)});
    if (colours.empty())
        return {opaque(0, 0, 0)};
    Palette palette = cutApart(colours, size);
    if (palette.size() < size)
        return palette;
    for (int round = 0; round <= refinements; ++round) {
        const std::vector<Cluster> clusters = clustersOf(colours, palette);
        for (std::size_t i = 0; i < palette.size(); ++i) {
            const auto& [sums, largest] = clusters[i];
            if (sums.weight == 0)
                continue;
            Place mean;
            for (std::size_t k = 0; k < 3; ++k)
                mean[k] = sums.first[k] / sums.weight;
            const bool isDominated =
                round == refinements && largest.weight >= dominance * sums.weight;
            palette[i] = pixelAt(isDominated ? largest.place : mean);
        }
    }
    return palette;
}

double GIF::meanUnlikeness(const ColourCount& count, const Palette& palette)
{
    PaletteSearch search(palette);
    double sum = 0, all = 0;
    for (const Entry& entry : count.entries()) {
        const Pixel colour = entry.mean();
        const Pixel nearest = palette[static_cast<std::size_t>(search.nearest(colour))];
        sum += static_cast<double>(entry.count) * distance(nearest, colour);
        all += static_cast<double>(entry.count);
    }
    return all > 0 ? sum / all : 0;
}

namespace {

constexpr int cellShift = 3;
constexpr int cellsAcross = 256 >> cellShift;
constexpr std::size_t knownColours = 1 << 14;

/// The squares of how far `value` is from the nearest and the farthest number in a cell.
std::pair<int, int> distances(int value, int cell)
{
    const int low = cell << cellShift;
    const int high = low + (1 << cellShift) - 1;
    const int nearest = value < low ? low - value : value > high ? value - high : 0;
    const int farthest = std::max(std::abs(value - low), std::abs(value - high));
    return {nearest * nearest, farthest * farthest};
}

std::size_t cellOf(int red, int green, int blue)
{
    const int number = (red * cellsAcross + green) * cellsAcross + blue;
    return static_cast<std::size_t>(number);
}

} // namespace

PaletteSearch::PaletteSearch(Palette palette)
    : m_palette(std::move(palette))
    , m_known(knownColours)
    , m_cells(std::size_t{cellsAcross} * cellsAcross * cellsAcross)
{
}

int PaletteSearch::find(Pixel colour)
{
    const int r = red(colour) >> cellShift;
    const int g = green(colour) >> cellShift;
    const int b = blue(colour) >> cellShift;
    Cell& cell = m_cells[cellOf(r, g, b)];
    if (cell.count == 0)
        fill(cell, r, g, b);
    int best = 0, least = std::numeric_limits<int>::max();
    for (std::uint32_t i = 0; i < cell.count; ++i) {
        const int index = m_candidates[cell.first + i];
        const int unlikeness = distance(m_palette[static_cast<std::size_t>(index)], colour);
        if (unlikeness < least) {
            least = unlikeness;
            best = index;
        }
    }
    return best;
}

void PaletteSearch::fill(Cell& cell, int red, int green, int blue)
{
    std::array<int, 256> nearest{};
    int bound = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < m_palette.size(); ++i) {
        const auto [nearRed, farRed] = distances(GIF::red(m_palette[i]), red);
        const auto [nearGreen, farGreen] = distances(GIF::green(m_palette[i]), green);
        const auto [nearBlue, farBlue] = distances(GIF::blue(m_palette[i]), blue);
        nearest[i] = nearRed + nearGreen + nearBlue;
        bound = std::min(bound, farRed + farGreen + farBlue);
    }
    cell.first = static_cast<std::uint32_t>(m_candidates.size());
    for (std::size_t i = 0; i < m_palette.size(); ++i) {
        if (nearest[i] <= bound)
            m_candidates.push_back(static_cast<std::uint8_t>(i));
    }
    cell.count = static_cast<std::uint32_t>(m_candidates.size()) - cell.first;
}
