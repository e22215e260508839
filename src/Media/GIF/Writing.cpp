#include "Media/GIF/Writing.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>

using namespace GIF;

namespace {

constexpr int extension = 0x21;
constexpr int applicationExtension = 0xff;
constexpr int graphicControl = 0xf9;
constexpr int imageDescriptor = 0x2c;
constexpr int trailer = 0x3b;
constexpr int hasColours = 0x80;
constexpr int keepWhenOver = 1 << 2;
constexpr int hasTransparency = 1;

void put(Bytes& file, std::initializer_list<int> bytes)
{
    for (const int byte : bytes)
        file.push_back(static_cast<std::uint8_t>(byte));
}

void putText(Bytes& file, std::string_view text)
{
    for (const char letter : text)
        file.push_back(static_cast<std::uint8_t>(letter));
}

/// Two bytes, the lower first.
void putNumber(Bytes& file, int number)
{
    put(file, {number & 255, number >> 8});
}

/// How many bits pixels of these colours have: there is one number more than colours.
int bitsFor(const Palette& palette)
{
    int bits = 2;
    while ((std::size_t{1} << bits) <= palette.size())
        ++bits;
    return bits;
}

void putColours(Bytes& file, const Palette& palette)
{
    for (const Pixel pixel : palette)
        put(file, {red(pixel), green(pixel), blue(pixel)});
    const std::size_t missing = (std::size_t{1} << bitsFor(palette)) - palette.size();
    file.insert(file.end(), 3 * missing, 0);
}

} // namespace

Bytes GIF::beginning(QSize size, const Palette& palette)
{
    Bytes file;
    putText(file, "GIF89a");
    putNumber(file, size.width());
    putNumber(file, size.height());
    const int bitsOfScreen = 7 << 4; // eight a channel, less one
    put(file, {hasColours | bitsOfScreen | (bitsFor(palette) - 1), 0, 0});
    putColours(file, palette);
    put(file, {extension, applicationExtension, 11});
    putText(file, "NETSCAPE2.0");
    put(file, {3, 1, 0, 0, 0}); // repeated 0 times: for ever
    return file;
}

void GIF::appendFrame(Bytes& file, const IndexedFrame& frame, int delay, const Palette& palette,
                      bool isPaletteOfFile, Compressor& compressor)
{
    put(file, {extension, graphicControl, 4, keepWhenOver | hasTransparency});
    putNumber(file, delay);
    put(file, {static_cast<int>(palette.size()), 0, imageDescriptor});
    for (const int number : {frame.x, frame.y, frame.width, frame.height})
        putNumber(file, number);
    const int bits = bitsFor(palette);
    put(file, {isPaletteOfFile ? 0 : hasColours | (bits - 1)});
    if (!isPaletteOfFile)
        putColours(file, palette);
    compressor.compress(frame.pixels, bits, file);
}

void GIF::appendEnd(Bytes& file)
{
    put(file, {trailer});
}
