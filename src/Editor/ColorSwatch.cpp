#include "Editor/ColorSwatch.h"

#include "Editor/Annotation.h"
#include "Platform/Colors.h"

#include <QPainter>

ColorSwatch::ColorSwatch(const QString& hex, const QString& name, QWidget* parent)
    : QAbstractButton(parent)
    , m_hex(hex)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ColorSwatch::setHighlighted(bool highlighted)
{
    m_isHighlighted = highlighted;
    update();
}

QColor ColorSwatch::borderColor() const
{
    return m_isHighlighted ? Platform::controlAccentColor() : Platform::separatorColor();
}

void ColorSwatch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Annotation::color(m_hex));
    // Through a gap between the border of the chosen colour and the colour one sees the bar, so
    // that it is a border around the accent colour too.
    constexpr double gap = 1;
    const double inset = m_isHighlighted ? borderWidth() + gap : 0;
    painter.drawEllipse(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
    // The border lies inside the circle.
    const double half = borderWidth() / 2;
    painter.setPen(QPen(borderColor(), borderWidth()));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(rect()).adjusted(half, half, -half, -half));
}
