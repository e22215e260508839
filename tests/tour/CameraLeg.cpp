#include "desktop/flow/CameraBubble.h"
#include "desktop/flow/RecordingHands.h"
#include "desktop/harness/Input.h"
#include "tour/Legs.h"

using namespace Desktop;

void Legs::camera(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const CameraBubble bubble(desktop, tamrik);
    tour.leg(QStringLiteral("The camera bubble"));
    tour.step(QStringLiteral("Chosen in the menu, it shows the camera's picture as a mirror does"),
              [&]() -> Outcome<void> {
                  if (const auto chosen = bubble.toggle(); !chosen)
                      return chosen;
                  if (const auto shown = bubble.awaitShown(true); !shown)
                      return shown;
                  return bubble.awaitPicture();
              });
    tour.step(QStringLiteral("The mouse moves it"), [&]() -> Outcome<void> {
        const QRect before = bubble.circle();
        const QPoint by(-500, -300);
        if (const auto dragged = Input(desktop).drag(before.center(), before.center() + by);
            !dragged)
            return dragged;
        return waitUntil(QStringLiteral("it to be there"), [&] {
            const QPoint off = bubble.circle().topLeft() - before.topLeft() - by;
            return off.manhattanLength() <= 4;
        });
    });
    tour.step(QStringLiteral("In a selection for a film it is in the film; its switch is on"),
              [&]() -> Outcome<void> {
                  if (const auto opened = tamrik.pressRecordKey(); !opened)
                      return opened;
                  const QRect filmed = bubble.circle().adjusted(-160, -120, 160, 120);
                  if (const auto dragged =
                          Input(desktop).drag(filmed.topLeft(), filmed.bottomRight());
                      !dragged)
                      return dragged;
                  const auto ready = awaitRecordButton(desktop, filmed);
                  return ready ? Outcome<void>() : ready.failure();
              });
    tour.step(QStringLiteral("Esc cancels the selection; chosen again, the bubble goes"),
              [&]() -> Outcome<void> {
                  if (const auto pressed = Input(desktop).key(QStringLiteral("Escape")); !pressed)
                      return pressed;
                  if (const auto gone = tamrik.awaitNoOverlay(); !gone)
                      return gone;
                  if (const auto chosen = bubble.toggle(); !chosen)
                      return chosen;
                  return bubble.awaitShown(false);
              });
}
