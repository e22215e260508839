#include "Media/Picture.h"

#include "Media/Density.h"
#include "Media/Pictures/AreaScaler.h"
#include "Media/Pictures/Cover.h"
#include "Media/Pictures/Header.h"
#include "Media/Pictures/PngRows.h"
#include "Media/Pictures/QtWarnings.h"
#include "Support/RegularFile.h"

#include <QColorSpace>
#include <QFile>
#include <QImageReader>

#include <cmath>
#include <utility>
#include <vector>

namespace {

/// A PNG that is held as a whole takes 4 bytes a pixel; most are read row by row.
constexpr qint64 maximumPngPixels = qint64{1} << 27;
/// A progressive JPEG is decoded from up to 6 bytes a pixel, whatever the size that is asked for.
constexpr qint64 maximumOtherPixels = qint64{1} << 26;

/// A picture's open file, at its beginning, and what its header says.
struct Source {
    RegularFile file; // closes the descriptor that the device reads from
    std::unique_ptr<QFile> device;
    PictureHeader header;
};

Failure failureOf(const QString& path, const std::string& reason)
{
    return {"cannot read " + path.toStdString() + ": " + reason};
}

Result<Source> openSource(const QString& path)
{
    QtWarnings::silence();
    Result<RegularFile> file = RegularFile::open(QFile::encodeName(path).toStdString());
    if (!file)
        return file.failure();
    auto device = std::make_unique<QFile>();
    if (!device->open(file->descriptor.get(), QIODevice::ReadOnly))
        return failureOf(path, device->errorString().toStdString());
    const Result<PictureHeader> header = PictureHeader::read(*device);
    if (!header)
        return failureOf(path, header.failure().message);
    const qint64 pixels = qint64{header->stored.width()} * header->stored.height();
    if (pixels > (header->format == "png" ? maximumPngPixels : maximumOtherPixels))
        return failureOf(path, "the picture is too large");
    return Source{std::move(*file), std::move(device), *header};
}

QImage finished(QImage image, const Orientation& orientation)
{
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb)) {
        // Qt converts the colours of true-colour formats only.
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                : QImage::Format_RGB32);
        image.convertToColorSpace(QColorSpace::SRgb);
    }
    image.setColorSpace({});
    image = orientation.upright(image);
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                            : QImage::Format_RGB32);
    // What a density means is not Qt's to interpret.
    image.setDotsPerMeterX(0);
    image.setDotsPerMeterY(0);
    return image;
}

Result<QImage> finishedOrFailure(const QString& path, QImage image, const PictureHeader& header)
{
    if (image.isNull())
        return failureOf(path, "the picture is broken or too large");
    return finished(std::move(image), header.orientation);
}

// --- PNG ---

QImage wholePng(PngRows& rows)
{
    QImage image(rows.width(), rows.height(),
                 rows.hasAlpha() ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    for (int pass = 0; pass < rows.passes(); ++pass) {
        for (int y = 0; y < image.height(); ++y) {
            if (!rows.readRow(image.scanLine(y)))
                return {};
        }
    }
    image.setColorSpace(rows.colorSpace());
    return image;
}

QImage scaledPng(PngRows& rows, const Cover& cover)
{
    AreaScaler scaler(cover.part, cover.size, rows.hasAlpha());
    QImage whole;
    if (rows.passes() > 1) {
        whole = wholePng(rows);
        if (whole.isNull())
            return {};
    }
    std::vector<unsigned char> row(static_cast<std::size_t>(rows.width()) * 4);
    for (int y = 0; y < scaler.endRow(); ++y) {
        if (whole.isNull() && !rows.readRow(row.data()))
            return {};
        if (y >= scaler.firstRow())
            scaler.add(whole.isNull() ? row.data() : whole.scanLine(y));
    }
    QImage image = scaler.result();
    image.setColorSpace(rows.colorSpace());
    return image;
}

// --- by Qt ---

QImage readByQt(const Source& source, QSize scaledSize = {})
{
    source.device->seek(0);
    QImageReader reader(source.device.get(), source.header.format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);
    reader.setScaledSize(scaledSize);
    return reader.read();
}

QImage scaledByQt(const Source& source, const Cover& cover)
{
    const QSize stored = source.header.stored;
    const double scale = cover.size.width() / cover.part.width();
    // libjpeg leaves out most of the work for a smaller picture; for other formats Qt only scales
    // what it has read whole.
    const QSize scaled(static_cast<int>(std::ceil(stored.width() * scale)),
                       static_cast<int>(std::ceil(stored.height() * scale)));
    const bool isJpeg = source.header.format == "jpeg";
    QImage image = readByQt(source, isJpeg ? scaled : QSize());
    if (image.isNull())
        return image;
    if (isJpeg)
        return image.copy(QRect(QPoint((image.width() - cover.size.width()) / 2,
                                       (image.height() - cover.size.height()) / 2),
                                cover.size));
    if (image.size() != stored)
        return {};
    return image.copy(cover.part.toAlignedRect().intersected(image.rect()))
        .scaled(cover.size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

Result<Picture::Info> Picture::info(const QString& path)
{
    const Result<Source> source = openSource(path);
    if (!source)
        return source.failure();
    const PictureHeader& header = source->header;
    return Info{header.orientation.upright(header.stored),
                Density::pixelsPerPoint(header.dotsPerInch)};
}

Result<QImage> Picture::thumbnail(const QString& path, QSize target)
{
    Q_ASSERT(!target.isEmpty());
    const Result<Source> source = openSource(path);
    if (!source)
        return source.failure();
    const PictureHeader& header = source->header;
    const Cover cover = Cover::of(header.stored, header.orientation.upright(target));
    if (header.format != "png")
        return finishedOrFailure(path, scaledByQt(*source, cover), header);
    const auto rows = PngRows::open(*source->device);
    return finishedOrFailure(path, rows ? scaledPng(*rows, cover) : QImage(), header);
}

Result<QImage> Picture::load(const QString& path)
{
    const Result<Source> source = openSource(path);
    if (!source)
        return source.failure();
    const PictureHeader& header = source->header;
    if (header.format != "png")
        return finishedOrFailure(path, readByQt(*source), header);
    const auto rows = PngRows::open(*source->device);
    return finishedOrFailure(path, rows ? wholePng(*rows) : QImage(), header);
}
