#include "desktop/flow/RecordingHands.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Desktop;

namespace {

bool isRed(const QColor& c)
{
    return c.red() > 180 && c.green() < 110 && c.blue() < 110;
}

Windows::Predicate controlsOf(const Tamrik& tamrik)
{
    return [pid = tamrik.app().pid()](const Window& window) {
        return window.pid == pid && window.isOverrideRedirect && window.isTopLevel &&
               window.isViewable && window.title == QLatin1String("Tamrik Recording Controls");
    };
}

/// The first frame of a film that went through a filter of ffmpeg's.
Outcome<QImage> firstAfter(const QString& filter, const QString& path)
{
    // Exactly, not quickly.
    const QString colours = QStringLiteral(
        ",scale=in_color_matrix=bt709:in_range=tv:flags=accurate_rnd+full_chroma_int");
    const auto output =
        run(QStringLiteral("ffmpeg"),
            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
             QStringLiteral("-vf"), filter + colours, QStringLiteral("-frames:v"),
             QStringLiteral("1"), QStringLiteral("-f"), QStringLiteral("image2pipe"),
             QStringLiteral("-c:v"), QStringLiteral("png"), QStringLiteral("-")},
            QProcessEnvironment::systemEnvironment());
    if (!output)
        return output.failure();
    const QImage image = QImage::fromData(*output, "png");
    if (image.isNull())
        return Failure{QStringLiteral("there is no frame")};
    return image;
}

} // namespace

RecordingControls::RecordingControls(const VirtualDesktop& desktop, QRect window)
    : m_desktop(&desktop)
    , m_window(window)
{
}

Outcome<RecordingControls> RecordingControls::await(const VirtualDesktop& desktop,
                                                    const Tamrik& tamrik)
{
    const auto window =
        Windows(desktop).await(QStringLiteral("the recording's controls"), controlsOf(tamrik));
    if (!window)
        return window.failure();
    return RecordingControls(desktop, window->geometry);
}

Outcome<void> RecordingControls::awaitNone(const VirtualDesktop& desktop, const Tamrik& tamrik)
{
    return Windows(desktop).awaitNone(QStringLiteral("the recording's controls"),
                                      controlsOf(tamrik));
}

bool RecordingControls::isShown(const VirtualDesktop& desktop, const Tamrik& tamrik)
{
    return !Windows(desktop).where(controlsOf(tamrik)).isEmpty();
}

int RecordingControls::pixels(double points) const
{
    return static_cast<int>(std::lround(points * m_desktop->options().scale));
}

QRect RecordingControls::bar() const
{
    const int shadow = pixels(14);
    return m_window.adjusted(shadow, shadow, -shadow, -shadow);
}

Outcome<void> RecordingControls::click(Control control) const
{
    // From the bar's right end: 10 points of room, buttons of 30, 8 between things, a line of 2.
    double fromRight = 0;
    switch (control) {
    case Control::Discard:
        fromRight = 10 + 15;
        break;
    case Control::Restart:
        fromRight = 10 + 30 + 8 + 2 + 8 + 15;
        break;
    case Control::Stop:
        fromRight = 10 + 30 + 8 + 2 + 8 + 30 + 8 + 15;
        break;
    case Control::Pause:
        fromRight = 10 + 30 + 8 + 2 + 8 + 2 * (30 + 8) + 15;
        break;
    }
    return Input(*m_desktop)
        .click({bar().right() + 1 - pixels(fromRight), bar().top() + pixels(20)});
}

Outcome<void> RecordingControls::awaitPaused(bool paused) const
{
    const QPoint dot = bar().topLeft() + QPoint(pixels(14 + 4), pixels(20));
    const QColor wanted = paused ? QColor(0xFF, 0x95, 0x00) : QColor(0xFF, 0x3B, 0x30);
    return Screen(*m_desktop).awaitColor(dot, wanted, 3);
}

Outcome<QPoint> awaitRecordButton(const VirtualDesktop& desktop, QRect selection)
{
    const int height = static_cast<int>(std::lround(60 * desktop.options().scale));
    const QRect below =
        QRect(QPoint(0, selection.bottom() + 1), QSize(desktop.options().size.width(), height));
    return waitFor(QStringLiteral("a red button"), [&]() -> Outcome<QPoint> {
        const auto picture = Screen(desktop).grab(below);
        if (!picture)
            return picture.failure();
        QRect red;
        for (int y = 0; y < picture->height(); ++y) {
            for (int x = 0; x < picture->width(); ++x) {
                if (isRed(picture->pixelColor(x, y)))
                    red |= QRect(x, y, 1, 1);
            }
        }
        if (red.width() < height / 2 || red.height() < height / 4)
            return Failure{
                QStringLiteral("what is red is %1x%2").arg(red.width()).arg(red.height())};
        return red.center() + below.topLeft();
    });
}

int redPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += isRed(image.pixelColor(x, y)) ? 1 : 0;
    }
    return count;
}

QString temporaryFolder(const VirtualDesktop& desktop)
{
    return desktop.environment().value(QStringLiteral("TMPDIR"));
}

QStringList temporaryFiles(const VirtualDesktop& desktop)
{
    return QDir(temporaryFolder(desktop)).entryList({QStringLiteral("*tamrik-*")}, QDir::Files);
}

Outcome<Film> Film::read(const QString& path)
{
    const auto output = run(QStringLiteral("ffprobe"),
                            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-of"),
                             QStringLiteral("json"), QStringLiteral("-show_streams"),
                             QStringLiteral("-show_format"), path},
                            QProcessEnvironment::systemEnvironment());
    if (!output)
        return output.failure();
    const QJsonObject root = QJsonDocument::fromJson(*output).object();
    Film film;
    film.seconds = root.value(QStringLiteral("format"))
                       .toObject()
                       .value(QStringLiteral("duration"))
                       .toString()
                       .toDouble();
    const QJsonArray streams = root.value(QStringLiteral("streams")).toArray();
    for (const QJsonValue& value : streams) {
        const QJsonObject stream = value.toObject();
        if (stream.value(QStringLiteral("codec_type")) == QStringLiteral("audio"))
            film.hasSound = true;
        else
            film.size = {stream.value(QStringLiteral("width")).toInt(),
                         stream.value(QStringLiteral("height")).toInt()};
    }
    return film;
}

Outcome<QImage> Film::firstFrame(const QString& path)
{
    return firstAfter(QStringLiteral("null"), path);
}

Outcome<QImage> Film::lastFrame(const QString& path)
{
    return firstAfter(QStringLiteral("reverse"), path);
}
