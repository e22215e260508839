#include "Encoder.h"

#include "Bands.h"
#include "Buffer.h"
#include "Chunks.h"
#include "Deflate.h"
#include "IndexedRows.h"
#include "RowFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

#include <libdeflate.h>

namespace Png {

namespace {

// libdeflate's levels. Pixels that repeat, as those of text and surfaces do, shrink with each level
// up to some point at little cost. A photograph's do not repeat: higher levels look for what is not
// there, and take five times as long for a file that is a few hundredths smaller.
constexpr int thorough = 4;
constexpr int quick = 1;

/// A picture whose sample does not shrink to less than one part in so many counts as a photograph:
/// a screen does when a photograph fills about a third of it.
constexpr std::size_t photographShare = 6;

constexpr std::size_t pixelBytes = 3;
constexpr std::size_t largestData = 256 << 10; // content of one IDAT chunk, in bytes

// How much of a picture is tried out to choose how to go about it.
constexpr std::uint32_t sampleBands = 8;
constexpr std::uint32_t sampleBandRows = 4;

std::size_t rowBytes(const Source& source)
{
    return pixelBytes * source.width;
}

/// Filters the rows `first` to `end` - 1 as they stand in the picture; returns the end of what it
/// wrote.
std::uint8_t* filterRows(const Source& source, Filtering filtering, std::uint32_t first,
                         std::uint32_t end, std::uint8_t* out)
{
    RowFilter filter(filtering, pixelBytes, rowBytes(source));
    if (first > 0) {
        source.readRow(first - 1, filter.nextRow());
        filter.skip();
    }
    for (std::uint32_t y = first; y < end; ++y) {
        source.readRow(y, filter.nextRow());
        filter.write(out);
        out += 1 + rowBytes(source);
    }
    return out;
}

PartedData filteredRows(const Source& source, Filtering filtering, unsigned workers)
{
    const std::size_t lineBytes = 1 + rowBytes(source);
    const Bands bands(source.height, lineBytes, workers);
    const auto filter = [&source, filtering, bands](std::size_t band, std::uint8_t* scratch) {
        const std::uint8_t* const end =
            filterRows(source, filtering, bands.start(band), bands.start(band + 1), scratch);
        return std::span<const std::uint8_t>(scratch, end);
    };
    return {bands.count(), bands.mostRows() * lineBytes, filter};
}

PartedData rowsOf(const IndexedRows& picture, const Source& source, unsigned workers)
{
    const std::size_t lineBytes = std::size_t{1} + source.width;
    const Bands bands(source.height, lineBytes, workers);
    const auto select = [&picture, lineBytes, bands](std::size_t band, std::uint8_t*) {
        const std::uint8_t* const rows = picture.rows.get();
        return std::span(rows + lineBytes * bands.start(band),
                         rows + lineBytes * bands.start(band + 1));
    };
    return {bands.count(), bands.mostRows() * lineBytes, select};
}

/// Some rows of a picture, before and after: how many bytes they are.
struct Sample {
    std::size_t filtered = 0;
    std::size_t deflated = 0;
};

Sample sample(const Source& source, Filtering filtering, libdeflate_compressor* compressor)
{
    const std::uint32_t bands =
        std::min(sampleBands, (source.height + sampleBandRows - 1) / sampleBandRows);
    Buffer filtered(std::size_t{bands} * sampleBandRows * (1 + rowBytes(source)));
    std::uint8_t* out = filtered.data();
    for (std::uint32_t band = 0; band < bands; ++band) {
        const auto first = static_cast<std::uint32_t>(std::uint64_t{source.height} * band / bands);
        const std::uint32_t end = std::min(first + sampleBandRows, source.height);
        out = filterRows(source, filtering, first, end, out);
    }
    const auto length = static_cast<std::size_t>(out - filtered.data());
    Buffer deflated(libdeflate_deflate_compress_bound(compressor, length));
    return {length, libdeflate_deflate_compress(compressor, filtered.data(), length,
                                                deflated.data(), deflated.size())};
}

/// How to go about a picture.
struct Plan {
    Filtering filtering;
    int level;
};

Plan planFor(const Source& source)
{
    const Compressor compressor = compressorOf(quick);
    const Sample none = sample(source, Filtering::None, compressor.get());
    const Sample adaptive = sample(source, Filtering::Adaptive, compressor.get());
    const bool isBetterFiltered = adaptive.deflated < none.deflated;
    const Sample& better = isBetterFiltered ? adaptive : none;
    const bool isPhotograph = better.deflated > better.filtered / photographShare;
    return {isBetterFiltered ? Filtering::Adaptive : Filtering::None,
            isPhotograph ? quick : thorough};
}

enum class ColourType : std::uint8_t { Rgb = 2, Palette = 3 }; // ISO/IEC 15948, section 11.2.2

void appendHeader(Chunks& chunks, const Source& source, ColourType type)
{
    std::array<std::uint8_t, 13> header{};
    putNumber(&header[0], source.width);
    putNumber(&header[4], source.height);
    header[8] = 8; // bits a sample
    header[9] = static_cast<std::uint8_t>(type);
    chunks.append("IHDR", header);
}

void appendDensity(Chunks& chunks, double dotsPerInch)
{
    constexpr double metresAnInch = 0.0254;
    constexpr double most = 0x7fffffff;
    const double perMetre = std::clamp(std::round(dotsPerInch / metresAnInch), 0.0, most);
    std::array<std::uint8_t, 9> density{};
    putNumber(&density[0], static_cast<std::uint32_t>(perMetre));
    putNumber(&density[4], static_cast<std::uint32_t>(perMetre));
    density[8] = 1; // the unit is the metre
    chunks.append("pHYs", density);
}

void appendData(Chunks& chunks, const std::vector<Buffer>& pieces)
{
    std::size_t size = 0;
    for (const Buffer& piece : pieces)
        size += piece.size() + piece.size() / 1024 + 64; // with room for the chunks' own bytes
    chunks.reserve(size);
    for (const Buffer& piece : pieces) {
        std::span<const std::uint8_t> rest = piece.bytes();
        while (!rest.empty()) {
            const std::size_t count = std::min(largestData, rest.size());
            chunks.append("IDAT", rest.first(count));
            rest = rest.subspan(count);
        }
    }
}

} // namespace

std::vector<std::uint8_t> encode(const Source& source, double dotsPerInch, unsigned workers)
{
    Chunks chunks;
    if (const auto picture = indexed(source)) {
        appendHeader(chunks, source, ColourType::Palette);
        appendDensity(chunks, dotsPerInch);
        chunks.append("PLTE", picture->palette);
        appendData(chunks, zlibStream(rowsOf(*picture, source, workers), thorough, workers));
    } else {
        const Plan plan = planFor(source);
        appendHeader(chunks, source, ColourType::Rgb);
        appendDensity(chunks, dotsPerInch);
        appendData(chunks,
                   zlibStream(filteredRows(source, plan.filtering, workers), plan.level, workers));
    }
    chunks.append("IEND", {});
    return chunks.take();
}

} // namespace Png
