#include "desktop/flow/VideoEditorOnDesktop.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/Windows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Desktop;

namespace {

// The window's measures, in points.
constexpr double toolbarHeight = 46;
constexpr double insideTrim = 24;
constexpr double insideSave = 96;
constexpr double handleBreadth = 13;
/// From the window's lower edge to a row that passes the handles above their arrows.
constexpr double handleRow = 12 + 64 - 9 - 8;

constexpr int darkest = 20;
constexpr int step = 2;

bool isYellow(QColor c)
{
    return c.red() > 240 && c.green() > 190 && c.blue() < 120;
}

bool isBlue(QColor c)
{
    return c.blue() > 200 && c.red() < 110 && c.green() < 170;
}

/// What holds all pixels of a sort.
QRect extent(const QImage& image, bool (*isOne)(QColor))
{
    QRect result;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isOne(image.pixelColor(x, y)))
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

} // namespace

Outcome<QString> VideoEditorOnDesktop::makeFilm(const VirtualDesktop& desktop)
{
    const QString folder = desktop.home() + QStringLiteral("/Films");
    QDir().mkpath(folder);
    QString path = folder + QStringLiteral("/film.mp4");
    const QString frames = QStringLiteral("nullsrc=s=320x180:r=%1:d=%2,geq=lum='%3+%4*N':cb=128:"
                                          "cr=128")
                               .arg(frameRate)
                               .arg(frameCount / frameRate)
                               .arg(darkest)
                               .arg(step);
    const auto made = run(QStringLiteral("ffmpeg"),
                          {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                           QStringLiteral("lavfi"), QStringLiteral("-i"), frames,
                           QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"),
                           QStringLiteral("-crf"), QStringLiteral("4"), QStringLiteral("-g"),
                           QStringLiteral("30"), QStringLiteral("-bf"), QStringLiteral("0"), path},
                          QProcessEnvironment::systemEnvironment());
    if (!made)
        return made.failure();
    return path;
}

int VideoEditorOnDesktop::numberOf(QColor grey)
{
    // From full range back to that of films.
    const double luma = grey.green() * 219.0 / 255 + 16;
    return static_cast<int>(std::lround((luma - darkest) / step));
}

Outcome<void> VideoEditorOnDesktop::makeLastCapture(const VirtualDesktop& desktop,
                                                    const QString& path)
{
    const QString folder = desktop.home() + QStringLiteral("/.config/tamrik");
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/preferences.json"));
    const QJsonObject preferences{{QStringLiteral("lastCapturePath"), path}};
    if (!file.open(QFile::WriteOnly) || file.write(QJsonDocument(preferences).toJson()) < 0)
        return Failure{file.errorString()};
    return {};
}

Outcome<VideoEditorOnDesktop> VideoEditorOnDesktop::await(const VirtualDesktop& desktop,
                                                          const QString& path)
{
    const auto now = Windows(desktop).awaitTitleInUse(QFileInfo(path).fileName());
    if (!now)
        return now.failure();
    return VideoEditorOnDesktop(desktop, now->id, now->geometry);
}

VideoEditorOnDesktop::VideoEditorOnDesktop(const VirtualDesktop& desktop, std::uint32_t id,
                                           QRect window)
    : m_desktop(&desktop)
    , m_id(id)
    , m_window(window)
{
}

int VideoEditorOnDesktop::pixels(double points) const
{
    return static_cast<int>(std::lround(points * m_desktop->options().scale));
}

QString VideoEditorOnDesktop::title() const
{
    for (const Window& window : Windows(*m_desktop).all())
        if (window.id == m_id)
            return window.title;
    return {};
}

int VideoEditorOnDesktop::frame() const
{
    const QPoint middle = m_window.center() + QPoint(0, pixels(toolbarHeight) / 2);
    const auto colour = Screen(*m_desktop).pixel(middle);
    return colour ? numberOf(*colour) : -1;
}

Outcome<void> VideoEditorOnDesktop::awaitFrame(int number, int tolerance) const
{
    return waitFor(QStringLiteral("frame %1").arg(number), [&]() -> Outcome<void> {
        const int shown = frame();
        return std::abs(shown - number) <= tolerance
                   ? Outcome<void>()
                   : Failure{QStringLiteral("there is %1").arg(shown)};
    });
}

Outcome<void> VideoEditorOnDesktop::click(Tool tool) const
{
    const double x = tool == Tool::Trim ? insideTrim : insideSave;
    return Input(*m_desktop)
        .click(m_window.topLeft() + QPoint(pixels(x), pixels(toolbarHeight / 2)));
}

Outcome<void> VideoEditorOnDesktop::clickCopyFile() const
{
    const QRect bar(m_window.topLeft(), QSize(m_window.width(), pixels(toolbarHeight)));
    const auto picture = Screen(*m_desktop).grab(bar);
    if (!picture)
        return picture.failure();
    const QRect blue = extent(*picture, isBlue);
    if (blue.isEmpty())
        return Failure{QStringLiteral("there is nothing blue in the toolbar")};
    return Input(*m_desktop).click(blue.center() + bar.topLeft());
}

Outcome<QRect> VideoEditorOnDesktop::handles() const
{
    const QRect row(m_window.left(), m_window.bottom() - pixels(handleRow), m_window.width(), 1);
    return waitFor(QStringLiteral("two handles"), [&]() -> Outcome<QRect> {
        const auto picture = Screen(*m_desktop).grab(row);
        if (!picture)
            return picture.failure();
        const QRect yellow = extent(*picture, isYellow);
        if (yellow.width() < pixels(2 * handleBreadth))
            return Failure{QStringLiteral("%1 pixels are yellow").arg(yellow.width())};
        return yellow.translated(row.topLeft());
    });
}

Outcome<void> VideoEditorOnDesktop::awaitHandles()
{
    const auto found = handles();
    if (!found)
        return found.failure();
    m_wholeFilm = *found;
    return {};
}

Outcome<void> VideoEditorOnDesktop::dragHandle(Side side, double part) const
{
    const auto now = handles();
    if (!now)
        return now.failure();
    const int breadth = pixels(handleBreadth);
    const double film = m_wholeFilm.width() - 2 * breadth;
    const int edge = m_wholeFilm.left() + breadth + static_cast<int>(std::lround(film * part));
    const bool isStart = side == Side::Start;
    const int edgeNow = isStart ? now->left() + breadth : now->right() + 1 - breadth;
    const QPoint from(edgeNow + (isStart ? -breadth / 2 : breadth / 2), now->top());
    return Input(*m_desktop).drag(from, from + QPoint(edge - edgeNow, 0));
}
