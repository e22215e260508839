#include "desktop/flow/EditorOnDesktop.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "tour/Legs.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <cmath>

using namespace Desktop;

namespace {

constexpr int marksOfAllKinds = 9;

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Outcome<void> times(int count, const Input& input, const char* keys)
{
    for (int i = 0; i < count; ++i)
        if (const auto pressed = input.key(QString::fromLatin1(keys)); !pressed)
            return pressed;
    return {};
}

Outcome<void> firstFailure(std::initializer_list<Outcome<void>> outcomes)
{
    for (const auto& outcome : outcomes)
        if (!outcome)
            return outcome;
    return {};
}

} // namespace

void Legs::editor(Tour& tour, const VirtualDesktop& desktop, Tamrik& tamrik)
{
    using Tool = EditorOnDesktop::Tool;
    const Input input(desktop);
    const Screen screen(desktop);
    const QString capture = tamrik.captures().constLast();
    const QString copy = QFileInfo(capture).path() + u'/' + QFileInfo(capture).completeBaseName() +
                         QStringLiteral(" annotated.png");
    const QByteArray original = contents(capture);
    std::optional<EditorOnDesktop> editor;
    QByteArray all;

    tour.leg(QStringLiteral("The editor"));
    tour.step(
        QStringLiteral("The right button of a chip opens its picture"), [&]() -> Outcome<void> {
            const QRect chip = Tamrik::chipIn(tamrik.chips().constLast(), desktop.options().scale);
            const QPoint edit = chip.center() + QPoint(qRound(20 * desktop.options().scale), 0);
            if (const auto clicked = input.click(edit); !clicked)
                return clicked;
            const auto opened = EditorOnDesktop::await(desktop, capture);
            if (!opened)
                return opened.failure();
            editor.emplace(*opened);
            return {};
        });
    tour.step(QStringLiteral("All chips are dismissed, to see more of it"),
              [&] { return tamrik.dismissChips(); });
    tour.step(QStringLiteral("A mark of each kind is drawn, and kept beside the picture at once"),
              [&]() -> Outcome<void> {
                  for (const auto& stroke : EditorOnDesktop::strokes()) {
                      if (const auto chosen = editor->choose(stroke.tool); !chosen)
                          return chosen;
                      if (const auto dragged = editor->drag(stroke.from, stroke.to); !dragged)
                          return dragged;
                  }
                  const auto counted =
                      firstFailure({editor->choose(Tool::Counter), editor->click({330, 116})});
                  if (!counted)
                      return counted;
                  const auto marks = editor->awaitMarks(marksOfAllKinds - 1);
                  return marks ? Outcome<void>() : marks.failure();
              });
    tour.step(QStringLiteral("A label is typed; Return ends it"), [&]() -> Outcome<void> {
        const auto typed =
            firstFailure({editor->choose(Tool::Text), editor->click({206, 100}),
                          input.type(QStringLiteral("Why?")), input.key(QStringLiteral("Return"))});
        if (!typed)
            return typed;
        const auto marks = editor->awaitMarks(marksOfAllKinds);
        if (!marks)
            return marks.failure();
        return marks->constLast().value(QLatin1String("text")) == QStringLiteral("Why?")
                   ? Outcome<void>()
                   : Failure{QStringLiteral("the label says something else")};
    });
    tour.step(QStringLiteral("The counter is moved, the ellipse deleted"), [&]() -> Outcome<void> {
        const auto moved =
            firstFailure({editor->choose(Tool::Select), editor->drag({330, 116}, {240, 56}),
                          editor->click({315, 190}), input.key(QStringLiteral("Delete"))});
        if (!moved)
            return moved;
        const auto marks = editor->awaitMarks(marksOfAllKinds - 1);
        if (!marks)
            return marks.failure();
        all = contents(editor->sidecar());
        const QJsonObject counter = marks->at(marksOfAllKinds - 3);
        return pointOf(counter, QLatin1String("start")) == QPointF(240, 56)
                   ? Outcome<void>()
                   : Failure{QStringLiteral("the counter is elsewhere")};
    });
    tour.step(QStringLiteral("Ctrl+Z takes everything back, step by step"), [&]() -> Outcome<void> {
        if (const auto undone = times(marksOfAllKinds + 2, input, "ctrl+z"); !undone)
            return undone;
        const auto marks = editor->awaitMarks(0);
        return marks ? Outcome<void>() : marks.failure();
    });
    tour.step(QStringLiteral("Ctrl+Shift+Z brings it all again"), [&]() -> Outcome<void> {
        if (const auto redone = times(marksOfAllKinds + 2, input, "ctrl+shift+z"); !redone)
            return redone;
        return waitUntil(QStringLiteral("all the marks"),
                         [&] { return contents(editor->sidecar()) == all; });
    });
    tour.step(QStringLiteral("Return copies what is to be seen, Ctrl+S exports it"),
              [&]() -> Outcome<void> {
                  const auto given = firstFailure(
                      {input.key(QStringLiteral("Return")), input.key(QStringLiteral("ctrl+s"))});
                  if (!given)
                      return given;
                  const Clipboard clipboard(desktop);
                  return waitFor(QStringLiteral("the copies"), [&]() -> Outcome<void> {
                      const auto png = clipboard.read(QStringLiteral("image/png"));
                      if (!png)
                          return png.failure();
                      const auto shown = screen.grab(editor->picture());
                      if (!shown)
                          return shown.failure();
                      const int differing = differingPixels(*shown, QImage(copy));
                      if (differing > 0)
                          return Failure{QStringLiteral("%1 pixels differ").arg(differing)};
                      return *png == contents(copy) ? Outcome<void>()
                                                    : Failure{QStringLiteral("they differ")};
                  });
              });
    tour.show(copy);
    tour.step(QStringLiteral("Closed and opened again, the marks can still be moved"),
              [&]() -> Outcome<void> {
                  if (const auto closed = input.key(QStringLiteral("ctrl+w")); !closed)
                      return closed;
                  if (const auto gone = Windows(desktop).awaitNone(
                          QStringLiteral("the editor"),
                          [&](const Window& window) { return window.id == editor->id(); });
                      !gone)
                      return gone;
                  if (const auto pressed = input.key(QStringLiteral("alt+shift+e")); !pressed)
                      return pressed;
                  const auto opened = EditorOnDesktop::await(desktop, capture);
                  if (!opened)
                      return opened.failure();
                  editor.emplace(*opened);
                  const auto moved = firstFailure(
                      {editor->choose(Tool::Select), editor->drag({240, 56}, {240, 76})});
                  if (!moved)
                      return moved;
                  return waitUntil(QStringLiteral("the moved counter"), [&] {
                      const auto marks = editor->marks();
                      return marks.size() == marksOfAllKinds - 1 &&
                             pointOf(marks.at(marksOfAllKinds - 3), QLatin1String("start")) ==
                                 QPointF(240, 76);
                  });
              });
    tour.step(QStringLiteral("Esc puts the selection away, and then the editor; the picture itself "
                             "is as it was"),
              [&]() -> Outcome<void> {
                  if (const auto pressed = times(2, input, "Escape"); !pressed)
                      return pressed;
                  if (const auto gone = Windows(desktop).awaitNone(
                          QStringLiteral("the editor"),
                          [&](const Window& window) { return window.id == editor->id(); });
                      !gone)
                      return gone;
                  return contents(capture) == original
                             ? Outcome<void>()
                             : Failure{QStringLiteral("the picture's file is another")};
              });
}
