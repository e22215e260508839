#include "PassThroughOverlay.h"

#include <QPainter>

PassThroughOverlay::PassThroughOverlay(std::function<QRectF()> box, double cornerRadius,
                                       QWidget* parent)
    : QWidget(parent)
    , m_box(std::move(box))
    , m_cornerRadius(cornerRadius)
{
}

void PassThroughOverlay::paintEvent(QPaintEvent*)
{
    QColor dark(Qt::black);
    dark.setAlphaF(0.32F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(dark);
    painter.drawRoundedRect(m_box(), m_cornerRadius, m_cornerRadius);
}
