#pragma once

#include "SelectionTypes.h"
#include "Support/Clock.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

QT_FORWARD_DECLARE_CLASS(QKeyEvent)
class SelectionOverlay;
class SelectionView;
class SelectionWindow;

/// Lets the user pick a rectangle of the desktop: one overlay window a screen, one selection among
/// them all, one result. Main thread only.
class SelectionSession : public std::enable_shared_from_this<SelectionSession> {
public:
    /// Called once: with nothing, at once, when the user cancelled; otherwise with the result, 0.18
    /// s after the overlay was hidden, so that it is gone from the screen before anybody looks at
    /// it.
    using Completion = std::function<void(const std::optional<SelectionResult>& result)>;

    /// The session that is open; it keeps itself alive here. Whoever opens one stores it, and opens
    /// none while it is set; the session clears it when it finishes.
    static std::shared_ptr<SelectionSession> current;

    /// Opens the overlay at once.
    static std::shared_ptr<SelectionSession> open(SelectionMode mode, SelectionHooks hooks,
                                                  Clock clock, Completion completion);

    ~SelectionSession();

    SelectionMode mode() const { return m_mode; }
    const SelectionHooks& hooks() const { return m_hooks; }
    const Clock& clock() const { return m_clock; }

    /// One a screen, in the order of the screens; empty once finished.
    const std::vector<std::unique_ptr<SelectionWindow>>& windows() const;

    /// The view that holds the selection, if any.
    SelectionView* activeView() const;
    void setActiveView(SelectionView* view);

    /// Whether any view has had a finished selection to adjust.
    bool hadSelection() const { return m_hadSelection; }
    void noteSelection() { m_hadSelection = true; }

    /// Tells the bars of the selections that the camera's bubble has come or gone, or that none
    /// comes.
    void cameraAnswered();

    /// Ends the session. Only the first call counts.
    void finish(const std::optional<SelectionResult>& result);

    /// Ends the session with the active view's selection; does nothing when there is none of at
    /// least the minimum size. `gif` matters for recordings only.
    void confirmActiveSelection(bool gif);

    /// Return and Enter confirm (with Option as a GIF), Escape cancels; other keys do nothing.
    void handleKey(const QKeyEvent& event);

private:
    SelectionSession(SelectionMode mode, SelectionHooks hooks, Clock clock, Completion completion);

    SelectionMode m_mode;
    SelectionHooks m_hooks;
    Clock m_clock;
    Completion m_completion;
    std::unique_ptr<SelectionOverlay> m_overlay; // until finished
    bool m_finished = false;
    QPointer<SelectionView> m_activeView;
    bool m_hadSelection = false;
};
