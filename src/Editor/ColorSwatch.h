#pragma once

#include <QAbstractButton>

/// A round button in a colour.
class ColorSwatch : public QAbstractButton {
    Q_OBJECT

public:
    /// `name` is what the colour is called.
    ColorSwatch(const QString& hex, const QString& name, QWidget* parent = nullptr);

    const QString& hex() const { return m_hex; }

    /// Whether new annotations get this colour.
    bool isHighlighted() const { return m_isHighlighted; }
    void setHighlighted(bool highlighted);

    QColor borderColor() const;
    /// In points.
    double borderWidth() const { return m_isHighlighted ? 2.5 : 1.5; }

    QSize sizeHint() const override { return {16, 16}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_hex;
    bool m_isHighlighted = false;
};
