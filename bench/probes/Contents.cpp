#include "probes/Contents.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace Bench {

namespace {

using Random = std::mt19937;

int below(Random& random, int end)
{
    return static_cast<int>(random() % static_cast<unsigned>(end));
}

/// Random heights on a grid, joined smoothly.
class Field {
public:
    Field(Random& random, QSize size, int cell)
        : m_cell(cell)
        , m_columns(size.width() / cell + 2)
        , m_heights(static_cast<std::size_t>(m_columns) *
                    static_cast<std::size_t>(size.height() / cell + 2))
    {
        for (float& height : m_heights)
            height = static_cast<float>(random() % 1024) / 1023;
    }

    float operator()(int x, int y) const
    {
        const float u = smooth(static_cast<float>(x % m_cell) / static_cast<float>(m_cell));
        const float v = smooth(static_cast<float>(y % m_cell) / static_cast<float>(m_cell));
        const int column = x / m_cell;
        const int row = y / m_cell;
        const float upper = std::lerp(at(column, row), at(column + 1, row), u);
        const float lower = std::lerp(at(column, row + 1), at(column + 1, row + 1), u);
        return std::lerp(upper, lower, v);
    }

private:
    static float smooth(float t) { return t * t * (3 - 2 * t); }
    float at(int column, int row) const
    {
        return m_heights[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) +
                         static_cast<std::size_t>(column)];
    }

    int m_cell;
    int m_columns;
    std::vector<float> m_heights;
};

const char* const words[] = {"the",    "window", "of",    "a",     "screen", "shows",  "what",
                             "people", "read",   "and",   "write", "in",     "long",   "lines",
                             "with",   "names,", "paths", "to",    "files.", "numbers"};

QString sentence(Random& random, int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text += QLatin1String(words[below(random, std::size(words))]) + QLatin1Char(' ');
    return text;
}

void paintText(QPainter& painter, Random& random, QRect area, const QColor& ink)
{
    painter.setFont(QFont(QStringLiteral("Inter"), 10));
    painter.setPen(ink);
    for (int y = area.top() + 20; y < area.bottom() - 4; y += 20) {
        if (below(random, 6) != 0)
            painter.drawText(area.left() + 12, y, sentence(random, 6 + below(random, 9)));
    }
}

void paintList(QPainter& painter, Random& random, QRect area)
{
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    int row = 0;
    for (int y = area.top(); y + 24 <= area.bottom(); y += 24, ++row) {
        painter.fillRect(area.left(), y, area.width(), 24,
                         row == 3       ? QColor(0x3d, 0x7e, 0xd8)
                         : row % 2 == 0 ? QColor(0xf4, 0xf5, 0xf7)
                                        : QColor(Qt::white));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor::fromHsv(below(random, 360), 140, 200));
        painter.drawRoundedRect(area.left() + 6, y + 4, 16, 16, 4, 4);
        painter.setPen(row == 3 ? Qt::white : QColor(0x30, 0x34, 0x3a));
        painter.drawText(area.left() + 30, y + 16, sentence(random, 3));
        painter.drawText(area.right() - 70, y + 16, QString::number(random() % 900000));
    }
}

QRect paintWindow(QPainter& painter, QRect frame, const QColor& paper)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0, 0, 0, 90));
    painter.setBrush(paper);
    painter.drawRoundedRect(QRectF(frame).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    QLinearGradient bar(frame.topLeft(), frame.topLeft() + QPoint(0, 30));
    bar.setColorAt(0, QColor(0xee, 0xef, 0xf1));
    bar.setColorAt(1, QColor(0xd4, 0xd6, 0xda));
    painter.fillRect(frame.adjusted(1, 4, -1, 0).adjusted(0, 0, 0, 30 - frame.height()), bar);
    painter.setFont(QFont(QStringLiteral("Inter"), 10, QFont::DemiBold));
    painter.setPen(QColor(0x20, 0x24, 0x2a));
    painter.drawText(frame.left() + 14, frame.top() + 22, QStringLiteral("A window with a title"));
    return frame.adjusted(1, 34, -1, -8);
}

} // namespace

