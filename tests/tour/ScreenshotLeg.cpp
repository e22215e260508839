#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "tour/Legs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

using namespace Desktop;

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Outcome<void> expect(bool holds, const QString& otherwise)
{
    return holds ? Outcome<void>() : Failure{otherwise};
}

/// A rectangle near `r` whose edges fall on whole points at scales 1, 1.5 and 2.
QRect onWholePoints(QRect r)
{
    const auto snapped = [](int value) { return value / 6 * 6; };
    return {snapped(r.x()), snapped(r.y()), snapped(r.width()), snapped(r.height())};
}

} // namespace

void Legs::screenshot(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const Screen screen(desktop);
    const Clipboard clipboard(desktop);
    QRect area;
    std::optional<Helper> terminal;
    std::optional<Helper> manager;
    QImage before;
    QString capture;

    tour.leg(QStringLiteral("A screenshot"));
    tour.step(QStringLiteral("The user works in a window of theirs"), [&]() -> Outcome<void> {
        auto opened = openTerminal(desktop, QStringLiteral("Notes"),
                                   desktop.home() + QStringLiteral("/notes"));
        if (!opened)
            return opened.failure();
        terminal = std::move(*opened);
        area = onWholePoints(terminal->window.geometry.adjusted(-48, -72, 48, 48));
        if (const auto clicked = input.click(terminal->window.geometry.center()); !clicked)
            return clicked;
        if (const auto active = Windows(desktop).awaitActive(terminal->window.id); !active)
            return active;
        for (const char* line :
             {"Things to show Ana", "  the chart with the odd peak", "  the new logo"}) {
            if (const auto typed = input.type(QString::fromLatin1(line)); !typed)
                return typed;
            if (const auto entered = input.key(QStringLiteral("Return")); !entered)
                return entered;
        }
        return waitUntil(QStringLiteral("the typed lines"), [&] {
            return contents(desktop.home() + QStringLiteral("/notes")).count('\n') == 3;
        });
    });
    tour.step(QStringLiteral("Alt+Shift+S dims the screen; the focus stays where it was"),
              [&]() -> Outcome<void> {
                  const auto grabbed = screen.grab(area);
                  if (!grabbed)
                      return grabbed.failure();
                  before = *grabbed;
                  const auto focus = Windows(desktop).focused();
                  if (const auto pressed = tamrik.pressCaptureKey(); !pressed)
                      return pressed;
                  return expect(Windows(desktop).focused() == focus,
                                QStringLiteral("the focus moved"));
              });
    tour.step(QStringLiteral("A drag shows the rectangle and its size"), [&]() -> Outcome<void> {
        if (const auto moved = input.moveTo(area.topLeft()); !moved)
            return moved;
        if (const auto pressed = input.press(); !pressed)
            return pressed;
        if (const auto moved = input.moveTo(area.bottomRight() + QPoint(1, 1)); !moved)
            return moved;
        // Inside, the screen is as bright as it was.
        return screen.awaitColor(area.center(),
                                 before.pixelColor(area.width() / 2, area.height() / 2), 1);
    });
    tour.step(QStringLiteral("Letting go puts a PNG of exactly these pixels into Pictures/Tamrik"),
              [&]() -> Outcome<void> {
                  if (const auto released = input.release(); !released)
                      return released;
                  const auto path = tamrik.awaitCapture(1);
                  if (!path)
                      return path.failure();
                  capture = *path;
                  if (const auto gone = tamrik.awaitNoOverlay(); !gone)
                      return gone;
                  return expect(differingPixels(QImage(capture), before) == 0,
                                QStringLiteral("the pixels differ from the screen's"));
              });
    tour.show(capture);
    tour.step(QStringLiteral("The clipboard has the picture and the file"), [&]() -> Outcome<void> {
        const auto png = waitFor(QStringLiteral("the picture on the clipboard"),
                                 [&] { return clipboard.read(QStringLiteral("image/png")); });
        if (!png)
            return png.failure();
        if (*png != contents(capture))
            return Failure{QStringLiteral("the bytes differ from the file's")};
        const auto urls = clipboard.read(QStringLiteral("text/uri-list"));
        if (!urls)
            return urls.failure();
        return expect(*urls == QUrl::fromLocalFile(capture).toEncoded() + "\r\n",
                      QStringLiteral("another file is offered"));
    });
    tour.step(QStringLiteral("A file manager pastes it"), [&]() -> Outcome<void> {
        const QString folder = desktop.home() + QStringLiteral("/For Ana");
        if (!QDir().mkpath(folder))
            return Failure{QStringLiteral("no folder to paste into")};
        auto opened = openFileManager(desktop, folder);
        if (!opened)
            return opened.failure();
        manager = std::move(*opened);
        if (const auto clicked = input.click(folderView(*manager)); !clicked)
            return clicked;
        if (const auto active = Windows(desktop).awaitActive(manager->window.id); !active)
            return active;
        if (const auto pasted = input.key(QStringLiteral("ctrl+v")); !pasted)
            return pasted;
        const QString copy = folder + QLatin1Char('/') + QFileInfo(capture).fileName();
        return waitUntil(QStringLiteral("the pasted file"), [&] {
            return QFile::exists(copy) && contents(copy) == contents(capture);
        });
    });
    tour.step(QStringLiteral("Esc cancels and leaves nothing"), [&]() -> Outcome<void> {
        if (const auto pressed = tamrik.pressCaptureKey(); !pressed)
            return pressed;
        if (const auto pressed = input.key(QStringLiteral("Escape")); !pressed)
            return pressed;
        if (const auto gone = tamrik.awaitNoOverlay(); !gone)
            return gone;
        return expect(tamrik.captures().size() == 1, QStringLiteral("there is a new file"));
    });
}
