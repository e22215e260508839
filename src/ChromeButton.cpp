#include "ChromeButton.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr double titleSize = 12;
constexpr int titlePadding = 22;
constexpr int imageButtonWidth = 30;
constexpr int buttonHeight = 24;
constexpr double largestRadius = 6;

QSizeF titleExtent(const QString& title)
{
    const QFontMetricsF metrics(Chrome::font(titleSize));
    return {metrics.horizontalAdvance(title), metrics.height()};
}

/// The light or shade along the top inside edge.
QColor edgeTint(Chrome::Accent accent, bool pressed)
{
    QColor tint(pressed ? Qt::black : Qt::white);
    if (pressed)
        tint.setAlphaF(0.35F);
    else
        tint.setAlphaF(accent == Chrome::Accent::none ? 0.16F : 0.28F);
    return tint;
}

} // namespace

ChromeButton::ChromeButton(const QString& title, QWidget* parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setText(title);
}

ChromeButton::ChromeButton(const Symbols::Image& image, QWidget* parent)
    : ChromeButton(QString(), parent)
{
    setImage(image);
}

void ChromeButton::setAccent(Chrome::Accent accent)
{
    m_accent = accent;
    update();
}

void ChromeButton::setToggledOn(bool on)
{
    setCheckable(true); // a screen reader tells switches from plain buttons by this
    setChecked(on);
}

void ChromeButton::setImage(const Symbols::Image& image)
{
    m_image = image;
    setAccessibleName(image.description);
    updateGeometry();
    update();
}

QSize ChromeButton::intrinsicContentSize() const
{
    if (m_image)
        return {imageButtonWidth, buttonHeight};
    // Widths are whole points here: up, so that no letter is cut.
    const int title = static_cast<int>(std::ceil(titleExtent(text()).width()));
    return {title + titlePadding, buttonHeight};
}

QSize ChromeButton::sizeHint() const
{
    return intrinsicContentSize();
}

QSize ChromeButton::minimumSizeHint() const
{
    return intrinsicContentSize();
}

void ChromeButton::nextCheckState()
{
    // The owner decides.
}

void ChromeButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBody(painter);
    if (m_image)
        Symbols::draw(painter, *m_image, QRectF(rect()).center(), contentColor());
    else
        paintTitle(painter);
}

void ChromeButton::paintBody(QPainter& painter) const
{
    const bool pressed = isDown() || isToggledOn();
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = std::min(box.height() / 2, largestRadius);
    QPainterPath shape;
    shape.addRoundedRect(box, radius, radius);

    painter.setPen(QPen(Chrome::buttonBorder(m_accent), 1));
    painter.setBrush(Chrome::buttonGradient(m_accent, pressed));
    painter.drawPath(shape);

    painter.save();
    painter.setClipPath(shape);
    painter.fillRect(QRectF(box.x(), box.y(), box.width(), 1), edgeTint(m_accent, pressed));
    painter.restore();
}

void ChromeButton::paintTitle(QPainter& painter) const
{
    const QSizeF extent = titleExtent(text());
    QRectF box(QPointF(0, 0), extent);
    box.moveCenter(QRectF(rect()).center());
    painter.setFont(Chrome::font(titleSize));
    painter.setPen(contentColor());
    painter.drawText(QPointF(box.x(), box.y() + QFontMetricsF(painter.font()).ascent()), text());
}

QColor ChromeButton::contentColor() const
{
    switch (m_accent) {
    case Chrome::Accent::blue:
    case Chrome::Accent::red:
        return Qt::white;
    case Chrome::Accent::none:
        return isToggledOn() ? Chrome::accentBlue() : Chrome::iconNormal();
    }
    Q_UNREACHABLE();
}
