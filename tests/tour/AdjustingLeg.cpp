#include "desktop/flow/SelectionPicture.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "tour/Legs.h"

using namespace Desktop;

namespace {

/// Waits until the windows of the parts before have gone from there.
Outcome<void> awaitEmpty(const VirtualDesktop& desktop, QRect area, QColor background)
{
    QImage empty(area.size(), QImage::Format_RGB32);
    empty.fill(background);
    return waitUntil(QStringLiteral("an empty desktop"), [&] {
        const auto picture = Screen(desktop).grab(area);
        return picture && differingPixels(*picture, empty) == 0;
    });
}

} // namespace

void Legs::adjusting(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    // Edges on whole points at scales 1, 1.5 and 2.
    const QRect first(1140, 240, 420, 240);
    const QRect moved = first.translated(120, 150);
    const QRect resized = moved.adjusted(0, 0, 90, 120);
    const QRect other(1200, 120, 300, 180);
    const QRect stage(1080, 80, 750, 740); // all of them, and around
    const QPoint corner(10, 10);
    const int captures = static_cast<int>(tamrik.captures().size());
    QColor plain;
    const auto shows = [&](QRect pixels) { return awaitSelectionOf(desktop, pixels, plain); };
    const auto dragged = [&](QPoint from, QPoint to, QRect result) -> Outcome<void> {
        if (const auto done = input.drag(from, to); !done)
            return done;
        return shows(result);
    };
    const auto end = [](QRect r) { return r.topLeft() + QPoint(r.width(), r.height()); };

    tour.leg(QStringLiteral("A selection moved and resized"));
    tour.step(QStringLiteral("Alt+Shift+R opens the overlay; after a drag the rectangle stays"),
              [&]() -> Outcome<void> {
                  const auto background = Screen(desktop).pixel(corner);
                  if (!background)
                      return background.failure();
                  plain = *background;
                  if (const auto empty = awaitEmpty(desktop, stage, plain); !empty)
                      return empty;
                  if (const auto pressed = tamrik.pressRecordKey(); !pressed)
                      return pressed;
                  return dragged(first.topLeft(), end(first), first);
              });
    tour.step(QStringLiteral("Dragging its inside moves it"), [&] {
        const QPoint inside = first.topLeft() + QPoint(150, 90);
        return dragged(inside, inside + (moved.topLeft() - first.topLeft()), moved);
    });
    tour.step(QStringLiteral("Dragging a corner resizes it"),
              [&] { return dragged(end(moved), end(resized), resized); });
    tour.step(QStringLiteral("A press outside starts anew"),
              [&] { return dragged(other.topLeft(), end(other), other); });
    tour.step(QStringLiteral("Esc leaves the screen as it was and no file"),
              [&]() -> Outcome<void> {
                  if (const auto pressed = input.key(QStringLiteral("Escape")); !pressed)
                      return pressed;
                  if (const auto gone = tamrik.awaitNoOverlay(); !gone)
                      return gone;
                  if (tamrik.captures().size() != captures)
                      return Failure{QStringLiteral("there is a new file")};
                  return Screen(desktop).awaitColor(first.center(), plain);
              });
}
