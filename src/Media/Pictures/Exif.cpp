#include "Media/Pictures/Exif.h"

#include <QtEndian>

namespace {

// Numbers of TIFF 6.0 and of EXIF 2.3.
constexpr quint16 orientationTag = 0x0112;
constexpr quint16 xResolutionTag = 0x011a;
constexpr quint16 resolutionUnitTag = 0x0128;
constexpr quint16 shortType = 3;
constexpr quint16 rationalType = 5;
constexpr int inch = 2;
constexpr int centimetre = 3;
constexpr qsizetype entrySize = 12;

/// A TIFF structure in memory; what lies outside of it is absent.
class Block {
public:
    explicit Block(QByteArrayView bytes)
        : m_bytes(bytes)
        , m_isBigEndian(bytes.startsWith("MM"))
    {
    }

    template <class Number>
    std::optional<Number> at(quint64 offset) const
    {
        const auto size = static_cast<quint64>(m_bytes.size());
        if (offset > size || size - offset < sizeof(Number))
            return {};
        const char* const start = m_bytes.data() + offset;
        return m_isBigEndian ? qFromBigEndian<Number>(start) : qFromLittleEndian<Number>(start);
    }

    /// A number that is stored in an entry itself.
    std::optional<int> shortOf(quint64 entry) const
    {
        if (at<quint16>(entry + 2) != shortType)
            return {};
        return at<quint16>(entry + 8);
    }

    /// A fraction, to which the entry points.
    std::optional<double> rationalOf(quint64 entry) const
    {
        const auto offset = at<quint32>(entry + 8);
        if (at<quint16>(entry + 2) != rationalType || !offset)
            return {};
        const auto numerator = at<quint32>(*offset);
        const auto denominator = at<quint32>(quint64{*offset} + 4);
        if (!numerator || !denominator || *denominator == 0)
            return {};
        return double{static_cast<double>(*numerator)} / *denominator;
    }

private:
    QByteArrayView m_bytes;
    bool m_isBigEndian;
};

} // namespace

Exif Exif::read(QByteArrayView bytes)
{
    Exif exif;
    const Block block(bytes);
    const quint64 directory = block.at<quint32>(4).value_or(0);
    const int count = block.at<quint16>(directory).value_or(0);
    std::optional<double> resolution;
    int unit = inch;
    if (block.at<quint16>(2) != 42)
        return exif;
    for (int i = 0; i < count; ++i) {
        const quint64 entry = directory + 2 + static_cast<quint64>(i * entrySize);
        const auto tag = block.at<quint16>(entry);
        if (!tag)
            break;
        if (*tag == orientationTag)
            exif.orientation = Orientation::fromExif(block.shortOf(entry).value_or(1));
        if (*tag == xResolutionTag)
            resolution = block.rationalOf(entry);
        if (*tag == resolutionUnitTag)
            unit = block.shortOf(entry).value_or(inch);
    }
    if (resolution && unit == inch)
        exif.dotsPerInch = resolution;
    if (resolution && unit == centimetre)
        exif.dotsPerInch = *resolution * 2.54;
    return exif;
}
