#include "desktop/flow/CaptureChecks.h"

#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/PatternedBackground.h"
#include "desktop/harness/Screen.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace Desktop;

namespace {

/// Steps enough for a drag; there is nobody whose eye has to follow.
constexpr Motion brisk{2, std::chrono::milliseconds(5)};

QString text(QRect r)
{
    return QStringLiteral("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
}

/// How far apart the edges of two rectangles are that are farthest apart.
int farthestEdges(const QRect& a, const QRect& b)
{
    return std::max({std::abs(a.left() - b.left()), std::abs(a.top() - b.top()),
                     std::abs(a.right() - b.right()), std::abs(a.bottom() - b.bottom())});
}

bool isBackground(const QImage& picture, QPoint pixel)
{
    return picture.pixel(pixel) == PatternedBackground::colorAt(pixel);
}

/// How many pixels of `area` show the background as it is.
int untouched(const QImage& picture, QRect area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += isBackground(picture, {x, y}) ? 1 : 0;
    return count;
}

} // namespace

void CaptureChecks::expectSelectedIsSaved(const ArrangedScreen& on, QPoint from, QPoint to)
{
    ASSERT_TRUE(succeeded(Input(m_desktop).moveTo(from, brisk)));
    ASSERT_TRUE(succeeded(Input(m_desktop).key(QStringLiteral("alt+shift+s"))));
    ASSERT_TRUE(succeeded(awaitOverlayOnAll()));
    expectDragIsSaved(on, from, to);
}

void CaptureChecks::expectDragIsSaved(const ArrangedScreen& on, QPoint from, QPoint to)
{
    const Input input(m_desktop);
    ASSERT_TRUE(succeeded(input.moveTo(from, brisk)));
    ASSERT_TRUE(succeeded(input.press()));
    ASSERT_TRUE(succeeded(input.moveTo(to, brisk)));
    const Expected expected = m_arrangement.selected(on, from, to);
    EXPECT_TRUE(succeeded(awaitShown(on, expected)));
    ASSERT_TRUE(succeeded(input.release()));
    expectPicture(expected);
}

Outcome<void> CaptureChecks::awaitOverlayOnAll() const
{
    return waitFor(QStringLiteral("the overlay"), [this]() -> Outcome<void> {
        QList<QRect> covered;
        const QList<Window> windows = m_tamrik.overlay();
        for (const Window& window : windows)
            covered += window.geometry;
        const auto& screens = m_arrangement.screens();
        const bool all = std::all_of(screens.begin(), screens.end(), [&](const auto& screen) {
            return covered.contains(screen.pixels);
        });
        if (all && covered.size() == screens.size())
            return {};
        QString seen;
        for (const QRect& rect : covered)
            seen += u' ' + text(rect);
        return Failure{QStringLiteral("it covers") + seen};
    });
}

Outcome<void> CaptureChecks::awaitShown(const ArrangedScreen& on, const Expected& expected) const
{
    // The outline, a point wide, lies along the selection's edge, which may fall between two
    // pixels.
    const int outline = static_cast<int>(std::ceil((on.scale + 1) / 2));
    const auto grown = [](const QRect& r, int by) { return r.adjusted(-by, -by, by, by); };
    const QRect inside = grown(expected.shown, -outline - expected.tolerance) & on.pixels;
    const QRect around = grown(expected.shown, expected.tolerance) & on.pixels;
    return waitFor(QStringLiteral("the selection ") + text(expected.shown), [&]() -> Outcome<void> {
        const auto picture = Screen(m_desktop).grab();
        if (!picture)
            return picture.failure();
        const int dimmed = inside.width() * inside.height() - untouched(*picture, inside);
        const int clear = untouched(*picture, on.pixels) - untouched(*picture, around);
        if (dimmed == 0 && clear == 0)
            return {};
        return Failure{QStringLiteral("%1 pixels inside are dimmed, %2 outside are not")
                           .arg(dimmed)
                           .arg(clear)};
    });
}

QImage CaptureChecks::takePicture()
{
    const auto path = m_tamrik.awaitCapture(1);
    EXPECT_TRUE(succeeded(path));
    if (!path)
        return {};
    // It writes its preferences last, and must not be ended while it holds their lock.
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the picture to be the last one"), [&] {
        return m_tamrik.preferences().value(QStringLiteral("lastCapturePath")) == *path;
    })));
    EXPECT_TRUE(succeeded(m_tamrik.putChipsAway()));
    const QImage picture(*path);
    // Two in a second have the same name.
    EXPECT_TRUE(QFile::remove(*path));
    return picture;
}

void CaptureChecks::expectPicture(const Expected& expected)
{
    const QImage picture = takePicture();
    const auto place = PatternedBackground::placeOf(picture);
    ASSERT_TRUE(succeeded(place));
    EXPECT_LE(farthestEdges(*place, expected.saved), expected.tolerance)
        << qUtf8Printable(text(*place)) << " instead of " << qUtf8Printable(text(expected.saved));
    EXPECT_EQ(picture.dotsPerMeterX(), picture.dotsPerMeterY());
    const auto& scales = expected.scales;
    EXPECT_TRUE(std::any_of(scales.begin(), scales.end(), [&](double scale) {
        constexpr double metresAnInch = 0.0254;
        return std::abs(picture.dotsPerMeterX() - 72 * scale / metresAnInch) <= 1;
    })) << picture.dotsPerMeterX();
}
