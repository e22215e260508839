#include "desktop/harness/Input.h"
#include "tour/Legs.h"

using namespace Desktop;

void Legs::secondStart(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik,
                       const QString& program)
{
    const Input input(desktop);
    const QPoint pointer(720, 402); // a whole point at scales 1, 1.5 and 2

    tour.leg(QStringLiteral("A second start"));
    tour.step(QStringLiteral(
                  "Starting the program again opens the menu at the pointer, with the keyboard"),
              [&]() -> Outcome<void> {
                  if (const auto moved = input.moveTo(pointer); !moved)
                      return moved;
                  if (const auto started = tamrik.startAgain(program); !started)
                      return started;
                  const auto menu = tamrik.awaitMenu();
                  if (!menu)
                      return menu.failure();
                  if (menu->geometry.topLeft() != pointer) {
                      return Failure{QStringLiteral("the menu is at %1,%2")
                                         .arg(menu->geometry.x())
                                         .arg(menu->geometry.y())};
                  }
                  return input.key(QStringLiteral("Down"));
              });
    tour.step(QStringLiteral("Return takes its first item"), [&]() -> Outcome<void> {
        if (const auto pressed = input.key(QStringLiteral("Return")); !pressed)
            return pressed;
        return tamrik.awaitOverlay();
    });
    tour.step(QStringLiteral("While a selection is open a second start changes nothing"),
              [&]() -> Outcome<void> {
                  if (const auto started = tamrik.startAgain(program); !started)
                      return started;
                  if (tamrik.menuIsOpen())
                      return Failure{QStringLiteral("the menu is open")};
                  return tamrik.awaitOverlay();
              });
    tour.step(QStringLiteral("Esc closes the selection, and the menu when it is open"),
              [&]() -> Outcome<void> {
                  if (const auto pressed = input.key(QStringLiteral("Escape")); !pressed)
                      return pressed;
                  if (const auto gone = tamrik.awaitNoOverlay(); !gone)
                      return gone;
                  if (const auto started = tamrik.startAgain(program); !started)
                      return started;
                  if (const auto menu = tamrik.awaitMenu(); !menu)
                      return menu.failure();
                  if (const auto pressed = input.key(QStringLiteral("Escape")); !pressed)
                      return pressed;
                  return tamrik.awaitNoMenu();
              });
}
