#include "NumberLabel.h"

#include "Chrome.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

NumberLabel::NumberLabel(const QString& text, double size, QWidget* parent)
    : QLabel(text, parent)
{
    setFont(Chrome::font(size));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

double NumberLabel::advance(QChar character) const
{
    const QFontMetricsF metrics(font());
    if (!character.isDigit())
        return metrics.horizontalAdvance(character);
    double widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    return widest;
}

QSize NumberLabel::sizeHint() const
{
    double width = 0;
    for (const QChar character : text())
        width += advance(character);
    return {static_cast<int>(std::ceil(width)),
            static_cast<int>(std::ceil(QFontMetricsF(font()).height()))};
}

QSize NumberLabel::minimumSizeHint() const
{
    return sizeHint();
}

void NumberLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(Chrome::textPrimary());
    const QFontMetricsF metrics(font());
    const double baseline = (height() - metrics.height()) / 2 + metrics.ascent();
    double x = 0;
    for (const QChar character : text()) {
        const double cell = advance(character);
        const double inset = (cell - metrics.horizontalAdvance(character)) / 2;
        painter.drawText(QPointF(x + inset, baseline), QString(character));
        x += cell;
    }
}
