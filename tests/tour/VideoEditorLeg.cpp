#include "desktop/flow/RecordingHands.h"
#include "desktop/flow/VideoEditorOnDesktop.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Windows.h"
#include "tour/Legs.h"

#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include <cmath>
#include <optional>

using namespace Desktop;

void Legs::videoEditor(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    const Input input(desktop);
    const QStringList films = tamrik.captures().filter(QStringLiteral(".mp4"));
    const QString film = films.isEmpty() ? QString() : films.constFirst();
    const QString trimmed = QFileInfo(film).path() + u'/' + QFileInfo(film).completeBaseName() +
                            QStringLiteral(" trimmed.mp4");
    const QString gif = film.chopped(3) + QStringLiteral("gif");
    std::optional<VideoEditorOnDesktop> editor;

    tour.leg(QStringLiteral("The video editor"));
    tour.step(
        QStringLiteral("The right button of the film's chip opens it"), [&]() -> Outcome<void> {
            const QRect chip = Tamrik::chipIn(tamrik.chips().constLast(), desktop.options().scale);
            const QPoint edit = chip.center() + QPoint(qRound(20 * desktop.options().scale), 0);
            if (const auto clicked = input.click(edit); !clicked)
                return clicked;
            const auto opened = VideoEditorOnDesktop::await(desktop, film);
            if (!opened)
                return opened.failure();
            editor.emplace(*opened);
            return {};
        });
    tour.step(QStringLiteral("The chip is dismissed, to see more of it"),
              [&] { return tamrik.dismissChips(); });
    tour.step(
        QStringLiteral("Trim shows the film's frames; the handles are drawn to a part of it"),
        [&]() -> Outcome<void> {
            if (const auto clicked = editor->click(VideoEditorOnDesktop::Tool::Trim); !clicked)
                return clicked;
            if (const auto shown = editor->awaitHandles(); !shown)
                return shown;
            if (const auto drawn = editor->dragHandle(VideoEditorOnDesktop::Side::Start, 0.25);
                !drawn)
                return drawn;
            return editor->dragHandle(VideoEditorOnDesktop::Side::End, 0.75);
        });
    tour.step(QStringLiteral("Return keeps that part, and Save Trimmed makes a film of it"),
              [&]() -> Outcome<void> {
                  if (const auto kept = input.key(QStringLiteral("Return")); !kept)
                      return kept;
                  if (const auto clicked = editor->click(VideoEditorOnDesktop::Tool::SaveTrimmed);
                      !clicked)
                      return clicked;
                  if (const auto made = waitUntil(QStringLiteral("the trimmed film"),
                                                  [&] { return QFileInfo::exists(trimmed); });
                      !made)
                      return made;
                  const auto whole = Film::read(film);
                  const auto part = Film::read(trimmed);
                  if (!whole || !part)
                      return Failure{QStringLiteral("a film cannot be read")};
                  return part->seconds < 0.7 * whole->seconds && part->seconds > 0
                             ? Outcome<void>()
                             : Failure{QStringLiteral("it lasts %1 s").arg(part->seconds)};
              });
    tour.show(trimmed);
    tour.step(QStringLiteral("Export GIF makes a GIF of it, which is on the clipboard"),
              [&]() -> Outcome<void> {
                  if (const auto clicked = editor->click(VideoEditorOnDesktop::Tool::ExportGIF);
                      !clicked)
                      return clicked;
                  const QByteArray uri = QUrl::fromLocalFile(gif).toEncoded();
                  const auto copied = waitUntil(QStringLiteral("the GIF's address"), [&] {
                      const auto uris = Clipboard(desktop).read(QStringLiteral("text/uri-list"));
                      return uris && uris->trimmed() == uri;
                  });
                  if (!copied)
                      return copied;
                  const auto part = Film::read(trimmed);
                  if (!part)
                      return part.failure();
                  const int frames = QImageReader(gif).imageCount();
                  return std::abs(frames - 10 * part->seconds) <= 1.5
                             ? Outcome<void>()
                             : Failure{QStringLiteral("it has %1 frames").arg(frames)};
              });
    tour.show(gif);
    tour.step(QStringLiteral("Space plays the part alone; Ctrl+W closes the window"),
              [&]() -> Outcome<void> {
                  if (const auto played = input.key(QStringLiteral("space")); !played)
                      return played;
                  if (const auto closed = input.key(QStringLiteral("ctrl+w")); !closed)
                      return closed;
                  return Windows(desktop).awaitNone(
                      QStringLiteral("the editor"),
                      [&](const Window& window) { return window.id == editor->id(); });
              });
}
