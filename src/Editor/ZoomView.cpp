#include "Editor/ZoomView.h"

#include "Editor/CanvasView.h"
#include "Platform/Colors.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double keyStep = 1.25;
/// For a degree of a wheel's turn; a notch has fifteen.
constexpr double wheelStep = 1.0125;

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
    setWidget(canvas);
}

double ZoomView::magnification() const
{
    return m_canvas->zoom();
}

void ZoomView::setMagnification(double magnification)
{
    setMagnification(magnification, QRectF(viewport()->rect()).center());
}

void ZoomView::setMagnification(double magnification, QPointF anchor)
{
    const double wanted = std::clamp(magnification, smallest, largest);
    const QPointF picture = (anchor - m_canvas->pos()) / m_canvas->zoom();
    m_canvas->setZoom(wanted);
    const QPointF origin = picture * wanted - anchor;
    horizontalScrollBar()->setValue(static_cast<int>(std::lround(origin.x())));
    verticalScrollBar()->setValue(static_cast<int>(std::lround(origin.y())));
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
    if (event->type() == QEvent::NativeGesture) {
        const auto& gesture = static_cast<const QNativeGestureEvent&>(*event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture) {
            setMagnification(magnification() * (1 + gesture.value()), gesture.position());
            return true;
        }
    }
    return QScrollArea::viewportEvent(event);
}

void ZoomView::wheelEvent(QWheelEvent* event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QScrollArea::wheelEvent(event);
        return;
    }
    const double degrees = event->angleDelta().y() / 8.0;
    setMagnification(magnification() * std::pow(wheelStep, degrees),
                     viewport()->mapFromGlobal(event->globalPosition()));
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
}

void ZoomView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pan)
        return;
    const QPoint now = event->globalPosition().toPoint();
    const QPoint by = now - std::exchange(*m_pan, now);
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - by.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - by.y());
}

void ZoomView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton)
        return;
    m_pan.reset();
    viewport()->unsetCursor();
}
