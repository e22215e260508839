#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QPoint>
#include <QtCore/QString>

#include <chrono>

namespace Desktop {

class VirtualDesktop;

enum class Button { Left = 1, Middle = 2, Right = 3 };

/// How a pointer travels: hands do not jump, and a drop target wants to see a drag come.
struct Motion {
    int steps = 8;
    std::chrono::milliseconds pause{12};
};

/// The user's hands on a desktop. Points are pixels of the whole desktop, origin at its top left.
/// Keys are named as xdotool names them: "a", "Return", "Escape", "alt+shift+s".
class Input {
public:
    explicit Input(const VirtualDesktop& desktop)
        : m_desktop(desktop)
    {
    }

    Outcome<QPoint> position() const;
    Outcome<void> moveTo(QPoint point, Motion motion = {}) const;
    Outcome<void> press(Button button = Button::Left) const;
    Outcome<void> release(Button button = Button::Left) const;
    Outcome<void> click(QPoint point, Button button = Button::Left) const;
    Outcome<void> doubleClick(QPoint point, Button button = Button::Left) const;
    /// Moves to `from`, presses, travels to `to` and lets go.
    Outcome<void> drag(QPoint from, QPoint to, Motion motion = {12, std::chrono::milliseconds(20)},
                       Button button = Button::Left) const;
    /// The same with something that other programs take: lets go when the pointer shows that what
    /// is at `to` takes it, as hands do.
    Outcome<void> dragAndDrop(QPoint from, QPoint to) const;
    /// Turns the wheel by so many notches, up when positive.
    Outcome<void> scroll(QPoint point, int notches) const;

    /// Presses and releases a key or a combination.
    Outcome<void> key(const QString& combination) const;
    Outcome<void> keyDown(const QString& key) const;
    Outcome<void> keyUp(const QString& key) const;
    /// Types a text, a key at a time.
    Outcome<void> type(const QString& text) const;

private:
    QString cursorName() const;

    const VirtualDesktop& m_desktop;
};

} // namespace Desktop
