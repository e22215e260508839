#include "Chrome.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

namespace {

struct Stops {
    const char* top;
    double middleLocation;
    const char* middle;
    const char* bottom;
};

/// A gradient across the bounding box of what it fills, top to bottom.
QLinearGradient verticalGradient(const Stops& stops)
{
    QLinearGradient gradient(0, 0, 0, 1);
    gradient.setCoordinateMode(QGradient::ObjectMode);
    gradient.setColorAt(0, Chrome::color(stops.top));
    gradient.setColorAt(stops.middleLocation, Chrome::color(stops.middle));
    gradient.setColorAt(1, Chrome::color(stops.bottom));
    return gradient;
}

constexpr double pillTextSize = 12;
constexpr double pillPaddingX = 10;
constexpr double pillPaddingY = 4;

} // namespace

namespace Chrome {

QColor color(const char* hex, double alpha)
{
    QColor result(QLatin1String{hex});
    result.setAlphaF(static_cast<float>(alpha));
    return result;
}

const QColor& textPrimary()
{
    static const QColor shared = color("#E9EBEE");
    return shared;
}

const QColor& iconNormal()
{
    static const QColor shared = color("#D5D9DE");
    return shared;
}

const QColor& accentBlue()
{
    static const QColor shared = color("#6FA5FF");
    return shared;
}

const QColor& border()
{
    static const QColor shared = color("#0E1013", 0.7);
    return shared;
}

const QColor& rimLight()
{
    static const QColor shared = color("#FFFFFF", 0.14);
    return shared;
}

QLinearGradient barGradient()
{
    return verticalGradient({"#3E4249", 0.45, "#2C2F35", "#24272C"});
}

QLinearGradient buttonGradient(Accent accent, bool pressed)
{
    switch (accent) {
    case Accent::none:
        return verticalGradient(pressed ? Stops{"#25272C", 0.6, "#2C2F35", "#31343B"}
                                        : Stops{"#4C5058", 0.55, "#3B3F46", "#33363D"});
    case Accent::blue:
        return verticalGradient(pressed ? Stops{"#2A55B4", 0.6, "#3465C8", "#3D77E8"}
                                        : Stops{"#5E97FF", 0.55, "#3D77E8", "#2F64D6"});
    case Accent::red:
        return verticalGradient(pressed ? Stops{"#9E2C25", 0.6, "#B4362E", "#C9443C"}
                                        : Stops{"#FF6B61", 0.55, "#E0453B", "#C93830"});
    }
    Q_UNREACHABLE();
}

QColor buttonBorder(Accent accent)
{
    switch (accent) {
    case Accent::none:
        return color("#131519", 0.8);
    case Accent::blue:
        return color("#1E4AA8");
    case Accent::red:
        return color("#8E2620");
    }
    Q_UNREACHABLE();
}

QFont font(double size, QFont::Weight weight)
{
    QFont result;
    result.setFamilies({QStringLiteral("Inter"), QFont().family()});
    result.setPixelSize(static_cast<int>(std::lround(size)));
    result.setWeight(weight);
    return result;
}

PillLayout pillLayout(Geometry::Size textSize, Geometry::Point at, bool centered)
{
    PillLayout layout;
    layout.textOrigin = {centered ? at.x - textSize.width / 2 : at.x, at.y};
    layout.pill = {layout.textOrigin.x - pillPaddingX, at.y - pillPaddingY,
                   textSize.width + 2 * pillPaddingX, textSize.height + 2 * pillPaddingY};
    layout.radius = layout.pill.height / 2;
    return layout;
}

PillLayout pillLayout(const QString& text, Geometry::Point at, bool centered)
{
    const QFontMetricsF metrics(font(pillTextSize));
    return pillLayout(Geometry::Size{metrics.horizontalAdvance(text), metrics.height()}, at,
                      centered);
}

void drawPill(QPainter& painter, const Geometry::Flip& flip, const QString& text,
              Geometry::Point at, bool centered)
{
    const PillLayout layout = pillLayout(text, at, centered);
    const Geometry::TopLeftRect r = flip.topLeftFromBottomLeft(layout.pill);
    const QRectF pill(r.x, r.y, r.width, r.height);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(border(), 1));
    painter.setBrush(barGradient());
    painter.drawRoundedRect(pill, layout.radius, layout.radius);
    painter.setFont(font(pillTextSize));
    painter.setPen(textPrimary());
    const QFontMetricsF metrics(painter.font());
    const Geometry::TopLeftPoint textBottomLeft = flip.topLeftFromBottomLeft(layout.textOrigin);
    painter.drawText(QPointF(textBottomLeft.x, textBottomLeft.y - metrics.descent()), text);
    painter.restore();
}

void loadFont()
{
    // Letters are kept for the scale that they were drawn at.
    QImage canvas(1, 1, QImage::Format_RGB32);
    canvas.setDevicePixelRatio(qGuiApp->devicePixelRatio());
    QPainter painter(&canvas);
    drawPill(painter, Geometry::Flip({0, 0, 1, 1}),
             QStringLiteral("Drag to select capture area  ·  Esc to cancel 0123456789 ×"), {},
             false);
}

} // namespace Chrome
