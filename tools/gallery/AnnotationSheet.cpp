#include "AnnotationSheet.h"

#include "Chrome.h"
#include "Editor/AnnotationRenderer.h"

#include <QPainter>

#include <cmath>

namespace {

using Geometry::Point;
using Kind = AnnotationKind;

constexpr int sheetWidth = 1080;
constexpr int sheetHeight = 1254;
constexpr int margin = 32;

const QColor ground(0x1A, 0x1C, 0x20);
const QColor quiet(0x8C, 0x93, 0x9D);
const QColor paper(0xFB, 0xFB, 0xFC);
const QColor ink(0x1D, 0x1F, 0x24);
const QColor night(0x2C, 0x30, 0x38);

constexpr double lineWidths[] = {2, 4, 7};
constexpr const char* colors[] = {"#FF3B30", "#FF9500", "#FFCC00", "#34C759",
                                  "#0A84FF", "#BF5AF2", "#000000", "#FFFFFF"};

double labelSize(double lineWidth)
{
    return lineWidth < 3 ? 14 : lineWidth < 5 ? 19 : 26;
}

/// The sheet as it comes about: a picture below, annotations above. Places are given from the top
/// left corner, y down; annotations keep them with y up.
class Sheet {
public:
    explicit Sheet(double scale)
        : m_picture(static_cast<int>(std::ceil(sheetWidth * scale)),
                    static_cast<int>(std::ceil(sheetHeight * scale)), QImage::Format_RGB32)
        , m_scale(scale)
    {
        m_picture.fill(ground);
        m_painter.begin(&m_picture);
        m_painter.scale(scale, scale);
        m_painter.setRenderHint(QPainter::Antialiasing);
    }

    QPainter& painter() { return m_painter; }

    void text(QPointF baseline, const QString& text, const QColor& color, double size,
              QFont::Weight weight = QFont::Normal)
    {
        m_painter.setFont(Chrome::font(size, weight));
        m_painter.setPen(color);
        m_painter.drawText(baseline, text);
    }

    void heading(double y, const char* title)
    {
        text({margin, y}, QString::fromUtf8(title), Chrome::textPrimary(), 15, QFont::DemiBold);
    }

    void panel(const QRectF& rect, const QColor& color, double radius = 8)
    {
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(color);
        m_painter.drawRoundedRect(rect, radius, radius);
    }

    void add(Annotation annotation)
    {
        const auto turn = [](Point& point) { point.y = sheetHeight - point.y; };
        turn(annotation.start);
        turn(annotation.end);
        if (annotation.path) {
            for (Point& point : *annotation.path)
                turn(point);
        }
        m_annotations.append(annotation);
    }

