#include "unit/Media/PngFile.h"

#include <zlib.h>

namespace {

const Bytef* bytesOf(const std::string& text)
{
    const void* const start = text.data();
    return static_cast<const Bytef*>(start);
}

/// Piece by piece: there may be far more of it than would be good to hold.
std::string deflated(const std::string& row, std::uint32_t rows)
{
    z_stream stream = {};
    deflateInit(&stream, Z_BEST_SPEED);
    std::string input = std::string(1, '\0') + row;
    std::string output;
    std::string piece(1 << 16, '\0');
    for (std::uint32_t i = 0; i < rows; ++i) {
        void* const start = input.data();
        stream.next_in = static_cast<Bytef*>(start);
        stream.avail_in = static_cast<uInt>(input.size());
        int result = Z_OK;
        do {
            void* const end = piece.data();
            stream.next_out = static_cast<Bytef*>(end);
            stream.avail_out = static_cast<uInt>(piece.size());
            result = deflate(&stream, i + 1 == rows ? Z_FINISH : Z_NO_FLUSH);
            output.append(piece, 0, piece.size() - stream.avail_out);
        } while (stream.avail_out == 0 && result == Z_OK);
    }
    deflateEnd(&stream);
    return output;
}

std::string little(std::uint32_t value, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * i & 0xff);
    return bytes;
}

} // namespace

std::string PngFile::number(std::uint32_t value)
{
    const std::string reversed = little(value, 4);
    return {reversed.rbegin(), reversed.rend()};
}

std::string PngFile::chunk(const std::string& type, const std::string& content)
{
    const std::string body = type + content;
    const auto crc = crc32(0, bytesOf(body), static_cast<uInt>(body.size()));
    return number(static_cast<std::uint32_t>(content.size())) + body +
           number(static_cast<std::uint32_t>(crc));
}

std::string PngFile::density(std::uint32_t dots, char unit)
{
    return chunk("pHYs", number(dots) + number(dots) + std::string(1, unit));
}

std::string PngFile::bytes() const
{
    std::string header = number(width) + number(height);
    header += static_cast<char>(bitDepth);
    header += static_cast<char>(colourType);
    header += std::string(3, '\0');
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + chunks +
           chunk("IDAT", deflated(row, rows)) + chunk("IEND", {});
}

std::string exifBlock(int orientation, std::uint32_t dotsPerInch)
{
    constexpr std::uint32_t directory = 8;
    const int entries = dotsPerInch ? 2 : 1;
    const auto after = directory + 2 + 12 * static_cast<std::uint32_t>(entries) + 4;
    std::string block = "II" + little(42, 2) + little(directory, 4);
    block += little(static_cast<std::uint32_t>(entries), 2);
    block += little(0x0112, 2) + little(3, 2) + little(1, 4) +
             little(static_cast<std::uint32_t>(orientation), 4);
    if (dotsPerInch)
        block += little(0x011a, 2) + little(5, 2) + little(1, 4) + little(after, 4);
    block += little(0, 4);
    if (dotsPerInch)
        block += little(dotsPerInch, 4) + little(1, 4);
    return block;
}
