#include "Platform/Linux/X11/KeyboardGrab.h"

#include <QWidget>
#include <QWindow>

#include <chrono>

using namespace std::chrono_literals;

namespace {

/// Taking the focus instead would not help: whoever holds the keyboard gets the keys, wherever the
/// focus is. Shorter than the time from closing a menu to the next key.
constexpr auto retryInterval = 50ms;

} // namespace

X11::KeyboardGrab::KeyboardGrab(QWidget& window)
    : QObject(&window)
{
    m_retry.setInterval(retryInterval);
    connect(&m_retry, &QTimer::timeout, this, &KeyboardGrab::attempt);
    attempt();
}

void X11::KeyboardGrab::release(QWidget& window)
{
    auto* grab = window.findChild<KeyboardGrab*>(QString(), Qt::FindDirectChildrenOnly);
    if (!grab)
        return;
    if (QWindow* handle = window.windowHandle())
        handle->setKeyboardGrabEnabled(false);
    delete grab;
}

void X11::KeyboardGrab::attempt()
{
    QWindow* handle = window().windowHandle();
    if (!handle || !window().isVisible() || handle->setKeyboardGrabEnabled(true))
        m_retry.stop();
    else if (!m_retry.isActive())
        m_retry.start();
}

QWidget& X11::KeyboardGrab::window() const
{
    return *static_cast<QWidget*>(parent());
}
