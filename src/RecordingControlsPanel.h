#pragma once

#include "BackgroundDrag.h"
#include "ChromeViews.h"
#include "ScreenWatcher.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"
#include "Symbols.h"

#include <QWidget>

#include <functional>

class ChromeButton;
class NumberLabel;

/// A small floating bar beside a rectangle that is being recorded. It never takes the keyboard; the
/// user can drag it elsewhere.
///
/// Its frame is the bar's, in global points; the shadow around the bar is not part of it.
class RecordingControlsPanel : public QWidget {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<bool()> isPaused;
        /// In seconds.
        std::function<double()> elapsed;
        std::function<void()> onPauseResume;
        std::function<void()> onStop;
        std::function<void()> onRestart;
        std::function<void()> onDelete;
    };

    /// `near` is the recorded rectangle in global points. The panel is not shown yet, but tells the
    /// time from now on.
    RecordingControlsPanel(Geometry::Rect near, Clock clock, Callbacks callbacks);

    Geometry::Rect frame() const { return m_frame; }

    void orderFrontRegardless();

    /// Tells the time no longer.
    void stopTimer();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    class Dot;

    void fillBar();
    ChromeButton* makeButton(Symbols::Symbol symbol, const char* meaning,
                             std::function<void()> action);
    void positionNearRecording();
    /// Comes back from a screen that is no longer there.
    void screensChanged();
    void fit();
    void place(Geometry::Point origin);
    void tellTime();
    void refresh();
    void updateBody();

    Geometry::Rect m_recorded;
    Clock m_clock;
    Callbacks m_callbacks;
    // Children.
    ChromeBarView* m_bar;
    Dot* m_dot;
    NumberLabel* m_timeLabel;
    ChromeButton* m_pauseButton = nullptr;

    ScreenWatcher m_screenWatcher;
    int m_screenChanges = 0;
    Geometry::Rect m_frame;
    bool m_tellsTime = true;
    BackgroundDrag m_drag{*this, [this](Geometry::Point by) {
                              place({m_frame.x + by.x, m_frame.y + by.y});
                          }};
};
