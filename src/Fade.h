#pragma once

#include <QObject>

#include <chrono>

QT_FORWARD_DECLARE_CLASS(QGraphicsOpacityEffect)
QT_FORWARD_DECLARE_CLASS(QVariantAnimation)
QT_FORWARD_DECLARE_CLASS(QWidget)

/// The opacity of a widget inside a window, which may change smoothly. A widget that cannot be seen
/// still takes the mouse.
class Fade : public QObject {
    Q_OBJECT

public:
    /// How long a change takes where nothing else is said.
    static constexpr std::chrono::milliseconds defaultDuration{250};

    /// `target` owns the fade. Its opacity is `opacity` at first, from 0 to 1.
    Fade(QWidget& target, double opacity);

    double opacity() const;

    /// At once; ends a change that is under way.
    void set(double opacity);

    /// From where it is now.
    void animateTo(double opacity, std::chrono::milliseconds duration = defaultDuration);

private:
    QGraphicsOpacityEffect* m_effect; // the target owns it
    QVariantAnimation* m_animation;   // a child
};
