#pragma once

#include "Chrome.h"
#include "Symbols.h"

#include <QAbstractButton>

#include <optional>

/// A small raised button with a symbol or a title. It takes no keyboard focus.
///
/// The pressed look follows the mouse. A click never switches a button on or off by itself: whoever
/// owns what the button stands for says so by setToggledOn().
class ChromeButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit ChromeButton(const QString& title, QWidget* parent = nullptr);
    /// The image's description becomes the button's accessible name.
    explicit ChromeButton(const Symbols::Image& image, QWidget* parent = nullptr);

    Chrome::Accent accent() const { return m_accent; }
    void setAccent(Chrome::Accent accent);

    bool isToggledOn() const { return isChecked(); }
    void setToggledOn(bool on);

    const std::optional<Symbols::Image>& image() const { return m_image; }
    void setImage(const Symbols::Image& image);

    /// What the button needs to show all of its content, in points.
    QSize intrinsicContentSize() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void nextCheckState() override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor contentColor() const;
    void paintBody(QPainter& painter) const;
    void paintTitle(QPainter& painter) const;

    Chrome::Accent m_accent = Chrome::Accent::none;
    std::optional<Symbols::Image> m_image;
};
