#include "SelectionSession.h"

#include "Platform/Application.h"
#include "Platform/Backdrop.h"
#include "Platform/Screens.h"
#include "Platform/WindowTraits.h"
#include "SelectionView.h"
#include "SelectionWindow.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>

using namespace std::chrono_literals;

namespace {

/// How long the overlay gets to vanish from the screen before a result is delivered.
constexpr auto vanishingTime = 180ms;

/// The screen on which the pointer is; the primary one when it is on none, so that an open overlay
/// always has the keyboard. There is at least one.
std::size_t indexOfScreenWith(Geometry::Point pointer, const std::vector<Platform::Screen>& screens)
{
    for (std::size_t i = 0; i < screens.size(); ++i) {
        if (screens[i].frame.containsPointer(pointer))
            return i;
    }
    return 0;
}

} // namespace

std::shared_ptr<SelectionSession> SelectionSession::current;

std::shared_ptr<SelectionSession> SelectionSession::open(SelectionMode mode, SelectionHooks hooks,
                                                         Clock clock, Completion completion)
{
    std::shared_ptr<SelectionSession> session(
        new SelectionSession(mode, std::move(hooks), std::move(clock), std::move(completion)));
    session->openWindows();
    return session;
}

SelectionSession::SelectionSession(SelectionMode mode, SelectionHooks hooks, Clock clock,
                                   Completion completion)
    : m_mode(mode)
    , m_hooks(std::move(hooks))
    , m_clock(std::move(clock))
    , m_completion(std::move(completion))
{
}

SelectionSession::~SelectionSession() = default;

void SelectionSession::openWindows()
{
    const Geometry::Point pointer = Platform::mouseLocation();
    const auto screens = Platform::screens();

    // Every screen is looked at before the first window covers one.
    std::vector<std::optional<QPixmap>> backdrops;
    for (const Platform::Screen& screen : screens)
        backdrops.push_back(Platform::frozenBackdrop(screen));

    for (std::size_t i = 0; i < screens.size(); ++i) {
        m_windows.push_back(std::make_unique<SelectionWindow>(screens[i], weak_from_this(),
                                                              std::move(backdrops[i])));
        Platform::orderFrontRegardless(*m_windows.back());
    }
    if (!m_windows.empty())
        Platform::makeKey(*m_windows.at(indexOfScreenWith(pointer, screens)));
    Platform::activateIgnoringOthers();
    endWhenScreensChange();
}

void SelectionSession::endWhenScreensChange()
{
    m_screensWatch = std::make_unique<QObject>();
    const auto end = [weak = weak_from_this()] {
        // The rectangle would name other pixels than those that were selected.
        if (const auto session = weak.lock())
            session->finish(std::nullopt);
    };
    QObject* const watch = m_screensWatch.get();
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, watch, end);
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, watch, end);
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, watch, end);
    for (const QScreen* screen : QGuiApplication::screens())
        QObject::connect(screen, &QScreen::geometryChanged, watch, end);
}

SelectionView* SelectionSession::activeView() const
{
    return m_activeView;
}

void SelectionSession::setActiveView(SelectionView* view)
{
    m_activeView = view;
}

void SelectionSession::finish(const std::optional<SelectionResult>& result)
{
    if (m_finished)
        return;
    m_finished = true;
    m_screensWatch.reset();
    const auto self = shared_from_this();

    for (auto& window : m_windows) {
        Platform::orderOut(*window);
        // The end may come from within one of the window's own event handlers.
        window.release()->deleteLater();
    }
    m_windows.clear();
    if (current == self)
        current.reset();

    if (!result)
        m_completion(std::nullopt);
    else
        m_clock.after(vanishingTime, [completion = m_completion, result] { completion(result); });
}

void SelectionSession::confirmActiveSelection(bool gif)
{
    if (!m_activeView)
        return;
    const auto rect = m_activeView->globalSelectionRect();
    if (!rect)
        return;
    using Kind = SelectionResult::Kind;
    switch (m_mode) {
    case SelectionMode::screenshot:
        finish(SelectionResult{Kind::screenshot, *rect});
        return;
    case SelectionMode::record:
        finish(SelectionResult{gif ? Kind::recordGIF : Kind::recordVideo, *rect});
        return;
    }
}

void SelectionSession::handleKey(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        confirmActiveSelection(event.modifiers().testFlag(Qt::AltModifier));
        return;
    case Qt::Key_Escape:
        finish(std::nullopt);
        return;
    default: // any other key
        return;
    }
}
