#include "tour/ChipText.h"

#include "desktop/harness/Screen.h"
#include "desktop/harness/WaitUntil.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Desktop;

namespace {

constexpr double fontSize = 10; // points, as all that follow
constexpr double pillHeight = 18;
constexpr double fromEdge = 6;          // of the chip to the pill, above and on the right
constexpr double fromPill = 6;          // to the text
constexpr double textWidth = 26;        // about that of "0:00"
constexpr double pill = 0.35;           // how light it is at most
constexpr double isRead = 0.5;          // of the text's light that may be elsewhere
constexpr double isUnmistakable = 0.85; // of the next best reading's

/// How light each pixel is, from 0 to 1.
QList<double> lightOf(const QImage& image)
{
    QList<double> light;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            light += image.pixelColor(x, y).lightnessF();
    }
    return light;
}

/// A text that ends where the chip's does, on as large a piece of dark.
QImage written(const QString& text, QSize pixels, double scale)
{
    QImage image(pixels, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::black);
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(static_cast<int>(fontSize));
    font.setWeight(QFont::DemiBold);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(Qt::white);
    // Labels begin on whole points.
    const QFontMetricsF metrics(font);
    const double left = pixels.width() / scale - std::ceil(metrics.horizontalAdvance(text));
    const double middle = pixels.height() / scale / 2;
    painter.drawText(QPointF(left, middle + (metrics.ascent() - metrics.descent()) / 2), text);
    return image;
}

/// How much of the light is not in the same place in two pictures, of the first one's, from where
/// that begins; for the best of the places that are a point or two apart.
double difference(const QList<double>& wanted, const QList<double>& seen, int width, double scale)
{
    const int height = static_cast<int>(wanted.size()) / width;
    double all = 0;
    int left = width;
    for (int i = 0; i < wanted.size(); ++i) {
        all += wanted[i];
        if (wanted[i] > 0)
            left = std::min(left, i % width);
    }
    const auto seenAt = [&](int x, int y) {
        return x >= 0 && x < width && y >= 0 && y < height ? seen[y * width + x] : 0;
    };
    double best = 1e9;
    const int most = static_cast<int>(std::lround(2 * scale));
    for (int down = -most; down <= most; ++down) {
        for (int across = -most; across <= most; ++across) {
            double sum = 0;
            for (int y = 0; y < height; ++y) {
                for (int x = left; x < width; ++x)
                    sum += std::abs(wanted[y * width + x] - seenAt(x + across, y + down));
            }
            best = std::min(best, sum / all);
        }
    }
    return best;
}

Outcome<QString> durationIn(const QImage& picture, double scale)
{
    QList<double> seen = lightOf(picture);
    for (double& each : seen)
        each = std::max(each - pill, 0.0) / (1 - pill);
    QString best;
    double bestDifference = 1e9;
    double nextDifference = 1e9;
    for (int second = 0; second < 60; ++second) {
        const QString text = QStringLiteral("0:%1").arg(second, 2, 10, QLatin1Char('0'));
        const QImage wanted = written(QStringLiteral("▶ ") + text, picture.size(), scale);
        const double found = difference(lightOf(wanted), seen, picture.width(), scale);
        if (found < bestDifference) {
            nextDifference = bestDifference;
            bestDifference = found;
            best = text;
        } else if (found < nextDifference) {
            nextDifference = found;
        }
    }
    if (bestDifference > isRead || bestDifference > isUnmistakable * nextDifference)
        return Failure{QStringLiteral("it may be %1: %2, next %3")
                           .arg(best)
                           .arg(bestDifference)
                           .arg(nextDifference)};
    return best;
}

} // namespace

Outcome<QString> awaitDurationOn(const VirtualDesktop& desktop, const Window& chip)
{
    const double scale = desktop.options().scale;
    const auto pixels = [scale](double points) {
        return static_cast<int>(std::lround(points * scale));
    };
    return waitFor(QStringLiteral("a duration on the chip"), [&]() -> Outcome<QString> {
        const auto now = Windows(desktop).where(
            [&](const Window& window) { return window.id == chip.id && window.isViewable; });
        if (now.isEmpty())
            return Failure{QStringLiteral("it is gone")};
        const QRect place = Tamrik::chipIn(now.front(), scale);
        const QRect text(place.right() + 1 - pixels(fromEdge + fromPill + textWidth),
                         place.top() + pixels(fromEdge), pixels(textWidth), pixels(pillHeight));
        const auto picture = Screen(desktop).grab(text);
        if (!picture)
            return picture.failure();
        return durationIn(*picture, scale);
    });
}
