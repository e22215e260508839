#include "Editor/AnnotationText.h"

#include "Editor/AnnotationShadow.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

/// Text is laid out at this size, in whole pixels as Qt's fonts have them, and drawn by a scaled
/// painter. So a line has the same proportions at every size and on every screen.
constexpr int layoutSize = 100;

QFont layoutFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(layoutSize);
    font.setWeight(QFont::Bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    // Colour fringes are made for one screen's pixels; the text goes into files too.
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return font;
}

QStringList linesOf(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (const char16_t lineEnd : {u'\r', u'\v', u'\f', u'\u0085', u'\u2028', u'\u2029'})
        text.replace(QChar(lineEnd), QLatin1Char('\n'));
    return text.split(QLatin1Char('\n'));
}

/// At the layout size.
struct Layout {
    QFont font;
    QStringList lines;
    double width = 0;
    double lineHeight = 0;
    double ascent = 0;

    explicit Layout(const QString& text)
        : font(layoutFont())
        , lines(linesOf(text))
    {
        const QFontMetricsF metrics(font);
        for (const QString& line : lines)
            width = std::max(width, metrics.horizontalAdvance(line));
        lineHeight = metrics.height();
        ascent = metrics.ascent();
    }

    double height() const { return lineHeight * static_cast<double>(lines.size()); }

    /// From the top.
    double baseline(int line) const { return ascent + lineHeight * line; }

    /// In points, of text of `size`.
    QRectF box(Geometry::TopLeftPoint bottomLeft, double size) const
    {
        const double scale = size / layoutSize;
        return {bottomLeft.x, bottomLeft.y - height() * scale, width * scale, height() * scale};
    }
};

} // namespace

namespace AnnotationText {

Geometry::Size measure(const QString& text, double size)
{
    const Layout layout(text);
    const double scale = std::max(size, 0.0) / layoutSize;
    return {layout.width * scale, layout.height() * scale};
}

Geometry::Rect reach(const QString& text, double size)
{
    if (text.isEmpty() || !(size > 0))
        return {};
    const Layout layout(text);
    const QFontMetricsF metrics(layout.font);
    QRectF ink(0, 0, layout.width, layout.height());
    for (int line = 0; line < layout.lines.size(); ++line)
        ink |= metrics.boundingRect(layout.lines[line]).translated(0, layout.baseline(line));
    const double scale = size / layoutSize;
    // Base lines are on whole pixels, and glyphs are drawn for these.
    const double margin =
        AnnotationShadow::reach(layout.height() * scale) + 0.1 * layout.lineHeight * scale;
    return Geometry::Rect{ink.left() * scale, (layout.height() - ink.bottom()) * scale,
                          ink.width() * scale, ink.height() * scale}
        .grown(margin);
}

void drawLabel(QPainter& painter, Geometry::TopLeftPoint origin, const QString& text, double size,
               const QColor& color)
{
    if (text.isEmpty() || !(size > 0))
        return;
    const Layout layout(text);
    const QRectF box = layout.box(origin, size);
    const double scale = size / layoutSize;
    const double lineHeight = layout.lineHeight * scale;
    const auto drawIn = [&](QPainter& target) {
        target.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        target.translate(box.topLeft());
        target.scale(scale, scale);
        target.setFont(layout.font);
        target.setPen(color);
        for (int line = 0; line < layout.lines.size(); ++line)
            target.drawText(QPointF(0, layout.baseline(line)), layout.lines[line]);
    };
    AnnotationShadow::draw(painter, box, lineHeight, drawIn);
    const Geometry::Rect ink = reach(text, size);
    AnnotationDevice::put(
        painter,
        AnnotationDevice::textSheet(
            painter, QRectF(origin.x + ink.x, origin.y - ink.maxY(), ink.width, ink.height),
            lineHeight, 0, 1, drawIn));
}

void drawOutlines(QPainter& painter, Geometry::TopLeftPoint origin, const QString& text,
                  double size, const QColor& color)
{
    const Layout layout(text);
    QPainterPath path;
    for (int line = 0; line < layout.lines.size(); ++line)
        path.addText(QPointF(0, layout.baseline(line)), layout.font, layout.lines[line]);
    path.setFillRule(Qt::WindingFill);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(layout.box(origin, size).topLeft());
    painter.scale(size / layoutSize, size / layoutSize);
    painter.fillPath(path, color);
    painter.restore();
}

} // namespace AnnotationText
