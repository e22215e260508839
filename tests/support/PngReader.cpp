#include "support/PngReader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <png.h>
#include <zlib.h>

namespace {

std::uint32_t numberAt(const std::string& bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        number = number << 8 | static_cast<std::uint8_t>(bytes[i]);
    return number;
}

/// The CRC of ISO/IEC 15948 (PNG), annex D, bit by bit.
std::uint32_t crcOf(const std::string& bytes)
{
    std::uint32_t crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xedb88320 : crc >> 1;
    }
    return ~crc;
}

/// The first byte of each row in the deflated data of an 8-bit RGB image.
std::vector<int> filterTypesOf(const std::string& data, std::uint32_t width, std::uint32_t height)
{
    const std::size_t rowBytes = 1 + std::size_t{3} * width;
    std::vector<Bytef> rows(rowBytes * height);
    uLongf size = rows.size();
    const void* const start = data.data();
    EXPECT_EQ(uncompress(rows.data(), &size, static_cast<const Bytef*>(start), data.size()), Z_OK);
    EXPECT_EQ(size, rows.size()) << "more or fewer rows than the header says";
    std::vector<int> types;
    for (std::size_t at = 0; at < rows.size(); at += rowBytes)
        types.push_back(rows[at]);
    return types;
}

bool readChunks(const std::string& file, PngImage& image)
{
    std::string data;
    if (!file.starts_with("\x89PNG\r\n\x1a\n"))
        return false;
    for (std::size_t at = 8; at < file.size();) {
        if (file.size() - at < 12)
            return false;
        const std::size_t length = numberAt(file, at);
        if (file.size() - at - 12 < length)
            return false;
        const std::string type = file.substr(at + 4, 4);
        const std::size_t content = at + 8;
        if (crcOf(file.substr(at + 4, 4 + length)) != numberAt(file, content + length))
            return false;
        if (type == "IHDR") {
            image.bitDepth = file[content + 8];
            image.colourType = file[content + 9];
            image.width = numberAt(file, content);
            image.height = numberAt(file, content + 4);
        }
        if (type == "IDAT")
            data += file.substr(content, length);
        if (type == "pHYs" && length == 9 && file[content + 8] == 1) {
            image.pixelsPerMetreX = numberAt(file, content);
            image.pixelsPerMetreY = numberAt(file, content + 4);
        }
        image.chunkTypes.push_back(type);
        image.largestChunk = std::max(image.largestChunk, length);
        at += 12 + length;
    }
    if (image.bitDepth == 8 && image.colourType == 2)
        image.filterTypes = filterTypesOf(data, image.width, image.height);
    return !image.chunkTypes.empty() && image.chunkTypes.front() == "IHDR" &&
           image.chunkTypes.back() == "IEND";
}

} // namespace

std::uint32_t PngImage::pixel(std::uint32_t x, std::uint32_t y) const
{
    const std::size_t at = (std::size_t{y} * width + x) * 3;
    return std::uint32_t{rgb.at(at)} << 16 | std::uint32_t{rgb.at(at + 1)} << 8 | rgb.at(at + 2);
}

PngImage readPng(const std::string& file)
{
    PngImage image;
    EXPECT_TRUE(readChunks(file, image)) << "the chunks are broken";

    png_image decoder{};
    decoder.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&decoder, file.data(), file.size())) {
        ADD_FAILURE() << "libpng: " << decoder.message;
        return {};
    }
    decoder.format = PNG_FORMAT_RGB;
    image.width = decoder.width;
    image.height = decoder.height;
    image.rgb.resize(std::size_t{3} * decoder.width * decoder.height);
    const bool isRead = png_image_finish_read(&decoder, nullptr, image.rgb.data(), 0, nullptr) != 0;
    EXPECT_TRUE(isRead && decoder.warning_or_error == 0) << "libpng: " << decoder.message;
    png_image_free(&decoder);
    return image;
}
