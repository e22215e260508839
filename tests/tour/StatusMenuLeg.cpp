#include "desktop/harness/Input.h"
#include "desktop/harness/TrayIcon.h"
#include "tour/Legs.h"

using namespace Desktop;

namespace {

Outcome<void> keys(const Input& input, std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        if (const auto pressed = input.key(QString::fromLatin1(name)); !pressed)
            return pressed;
    }
    return {};
}

} // namespace

void Legs::statusMenu(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const auto openWith = [&](Button button) -> Outcome<void> {
        const auto icon = awaitTrayIcon(desktop, tamrik.app().pid());
        if (!icon)
            return icon.failure();
        if (const auto clicked = input.click(icon->center(), button); !clicked)
            return clicked;
        return waitUntil(QStringLiteral("the menu"), [&] { return tamrik.menuIsOpen(); });
    };

    tour.leg(QStringLiteral("The status menu"));
    tour.step(QStringLiteral("The right button opens it"), [&] { return openWith(Button::Right); });
    tour.step(QStringLiteral("Its first item captures too"), [&]() -> Outcome<void> {
        if (const auto chosen = keys(input, {"Down", "Return"}); !chosen)
            return chosen;
        if (const auto open = tamrik.awaitOverlay(); !open)
            return open;
        const auto before = static_cast<int>(tamrik.captures().size());
        if (const auto dragged = input.drag({1200, 300}, {1500, 500}); !dragged)
            return dragged;
        const auto path = tamrik.awaitCapture(before + 1);
        return path ? Outcome<void>() : path.failure();
    });
    tour.step(QStringLiteral("The left button opens it as well"),
              [&] { return openWith(Button::Left); });
    tour.step(QStringLiteral("The place of the thumbnails"), [&] {
        // Up wraps to the end: Quit, Launch at Login, Thumbnail Position.
        return keys(input, {"Up", "Up", "Up", "Right"});
    });
    tour.step(QStringLiteral("Choosing one moves the stack there"), [&]() -> Outcome<void> {
        if (const auto chosen = keys(input, {"Up", "Up", "Return"}); !chosen)
            return chosen;
        const double scale = desktop.options().scale;
        const int right = desktop.options().size.width() - qRound(24 * scale);
        return waitUntil(QStringLiteral("the stack at the top right"), [&] {
            const auto chips = tamrik.chips();
            return tamrik.preferences().value(QStringLiteral("chipPosition")) ==
                       QStringLiteral("topRight") &&
                   !chips.isEmpty() &&
                   std::all_of(chips.begin(), chips.end(), [&](const Window& chip) {
                       return Tamrik::chipIn(chip, scale).right() + 1 == right;
                   });
        });
    });
    tour.step(QStringLiteral("Quit ends the program without a word"), [&]() -> Outcome<void> {
        if (const auto open = openWith(Button::Left); !open)
            return open;
        if (const auto chosen = keys(input, {"Up", "Return"}); !chosen)
            return chosen;
        const auto ended = tamrik.app().waitForExit();
        if (!ended)
            return ended.failure();
        if (*ended != Exit{0, false})
            return Failure{QStringLiteral("it ended with %1").arg(ended->code)};
        const QString said = tamrik.app().errorOutput();
        return said.isEmpty() ? Outcome<void>() : Failure{QStringLiteral("it said: ") + said};
    });
}
