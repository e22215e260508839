#pragma once

#include <QPoint>
#include <QScrollArea>

#include <functional>
#include <optional>

class CanvasView;
class QGestureEvent;
class QNativeGestureEvent;
class QPinchGesture;

/// Shows a canvas at any magnification. The canvas stands in the middle while there is room.
class ZoomView : public QScrollArea {
    Q_OBJECT

public:
    static constexpr double smallest = 0.15;
    static constexpr double largest = 8;

    /// Owns `canvas` from now on.
    explicit ZoomView(CanvasView* canvas, QWidget* parent = nullptr);

    /// Kept within the limits. What is in the middle stays there.
    void setMagnification(double magnification);
    double magnification() const;

    /// By the steps that keys take.
    void zoomIn();
    void zoomOut();

protected:
    bool viewportEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// What `anchor`, in the viewport, shows: a place on the canvas at magnification 1.
    QPointF shownAt(QPointF anchor) const;
    /// `anchor` shows `shown` afterwards, as far as the canvas reaches.
    void setMagnification(double magnification, QPointF anchor, QPointF shown);
    void setMagnification(double magnification, QPointF anchor);
    void panBy(QPoint distance);

    bool nativeGesture(const QNativeGestureEvent& gesture);
    bool gesture(QGestureEvent& event);
    void pinch(const QPinchGesture& pinch);

    CanvasView* m_canvas; // the scroll area owns it
    /// Where the pointer was last while it moves the picture.
    std::optional<QPoint> m_pan;
    /// What the fingers that zoom hold. Scroll bars have whole values: were it looked up at every
    /// step, it would slip.
    std::optional<QPointF> m_pinched;
};
