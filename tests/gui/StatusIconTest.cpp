#include "StatusIcon.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

QImage onPanel(const QIcon& icon, int size, const QColor& panel)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(panel);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, icon.pixmap(QSize(size, size), 1.0));
    return image;
}

/// How many pixels stand out from the panel, as a share of all.
double contrasting(const QImage& image, const QColor& panel)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (std::abs(image.pixelColor(x, y).lightness() - panel.lightness()) > 90)
                ++count;
        }
    }
    return static_cast<double>(count) / (image.width() * image.height());
}

} // namespace

TEST(StatusIcon, IsLegibleOnLightAndDarkPanels)
{
    for (const QColor& panel : {QColor(0xF5, 0xF5, 0xF5), QColor(0x20, 0x20, 0x20)}) {
        for (const int size : {16, 22, 24, 32, 44, 48})
            EXPECT_GT(contrasting(onPanel(StatusIcon::icon(false), size, panel), panel), 0.1)
                << size << " on " << qPrintable(panel.name());
    }
}

TEST(StatusIcon, IsRedWhileRecording)
{
    const auto redPixels = [](bool recording) {
        const QImage image = onPanel(StatusIcon::icon(recording), 22, Qt::black);
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += c.red() > 200 && c.green() < 100;
            }
        }
        return count;
    };
    EXPECT_GT(redPixels(true), 80);
    EXPECT_EQ(redPixels(false), 0);
}

TEST(StatusIcon, HasEverySizeThatTraysAskFor)
{
    const auto sizes = StatusIcon::icon(false).availableSizes();
    for (const int size : {16, 22, 24, 32, 48})
        EXPECT_TRUE(sizes.contains(QSize(size, size))) << size;
}
