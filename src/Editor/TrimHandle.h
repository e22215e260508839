#pragma once

#include "Editor/TrimModel.h"

#include <QAbstractSlider>

/// One end of the range that is being chosen; its value is the time in milliseconds, for screen
/// readers. It says what the user wants and moves by nobody's will but its owner's.
class TrimHandle : public QAbstractSlider {
    Q_OBJECT

public:
    static constexpr int breadth = 13;

    TrimHandle(TrimModel::Handle side, QWidget* parent);

    /// Shows a time, in seconds, of a film.
    void showTime(double time, double duration);

Q_SIGNALS:
    void dragBegan();
    /// Where the inner edge is drawn to, in the parent's points.
    void dragged(double x);
    void stepped(int frames);
    /// Seconds.
    void wanted(double time);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    double innerEdge() const;

    TrimModel::Handle m_side;
    double m_grip = 0; ///< From the inner edge to where it is held.
    bool m_isDragged = false;
};
