#pragma once

#include <QObject>
#include <QTimer>

QT_FORWARD_DECLARE_CLASS(QWidget)

namespace X11 {

/// Holds the keyboard for a window while it is shown, so that keys reach it although another
/// program's window keeps the focus. While a third program holds the keyboard, an open menu say, it
/// tries again. Lives as long as the window.
class KeyboardGrab : public QObject {
    Q_OBJECT

public:
    /// Starts grabbing. `window` is shown, and owns the grab.
    explicit KeyboardGrab(QWidget& window);

    /// Gives the keyboard back; does nothing when the window has no grab.
    static void release(QWidget& window);

private:
    void attempt();
    QWidget& window() const;

    QTimer m_retry;
};

} // namespace X11
