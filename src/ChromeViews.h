#pragma once

#include <QWidget>

/// A dark bar that holds controls: floating with round corners, or flat along a window's edge.
class ChromeBarView : public QWidget {
    Q_OBJECT

public:
    explicit ChromeBarView(QWidget* parent = nullptr);

    /// In points; of a floating bar.
    double cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(double radius);

    /// Whether the bar is a toolbar: square corners, hairlines along its top and bottom.
    bool isFlat() const { return m_flat; }
    void setFlat(bool flat);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintFlat(QPainter& painter) const;
    void paintFloating(QPainter& painter) const;

    double m_cornerRadius = 12;
    bool m_flat = false;
};

/// A dark pill, for a short text that its user lays over it.
class ChromePillView : public QWidget {
    Q_OBJECT

public:
    explicit ChromePillView(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A hairline between groups of controls.
class ChromeSeparator : public QWidget {
    Q_OBJECT

public:
    /// Two points wide and `height` points high, whatever room there is.
    explicit ChromeSeparator(int height, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
