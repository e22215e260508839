#include "ChromeViews.h"

#include "Chrome.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr double hairline = 1;

/// Inset so that a stroke of one point lies within the widget: on whole pixels at whole scales.
QRectF strokedBox(const QWidget& view)
{
    return QRectF(view.rect()).adjusted(0.5, 0.5, -0.5, -0.5);
}

} // namespace

ChromeBarView::ChromeBarView(QWidget* parent)
    : QWidget(parent)
{
}

void ChromeBarView::setCornerRadius(double radius)
{
    m_cornerRadius = radius;
    update();
}

void ChromeBarView::setFlat(bool flat)
{
    m_flat = flat;
    update();
}

void ChromeBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_flat)
        paintFlat(painter);
    else
        paintFloating(painter);
}

void ChromeBarView::paintFlat(QPainter& painter) const
{
    painter.fillRect(rect(), Chrome::barGradient());
    painter.fillRect(QRectF(0, height() - hairline, width(), hairline), Chrome::border());
    painter.fillRect(QRectF(0, 0, width(), hairline), Chrome::rimLight());
}

void ChromeBarView::paintFloating(QPainter& painter) const
{
    const QRectF box = strokedBox(*this);
    QPainterPath shape;
    shape.addRoundedRect(box, m_cornerRadius, m_cornerRadius);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Chrome::border(), 1));
    painter.setBrush(Chrome::barGradient());
    painter.drawPath(shape);
    painter.setClipPath(shape);
    painter.fillRect(QRectF(box.x(), box.y(), box.width(), hairline), Chrome::rimLight());
}

ChromePillView::ChromePillView(QWidget* parent)
    : QWidget(parent)
{
}

void ChromePillView::paintEvent(QPaintEvent*)
{
    const QRectF box = strokedBox(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Chrome::border(), 1));
    painter.setBrush(Chrome::barGradient());
    painter.drawRoundedRect(box, box.height() / 2, box.height() / 2);
}

ChromeSeparator::ChromeSeparator(int height, QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(2, height);
    setAttribute(Qt::WA_TransparentForMouseEvents); // only to be looked at
}

void ChromeSeparator::paintEvent(QPaintEvent*)
{
    QColor white(Qt::white);
    white.setAlphaF(0.12F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF(0.5, 0, hairline, height()), white);
}
