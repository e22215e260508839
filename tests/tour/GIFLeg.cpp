#include "desktop/flow/RecordingHands.h"
#include "desktop/harness/App.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "tour/Legs.h"

#include <QImageReader>
#include <QUrl>

#include <memory>
#include <optional>

using namespace Desktop;

namespace {

/// A command that writes a line again and again.
const QString busy = QStringLiteral("i=0; while :; do i=$((i+1)); echo frame $i; sleep 0.05; done");

/// Waits until the clock in the controls has gone on twice: at least a second has passed.
Outcome<void> awaitTwoSeconds(const VirtualDesktop& desktop, const RecordingControls& controls)
{
    const double scale = desktop.options().scale;
    const QRect bar = controls.bar();
    const QRect clock(bar.left() + qRound(30 * scale), bar.top(), qRound(28 * scale), bar.height());
    auto seen = Screen(desktop).grab(clock);
    if (!seen)
        return seen.failure();
    for (int seconds = 1; seconds <= 2; ++seconds) {
        const auto gone = waitUntil(QStringLiteral("second %1 on the clock").arg(seconds), [&] {
            auto now = Screen(desktop).grab(clock);
            const bool isOther = now && *now != *seen;
            if (isOther)
                seen = std::move(now);
            return isOther;
        });
        if (!gone)
            return gone;
    }
    return {};
}

} // namespace

void Legs::recordingAsGIF(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const QRect area(1080, 180, 600, 360);
    std::unique_ptr<App> terminal;
    std::optional<RecordingControls> controls;
    const QStringList before = tamrik.captures();
    QString gif;

    tour.leg(QStringLiteral("A recording as a GIF"));
    tour.step(QStringLiteral("Alt+Return on a selection films for a GIF"), [&]() -> Outcome<void> {
        auto opened =
            App::start(desktop, QStringLiteral("xterm"),
                       {QStringLiteral("-geometry"), QStringLiteral("60x16+1120+200"),
                        QStringLiteral("-T"), QStringLiteral("Busy"), QStringLiteral("-e"),
                        QStringLiteral("sh"), QStringLiteral("-c"), busy});
        if (!opened)
            return opened.failure();
        terminal = std::move(*opened);
        if (const auto window = Windows(desktop).awaitTitle(QStringLiteral("Busy")); !window)
            return window.failure();
        if (const auto pressed = tamrik.pressRecordKey(); !pressed)
            return pressed;
        if (const auto dragged =
                input.drag(area.topLeft(), area.topLeft() + QPoint(area.width(), area.height()));
            !dragged)
            return dragged;
        if (const auto button = awaitRecordButton(desktop, area); !button)
            return button.failure();
        if (const auto pressed = input.key(QStringLiteral("alt+Return")); !pressed)
            return pressed;
        const auto shown = RecordingControls::await(desktop, tamrik);
        if (!shown)
            return shown.failure();
        controls.emplace(*shown);
        return controls->awaitPaused(false);
    });
    tour.step(
        QStringLiteral(
            "After a second Alt+Shift+R ends it: a GIF is on the clipboard, its film beside it"),
        [&]() -> Outcome<void> {
            if (const auto filmed = awaitTwoSeconds(desktop, *controls); !filmed)
                return filmed;
            if (const auto pressed = input.key(QStringLiteral("alt+shift+r")); !pressed)
                return pressed;
            const auto copied = waitUntil(QStringLiteral("a GIF on the clipboard"), [&] {
                const auto uris = Clipboard(desktop).read(QStringLiteral("text/uri-list"));
                gif = uris ? QUrl::fromEncoded(uris->trimmed()).toLocalFile() : QString();
                return gif.endsWith(QStringLiteral(".gif")) && !before.contains(gif);
            });
            if (!copied)
                return copied;
            const QImageReader reader(gif);
            if (reader.size() != area.size() || reader.imageCount() < 10)
                return Failure{QStringLiteral("it has %1 frames").arg(reader.imageCount())};
            QStringList added = tamrik.captures();
            for (const QString& old : before)
                added.removeOne(old);
            const QStringList both = {gif, gif.chopped(3) + QStringLiteral("mp4")};
            return added == both ? Outcome<void>()
                                 : Failure{QStringLiteral("there are ") + added.join(u' ')};
        });
    if (!gif.isEmpty())
        tour.show(gif);
    terminal.reset();
}
