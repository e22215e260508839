#include "gui/Rendered.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

QColor mixed(const QColor& below, const QColor& top, double alpha)
{
    const auto channel = [alpha](int under, int over) {
        return static_cast<int>(std::lround(under + (over - under) * alpha));
    };
    return {channel(below.red(), top.red()), channel(below.green(), top.green()),
            channel(below.blue(), top.blue())};
}

QColor Stops::at(double share) const
{
    const QColor first(QLatin1String{top});
    const QColor second(QLatin1String{middle});
    const QColor third(QLatin1String{bottom});
    if (share <= middleLocation)
        return mixed(first, second, std::max(share, 0.0) / middleLocation);
    return mixed(second, third, (std::min(share, 1.0) - middleLocation) / (1 - middleLocation));
}

QImage Rendered::at(QWidget& view, double scale)
{
    const QSizeF pixels = QSizeF(view.size()) * scale;
    QImage image(pixels.toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(ground);
    view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

void expectColor(const QImage& image, QPoint pixel, const QColor& wanted)
{
    const QColor actual = image.pixelColor(pixel);
    const int worst =
        std::max({std::abs(actual.red() - wanted.red()), std::abs(actual.green() - wanted.green()),
                  std::abs(actual.blue() - wanted.blue())});
    EXPECT_LE(worst, 3) << "at " << pixel.x() << ", " << pixel.y() << ": "
                        << qPrintable(actual.name()) << " instead of " << qPrintable(wanted.name());
}

void expectRounded(const QImage& image, QSizeF size, double radius, double scale)
{
    // In pixels from the corner's centre: the stroke's outer edge, and what antialiasing may touch.
    const double outer = (radius + 0.5) * scale;
    const double centre = outer;
    const int reach = static_cast<int>(std::ceil(outer));
    const int right = static_cast<int>(std::lround(size.width() * scale)) - 1;
    const int bottom = static_cast<int>(std::lround(size.height() * scale)) - 1;
    int outside = 0;
    for (int y = 0; y < reach; ++y) {
        for (int x = 0; x < reach; ++x) {
            const double distance = std::hypot(x + 0.5 - centre, y + 0.5 - centre);
            for (const QPoint pixel : {QPoint(x, y), QPoint(right - x, y), QPoint(x, bottom - y),
                                       QPoint(right - x, bottom - y)})
            {
                const bool painted = image.pixelColor(pixel) != Rendered::ground;
                if (distance > outer + 0.75) {
                    EXPECT_FALSE(painted) << "outside, at " << pixel.x() << ", " << pixel.y();
                    ++outside;
                } else if (distance < outer - 0.75) {
                    EXPECT_TRUE(painted) << "inside, at " << pixel.x() << ", " << pixel.y();
                }
            }
        }
    }
    EXPECT_GT(outside, 0) << "the corner is too small to tell";
}
