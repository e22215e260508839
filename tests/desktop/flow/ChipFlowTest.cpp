// Chips among other programs: what they show, take and give away.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/FullScreenWindow.h"
#include "desktop/harness/Monitors.h"
#include "desktop/harness/Server.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cmath>
#include <tuple>

#include <xcb/xcb.h>

using namespace Desktop;

namespace {

/// What a chip must not change for others: who gets the keys, who is active, and what task bars and
/// switchers show.
using Surroundings = std::tuple<std::uint32_t, std::uint32_t, QList<std::uint32_t>>;

class ChipFlow : public FlowTestOnDesktops {
protected:
    Surroundings surroundings() const
    {
        return {windows().focused(), windows().active(), windows().clientList()};
    }

    int pixels(double points, double chipScale = 0) const
    {
        return static_cast<int>(std::lround(points * (chipScale > 0 ? chipScale : scale())));
    }

    /// The chip without its shadow, in pixels of the desktop.
    QRect body(const Window& chip, double chipScale = 0) const
    {
        return Tamrik::chipIn(chip, chipScale > 0 ? chipScale : scale());
    }

    /// Takes a picture and waits for the chips that there are then; its path.
    Outcome<QString> capture(int chips)
    {
        if (const auto pressed = tamrik->pressCaptureKey(); !pressed)
            return pressed.failure();
        if (const auto dragged = dragOut(area()); !dragged)
            return dragged.failure();
        if (const auto gone = tamrik->awaitNoOverlay(); !gone)
            return gone.failure();
        if (const auto shown = tamrik->awaitChips(chips); !shown)
            return shown.failure();
        const QStringList all = tamrik->captures();
        if (all.isEmpty())
            return Failure{QStringLiteral("there is no file")};
        return all.constLast();
    }

    /// The one chip, once it has come to rest.
    Outcome<QRect> restingChip(double chipScale = 0) const
    {
        QRect before;
        return waitFor(QStringLiteral("the chip to rest"), [&]() -> Outcome<QRect> {
            const auto now = tamrik->chips();
            if (now.size() != 1)
                return Failure{QStringLiteral("there are %1 chips").arg(now.size())};
            const QRect place = body(now.front(), chipScale);
            if (std::exchange(before, place) != place)
                return Failure{QStringLiteral("it moves")};
            return place;
        });
    }

    /// Where the buttons of a chip are, from the points of its middle.
    QPoint copyButton(QRect chip) const { return chip.center() + QPoint(pixels(-20), 0); }
    QPoint editButton(QRect chip) const { return chip.center() + QPoint(pixels(20), 0); }
    QPoint dismissButton(QRect chip) const
    {
        return chip.topLeft() + QPoint(pixels(17), pixels(17));
    }
    /// A place on a chip that has no button.
    QPoint bareSpot(QRect chip) const
    {
        return {chip.left() + chip.width() / 8, chip.bottom() - chip.height() / 4};
    }

    /// The child of the root window that gets the mouse at a point.
    std::uint32_t windowAt(QPoint point) const
    {
        EXPECT_TRUE(succeeded(input().moveTo(point, {1, std::chrono::milliseconds(0)})));
        const Server& server = desktop->server();
        const Reply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
            server.connection(), xcb_query_pointer(server.connection(), server.root()), nullptr));
        return reply ? reply->child : 0;
    }
};

class ChipOnDesktop : public ChipFlow {};
class ChipAboveAll : public ChipFlow {};
class ChipsInARow : public ChipFlow {};
class ChipsOnTwoScreens : public ChipFlow {};
class ChipAndCompositors : public FlowTest {};

} // namespace

