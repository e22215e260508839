#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <QtCore/QList>
#include <QtCore/QRect>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstdint>
#include <functional>

namespace Desktop {

class VirtualDesktop;

struct Window {
    std::uint32_t id = 0;
    QString title;
    /// Both parts of WM_CLASS.
    QString instance;
    QString className;
    /// 0 when the window does not tell.
    qint64 pid = 0;
    /// Without a frame, in pixels of the whole desktop.
    QRect geometry;
    /// It and all windows around it are mapped.
    bool isViewable = false;
    /// The window manager has no say in it.
    bool isOverrideRedirect = false;
    /// A child of the root window: one without a frame, or a frame.
    bool isTopLevel = false;
};

/// The windows on a desktop.
class Windows {
public:
    using Predicate = std::function<bool(const Window&)>;

    explicit Windows(const VirtualDesktop& desktop)
        : m_desktop(desktop)
    {
    }

    /// All windows there are: a parent before its children, siblings from the bottom to the top.
    QList<Window> all() const;
    QList<Window> where(const Predicate& predicate) const;
    /// Windows to be seen that bypass the window manager, from the bottom to the top. Window
    /// managers keep helpers of their own off the screen: those do not count.
    QList<Window> overrideRedirects() const;
    /// The windows that the window manager manages, oldest first.
    QList<std::uint32_t> clientList() const;

    /// Waits for a window to appear on the screen.
    Outcome<Window> await(const QString& what, const Predicate& predicate,
                          std::chrono::milliseconds deadline = patience) const;
    Outcome<Window> awaitTitle(const QString& title,
                               std::chrono::milliseconds deadline = patience) const;
    Outcome<Window> awaitClass(const QString& className,
                               std::chrono::milliseconds deadline = patience) const;
    Outcome<Window> awaitProcess(qint64 pid, std::chrono::milliseconds deadline = patience) const;
    /// Waits until no window is on the screen that the predicate is true of.
    Outcome<void> awaitNone(const QString& what, const Predicate& predicate,
                            std::chrono::milliseconds deadline = patience) const;

    /// The window that the window manager says is active; 0 when none is.
    std::uint32_t active() const;
    /// The program's window that gets the keys, also when they go to a part of it: GTK, once the
    /// window manager has given its window the focus, hands it on to an invisible child. 0 or 1
    /// when none does.
    std::uint32_t focused() const;
    Outcome<void> awaitActive(std::uint32_t window,
                              std::chrono::milliseconds deadline = patience) const;
    /// Waits until a window gets the keys; window managers say first that it is active.
    Outcome<void> awaitFocused(std::uint32_t window,
                               std::chrono::milliseconds deadline = patience) const;
    /// Waits for a window that is active and has the keys, as it is then.
    Outcome<Window> awaitTitleInUse(const QString& title) const;
    /// Gives the keys to a window and waits until it has them. For desktops without a window
    /// manager, where a click does not.
    Outcome<void> focus(std::uint32_t window) const;
    /// Asks the window manager for what a task bar's button and a close button ask for.
    Outcome<void> activate(std::uint32_t window) const;
    Outcome<void> close(std::uint32_t window) const;

    /// The names in a property that is a list of atoms, such as _NET_WM_STATE.
    QStringList atomNames(std::uint32_t window, const QByteArray& property) const;

private:
    const VirtualDesktop& m_desktop;
};

} // namespace Desktop
