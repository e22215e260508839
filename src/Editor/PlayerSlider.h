#pragma once

#include <QSlider>

/// A slim slider over a picture, whose knob jumps to where it is pressed, and which is let go,
/// without a word, when it is hidden. It takes no keyboard focus.
class PlayerSlider : public QSlider {
    Q_OBJECT

public:
    explicit PlayerSlider(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// Where the middle of the knob is for a value, in points.
    double place(int value) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void follow(double x);
};
