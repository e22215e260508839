#include "Editor/Annotation.h"

#include <limits>

namespace {

int hexDigit(QChar c)
{
    const char16_t unit = c.unicode();
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    const char16_t lower = unit | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

/// The hexadecimal number that `text` begins with, 0 when there is none. The largest of 64 bits
/// stands for all that are larger.
std::uint64_t leadingHex(QStringView text)
{
    while (!text.isEmpty() && text.front().isSpace())
        text = text.mid(1);
    if (text.startsWith(u"0x", Qt::CaseInsensitive))
        text = text.mid(2);
    std::uint64_t value = 0;
    for (const QChar c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            break;
        if (value >> 60 != 0)
            return std::numeric_limits<std::uint64_t>::max();
        value = value << 4 | static_cast<std::uint64_t>(digit);
    }
    return value;
}

} // namespace

void Annotation::translate(double dx, double dy)
{
    const auto move = [=](Geometry::Point& point) {
        point.x += dx;
        point.y += dy;
    };
    move(start);
    move(end);
    if (path) {
        for (Geometry::Point& point : *path)
            move(point);
    }
}

QColor Annotation::color(const QString& hex)
{
    QString digits = hex;
    digits.remove(QLatin1Char('#'));
    const std::uint64_t value = leadingHex(digits);
    const auto byteAt = [value](int bit) { return static_cast<int>(value >> bit & 0xFF); };
    return {byteAt(16), byteAt(8), byteAt(0)};
}
