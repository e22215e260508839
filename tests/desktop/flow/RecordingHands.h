#pragma once

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QImage>
#include <QPoint>
#include <QRect>

/// The bar beside a rectangle that is being recorded, to somebody with a mouse. Pixels are those of
/// the whole desktop.
class RecordingControls {
public:
    enum class Control { Pause, Stop, Restart, Discard };

    /// Waits until they are on the screen.
    static Desktop::Outcome<RecordingControls> await(const Desktop::VirtualDesktop& desktop,
                                                     const Tamrik& tamrik);
    static Desktop::Outcome<void> awaitNone(const Desktop::VirtualDesktop& desktop,
                                            const Tamrik& tamrik);

    static bool isShown(const Desktop::VirtualDesktop& desktop, const Tamrik& tamrik);

    Desktop::Outcome<void> click(Control control) const;
    /// Waits until they say that the recording is paused, or that it goes on.
    Desktop::Outcome<void> awaitPaused(bool paused) const;

    /// The window with its shadow, and the bar in it.
    QRect window() const { return m_window; }
    QRect bar() const;

private:
    RecordingControls(const Desktop::VirtualDesktop& desktop, QRect window);

    int pixels(double points) const;

    const Desktop::VirtualDesktop* m_desktop;
    QRect m_window;
};

/// The middle of the red button in the bar below a selection of `selection`, that starts the
/// recording. Waits until there is one.
Desktop::Outcome<QPoint> awaitRecordButton(const Desktop::VirtualDesktop& desktop, QRect selection);

/// How many pixels of a picture are of a loud red, at the edges of something red too.
int redPixels(const QImage& image);

/// Where the program keeps what it records until it is done, and what is in it.
QString temporaryFolder(const Desktop::VirtualDesktop& desktop);
QStringList temporaryFiles(const Desktop::VirtualDesktop& desktop);

/// A finished film.
struct Film {
    QSize size;
    double seconds = 0;
    bool hasSound = false;

    static Desktop::Outcome<Film> read(const QString& path);
    static Desktop::Outcome<QImage> firstFrame(const QString& path);
    static Desktop::Outcome<QImage> lastFrame(const QString& path);
};
