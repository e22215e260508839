#include "desktop/flow/CameraBubble.h"

#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/TrayIcon.h"

using namespace Desktop;
using namespace std::chrono_literals;

namespace {

/// A camera that is gone, or back, is noticed after some seconds.
constexpr auto cameraPatience = patience + 10s;
constexpr int tolerance = 24;

} // namespace

Outcome<void> CameraBubble::toggle() const
{
    const Input input(m_desktop);
    const auto icon = awaitTrayIcon(m_desktop, m_tamrik.app().pid());
    if (!icon)
        return icon.failure();
    if (const auto clicked = input.click(icon->center()); !clicked)
        return clicked;
    if (const auto open = m_tamrik.awaitMenu(); !open)
        return open.failure();
    // From the end: Quit, Launch at Login, Thumbnail Position, Record Microphone Audio.
    for (const char* key : {"Up", "Up", "Up", "Up", "Up", "Return"}) {
        if (const auto pressed = input.key(QString::fromLatin1(key)); !pressed)
            return pressed;
    }
    return m_tamrik.awaitNoMenu();
}

Outcome<void> CameraBubble::awaitShown(bool wanted, std::chrono::milliseconds deadline) const
{
    return waitUntil(
        wanted ? QStringLiteral("the bubble") : QStringLiteral("the bubble to go"),
        [&] { return isShown() == wanted; }, deadline);
}

QRect CameraBubble::circle() const
{
    const auto all = Windows(m_desktop).where([this](const Window& window) {
        return window.pid == m_tamrik.app().pid() && window.isViewable &&
               window.title == QLatin1String("Tamrik Camera Bubble");
    });
    // It has the margins of a chip.
    return all.size() == 1 ? Tamrik::chipIn(all.front(), m_desktop.options().scale) : QRect();
}

QPoint CameraBubble::at(double x, double y) const
{
    const QRect place = circle();
    return place.topLeft() + QPoint(qRound(x * place.width()), qRound(y * place.height()));
}

QList<CameraBubble::Bar> CameraBubble::bars()
{
    return {{0.25, Qt::magenta}, {0.5, Qt::green}, {0.75, Qt::cyan}};
}

Outcome<void> CameraBubble::awaitPicture() const
{
    for (const Bar& bar : bars()) {
        const auto shown =
            Screen(m_desktop).awaitColor(at(bar.x, barsY), bar.color, tolerance, cameraPatience);
        if (!shown)
            return shown;
    }
    return {};
}

Outcome<void> CameraBubble::awaitNoPicture() const
{
    return Screen(m_desktop).awaitColor(at(0.5, barsY), Qt::black, 0, cameraPatience);
}
