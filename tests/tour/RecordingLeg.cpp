#include "desktop/flow/RecordingHands.h"
#include "desktop/harness/App.h"
#include "desktop/harness/Input.h"
#include "tour/ChipText.h"
#include "tour/Legs.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <thread>

using namespace Desktop;
using namespace std::chrono_literals;
using Control = RecordingControls::Control;

namespace {

/// A command that writes a line again and again.
const QString busy = QStringLiteral("i=0; while :; do i=$((i+1)); echo frame $i; sleep 0.05; done");

} // namespace

void Legs::recording(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const QRect area(1080, 180, 600, 360);
    std::optional<RecordingControls> controls;
    std::unique_ptr<App> terminal;
    const auto films = [&] {
        return tamrik.captures()
            .filter(QStringLiteral("Tamrik Rec "))
            .filter(QStringLiteral(".mp4"));
    };

    tour.leg(QStringLiteral("A recording"));
    tour.step(QStringLiteral("Something moves; the bar below the selection offers to film it"),
              [&]() -> Outcome<void> {
                  auto opened = App::start(desktop, QStringLiteral("xterm"),
                                           {QStringLiteral("-geometry"),
                                            QStringLiteral("60x16+1120+200"), QStringLiteral("-T"),
                                            QStringLiteral("Busy"), QStringLiteral("-e"),
                                            QStringLiteral("sh"), QStringLiteral("-c"), busy});
                  if (!opened)
                      return opened.failure();
                  terminal = std::move(*opened);
                  const auto window = Windows(desktop).awaitTitle(QStringLiteral("Busy"));
                  if (!window)
                      return window.failure();
                  if (const auto pressed = tamrik.pressRecordKey(); !pressed)
                      return pressed;
                  if (const auto dragged = input.drag(
                          area.topLeft(), area.topLeft() + QPoint(area.width(), area.height()));
                      !dragged)
                      return dragged;
                  const auto button = awaitRecordButton(desktop, area);
                  return button ? Outcome<void>() : button.failure();
              });
    tour.step(QStringLiteral("A click on Record films, and the controls appear"),
              [&]() -> Outcome<void> {
                  const auto button = awaitRecordButton(desktop, area);
                  if (!button)
                      return button.failure();
                  if (const auto clicked = input.click(*button); !clicked)
                      return clicked;
                  const auto shown = RecordingControls::await(desktop, tamrik);
                  if (!shown)
                      return shown.failure();
                  controls = *shown;
                  if (controls->window().intersects(area))
                      return Failure{QStringLiteral("the controls are in the film")};
                  return controls->awaitPaused(false);
              });
    tour.step(QStringLiteral("After a second its first button pauses"), [&]() -> Outcome<void> {
        std::this_thread::sleep_for(1200ms);
        if (const auto clicked = controls->click(Control::Pause); !clicked)
            return clicked;
        return controls->awaitPaused(true);
    });
    tour.step(QStringLiteral("And goes on"), [&]() -> Outcome<void> {
        if (const auto clicked = controls->click(Control::Pause); !clicked)
            return clicked;
        if (const auto on = controls->awaitPaused(false); !on)
            return on;
        return waitUntil(QStringLiteral("two segments and a journal"),
                         [&] { return temporaryFiles(desktop).size() == 3; });
    });
    tour.step(QStringLiteral("Alt+Shift+R ends it: one film, and a chip that tells how long it is"),
              [&]() -> Outcome<void> {
                  const auto before = tamrik.chips();
                  if (const auto pressed = input.key(QStringLiteral("alt+shift+r")); !pressed)
                      return pressed;
                  if (const auto gone = RecordingControls::awaitNone(desktop, tamrik); !gone)
                      return gone;
                  const auto isNew = [&](const Window& window) {
                      return std::none_of(before.begin(), before.end(),
                                          [&](const Window& old) { return old.id == window.id; });
                  };
                  const auto chip = waitFor(QStringLiteral("a new chip"), [&]() -> Outcome<Window> {
                      const auto now = tamrik.chips();
                      const auto found = std::find_if(now.begin(), now.end(), isNew);
                      return found == now.end() ? Outcome<Window>(Failure{})
                                                : Outcome<Window>(*found);
                  });
                  if (!chip)
                      return chip.failure();
                  if (films().size() != 1)
                      return Failure{QStringLiteral("there are %1 films").arg(films().size())};
                  const auto film = Film::read(films().front());
                  if (!film)
                      return film.failure();
                  if (film->size != area.size() || film->seconds < 1)
                      return Failure{QStringLiteral("it is %1x%2, %3 s")
                                         .arg(film->size.width())
                                         .arg(film->size.height())
                                         .arg(film->seconds)};
                  const auto told = awaitDurationOn(desktop, *chip);
                  if (!told)
                      return told.failure();
                  const QString length = QStringLiteral("0:%1").arg(static_cast<int>(film->seconds),
                                                                    2, 10, QLatin1Char('0'));
                  if (*told != length)
                      return Failure{QStringLiteral("the chip says %1 of %2").arg(*told, length)};
                  const auto left = temporaryFiles(desktop);
                  return left.isEmpty()
                             ? Outcome<void>()
                             : Failure{QStringLiteral("there remains ") + left.join(u' ')};
              });
    terminal.reset();
}
