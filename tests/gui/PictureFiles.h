#pragma once

#include <QColor>
#include <QColorSpace>
#include <QImage>

#include <string>
#include <vector>

/// Files with pictures of many kinds, made on the spot.
namespace PictureFiles {

/// Pixels on a side.
inline constexpr int side = 40;

/// The colour of plain pictures.
const QColor plain(0x10, 0x20, 0x30);

std::string repeated(const std::string& text, int times);

/// A PNG of one colour, whose pixels are stored as `pixel`; of eight at a time at one bit each.
std::string png(int bitDepth, int colourType, const std::string& pixel,
                const std::string& chunks = {});

/// White and the plain colour.
std::string paletteChunks(const std::string& alphas = {});

QImage plainImage(const QColor& colour = plain);

/// At one pixel a point.
std::string encoded(QImage image, const char* format);

/// What ImageMagick makes of these words.
std::string converted(std::vector<std::string> words, const std::string& kind);

std::string profileChunk(const QByteArray& profile);

/// An ICC profile for greys that are proportional to light.
QByteArray linearGreyProfile();

/// A picture of 100, 150, 120 in that space.
std::string withProfile(QColorSpace::NamedColorSpace space, const char* format);

/// What the matrix from Display P3's primaries to sRGB's (SMPTE EG 432-1) makes of that colour.
const QColor throughDisplayP3(83, 152, 118);

/// A JPEG file with segments behind its first.
std::string withSegments(const std::string& jpeg, const std::string& segments);
std::string segment(const char* marker, const std::string& content);
std::string exifSegment(const std::string& block);

/// By its EXIF alone.
std::string jpegAtTwoPixelsAPoint();

/// Two frames, the second green.
std::string animatedPng();

/// The end of its file is missing; plain at its top.
std::string cutOffJpeg();

} // namespace PictureFiles
