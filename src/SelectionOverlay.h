#pragma once

#include "Platform/Screens.h"
#include "ScreenWatcher.h"
#include "Support/Clock.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

class SelectionSession;
class SelectionWindow;

/// The windows of a selection session: one a screen, also when screens come, go or change.
///
/// The window of a screen that is gone or that changed goes at once, and a selection on it with it;
/// all others keep theirs. New and changed screens get a window once the desktop had time to
/// repaint.
class SelectionOverlay : public QObject {
    Q_OBJECT

public:
    SelectionOverlay(std::weak_ptr<SelectionSession> session, Clock clock);
    /// The windows are gone from the screen then; they are deleted later, since the end may come
    /// from within one of their own event handlers.
    ~SelectionOverlay() override;

    /// Covers the screens as they are now and follows them from then on.
    void open();

    /// In the order of the screens.
    const std::vector<std::unique_ptr<SelectionWindow>>& windows() const { return m_windows; }

private:
    void followScreens();
    void dropStale(const std::vector<Platform::Screen>& screens);
    void coverUncovered(const std::vector<Platform::Screen>& screens);
    void remove(std::unique_ptr<SelectionWindow> window);
    /// Gives the keyboard to the window under the pointer; to the first one when it is on none, so
    /// that an open overlay always has the keyboard.
    void takeKeyboard(const std::vector<Platform::Screen>& screens);
    SelectionWindow* windowOf(const Platform::Screen& screen) const;

    std::weak_ptr<SelectionSession> m_session;
    Clock m_clock;
    ScreenWatcher m_screenWatcher;
    std::vector<std::unique_ptr<SelectionWindow>> m_windows;
    QPointer<SelectionWindow> m_key;
    /// Whether the window that holds the keyboard stands in for one that went.
    bool m_keyIsStandIn = true;
    int m_changes = 0;
};