TEST_P(ChipOnDesktop, ShowsItsPictureAndTakesNothingFromOthers)
{
    const auto wanted = screen().grab(area());
    ASSERT_TRUE(succeeded(wanted));
    const Surroundings before = surroundings();
    const auto path = capture(1);
    ASSERT_TRUE(succeeded(path));
    const auto place = restingChip();
    ASSERT_TRUE(succeeded(place));
    EXPECT_EQ(surroundings(), before);

    // At most 220 points wide, and not enlarged; at its corner.
    const double fitted = std::min(220.0, area().width() / scale());
    EXPECT_EQ(place->size(),
              QSize(pixels(fitted), pixels(fitted * area().height() / area().width())));
    EXPECT_EQ(place->left(), pixels(24));
    if (desktop->options().tray == Tray::None) {
        EXPECT_EQ(place->bottom() + 1, desktop->options().size.height() - pixels(24));
    }
    // It shows the capture; away from the border, and from the badge while that is there.
    const QImage thumbnail =
        wanted->scaled(place->size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QRect part(place->width() / 8, place->height() / 8, place->width() * 3 / 4,
                     place->height() / 2);
    const auto shown = screen().grab(part.translated(place->topLeft()));
    ASSERT_TRUE(succeeded(shown));
    const int ofThem = part.width() * part.height();
    EXPECT_LT(differingPixels(*shown, thumbnail.copy(part), 48), ofThem / 20);

    // Clicks beside it go to what is below it, also those into its shadow.
    const std::uint32_t chip = tamrik->chips().front().id;
    EXPECT_EQ(windowAt(place->center()), chip);
    EXPECT_NE(windowAt(place->topRight() + QPoint(pixels(4), pixels(10))), chip);
    EXPECT_NE(windowAt({place->center().x(), place->bottom() + pixels(4)}), chip);
    EXPECT_EQ(surroundings(), before);

    // The keyboard still is where it was.
    ASSERT_TRUE(succeeded(input().type(QStringLiteral("on"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(awaitTyped("on\n")));
}

TEST_P(ChipOnDesktop, ItsButtonsShowUnderThePointerAndActOnTheFirstClick)
{
    const auto path = capture(1);
    ASSERT_TRUE(succeeded(path));
    const auto place = restingChip();
    ASSERT_TRUE(succeeded(place));
    const Surroundings before = surroundings();
    const Clipboard clipboard(*desktop);
    ASSERT_TRUE(succeeded(clipboard.write(QStringLiteral("UTF8_STRING"), "another program's")));

    // The pointer alone darkens the picture.
    ASSERT_TRUE(succeeded(input().moveTo({place->right() + pixels(60), place->top()})));
    const auto plain = screen().pixel(bareSpot(*place));
    ASSERT_TRUE(succeeded(plain));
    ASSERT_TRUE(succeeded(input().moveTo(place->center())));
    const QColor dark(qRound(plain->red() * 0.68), qRound(plain->green() * 0.68),
                      qRound(plain->blue() * 0.68));
    EXPECT_TRUE(succeeded(screen().awaitColor(bareSpot(*place), dark, 2)));
    EXPECT_EQ(surroundings(), before);

    ASSERT_TRUE(succeeded(input().click(copyButton(*place))));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the picture on the clipboard"), [&] {
        const auto png = clipboard.read(QStringLiteral("image/png"));
        return png && *png == contents(*path);
    })));
    const auto urls = clipboard.read(QStringLiteral("text/uri-list"));
    ASSERT_TRUE(succeeded(urls));
    EXPECT_EQ(*urls, QUrl::fromLocalFile(*path).toEncoded() + "\r\n");
    EXPECT_EQ(surroundings(), before);

    // And it goes away, in its own time.
    ASSERT_TRUE(succeeded(input().click(dismissButton(*place))));
    EXPECT_TRUE(succeeded(tamrik->awaitChips(0)));
    EXPECT_EQ(surroundings(), before);
    EXPECT_TRUE(QFile::exists(*path));
}

