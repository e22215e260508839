#pragma once

#include "ChromeViews.h"
#include "SelectionTypes.h"
#include "Support/Clock.h"

#include <functional>

class ChromeButton;
class NumberLabel;

/// The bar beside a selection: its size, and what can be done with it.
class SelectionHUD : public ChromeBarView {
    Q_OBJECT

public:
    struct Actions {
        /// The user takes the selection; for a GIF when `gif` is set.
        std::function<void(bool gif)> onConfirm;
        std::function<void()> onCancel;
        /// The user wants to drag out another one.
        std::function<void()> onReadjust;
    };

    SelectionHUD(SelectionMode mode, SelectionHooks hooks, Clock clock, Actions actions,
                 QWidget* parent = nullptr);

    /// Says how large the selection is, in points. The bar is then as wide as it needs to be.
    void update(int width, int height);
    using QWidget::update;

    /// Shows the switches as what they stand for is now.
    void refreshToggleTints();

    /// The camera's bubble has come or gone, or none comes.
    void cameraAnswered();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void addForScreenshot();
    void addForRecording();
    void cameraTapped();
    void fit();

    SelectionHooks m_hooks;
    Clock m_clock;
    Actions m_actions;
    int m_awaitedRefreshes = 0; // after taps on the camera's switch
    // Children.
    NumberLabel* m_dimsLabel;
    ChromeButton* m_micButton = nullptr;    // for recordings
    ChromeButton* m_cameraButton = nullptr; // for recordings
};
