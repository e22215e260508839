#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "tour/Legs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <thread>

using namespace Desktop;

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The window of the chip that came last, which is on top of the others; 0 when there is none.
std::uint32_t newestChip(const Tamrik& tamrik)
{
    const QList<Window> chips = tamrik.chips();
    return chips.isEmpty() ? 0 : chips.constLast().id;
}

} // namespace

void Legs::chips(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const Screen screen(desktop);
    const Clipboard clipboard(desktop);
    const auto pixels = [&](double points) {
        return static_cast<int>(std::lround(points * desktop.options().scale));
    };
    const auto bareSpot = [](QRect chip) {
        return QPoint(chip.left() + chip.width() / 8, chip.bottom() - chip.height() / 4);
    };
    const QString folder = desktop.home() + QStringLiteral("/Dragged here");
    std::optional<Helper> manager;
    QRect chip;
    QString capture;

    tour.leg(QStringLiteral("Chips"));
    tour.step(QStringLiteral("The capture stands in a corner, above all windows"),
              [&]() -> Outcome<void> {
                  const auto now = tamrik.awaitRestingChips(1);
                  if (!now)
                      return now.failure();
                  chip = now->front();
                  capture = tamrik.captures().constLast();
                  return chip.left() == pixels(24)
                             ? Outcome<void>()
                             : Failure{QStringLiteral("it is at %1").arg(chip.left())};
              });
    tour.step(
        QStringLiteral("The pointer on it shows its buttons; the focus stays"),
        [&]() -> Outcome<void> {
            const auto focus = Windows(desktop).focused();
            if (const auto away = input.moveTo(chip.topRight() + QPoint(pixels(80), 0)); !away)
                return away;
            // The buttons, which may have been there, take a quarter of a second to go.
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            const auto plain = screen.pixel(bareSpot(chip));
            if (!plain)
                return plain.failure();
            if (const auto moved = input.moveTo(bareSpot(chip)); !moved)
                return moved;
            const QColor dark(qRound(plain->red() * 0.68), qRound(plain->green() * 0.68),
                              qRound(plain->blue() * 0.68));
            if (const auto darkened = screen.awaitColor(bareSpot(chip), dark, 3); !darkened)
                return darkened;
            return Windows(desktop).focused() == focus ? Outcome<void>()
                                                       : Failure{QStringLiteral("the focus moved")};
        });
    tour.step(QStringLiteral("Dragged into a file manager, it is a file there"),
              [&]() -> Outcome<void> {
                  if (!QDir().mkpath(folder))
                      return Failure{QStringLiteral("no folder to drag into")};
                  auto opened = openFileManager(desktop, folder);
                  if (!opened)
                      return opened.failure();
                  manager = std::move(*opened);
                  if (const auto dragged = input.drag(bareSpot(chip), folderView(*manager),
                                                      {12, std::chrono::milliseconds(30)});
                      !dragged)
                      return dragged;
                  const QString copy = folder + u'/' + QFileInfo(capture).fileName();
                  return waitUntil(QStringLiteral("the copy"), [&] {
                      return !contents(copy).isEmpty() && contents(copy) == contents(capture);
                  });
              });
    tour.step(QStringLiteral("Its middle button copies it once more"), [&]() -> Outcome<void> {
        if (const auto other = clipboard.write(QStringLiteral("UTF8_STRING"), "something else");
            !other)
            return other;
        if (const auto clicked = input.click(chip.center() - QPoint(pixels(20), 0)); !clicked)
            return clicked;
        return waitUntil(QStringLiteral("the picture on the clipboard"), [&] {
            const auto png = clipboard.read(QStringLiteral("image/png"));
            return png && *png == contents(capture);
        });
    });
    tour.step(QStringLiteral("Six captures in a row: five chips stay"), [&]() -> Outcome<void> {
        for (int i = 2; i <= 6; ++i) {
            if (const auto pressed = tamrik.pressCaptureKey(); !pressed)
                return pressed;
            const auto newest = newestChip(tamrik);
            const QPoint from = manager->window.geometry.topLeft() - QPoint(20, 40);
            if (const auto dragged = input.drag(from, from + QPoint(130 * i, 180 + 40 * i));
                !dragged)
                return dragged;
            if (const auto added = waitUntil(QStringLiteral("one more chip"),
                                             [&] { return newestChip(tamrik) != newest; });
                !added)
                return added;
            if (const auto shown = tamrik.awaitRestingChips(std::min(i, 5)); !shown)
                return shown.failure();
        }
        return {};
    });
    tour.step(QStringLiteral("Ctrl and a drag move the stack, to stay"), [&]() -> Outcome<void> {
        const auto before = tamrik.awaitRestingChips(5);
        if (!before)
            return before.failure();
        const QPoint by(pixels(120), -pixels(12));
        const QPoint from = bareSpot(before->front());
        if (const auto down = input.keyDown(QStringLiteral("ctrl")); !down)
            return down;
        const auto dragged = input.drag(from, from + by);
        if (const auto up = input.keyUp(QStringLiteral("ctrl")); !up)
            return up;
        if (!dragged)
            return dragged;
        return waitFor(QStringLiteral("the stack at its new place"), [&]() -> Outcome<void> {
            const QList<QRect> now = tamrik.chipPlaces();
            const QVariant stored = tamrik.preferences().value(QStringLiteral("chipPosition"));
            if (now.size() == 5 && now.front().topLeft() == before->front().topLeft() + by &&
                stored == QStringLiteral("custom"))
                return {};
            return Failure{QStringLiteral("the lowest of %1 went from %2,%3 to %4,%5: %6")
                               .arg(now.size())
                               .arg(before->front().left())
                               .arg(before->front().top())
                               .arg(now.value(0).left())
                               .arg(now.value(0).top())
                               .arg(stored.toString())};
        });
    });
    tour.step(QStringLiteral("The cross dismisses one, the others close up"),
              [&]() -> Outcome<void> {
                  const auto before = tamrik.awaitRestingChips(5);
                  if (!before)
                      return before.failure();
                  const QPoint cross = before->at(2).topLeft() + QPoint(pixels(17), pixels(17));
                  if (const auto clicked = input.click(cross); !clicked)
                      return clicked;
                  const auto after = tamrik.awaitRestingChips(4);
                  if (!after)
                      return after.failure();
                  return after->at(2).bottom() + 1 + pixels(12) == after->at(1).top()
                             ? Outcome<void>()
                             : Failure{QStringLiteral("there is a gap")};
              });
}