TEST_P(ChipOnDesktop, ADragCopiesTheFileIntoAFileManager)
{
    const auto path = capture(1);
    ASSERT_TRUE(succeeded(path));
    const QByteArray bytes = contents(*path);
    const auto place = restingChip();
    ASSERT_TRUE(succeeded(place));
    const QString folder = desktop->home() + QStringLiteral("/Für Ana");
    ASSERT_TRUE(QDir().mkpath(folder));
    const auto manager = openFileManager(*desktop, folder);
    ASSERT_TRUE(succeeded(manager));
    if (desktop->options().windowManager != WindowManager::None) {
        ASSERT_TRUE(succeeded(windows().awaitFocused(manager->window.id)));
    }
    const std::uint32_t focused = windows().focused();

    ASSERT_TRUE(succeeded(input().dragAndDrop(bareSpot(*place), folderView(*manager))));
    const QString copy = folder + QLatin1Char('/') + QFileInfo(*path).fileName();
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the copy"),
                                    [&] { return contents(copy).size() == bytes.size(); })));
    EXPECT_EQ(contents(copy), bytes);
    EXPECT_EQ(contents(*path), bytes);
    EXPECT_EQ(windows().focused(), focused);
    EXPECT_EQ(tamrik->chips().size(), 1);
    // The program can still copy: what it was asked with did not confuse it.
    const Clipboard clipboard(*desktop);
    ASSERT_TRUE(succeeded(clipboard.write(QStringLiteral("UTF8_STRING"), "another program's")));
    ASSERT_TRUE(succeeded(input().click(copyButton(*place))));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the picture on the clipboard"), [&] {
        const auto png = clipboard.read(QStringLiteral("image/png"));
        return png && *png == bytes;
    })));
    // It works a second time: nothing is left over from the first.
    ASSERT_TRUE(QFile::remove(copy));
    ASSERT_TRUE(succeeded(input().dragAndDrop(bareSpot(*place), folderView(*manager))));
    EXPECT_TRUE(
        succeeded(waitUntil(QStringLiteral("the copy"), [&] { return contents(copy) == bytes; })));
}

TEST_P(ChipAboveAll, AnImageEditorOpensWhatIsDroppedOnIt)
{
    const auto path = capture(1);
    ASSERT_TRUE(succeeded(path));
    const auto place = restingChip();
    ASSERT_TRUE(succeeded(place));
    const auto editor = openImageEditor(*desktop);
    ASSERT_TRUE(succeeded(editor));
    const QRect window = editor->window.geometry;
    ASSERT_TRUE(succeeded(input().dragAndDrop(
        bareSpot(*place), {window.center().x(), window.top() + window.height() / 3})));
    EXPECT_TRUE(
        succeeded(windows().await(QStringLiteral("the editor's new title"),
                                  [&](const Window& w) { return w.title.endsWith(*path); })));
    EXPECT_TRUE(QFile::exists(*path));
}

TEST_P(ChipOnDesktop, ADragWithControlMovesTheStackToStay)
{
    ASSERT_TRUE(succeeded(capture(1)));
    ASSERT_TRUE(succeeded(capture(2)));
    const auto settled = [this](QPoint bottom) {
        return waitFor(QStringLiteral("the stack to rest"), [&]() -> Outcome<void> {
            const auto chips = tamrik->chips();
            if (chips.size() != 2)
                return Failure{QStringLiteral("there are %1 chips").arg(chips.size())};
            QRect newest = body(chips[0]);
            QRect oldest = body(chips[1]);
            if (newest.top() < oldest.top())
                std::swap(newest, oldest);
            if (newest.bottomLeft() != bottom)
                return Failure{
                    QStringLiteral("one is at %1,%2").arg(newest.left()).arg(newest.bottom())};
            if (oldest.bottom() + 1 + pixels(12) != newest.top())
                return Failure{QStringLiteral("they are not 12 points apart")};
            return {};
        });
    };
    auto chips = tamrik->chips();
    const QRect first = body(chips[0]);
    const QRect second = body(chips[1]);
    const QRect lowest = first.top() > second.top() ? first : second;
    ASSERT_TRUE(succeeded(settled(lowest.bottomLeft())));

    const QPoint by(pixels(300), -pixels(60));
    ASSERT_TRUE(succeeded(input().keyDown(QStringLiteral("ctrl"))));
    ASSERT_TRUE(succeeded(input().drag(bareSpot(lowest), bareSpot(lowest) + by)));
    ASSERT_TRUE(succeeded(input().keyUp(QStringLiteral("ctrl"))));
    EXPECT_TRUE(succeeded(settled(lowest.bottomLeft() + by)));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the stored place"), [this] {
        return tamrik->preferences().value(QStringLiteral("chipPosition")) ==
               QStringLiteral("custom");
    })));
    const auto stored = tamrik->preferences();
    const double height = desktop->options().size.height() / scale();
    EXPECT_NEAR(stored.value(QStringLiteral("chipCustomX")).toDouble(), 24 + 300, 0.5);
    EXPECT_NEAR(stored.value(QStringLiteral("chipCustomY")).toDouble(),
                height - (lowest.bottom() + 1 + by.y()) / scale(), 0.5);
    // The next capture joins it there.
    ASSERT_TRUE(succeeded(capture(3)));
}

