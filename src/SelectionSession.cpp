#include "SelectionSession.h"

#include "Platform/Application.h"
#include "Platform/Screens.h"
#include "SelectionHUD.h"
#include "SelectionOverlay.h"
#include "SelectionView.h"
#include "SelectionWindow.h"

#include <QKeyEvent>

using namespace std::chrono_literals;

namespace {

/// How long the overlay gets to vanish from the screen before a result is delivered.
constexpr auto vanishingTime = 180ms;

} // namespace

std::shared_ptr<SelectionSession> SelectionSession::current;

std::shared_ptr<SelectionSession> SelectionSession::open(SelectionMode mode, SelectionHooks hooks,
                                                         Clock clock, Completion completion)
{
    std::shared_ptr<SelectionSession> session(
        new SelectionSession(mode, std::move(hooks), std::move(clock), std::move(completion)));
    session->m_overlay = std::make_unique<SelectionOverlay>(session, session->m_clock);
    session->m_overlay->open();
    Platform::activateIgnoringOthers();
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

const std::vector<std::unique_ptr<SelectionWindow>>& SelectionSession::windows() const
{
    static const std::vector<std::unique_ptr<SelectionWindow>> none;
    return m_overlay ? m_overlay->windows() : none;
}

SelectionView* SelectionSession::activeView() const
{
    return m_activeView;
}

void SelectionSession::setActiveView(SelectionView* view)
{
    m_activeView = view;
}

void SelectionSession::cameraAnswered()
{
    for (const auto& window : windows()) {
        if (SelectionHUD* const hud = window->view().hud())
            hud->cameraAnswered();
    }
}

void SelectionSession::finish(const std::optional<SelectionResult>& result)
{
    if (m_finished)
        return;
    m_finished = true;
    const auto self = shared_from_this();

    m_overlay.reset();
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
    const auto measured = m_activeView->globalSelectionRect();
    if (!measured)
        return;
    const Geometry::Rect rect = Platform::nameable(*measured, m_activeView->screen());
    using Kind = SelectionResult::Kind;
    switch (m_mode) {
    case SelectionMode::screenshot:
        finish(SelectionResult{Kind::screenshot, rect});
        return;
    case SelectionMode::record:
        finish(SelectionResult{gif ? Kind::recordGIF : Kind::recordVideo, rect});
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