    QImage finish()
    {
        m_painter.end();
        return AnnotationRenderer::flattened(BaseImage::ofDensity(m_picture, m_scale),
                                             m_annotations);
    }

private:
    QImage m_picture;
    double m_scale;
    QPainter m_painter;
    QList<Annotation> m_annotations;
};

Annotation mark(Kind kind, Point start, Point end, const char* color, double lineWidth)
{
    return {.kind = kind,
            .start = start,
            .end = end,
            .colorHex = QString::fromLatin1(color),
            .lineWidth = lineWidth};
}

Annotation strokeMark(Kind kind, QList<Point> path, const char* color, double lineWidth)
{
    Annotation result = mark(kind, path.front(), path.back(), color, lineWidth);
    result.path = std::move(path);
    return result;
}

Annotation label(Point origin, const char* text, const char* color, double lineWidth)
{
    Annotation result = mark(Kind::text, origin, origin, color, lineWidth);
    result.text = QString::fromUtf8(text);
    result.fontSize = labelSize(lineWidth);
    return result;
}

Annotation counter(Point centre, std::int64_t number, const char* color, double lineWidth)
{
    Annotation result = mark(Kind::counter, centre, centre, color, lineWidth);
    result.number = number;
    return result;
}

QList<Point> wave(Point start, double width, double height)
{
    QList<Point> points;
    constexpr int count = 64;
    for (int i = 0; i <= count; ++i) {
        const double along = static_cast<double>(i) / count;
        points.append({start.x + along * width, start.y + height * std::sin(along * 12.5)});
    }
    return points;
}

void addInUse(Sheet& sheet, double y)
{
    sheet.heading(y, "In use");
    const double top = y + 18;
    sheet.panel({margin, top, sheetWidth - 2 * margin, 340}, paper, 10);
    sheet.panel({margin, top, 200, 340}, QColor(0xEC, 0xEE, 0xF1), 10);
    const char* const places[] = {"Overview", "Invoices", "Customers", "Reports", "Settings"};
    for (int i = 0; i < 5; ++i) {
        if (i == 1)
            sheet.panel({margin + 12, top + 52, 176, 30}, QColor(0xD6, 0xE4, 0xFB), 6);
        sheet.text({margin + 28, top + 36 + 36.0 * i}, QString::fromLatin1(places[i]), ink, 14);
    }
    const double left = margin + 236;
    sheet.text({left, top + 48}, QStringLiteral("Invoice 2041"), ink, 24, QFont::DemiBold);
    struct Row {
        const char* name;
        const char* value;
    };
    const Row rows[] = {{"Customer", "Northwind Bakery"},
                        {"Card", "4929 1183 0026 5514"},
                        {"Due", "30 November"},
                        {"Amount", "1,284.00"}};
    for (int i = 0; i < 4; ++i) {
        const double line = top + 100 + 44 * i;
        sheet.text({left, line}, QString::fromLatin1(rows[i].name), quiet, 14);
        sheet.text({left + 120, line}, QString::fromLatin1(rows[i].value), ink, 16);
        sheet.panel({left, line + 14, 380, 1}, QColor(0xE3, 0xE5, 0xE9), 0);
    }
    sheet.panel({left, top + 276, 120, 36}, QColor(0x2F, 0x64, 0xD6), 7);
    sheet.text({left + 26, top + 299}, QStringLiteral("Send now"), Qt::white, 14, QFont::DemiBold);
    sheet.panel({left + 470, top + 40, 270, 250}, night, 8);
    for (int i = 0; i < 12; ++i) {
        const double height = 40 + 120 * std::abs(std::sin(i * 0.7));
        sheet.panel({left + 490 + i * 20.0, top + 270 - height, 12, height},
                    QColor(0x6F, 0xA5, 0xFF), 3);
    }

    sheet.add(mark(Kind::redact, {left + 114, top + 124}, {left + 292, top + 152}, colors[0], 4));
    sheet.add(strokeMark(
        Kind::highlight,
        {{left + 122, top + 183}, {left + 170, top + 184}, {left + 222, top + 182}}, colors[2], 4));
    sheet.add(mark(Kind::ellipse, {left + 108, top + 208}, {left + 200, top + 244}, colors[0], 4));
    sheet.add(label({left + 216, top + 242}, "Wrong total?", colors[0], 4));
    sheet.add(mark(Kind::arrow, {left + 330, top + 300}, {left + 128, top + 295}, colors[0], 4));
    sheet.add(counter({margin + 176, top + 67}, 1, colors[4], 4));
    sheet.add(counter({left + 4, top + 274}, 2, colors[4], 4));
    sheet.add(mark(Kind::rect, {left + 562, top + 86}, {left + 640, top + 278}, colors[1], 4));
    sheet.add(label({left + 490, top + 76}, "December peak", colors[7], 4));
    sheet.add(strokeMark(Kind::freehand, wave({left + 2, top + 64}, 150, 3), colors[5], 4));
    sheet.add(mark(Kind::line, {margin + 24, top + 140}, {margin + 110, top + 140}, colors[0], 4));
}

/// One of a kind in a field of `width` by 64 points whose top left corner is given.
Annotation sample(Kind kind, Point at, double width, const char* color, double lineWidth)
{
    const double right = at.x + width;
    switch (kind) {
    case Kind::arrow:
        return mark(kind, {at.x + 16, at.y + 48}, {right - 16, at.y + 18}, color, lineWidth);
    case Kind::line:
        return mark(kind, {at.x + 16, at.y + 46}, {right - 16, at.y + 20}, color, lineWidth);
    case Kind::rect:
    case Kind::ellipse:
    case Kind::redact:
        return mark(kind, {at.x + 16, at.y + 14}, {right - 16, at.y + 50}, color, lineWidth);
    case Kind::freehand:
        return strokeMark(kind, wave({at.x + 16, at.y + 32}, width - 32, 12), color, lineWidth);
    case Kind::highlight:
        return strokeMark(kind, {{at.x + 24, at.y + 33}, {right - 24, at.y + 31}}, color,
                          lineWidth);
    case Kind::text:
        return label({at.x + 16, at.y + 46}, "Label", color, lineWidth);
    case Kind::counter:
        return counter({at.x + width / 2, at.y + 32}, lineWidth < 5 ? 7 : 12, color, lineWidth);
    }
    Q_UNREACHABLE();
}

struct KindRow {
    Kind kind;
    const char* name;
};

void addSizes(Sheet& sheet, double y)
{
    sheet.heading(y, "Sizes 2, 4 and 7 on light and dark");
    constexpr KindRow rows[] = {
        {Kind::arrow, "arrow"},     {Kind::line, "line"},         {Kind::rect, "rect"},
        {Kind::ellipse, "ellipse"}, {Kind::freehand, "freehand"}, {Kind::highlight, "highlight"},
        {Kind::text, "text"},       {Kind::counter, "counter"},   {Kind::redact, "redact"}};
    constexpr double field = 104;
    double x = margin;
    y += 18;
    for (const KindRow& row : rows) {
        for (int size = 0; size < 3; ++size) {
            for (const bool isDark : {false, true}) {
                const Point at{x, y + 64.0 * size + (isDark ? 200 : 0)};
                if (size == 0)
                    sheet.panel({at.x, at.y, field, 192}, isDark ? night : paper);
                const bool isAboutText = row.kind == Kind::highlight || row.kind == Kind::redact;
                for (int line = 0; isAboutText && line < 3; ++line)
                    sheet.text({at.x + 14, at.y + 18 + 18.0 * line}, QStringLiteral("lorem ipsum"),
                               isDark ? paper : ink, 13);
                sheet.add(sample(row.kind, at, field, colors[row.kind == Kind::highlight ? 2 : 0],
                                 lineWidths[size]));
            }
        }
        sheet.text({x, y + 412}, QString::fromLatin1(row.name), quiet, 11);
        x += field + 10;
    }
}

void addColors(Sheet& sheet, double y)
{
    sheet.heading(y, "Colours");
    constexpr double field = 117;
    y += 18;
    double x = margin;
    for (const char* color : colors) {
        int row = 0;
        for (const QColor& below : {paper, QColor(0x6B, 0x72, 0x7E), night}) {
            const double top = y + 100.0 * row++;
            sheet.panel({x, top, field, 92}, below);
            sheet.add(strokeMark(Kind::highlight, {{x + 16, top + 22}, {x + field - 16, top + 22}},
                                 color, 4));
            sheet.add(label({x + 14, top + 34}, "Label", color, 4));
            sheet.add(mark(Kind::arrow, {x + 14, top + 76}, {x + 66, top + 50}, color, 4));
            sheet.add(counter({x + field - 28, top + 60}, 3, color, 4));
        }
        sheet.text({x, y + 312}, QString::fromLatin1(color), quiet, 11);
        x += field + 11.4;
    }
}

} // namespace

namespace AnnotationSheet {

QImage draw(double scale)
{
    Sheet sheet(scale);
    addInUse(sheet, 44);
    addSizes(sheet, 438);
    addColors(sheet, 908);
    return sheet.finish();
}

} // namespace AnnotationSheet
