#include "desktop/flow/SelectionPicture.h"

#include "desktop/harness/Screen.h"

#include <cstdlib>

using namespace Desktop;

namespace {

constexpr int tolerance = 2; // pixels; the outline lies on the edge
constexpr int beyond = 12;   // pixels, past outline and brackets

QColor dimmed(QColor plain)
{
    return QColor(qRound(plain.red() * 0.75), qRound(plain.green() * 0.75),
                  qRound(plain.blue() * 0.75));
}

/// How far from `start` the pixels in direction `step` are plain.
int plainPixels(const QImage& picture, QPoint start, QPoint step, QColor plain)
{
    int count = 0;
    for (QPoint p = start; picture.rect().contains(p) && isNearly(picture.pixelColor(p), plain, 1);
         p += step)
        ++count;
    return count;
}

QString text(QRect r)
{
    return QStringLiteral("%1x%2 at %3,%4").arg(r.width()).arg(r.height()).arg(r.x()).arg(r.y());
}

Outcome<void> look(const QImage& picture, QRect expected, QColor plain)
{
    const QPoint middle = expected.center();
    QRect found(middle, QSize(1, 1));
    found.setLeft(middle.x() + 1 - plainPixels(picture, middle, {-1, 0}, plain));
    found.setTop(middle.y() + 1 - plainPixels(picture, middle, {0, -1}, plain));
    found.setRight(middle.x() - 1 + plainPixels(picture, middle, {1, 0}, plain));
    found.setBottom(middle.y() - 1 + plainPixels(picture, middle, {0, 1}, plain));
    const auto near = [](int a, int b) { return std::abs(a - b) <= tolerance; };
    if (!near(found.left(), expected.left()) || !near(found.top(), expected.top()) ||
        !near(found.right(), expected.right()) || !near(found.bottom(), expected.bottom()))
        return Failure{QStringLiteral("the bright part is ") + text(found)};
    const QPoint around[] = {{expected.left() - beyond, middle.y()},
                             {expected.right() + beyond, middle.y()},
                             {middle.x(), expected.top() - beyond},
                             {middle.x(), expected.bottom() + beyond}};
    for (const QPoint p : around) {
        if (!picture.rect().contains(p) || !isNearly(picture.pixelColor(p), dimmed(plain), 3))
            return Failure{QStringLiteral("%1,%2 is not dimmed").arg(p.x()).arg(p.y())};
    }
    return {};
}

} // namespace

Outcome<void> awaitSelectionOf(const VirtualDesktop& desktop, QRect pixels, QColor plain)
{
    return waitFor(QStringLiteral("a selection of ") + text(pixels), [&]() -> Outcome<void> {
        const auto picture = Screen(desktop).grab();
        if (!picture)
            return picture.failure();
        return look(*picture, pixels, plain);
    });
}
