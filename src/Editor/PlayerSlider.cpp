#include "Editor/PlayerSlider.h"

#include "Chrome.h"

#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>

namespace {

constexpr int heightOfAll = 20;
constexpr int leastWidth = 40;
constexpr double trackHeight = 4;
constexpr double knobWidth = 12;

} // namespace

PlayerSlider::PlayerSlider(QWidget* parent)
    : QSlider(Qt::Horizontal, parent)
{
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize PlayerSlider::sizeHint() const
{
    return {leastWidth, heightOfAll};
}

QSize PlayerSlider::minimumSizeHint() const
{
    return sizeHint();
}

double PlayerSlider::place(int value) const
{
    const double room = width() - knobWidth;
    const double length = maximum() - minimum();
    return knobWidth / 2 + (length > 0 ? room * (value - minimum()) / length : 0);
}

void PlayerSlider::follow(double x)
{
    const double room = width() - knobWidth;
    const double part = room > 0 ? qBound(0.0, (x - knobWidth / 2) / room, 1.0) : 0;
    setSliderPosition(minimum() + qRound(part * (maximum() - minimum())));
}

void PlayerSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setSliderDown(true);
    follow(event->position().x());
}

void PlayerSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (isSliderDown())
        follow(event->position().x());
    else
        event->ignore(); // somebody looks whether the mouse moves
}

void PlayerSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        setSliderDown(false);
}

void PlayerSlider::hideEvent(QHideEvent* event)
{
    // The mouse's release will be somebody else's.
    const QSignalBlocker quiet(this);
    setSliderDown(false);
    QSlider::hideEvent(event);
}

void PlayerSlider::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double middle = height() / 2.0;
    const double knob = place(sliderPosition());
    QRectF track(knobWidth / 2 - trackHeight / 2, middle - trackHeight / 2,
                 width() - knobWidth + trackHeight, trackHeight);
    painter.setBrush(Chrome::color("#FFFFFF", 0.22));
    painter.drawRoundedRect(track, trackHeight / 2, trackHeight / 2);
    if (!isEnabled())
        return;
    track.setRight(knob);
    painter.setBrush(Chrome::accentBlue());
    painter.drawRoundedRect(track, trackHeight / 2, trackHeight / 2);
    painter.setBrush(Chrome::textPrimary());
    painter.drawEllipse(QPointF(knob, middle), knobWidth / 2, knobWidth / 2);
}
