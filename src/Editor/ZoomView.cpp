#include "Editor/ZoomView.h"

#include "Editor/CanvasView.h"
#include "Platform/Colors.h"

#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double keyStep = 1.25;
/// For a degree of a wheel's turn; a notch has fifteen.
constexpr double wheelStep = 1.0125;

/// Dark as what is around them, whatever the desktop's colours are.
QPalette scrollBarLook()
{
    QPalette look(QColor(0x42, 0x46, 0x4E), Platform::underPageColor());
    look.setColor(QPalette::Base, Platform::underPageColor());
    return look;
}

} // namespace

ZoomView::ZoomView(CanvasView* canvas, QWidget* parent)
    : QScrollArea(parent)
    , m_canvas(canvas)
{
    setObjectName(QStringLiteral("ZoomView"));
    setAccessibleName(QStringLiteral("Picture"));
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignCenter);
    setFocusPolicy(Qt::NoFocus);
    QPalette look = palette();
    look.setColor(QPalette::Window, Platform::underPageColor());
    setPalette(look);
    for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()})
        bar->setPalette(scrollBarLook());
    setWidget(canvas);
    viewport()->grabGesture(Qt::PinchGesture);
}

double ZoomView::magnification() const
{
    return m_canvas->zoom();
}

void ZoomView::setMagnification(double magnification)
{
    setMagnification(magnification, QRectF(viewport()->rect()).center());
}

QPointF ZoomView::shownAt(QPointF anchor) const
{
    return (anchor - m_canvas->pos()) / m_canvas->zoom();
}

void ZoomView::setMagnification(double magnification, QPointF anchor)
{
    setMagnification(magnification, anchor, shownAt(anchor));
}

void ZoomView::setMagnification(double magnification, QPointF anchor, QPointF shown)
{
    const double wanted = std::clamp(magnification, smallest, largest);
    m_canvas->setZoom(wanted);
    const QPointF origin = shown * wanted - anchor;
    horizontalScrollBar()->setValue(static_cast<int>(std::lround(origin.x())));
    verticalScrollBar()->setValue(static_cast<int>(std::lround(origin.y())));
}

void ZoomView::panBy(QPoint distance)
{
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - distance.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - distance.y());
}

void ZoomView::zoomIn()
{
    setMagnification(magnification() * keyStep);
}

void ZoomView::zoomOut()
{
    setMagnification(magnification() / keyStep);
}

bool ZoomView::viewportEvent(QEvent* event)
{
    bool isTaken = false;
    if (event->type() == QEvent::NativeGesture)
        isTaken = nativeGesture(static_cast<const QNativeGestureEvent&>(*event));
    else if (event->type() == QEvent::Gesture)
        isTaken = gesture(static_cast<QGestureEvent&>(*event));
    if (isTaken)
        event->accept();
    return isTaken || QScrollArea::viewportEvent(event);
}

/// On a touch pad.
bool ZoomView::nativeGesture(const QNativeGestureEvent& gesture)
{
    // Its own position is that on the widget which it was first sent to.
    const QPointF fingers = viewport()->mapFromGlobal(gesture.globalPosition());
    if (gesture.gestureType() == Qt::BeginNativeGesture) {
        m_pinched = shownAt(fingers);
        return true;
    }
    if (gesture.gestureType() == Qt::EndNativeGesture) {
        m_pinched.reset();
        return true;
    }
    if (gesture.gestureType() != Qt::ZoomNativeGesture)
        return false;
    setMagnification(magnification() * (1 + gesture.value()), fingers,
                     m_pinched.value_or(shownAt(fingers)));
    return true;
}

/// On a touch screen.
bool ZoomView::gesture(QGestureEvent& event)
{
    auto* const gesture = static_cast<QPinchGesture*>(event.gesture(Qt::PinchGesture));
    if (!gesture)
        return false;
    event.accept(gesture);
    pinch(*gesture);
    return true;
}

void ZoomView::pinch(const QPinchGesture& pinch)
{
    const QPointF fingers = viewport()->mapFromGlobal(pinch.centerPoint());
    if (pinch.state() == Qt::GestureStarted) {
        m_canvas->cancelPress(); // the first finger's
        m_pinched = shownAt(fingers);
    }
    if (m_pinched)
        setMagnification(magnification() * pinch.scaleFactor(), fingers, *m_pinched);
    if (pinch.state() == Qt::GestureFinished || pinch.state() == Qt::GestureCanceled)
        m_pinched.reset();
}

void ZoomView::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        const double degrees = event->angleDelta().y() / 8.0;
        setMagnification(magnification() * std::pow(wheelStep, degrees),
                         viewport()->mapFromGlobal(event->globalPosition()));
    } else if (!event->pixelDelta().isNull()) { // two fingers: the picture goes with them
        panBy(event->pixelDelta());
    } else {
        QScrollArea::wheelEvent(event);
        return;
    }
    event->accept();
}

void ZoomView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton) {
        QScrollArea::mousePressEvent(event);
        return;
    }
    m_pan = event->globalPosition().toPoint();
    viewport()->setCursor(Qt::ClosedHandCursor);
    m_canvas->setPanning(true);
}

void ZoomView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pan)
        return;
    const QPoint now = event->globalPosition().toPoint();
    panBy(now - std::exchange(*m_pan, now));
}

void ZoomView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton)
        return;
    m_pan.reset();
    viewport()->unsetCursor();
    m_canvas->setPanning(false);
}
