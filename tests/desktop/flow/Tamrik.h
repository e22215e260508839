#pragma once

#include "desktop/harness/App.h"
#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/Windows.h"

#include <QRect>
#include <QString>

#include <memory>

/// The program under test on a virtual desktop, as a user sees it. Pixels are those of the whole
/// desktop, origin at its top left.
class Tamrik {
public:
    /// Starts the program, whose path is `program`; `extra` adds to its environment.
    static Desktop::Outcome<std::unique_ptr<Tamrik>>
    start(const Desktop::VirtualDesktop& desktop, const QString& program,
          const QMap<QString, QString>& extra = {});

    /// Starts it and waits until it holds all its hot keys.
    static Desktop::Outcome<std::unique_ptr<Tamrik>>
    startAndAwaitKeys(const Desktop::VirtualDesktop& desktop, const QString& program,
                      const QMap<QString, QString>& extra = {});

    Desktop::App& app() { return *m_app; }
    const Desktop::App& app() const { return *m_app; }

    /// The windows of the overlay that are on the screen, one a screen while a selection is open.
    QList<Desktop::Window> overlay() const;
    Desktop::Outcome<void> awaitOverlay() const;
    Desktop::Outcome<void> awaitNoOverlay() const;

    /// Presses a hot key and waits for the overlay.
    Desktop::Outcome<void> pressCaptureKey() const;
    Desktop::Outcome<void> pressRecordKey() const;

    /// The chips that are on the screen, from the bottom of the stacking order to the top. A chip's
    /// window is larger than the chip.
    QList<Desktop::Window> chips() const;
    /// The chip alone, in pixels of the desktop; `scale` is its screen's.
    static QRect chipIn(const Desktop::Window& window, double scale);
    Desktop::Outcome<void> awaitChips(int count) const;
    /// The chips alone, from the lowest on a screen of the first one's scale to the highest.
    QList<QRect> chipPlaces() const;
    /// The same once there are `count` and they rest.
    Desktop::Outcome<QList<QRect>> awaitRestingChips(int count) const;
    /// Waits for a chip, and takes all that there are off the screen: behind the program's back,
    /// so that they are in no later picture of it.
    Desktop::Outcome<void> putChipsAway() const;
    /// By the cross of each, as a user does.
    Desktop::Outcome<void> dismissChips() const;

    /// The open menus of the program itself.
    QList<Desktop::Window> menus() const;
    /// Whether one is open.
    bool menuIsOpen() const { return !menus().isEmpty(); }
    /// Waits until one menu is open.
    Desktop::Outcome<Desktop::Window> awaitMenu() const;
    Desktop::Outcome<void> awaitNoMenu() const;

    /// Starts the program once more and waits for its end; fails unless it ended with 0 and said
    /// nothing.
    Desktop::Outcome<void> startAgain(const QString& program,
                                      const QMap<QString, QString>& extra = {}) const;

    /// The paths of the captures, oldest first.
    QStringList captures() const;
    /// Waits until there are `count` captures; the newest one's path.
    Desktop::Outcome<QString> awaitCapture(int count) const;

    /// The stored preferences as they are now.
    QVariantMap preferences() const;

private:
    Tamrik(const Desktop::VirtualDesktop& desktop, std::unique_ptr<Desktop::App> app);

    const Desktop::VirtualDesktop& m_desktop;
    std::unique_ptr<Desktop::App> m_app;
};
