#include "ChipManager.h"

#include "ChipPlacement.h"
#include "Preferences.h"
#include "Support/Guarded.h"

#include <algorithm>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;

namespace {

constexpr auto layoutTime = 220ms;

/// How long panels get to move after the screens have changed, before the visible frames are right.
constexpr auto settlingTime = 500ms;

ChipPlacement::Anchor anchor(const Preferences& preferences)
{
    return {preferences.chipPosition(), preferences.chipCustomOrigin()};
}

/// Edges belong to a screen, those that it shares with another to both.
bool containsInclusively(Rect frame, Point p)
{
    return p.x >= frame.minX() && p.x <= frame.maxX() && p.y >= frame.minY() && p.y <= frame.maxY();
}

std::optional<Platform::Screen> screenUnderPointer()
{
    const auto screens = Platform::screens();
    const Point pointer = Platform::mouseLocation();
    const auto under = std::find_if(screens.begin(), screens.end(), [pointer](const auto& screen) {
        return containsInclusively(screen.frame, pointer);
    });
    if (under != screens.end())
        return *under;
    return screens.empty() ? std::nullopt : std::optional(screens.front());
}

} // namespace

ChipManager::ChipManager(Preferences& preferences, Clock clock, LoadChipContent load)
    : m_preferences(preferences)
    , m_clock(std::move(clock))
    , m_load(std::move(load))
{
    connect(&m_screenWatcher, &ScreenWatcher::changed, this, &ChipManager::screensChanged);
}

ChipManager::~ChipManager() = default;

void ChipManager::add(const QUrl& file)
{
    if (!m_load)
        return;
    const auto arrival = std::make_shared<Arrival>();
    arrival->file = file;
    m_arrivals.push_back(arrival);
    using Content = std::optional<ChipContent>;
    m_load(file, Guarded::once<const Content&>(
                     this, [this, arrival](const Content& content) { loaded(*arrival, content); }));
}

void ChipManager::loaded(Arrival& arrival, const std::optional<ChipContent>& content)
{
    arrival.isLoaded = true;
    arrival.content = content;
    while (!m_arrivals.empty() && m_arrivals.front()->isLoaded) {
        const auto next = m_arrivals.front();
        m_arrivals.pop_front();
        if (next->content)
            show(next->file, *next->content);
    }
}

void ChipManager::show(const QUrl& file, const ChipContent& content)
{
    auto made = std::make_unique<ChipPanel>(
        file, content, m_clock, Guarded::any<const QUrl&>(this, [this](const QUrl& url) {
            if (onEdit)
                onEdit(url);
        }));
    made->onClosed = [guard = QPointer(this)](const ChipPanel* panel) {
        if (guard)
            guard->closed(panel);
    };
    made->view().setManager(this);
    ChipPanel& panel = *made;

    const auto screen = screenUnderPointer();
    m_screen = screen ? screen->handle : nullptr;
    m_panels.push_back(std::move(made));
    // The oldest stays in the list until it has faded away; only one goes for each that comes.
    if (m_panels.size() > maxChips)
        m_panels.front()->fadeClose();
    if (screen) {
        panel.setFrameOrigin(ChipPlacement::firstSlotOrigin(
            anchor(m_preferences), panel.frame().size(), screen->visibleFrame));
    }
    panel.orderFrontRegardless();
    layout(true);
}

void ChipManager::layout(bool animated)
{
    const auto screen = stackScreen();
    if (!screen || m_panels.empty())
        return;
    std::vector<Geometry::Size> sizes;
    sizes.reserve(m_panels.size());
    for (const auto& panel : m_panels)
        sizes.push_back(panel->frame().size());
    const auto origins = ChipPlacement::origins(anchor(m_preferences), sizes, screen->visibleFrame);
    for (std::size_t i = 0; i < m_panels.size(); ++i)
        m_panels[i]->moveTo(origins[i], animated ? layoutTime : 0ms);
}

void ChipManager::moveStack(double dx, double dy)
{
    for (const auto& panel : m_panels) {
        const Point origin = panel->frame().origin();
        panel->setFrameOrigin({origin.x + dx, origin.y + dy});
    }
}

void ChipManager::stackMoved()
{
    if (m_panels.empty())
        return;
    m_preferences.saveCustom(m_panels.back()->frame().origin());
    layout(true);
}

void ChipManager::closed(const ChipPanel* panel)
{
    const auto found = std::find_if(m_panels.begin(), m_panels.end(),
                                    [panel](const auto& entry) { return entry.get() == panel; });
    if (found == m_panels.end())
        return;
    // It closes from within one of its own event handlers.
    found->release()->deleteLater();
    m_panels.erase(found);
    layout(true);
}

void ChipManager::screensChanged()
{
    layout(false);
    m_clock.after(settlingTime, [self = QPointer(this), change = ++m_screenChanges] {
        if (self && change == self->m_screenChanges)
            self->layout(false);
    });
}

std::optional<Platform::Screen> ChipManager::stackScreen() const
{
    const auto screens = Platform::screens();
    const auto found = std::find_if(screens.begin(), screens.end(), [this](const auto& screen) {
        return m_screen && screen.handle == m_screen;
    });
    if (found != screens.end())
        return *found;
    return screens.empty() ? std::nullopt : std::optional(screens.front());
}
