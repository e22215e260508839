#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QtCore/QRect>
#include <QtCore/QString>
#include <QtGui/QColor>

/// The open editor of a film as a user sees it. Pixels are those of the whole desktop.
class VideoEditorOnDesktop {
public:
    enum class Tool { Trim, SaveTrimmed };
    enum class Side { Start, End };

    /// The film that is made for it: each frame is of one grey that tells its number, 30 a second.
    static constexpr int frameCount = 90;
    static constexpr int frameRate = 30;
    /// Makes "film.mp4" in a folder of the desktop's user; its path.
    static Desktop::Outcome<QString> makeFilm(const Desktop::VirtualDesktop& desktop);
    /// The number of a frame, from its grey.
    static int numberOf(QColor grey);
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

    Desktop::Outcome<void> click(Tool tool) const;
    /// The one blue button in the toolbar.
    Desktop::Outcome<void> clickCopyFile() const;

    /// Waits for the handles around the whole film, and looks where it begins and ends.
    Desktop::Outcome<void> awaitHandles();
    /// Draws a handle so that its edge lies at a part of the film, from 0 to 1.
    Desktop::Outcome<void> dragHandle(Side side, double part) const;

private:
    VideoEditorOnDesktop(const Desktop::VirtualDesktop& desktop, std::uint32_t id, QRect window);

    int pixels(double points) const;
    /// From the left edge of the left handle to the right edge of the right one.
    Desktop::Outcome<QRect> handles() const;

    const Desktop::VirtualDesktop* m_desktop;
    std::uint32_t m_id;
    QRect m_window;
    QRect m_wholeFilm; // the handles around it
};