QImage Contents::photograph(QSize size)
{
    Random random(7);
    // From large shapes to fine structure, each half as strong as the one before.
    std::vector<Field> octaves;
    for (const int cell : {512, 256, 128, 64, 32, 16, 8})
        octaves.emplace_back(random, size, cell);
    const Field hue(random, size, 400);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* const row = static_cast<QRgb*>(static_cast<void*>(image.scanLine(y)));
        for (int x = 0; x < size.width(); ++x) {
            float light = 0;
            float strength = 0.5F;
            for (const Field& octave : octaves) {
                light += strength * octave(x, y);
                strength /= 2;
            }
            // A ridge makes an edge that is as sharp as a lens has it.
            const float edge = std::clamp((hue(x, y) - 0.5F) * 60, -1.0F, 1.0F) * 0.12F;
            const float tone = hue(x, y);
            const std::array channels = {light + edge, light * (0.7F + 0.3F * tone) + edge,
                                         light * (1.1F - 0.5F * tone)};
            std::array<int, 3> levels{};
            for (std::size_t i = 0; i < levels.size(); ++i) {
                const int noise = below(random, 3) + below(random, 3) - 2;
                levels[i] = std::clamp(static_cast<int>(channels[i] * 255) + noise, 0, 255);
            }
            row[x] = qRgb(levels[0], levels[1], levels[2]);
        }
    }
    return image;
}

QImage Contents::terminal(QSize size)
{
    Random random(11);
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(0x1c, 0x1f, 0x24));
    const std::array inks = {QColor(0xd8, 0xdc, 0xe2), QColor(0xd8, 0xdc, 0xe2),
                             QColor(0x8f, 0xc8, 0x7a), QColor(0x6f, 0xa8, 0xe8),
                             QColor(0xe0, 0xb0, 0x60)};
    QPainter painter(&image);
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPixelSize(14);
    painter.setFont(font);
    for (int y = 16; y < size.height(); y += 17) {
        int x = 8;
        while (x < size.width() / 2 + below(random, size.width() / 2)) {
            const QString text = sentence(random, 1 + below(random, 3));
            painter.setPen(inks[static_cast<std::size_t>(below(random, std::size(inks)))]);
            painter.drawText(x, y, text);
            x += painter.fontMetrics().horizontalAdvance(text);
        }
    }
    return image;
}

QImage Contents::mixed(QSize size)
{
    Random random(3);
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, size.width(), size.height());
    sky.setColorAt(0, QColor(0x24, 0x46, 0x6e));
    sky.setColorAt(1, QColor(0x8a, 0xa8, 0x9c));
    painter.fillRect(image.rect(), sky);
    const auto part = [size](double x, double y, double width, double height) {
        return QRectF(x * size.width(), y * size.height(), width * size.width(),
                      height * size.height())
            .toRect();
    };
    paintText(painter, random,
              paintWindow(painter, part(0.03, 0.05, 0.45, 0.55), QColor(Qt::white)),
              QColor(0x20, 0x22, 0x26));
    paintList(painter, random, paintWindow(painter, part(0.52, 0.04, 0.3, 0.4), Qt::white));
    const QRect code = paintWindow(painter, part(0.1, 0.5, 0.5, 0.42), QColor(0x1c, 0x1f, 0x24));
    painter.drawImage(code.topLeft(), terminal(code.size()));
    const QRect picture = paintWindow(painter, part(0.66, 0.4, 0.3, 0.45), Qt::white);
    painter.drawImage(picture.topLeft(), photograph(picture.size()));
    painter.fillRect(part(0, 0.965, 1, 0.035), QColor(0x18, 0x1b, 0x20));
    return image;
}

} // namespace Bench
