#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QtCore/QList>
#include <QtCore/QRect>
#include <QtCore/QString>
#include <QtGui/QColor>

/// The open editor of a film as a user sees it. Pixels are those of the whole desktop.
class VideoEditorOnDesktop {
public:
    enum class Tool { Trim, SaveTrimmed, ExportGIF, CopyFile };
    /// What lies over the bottom of the picture: of the player, and of the handles.
    enum class Control { Play, Mute, ConfirmTrimming, CancelTrimming };
    enum class Side { Start, End };

    /// The film that is made for it: each frame is of one grey that tells its number. They are 30 a
    /// second, and every other one shows three times as long as the next. It has sound.
    static constexpr int frameCount = 90;
    static constexpr int frameRate = 30;
    /// Makes "film.mp4" in a folder of the desktop's user; its path.
    static Desktop::Outcome<QString> makeFilm(const Desktop::VirtualDesktop& desktop);
    /// The number of a frame, from its grey.
    static int numberOf(QColor grey);
    /// When each frame of a film begins, in seconds, as others read it.
    static Desktop::Outcome<QList<double>> frameTimes(const QString& path);
    /// Has the preferences say that a file is the newest capture. For before the program starts.
    static Desktop::Outcome<void> makeLastCapture(const Desktop::VirtualDesktop& desktop,
                                                  const QString& path);

    /// Waits until the editor of the film at `path` is the active window.
    static Desktop::Outcome<VideoEditorOnDesktop> await(const Desktop::VirtualDesktop& desktop,
                                                        const QString& path);

    std::uint32_t id() const { return m_id; }
    QString title() const;

    /// The number of the frame that shows; none's is negative.
    int frame() const;
    Desktop::Outcome<void> awaitFrame(int number, int tolerance = 0) const;
    /// Waits until the film does not move any more; the number of the frame that it stands on.
    Desktop::Outcome<int> awaitStanding() const;

    Desktop::Outcome<void> click(Tool tool) const;
    Desktop::Outcome<void> click(Control control) const;

    /// Of a film that stands on its last frame: draws the knob of the player's position back to a
    /// part of its way, from 0 to 1.
    Desktop::Outcome<void> dragPosition(double part) const;
    Desktop::Outcome<void> clickVolume(double part) const;
    /// Waits until the slider of the volume shows that, to within a pixel or two.
    Desktop::Outcome<void> awaitVolume(double part) const;

    /// Waits for the handles around the whole film, and looks where it begins and ends.
    Desktop::Outcome<void> awaitHandles();
    /// Draws a handle so that its edge lies at a part of the film, from 0 to 1.
    Desktop::Outcome<void> dragHandle(Side side, double part) const;

private:
    VideoEditorOnDesktop(const Desktop::VirtualDesktop& desktop, std::uint32_t id, QRect window);

    int pixels(double points) const;
    /// In pixels of the desktop, from points of the window; negative ones from its right and
    /// bottom.
    QPoint at(double x, double y) const;
    /// What is blue in a part of the window that is given by two such points.
    Desktop::Outcome<QRect> blueBetween(QPoint from, QPoint to) const;
    /// From the left edge of the left handle to the right edge of the right one.
    Desktop::Outcome<QRect> handles() const;

    const Desktop::VirtualDesktop* m_desktop;
    std::uint32_t m_id;
    QRect m_window;
    QRect m_wholeFilm; // the handles around it
};
