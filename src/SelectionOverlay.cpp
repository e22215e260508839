#include "SelectionOverlay.h"

#include "Platform/Backdrop.h"
#include "Platform/WindowTraits.h"
#include "SelectionSession.h"
#include "SelectionView.h"
#include "SelectionWindow.h"

#include <QScreen>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

/// How long the desktop gets to repaint after the last change of the screens, before a window
/// covers what is new: a change arrives in several parts, and a frozen backdrop must show neither
/// our own window that went nor a panel that is still on its way.
constexpr auto repaintTime = 200ms;

} // namespace

SelectionOverlay::SelectionOverlay(std::weak_ptr<SelectionSession> session, Clock clock)
    : m_session(std::move(session))
    , m_clock(std::move(clock))
{
}

SelectionOverlay::~SelectionOverlay()
{
    for (auto& window : m_windows)
        remove(std::move(window));
}

void SelectionOverlay::open()
{
    coverUncovered(Platform::screens());

    connect(&m_screenWatcher, &ScreenWatcher::changed, this, &SelectionOverlay::followScreens);
}

void SelectionOverlay::followScreens()
{
    dropStale(Platform::screens());
    m_clock.after(repaintTime, [self = QPointer(this), change = ++m_changes] {
        if (!self || change != self->m_changes)
            return;
        const auto screens = Platform::screens();
        self->dropStale(screens);
        self->coverUncovered(screens);
    });
}

void SelectionOverlay::dropStale(const std::vector<Platform::Screen>& screens)
{
    std::vector<std::unique_ptr<SelectionWindow>> kept;
    for (const Platform::Screen& screen : screens) {
        const auto window = std::find_if(m_windows.begin(), m_windows.end(),
                                         [&](const auto& w) { return w && w->covers(screen); });
        if (window == m_windows.end())
            continue;
        (*window)->setScreenOrigin(screen.frame.origin());
        kept.push_back(std::move(*window));
    }
    std::swap(m_windows, kept);
    for (auto& window : kept) {
        if (window)
            remove(std::move(window));
    }
    if (!m_key)
        takeKeyboard(screens);
}

void SelectionOverlay::coverUncovered(const std::vector<Platform::Screen>& screens)
{
    // Every screen is looked at before the first window covers one.
    std::vector<std::optional<QPixmap>> backdrops(screens.size());
    for (std::size_t i = 0; i < screens.size(); ++i) {
        if (!windowOf(screens[i]))
            backdrops[i] = Platform::frozenBackdrop(screens[i]);
    }
    for (std::size_t i = 0; i < screens.size(); ++i) {
        if (windowOf(screens[i]))
            continue;
        const auto place = m_windows.begin() + static_cast<std::ptrdiff_t>(i);
        const auto window =
            m_windows.insert(place, std::make_unique<SelectionWindow>(screens[i], m_session,
                                                                      std::move(backdrops[i])));
        Platform::orderFrontRegardless(**window);
    }
    if (m_keyIsStandIn)
        takeKeyboard(screens);
    m_keyIsStandIn = !m_key;
}

void SelectionOverlay::remove(std::unique_ptr<SelectionWindow> window)
{
    if (m_key == window.get()) {
        m_key = nullptr;
        m_keyIsStandIn = true;
    }
    // Events may still reach it, the release of a drag among them.
    window->detach();
    Platform::orderOut(*window);
    window.release()->deleteLater();
}

void SelectionOverlay::takeKeyboard(const std::vector<Platform::Screen>& screens)
{
    const Geometry::Point pointer = Platform::mouseLocation();
    const auto under = std::find_if(screens.begin(), screens.end(), [&](const auto& screen) {
        return screen.frame.containsPointer(pointer) && windowOf(screen);
    });
    SelectionWindow* const first = m_windows.empty() ? nullptr : m_windows.front().get();
    SelectionWindow* const window = under == screens.end() ? first : windowOf(*under);
    if (!window || window == m_key)
        return;
    m_key = window;
    Platform::makeKey(*window);
}

SelectionWindow* SelectionOverlay::windowOf(const Platform::Screen& screen) const
{
    const auto window = std::find_if(m_windows.begin(), m_windows.end(),
                                     [&](const auto& w) { return w->covers(screen); });
    return window == m_windows.end() ? nullptr : window->get();
}
