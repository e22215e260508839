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

#include <algorithm>
#include <cmath>
#include <thread>

using namespace Desktop;

namespace {

// The window's measures, in points.
constexpr double toolbarHeight = 46;
constexpr double insideTrim = 24;
constexpr double insideSave = 96;
constexpr double fromCopyToGIF = 8 + 40; // from the left edge of the one to the middle of the other
// Of the player's bar, from the window's edges.
constexpr double playerRow = 12 + 20;
constexpr double insidePlay = 12 + 10 + 15;
constexpr double volumeEnd = 12 + 14;
constexpr double volumeWidth = 72;
constexpr double insideMute = volumeEnd + volumeWidth + 10 + 15;
constexpr double leftOfMute = insideMute + 15 + 5;
constexpr double knobRadius = 6;
constexpr double trackEnd = 2; // beyond where the knob may stand
// Of the bar with the handles.
constexpr double trimBarTop = 12 + 64;
constexpr double fromConfirmToCancel = 10 + 25;
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
    return c.blue() > 200 && c.red() < 150 && c.green() < 190;
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
                                          "cr=128,settb=1/90000,setpts=90000/%1*(N+mod(N\\,2)/2)")
                               .arg(frameRate)
                               .arg(frameCount / frameRate)
                               .arg(darkest)
                               .arg(step);
    const auto made = run(QStringLiteral("ffmpeg"),
                          {QStringLiteral("-v"),
                           QStringLiteral("error"),
                           QStringLiteral("-f"),
                           QStringLiteral("lavfi"),
                           QStringLiteral("-i"),
                           frames,
                           QStringLiteral("-f"),
                           QStringLiteral("lavfi"),
                           QStringLiteral("-i"),
                           QStringLiteral("sine=r=48000:d=3"),
                           QStringLiteral("-pix_fmt"),
                           QStringLiteral("yuv420p"),
                           QStringLiteral("-crf"),
                           QStringLiteral("4"),
                           QStringLiteral("-g"),
                           QStringLiteral("30"),
                           QStringLiteral("-bf"),
                           QStringLiteral("0"),
                           QStringLiteral("-fps_mode"),
                           QStringLiteral("passthrough"),
                           QStringLiteral("-enc_time_base"),
                           QStringLiteral("1/90000"),
                           QStringLiteral("-video_track_timescale"),
                           QStringLiteral("90000"),
                           path},
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

Outcome<QList<double>> VideoEditorOnDesktop::frameTimes(const QString& path)
{
    const auto output =
        run(QStringLiteral("ffprobe"),
            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
             QStringLiteral("v"), QStringLiteral("-show_entries"), QStringLiteral("frame=pts_time"),
             QStringLiteral("-of"), QStringLiteral("default=nokey=1:noprint_wrappers=1"), path},
            QProcessEnvironment::systemEnvironment());
    if (!output)
        return output.failure();
    QList<double> times;
    for (const QByteArray& line : output->trimmed().split('\n'))
        times += line.toDouble();
    return times;
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

Outcome<int> VideoEditorOnDesktop::awaitStanding() const
{
    return waitFor(QStringLiteral("a film that stands"), [&]() -> Outcome<int> {
        constexpr int longestFrame = 50; // milliseconds
        const int before = frame();
        std::this_thread::sleep_for(std::chrono::milliseconds(4 * longestFrame));
        const int now = frame();
        if (now != before)
            return Failure{QStringLiteral("%1 becomes %2").arg(before).arg(now)};
        return now;
    });
}

QPoint VideoEditorOnDesktop::at(double x, double y) const
{
    return {(x < 0 ? m_window.right() + 1 : m_window.left()) + pixels(x),
            (y < 0 ? m_window.bottom() + 1 : m_window.top()) + pixels(y)};
}

Outcome<QRect> VideoEditorOnDesktop::blueBetween(QPoint from, QPoint to) const
{
    const auto picture = Screen(*m_desktop).grab(QRect(from, to - QPoint(1, 1)));
    if (!picture)
        return picture.failure();
    const QRect blue = extent(*picture, isBlue);
    if (blue.isEmpty())
        return Failure{QStringLiteral("nothing is blue there")};
    return blue.translated(from);
}

Outcome<void> VideoEditorOnDesktop::click(Tool tool) const
{
    const Input input(*m_desktop);
    switch (tool) {
    case Tool::Trim:
        return input.click(at(insideTrim, toolbarHeight / 2));
    case Tool::SaveTrimmed:
        return input.click(at(insideSave, toolbarHeight / 2));
    case Tool::ExportGIF:
    case Tool::CopyFile:
        break;
    }
    const auto copy = blueBetween(m_window.topLeft(), QPoint(m_window.right(), 0) +
                                                          QPoint(0, at(0, toolbarHeight).y()));
    if (!copy)
        return copy.failure();
    if (tool == Tool::CopyFile)
        return input.click(copy->center());
    return input.click({copy->left() - pixels(fromCopyToGIF), copy->center().y()});
}

Outcome<void> VideoEditorOnDesktop::click(Control control) const
{
    const Input input(*m_desktop);
    switch (control) {
    case Control::Play:
        return input.click(at(insidePlay, -playerRow));
    case Control::Mute:
        return input.click(at(-insideMute, -playerRow));
    case Control::ConfirmTrimming:
    case Control::CancelTrimming:
        break;
    }
    const auto confirm = blueBetween(at(0, -trimBarTop), m_window.bottomRight());
    if (!confirm)
        return confirm.failure();
    if (control == Control::ConfirmTrimming)
        return input.click(confirm->center());
    return input.click({confirm->left() - pixels(fromConfirmToCancel), confirm->center().y()});
}

Outcome<void> VideoEditorOnDesktop::dragPosition(double part) const
{
    const QPoint left = at(insidePlay, -playerRow);
    const QPoint right = at(-leftOfMute, -playerRow) + QPoint(0, 1);
    const auto way = waitFor(QStringLiteral("the knob's way"), [&]() -> Outcome<QRect> {
        auto blue = blueBetween(left, right);
        if (blue && blue->width() < (right.x() - left.x()) / 2)
            return Failure{QStringLiteral("%1 pixels of it are blue").arg(blue->width())};
        return blue;
    });
    if (!way)
        return way.failure();
    const int from = way->right() + 1 + pixels(knobRadius);
    const int begin = way->left() + pixels(trackEnd);
    const int to = begin + static_cast<int>(std::lround((from - begin) * part));
    return Input(*m_desktop).drag({from, way->top()}, {to, way->top()});
}

Outcome<void> VideoEditorOnDesktop::clickVolume(double part) const
{
    const double begin = volumeEnd + volumeWidth - knobRadius;
    return Input(*m_desktop).click(at(-begin + part * (volumeWidth - 2 * knobRadius), -playerRow));
}

Outcome<void> VideoEditorOnDesktop::awaitVolume(double part) const
{
    return waitFor(QStringLiteral("the volume %1").arg(part), [&]() -> Outcome<void> {
        const QPoint begin = at(-volumeEnd - volumeWidth, -playerRow);
        const auto blue = blueBetween(begin, at(-volumeEnd, -playerRow) + QPoint(0, 1));
        // The knob lies over the end of what is blue.
        const double end = blue ? (blue->right() + 1 - begin.x()) / m_desktop->options().scale : 0;
        const double shown = std::max(0.0, end / (volumeWidth - 2 * knobRadius));
        return std::abs(shown - part) < 0.05 ? Outcome<void>()
                                             : Failure{QStringLiteral("it is %1").arg(shown)};
    });
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
