#pragma once

#include "BackgroundDrag.h"
#include "Media/Camera.h"
#include "ScreenWatcher.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QPixmap>
#include <QWidget>

#include <functional>
#include <memory>

/// A round mirror that floats above all windows and shows the camera's live picture. It never takes
/// the keyboard; the user can drag it anywhere.
///
/// Its frame is the circle's, in global points; the shadow around it is not part of it.
class CameraBubblePanel : public QWidget {
    Q_OBJECT

public:
    /// As Camera::open.
    using OpenCamera =
        std::function<std::unique_ptr<CameraFeed>(int side, std::function<void()> changed)>;

    static constexpr double diameter = 200;

    /// In the main screen's bottom right corner, with the camera started. The panel is not shown
    /// yet.
    CameraBubblePanel(const OpenCamera& openCamera, Clock clock);
    ~CameraBubblePanel() override;

    Geometry::Rect frame() const { return m_frame; }

    void orderFrontRegardless();

    /// Ends the camera, without waiting for it. The panel stays, black.
    void stopSession();
    bool hasSession() const { return m_session != nullptr; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void placeInCorner();
    void place(Geometry::Point origin);
    /// Comes back from a screen that is no longer there.
    void screensChanged();
    void fitToScreen();
    /// The circle in the window, in points.
    QRect body() const;
    void paintCircle(QPainter& painter) const;

    Clock m_clock;
    Geometry::Rect m_frame{0, 0, diameter, diameter};
    std::unique_ptr<CameraFeed> m_session;
    QImage m_picture;   // as the camera sees it; null while there is none
    double m_scale = 0; // pixels a point that everything was told of
    QPixmap m_shadow;   // of the whole window, at that scale
    ScreenWatcher m_screenWatcher;
    int m_screenChanges = 0;
    BackgroundDrag m_drag{*this, [this](Geometry::Point by) {
                              place({m_frame.x + by.x, m_frame.y + by.y});
                          }};
};
