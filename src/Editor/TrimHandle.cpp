#include "Editor/TrimHandle.h"

#include "Chrome.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QSignalBlocker>

namespace {

constexpr double radius = 5;
constexpr int manyFrames = 10;

} // namespace

TrimHandle::TrimHandle(TrimModel::Handle side, QWidget* parent)
    : QAbstractSlider(parent)
    , m_side(side)
{
    const bool isStart = side == TrimModel::Handle::start;
    setObjectName(isStart ? QStringLiteral("TrimStart") : QStringLiteral("TrimEnd"));
    setAccessibleName(isStart ? QStringLiteral("Start of the selection")
                              : QStringLiteral("End of the selection"));
    setToolTip(QStringLiteral("Drag, or use the arrow keys: one frame at a time"));
    setOrientation(Qt::Horizontal);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::SizeHorCursor);
    connect(this, &QAbstractSlider::valueChanged, this,
            [this](int value) { Q_EMIT wanted(value / 1000.0); });
}

void TrimHandle::showTime(double time, double duration)
{
    const QSignalBlocker quiet(this);
    setRange(0, qRound(duration * 1000));
    setValue(qRound(time * 1000));
}

double TrimHandle::innerEdge() const
{
    return m_side == TrimModel::Handle::start ? width() : 0;
}

void TrimHandle::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isDragged = true;
    m_grip = event->position().x() - innerEdge();
    Q_EMIT dragBegan();
}

void TrimHandle::mouseMoveEvent(QMouseEvent* event)
{
    if (m_isDragged)
        Q_EMIT dragged(mapToParent(event->position()).x() - m_grip);
}

void TrimHandle::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_isDragged = false;
}

void TrimHandle::keyPressEvent(QKeyEvent* event)
{
    const int frames = event->modifiers().testFlag(Qt::ShiftModifier) ? manyFrames : 1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        Q_EMIT stepped(-frames);
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        Q_EMIT stepped(frames);
        break;
    case Qt::Key_Home:
        Q_EMIT wanted(0);
        break;
    case Qt::Key_End:
        Q_EMIT wanted(maximum() / 1000.0);
        break;
    default:
        event->ignore(); // the player's
        break;
    }
}

void TrimHandle::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}

void TrimHandle::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isStart = m_side == TrimModel::Handle::start;
    // Round outside, square where the range begins.
    QRectF box = QRectF(rect());
    if (isStart)
        box.setRight(box.right() + radius);
    else
        box.setLeft(box.left() - radius);
    QPainterPath shape;
    shape.addRoundedRect(box, radius, radius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Chrome::color(hasFocus() ? "#FFE066" : "#FFCC00"));
    painter.drawPath(shape);

    // An arrow head outwards.
    const QColor dark = Chrome::color("#3A2E00");
    const double middleX = width() / 2.0;
    const double middleY = height() / 2.0;
    const double reach = isStart ? -2.0 : 2.0;
    QPainterPath arrow(QPointF(middleX - reach, middleY - 6));
    arrow.lineTo(middleX + reach, middleY);
    arrow.lineTo(middleX - reach, middleY + 6);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(dark, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(arrow);
    if (hasFocus()) {
        // On whole pixels at any scale of whole numbers.
        constexpr double inset = 1.5;
        painter.setPen(QPen(dark, 1));
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset),
                                radius - inset, radius - inset);
    }
}
