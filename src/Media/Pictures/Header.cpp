#include "Media/Pictures/Header.h"

#include "Media/Pictures/Exif.h"

#include <QImageReader>
#include <QtEndian>

#include <array>
#include <limits>

namespace {

/// Neither an X server nor a file that we can show has more on a side.
constexpr int maximumSide = 65535;
/// What stands before the pixels: a file of nothing but empty parts is not read to its end.
constexpr int maximumParts = 1000;

const Failure broken{"the picture's header is broken"};

/// Exactly `size` bytes; fewer are none.
std::optional<QByteArray> take(QIODevice& file, qint64 size)
{
    QByteArray bytes = file.read(size);
    if (bytes.size() != size)
        return {};
    return bytes;
}

template <class Number>
Number bigEndian(const QByteArray& bytes, qsizetype at)
{
    return qFromBigEndian<Number>(bytes.constData() + at);
}

// --- PNG ---

QSize pngSize(const QByteArray& content)
{
    const auto width = bigEndian<quint32>(content, 0);
    const auto height = bigEndian<quint32>(content, 4);
    constexpr quint32 most = std::numeric_limits<qint32>::max();
    if (width > most || height > most)
        return {};
    return {static_cast<int>(width), static_cast<int>(height)};
}

Result<PictureHeader> readPng(QIODevice& file)
{
    constexpr qint64 signature = 8;
    constexpr quint32 crc = 4;
    constexpr quint32 largestExif = 1 << 16;
    PictureHeader header{QByteArrayLiteral("png"), {}, {}, {}};
    file.seek(signature);
    for (int i = 0; i < maximumParts; ++i) {
        const auto start = take(file, 8);
        if (!start)
            break;
        const auto size = bigEndian<quint32>(*start, 0);
        const QByteArray type = start->mid(4);
        if (header.stored.isValid() == (type == "IHDR"))
            return broken; // the first chunk, and no other
        if (type == "IDAT")
            return header;
        const bool isWanted = type == "IHDR"   ? size == 13
                              : type == "pHYs" ? size == 9
                                               : type == "eXIf" && size <= largestExif;
        if (type == "IHDR" && !isWanted)
            return broken;
        if (!isWanted) {
            if (!file.seek(file.pos() + qint64{size} + crc))
                return broken;
            continue;
        }
        const auto content = take(file, qint64{size} + crc);
        if (!content)
            return broken;
        if (type == "IHDR")
            header.stored = pngSize(*content);
        constexpr char metres = 1;
        if (type == "pHYs" && content->at(8) == metres)
            header.dotsPerInch = bigEndian<quint32>(*content, 0) * 0.0254;
        if (type == "eXIf")
            header.orientation = Exif::read(*content).orientation;
    }
    return broken;
}

// --- JPEG ---

/// What a JFIF segment says, in dots an inch; absent when it gives the shape of a pixel only.
std::optional<double> jfifDensity(const QByteArray& content)
{
    constexpr qsizetype unitAt = 7;
    if (!content.startsWith(QByteArrayView("JFIF\0", 5)) || content.size() < unitAt + 3)
        return {};
    const auto density = bigEndian<quint16>(content, unitAt + 1);
    switch (content.at(unitAt)) {
    case 1:
        return density;
    case 2:
        return density * 2.54;
    default:
        return {};
    }
}

bool isStartOfFrame(int marker)
{
    // 0xc4, 0xc8 and 0xcc are tables in the midst of them.
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

/// The next marker's second byte; absent at the end, and where none stands.
std::optional<int> takeMarker(QIODevice& file)
{
    char byte = 0;
    if (!file.getChar(&byte) || byte != '\xff')
        return {};
    while (byte == '\xff') { // any number of fill bytes
        if (!file.getChar(&byte))
            return {};
    }
    return static_cast<unsigned char>(byte);
}

Result<PictureHeader> readJpeg(QIODevice& file)
{
    PictureHeader header{QByteArrayLiteral("jpeg"), {}, {}, {}};
    std::optional<double> exifDensity;
    file.seek(2);
    for (int i = 0; i < maximumParts; ++i) {
        const auto marker = takeMarker(file);
        const auto size = take(file, 2);
        if (!marker || !size || bigEndian<quint16>(*size, 0) < 2)
            return broken;
        const auto content = take(file, bigEndian<quint16>(*size, 0) - 2);
        if (!content)
            return broken;
        if (*marker == 0xe0 && !header.dotsPerInch)
            header.dotsPerInch = jfifDensity(*content);
        constexpr QByteArrayView exifName("Exif\0\0", 6);
        if (*marker == 0xe1 && content->startsWith(exifName)) {
            const Exif exif = Exif::read(QByteArrayView(*content).sliced(exifName.size()));
            header.orientation = exif.orientation;
            exifDensity = exif.dotsPerInch;
        }
        if (isStartOfFrame(*marker)) {
            if (content->size() < 6)
                return broken;
            header.stored = {bigEndian<quint16>(*content, 3), bigEndian<quint16>(*content, 1)};
            if (!header.dotsPerInch)
                header.dotsPerInch = exifDensity;
            return header;
        }
    }
    return broken;
}

// --- what Qt knows about ---

Orientation orientationOf(QImageIOHandler::Transformations transformation)
{
    // Qt turns after it has mirrored, as we do; its flip is a mirror and half a turn.
    const bool isMirrored = transformation.testFlag(QImageIOHandler::TransformationMirror);
    const bool isFlipped = transformation.testFlag(QImageIOHandler::TransformationFlip);
    const bool isTurned = transformation.testFlag(QImageIOHandler::TransformationRotate90);
    return {isMirrored != isFlipped, (isFlipped ? 2 : 0) + (isTurned ? 1 : 0)};
}

Result<PictureHeader> readByQt(QIODevice& file, const QByteArray& format)
{
    file.seek(0);
    QImageReader reader(&file, format);
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (!size.isValid() && reader.error() == QImageReader::UnsupportedFormatError)
        return Failure{"there is no reader for this kind of picture"};
    if (!size.isValid())
        return broken;
    return PictureHeader{format, size, orientationOf(reader.transformation()), {}};
}

struct Signature {
    QByteArrayView start;
    qsizetype otherAt; ///< Where more is to stand.
    QByteArrayView other;
    const char* format;
};

constexpr std::array signatures{
    Signature{"\x89PNG\r\n\x1a\n", 0, "", "png"},
    Signature{"\xff\xd8\xff", 0, "", "jpeg"},
    Signature{"GIF8", 4, "7a", "gif"},
    Signature{"GIF8", 4, "9a", "gif"},
    Signature{"RIFF", 8, "WEBP", "webp"},
    Signature{{"II*\0", 4}, 0, "", "tiff"},
    Signature{{"MM\0*", 4}, 0, "", "tiff"},
    Signature{"BM", 6, {"\0\0\0\0", 4}, "bmp"},
};

QByteArray formatOf(QByteArrayView start)
{
    for (const Signature& signature : signatures) {
        if (start.startsWith(signature.start) && start.size() >= signature.otherAt &&
            start.sliced(signature.otherAt).startsWith(signature.other))
            return signature.format;
    }
    return {};
}

Result<PictureHeader> readFormat(QIODevice& file)
{
    file.seek(0);
    const QByteArray format = formatOf(file.read(16));
    if (format.isEmpty())
        return Failure{"it is no picture of a kind that we read"};
    if (format == "png")
        return readPng(file);
    if (format == "jpeg")
        return readJpeg(file);
    return readByQt(file, format);
}

} // namespace

Result<PictureHeader> PictureHeader::read(QIODevice& file)
{
    const qint64 position = file.pos();
    Result<PictureHeader> header = readFormat(file);
    file.seek(position);
    if (!header)
        return header;
    const QSize size = header->stored;
    if (size.isEmpty())
        return broken;
    if (size.width() > maximumSide || size.height() > maximumSide)
        return Failure{"the picture is too large"};
    return header;
}
