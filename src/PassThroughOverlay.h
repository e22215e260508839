#pragma once

#include <QWidget>

#include <functional>

/// A dark layer over a chip that holds buttons. The buttons take clicks; presses beside them reach
/// the view below, as if the layer were not there.
class PassThroughOverlay : public QWidget {
    Q_OBJECT

public:
    /// `box`: what of it is dark, with round corners; all in points.
    PassThroughOverlay(std::function<QRectF()> box, double cornerRadius, QWidget* parent);

protected:
    // Mouse events that a widget leaves unhandled go on to its parent, so there is nothing to do
    // about them here.
    void paintEvent(QPaintEvent* event) override;

private:
    std::function<QRectF()> m_box;
    double m_cornerRadius;
};
