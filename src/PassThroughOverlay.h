#pragma once

#include <QWidget>

/// A dark layer over a chip that holds buttons. The buttons take clicks; presses beside them reach
/// the view below, as if the layer were not there.
class PassThroughOverlay : public QWidget {
    Q_OBJECT

public:
    /// In points.
    PassThroughOverlay(double cornerRadius, QWidget* parent);

protected:
    // Mouse events that a widget leaves unhandled go on to its parent, so there is nothing to do
    // about them here.
    void paintEvent(QPaintEvent* event) override;

private:
    double m_cornerRadius;
};