TEST_P(ChipAboveAll, AProgramThatFillsTheScreenIsBelowTheChip)
{
    ASSERT_TRUE(succeeded(capture(1)));
    const auto place = restingChip();
    ASSERT_TRUE(succeeded(place));
    const std::uint32_t chip = tamrik->chips().front().id;
    {
        const auto window = FullScreenWindow::show(*desktop, FullScreenWindow::Kind::Managed,
                                                   tamrik->chips().front().geometry);
        ASSERT_TRUE(succeeded(window));
        EXPECT_EQ(windowAt(place->center()), chip);
        // Not even when it is raised once more.
        ASSERT_TRUE(succeeded(windows().activate((*window)->id())));
        EXPECT_EQ(windowAt(place->center()), chip);
    }
    EXPECT_EQ(windowAt(place->center()), chip);
}

TEST_P(ChipsInARow, FiveStayAndAreStacked)
{
    for (int i = 1; i <= 5; ++i)
        ASSERT_TRUE(succeeded(capture(i)));
    const auto oldest = tamrik->chips();
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    ASSERT_TRUE(succeeded(waitFor(QStringLiteral("a new one among five"), [&]() -> Outcome<void> {
        QList<std::uint32_t> before;
        for (const Window& window : oldest)
            before += window.id;
        int known = 0;
        const auto now = tamrik->chips();
        for (const Window& window : now)
            known += before.contains(window.id) ? 1 : 0;
        return now.size() == 5 && known == 4 ? Outcome<void>() : Failure{};
    })));
    EXPECT_TRUE(succeeded(waitFor(QStringLiteral("a tidy stack"), [&]() -> Outcome<void> {
        QList<QRect> places;
        for (const Window& window : tamrik->chips())
            places += body(window);
        std::sort(places.begin(), places.end(),
                  [](const QRect& a, const QRect& b) { return a.top() > b.top(); });
        for (int i = 1; i < places.size(); ++i) {
            if (places[i].left() != places[0].left() ||
                places[i].bottom() + 1 + pixels(12) != places[i - 1].top())
                return Failure{QStringLiteral("chip %1 is at %2,%3")
                                   .arg(i)
                                   .arg(places[i].left())
                                   .arg(places[i].top())};
        }
        return {};
    })));
}

TEST_P(ChipsOnTwoScreens, AChipIsAsLargeAsItsScreensScaleSaysAndComesBackFromOneThatGoes)
{
    const Options& options = desktop->options();
    const QRect second(QPoint(options.size.width(), 0), options.secondSize);
    ASSERT_TRUE(succeeded(input().moveTo(second.center())));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area().translated(second.topLeft()))));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    auto place = restingChip(options.secondScale);
    ASSERT_TRUE(succeeded(place));
    // 360 x 180 pixels are 180 x 90 points there.
    EXPECT_EQ(place->size(), area().size());
    EXPECT_EQ(place->left(), second.left() + pixels(24, options.secondScale));
    EXPECT_TRUE(second.contains(*place));

    // Over to the first screen and half a dozen points up.
    ASSERT_TRUE(succeeded(input().keyDown(QStringLiteral("ctrl"))));
    ASSERT_TRUE(succeeded(input().drag(place->center(), {900, 500})));
    ASSERT_TRUE(succeeded(input().keyUp(QStringLiteral("ctrl"))));
    // The stack belongs to the screen of its newest chip, so that is where it goes back to.
    ASSERT_TRUE(succeeded(waitFor(QStringLiteral("the chip to go back"), [&]() -> Outcome<void> {
        const auto now = restingChip(options.secondScale);
        if (!now)
            return now.failure();
        return now->left() == second.left() && now->size() == area().size()
                   ? Outcome<void>()
                   : Failure{QStringLiteral("it is at %1,%2, %3 wide")
                                 .arg(now->left())
                                 .arg(now->top())
                                 .arg(now->width())};
    })));

    const auto names = Monitors(*desktop).names();
    ASSERT_TRUE(succeeded(names));
    ASSERT_EQ(names->size(), 2);
    ASSERT_TRUE(succeeded(Monitors(*desktop).remove(names->at(1))));
    const QRect first(QPoint(), options.size);
    EXPECT_TRUE(succeeded(waitFor(QStringLiteral("the chip to come back"), [&]() -> Outcome<void> {
        const auto now = restingChip();
        if (!now)
            return now.failure();
        return first.contains(*now) && now->size() == area().size() / 2
                   ? Outcome<void>()
                   : Failure{QStringLiteral("it is at %1,%2, %3 wide")
                                 .arg(now->left())
                                 .arg(now->top())
                                 .arg(now->width())};
    })));
}

