#pragma once

#include <QLabel>

/// A short text with numbers in it, whose digits are all equally wide: it does not tremble when
/// they change. Semibold, in the kit's text colour.
class NumberLabel : public QLabel {
    Q_OBJECT

public:
    /// `size` is the text's size in points.
    NumberLabel(const QString& text, double size, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// The room that a character takes.
    double advance(QChar character) const;
};