TEST_F(ChipAndCompositors, AChipFollowsThoseThatComeAndGo)
{
    begin({.compositor = Compositor::None});
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const QRect body = Tamrik::chipIn(tamrik->chips().front(), 1);
    const QPoint below(body.center().x(), body.bottom() + 4);
    const QPoint corner = body.topLeft() + QPoint(1, 1);
    // Nothing but the round chip: the background is all around it.
    const auto background = screen().pixel(body.topLeft() - QPoint(0, 60));
    ASSERT_TRUE(succeeded(background));
    EXPECT_TRUE(succeeded(screen().awaitColor(below, *background)));
    EXPECT_TRUE(succeeded(screen().awaitColor(corner, *background)));

    const auto darker = [&](QPoint point) {
        return waitFor(QStringLiteral("a shadow"), [&]() -> Outcome<void> {
            const auto now = screen().pixel(point);
            if (!now)
                return now.failure();
            // A shadow, and not black either.
            const bool isShadow =
                now->value() < background->value() - 10 && now->value() > background->value() / 3;
            return isShadow ? Outcome<void>() : Failure{now->name()};
        });
    };
    auto compositor = App::start(*desktop, QStringLiteral("picom"),
                                 {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                  QStringLiteral("--config"), QStringLiteral("/dev/null"),
                                  QStringLiteral("--no-vsync")});
    ASSERT_TRUE(succeeded(compositor));
    EXPECT_TRUE(succeeded(darker(below)));
    EXPECT_TRUE(succeeded(darker(corner)));
    ASSERT_TRUE(succeeded((*compositor)->stop()));
    EXPECT_TRUE(succeeded(screen().awaitColor(below, *background)));
    EXPECT_TRUE(succeeded(screen().awaitColor(corner, *background)));
}

namespace {

const DesktopCase openbox = {"Openbox", {}};
const DesktopCase uncomposited = {"OpenboxUncompositedScaleTwo",
                                  {.scale = 2, .compositor = Compositor::None}};
const DesktopCase xfwm = {"Xfwm4StatusNotifier",
                          {.windowManager = WindowManager::Xfwm4, .tray = Tray::StatusNotifier}};
const DesktopCase bare = {
    "NothingButAServer",
    {.windowManager = WindowManager::None, .compositor = Compositor::None, .tray = Tray::None}};
const DesktopCase twoScales = {"OpenboxScalesOneAndTwo",
                               {.screens = 2, .scale = 1, .secondScale = 2}};

} // namespace

INSTANTIATE_TEST_SUITE_P(Chips, ChipOnDesktop, testing::Values(openbox, uncomposited, xfwm, bare),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Chips, ChipAboveAll, testing::Values(openbox, xfwm), nameOf);
INSTANTIATE_TEST_SUITE_P(Chips, ChipsInARow, testing::Values(openbox), nameOf);
INSTANTIATE_TEST_SUITE_P(Chips, ChipsOnTwoScreens, testing::Values(twoScales), nameOf);
