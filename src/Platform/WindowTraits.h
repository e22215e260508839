#pragma once

#include "Support/Geometry.h"

#include <QRectF>

QT_FORWARD_DECLARE_CLASS(QScreen)
QT_FORWARD_DECLARE_CLASS(QWidget)

/// What Qt's window flags do not say of the program's panels.
namespace Platform {

/// Stacking levels; a window always lies below every open one of a higher level.
enum class WindowLevel {
    StatusPanel = 25,   ///< above ordinary windows, full-screen ones too
    ScreenSaver = 1000, ///< above everything
};

struct WindowTraits {
    WindowLevel level = WindowLevel::StatusPanel;
    /// A click neither activates the program nor takes the keyboard from another one.
    bool nonActivating = false;
    /// The window lets what lies below show through.
    bool translucent = true;
};

/// Makes `window` a frameless panel that is on every desktop and in no task bar or window switcher.
/// Call once, before it is first shown.
void applyTraits(QWidget& window, WindowTraits traits);

/// Puts `window`, which is not yet shown, over the whole of a screen and over no pixel of another
/// one.
void coverScreen(QWidget& window, QScreen& screen);

/// Puts `window` at `frame` (global points), on the screen that its middle is on; near a screen's
/// edge it may reach over. Windows stand on whole points: the bottom left corner is rounded, the
/// size is rounded up.
void setFrame(QWidget& window, Geometry::Rect frame);

/// Says which part of a translucent panel is its `body` (points, y down), with round corners. What
/// is outside is shadow: clicks go through it, and where no compositor runs it is not there. Call
/// again when the window's size or scale, or the compositing, has changed.
void setBody(QWidget& window, const QRectF& body, double cornerRadius);

/// From 0, which cannot be seen, to 1. Without a compositor every window is opaque.
void setOpacity(QWidget& window, double opacity);

/// Shows `window` on top of its level, whether or not the program is active.
void orderFrontRegardless(QWidget& window);

/// Shows an ordinary window above the others and gives it the keyboard, since the user has just
/// asked for it.
void bringToFront(QWidget& window);

/// Gives the keyboard to `window`, which is shown, until it is ordered out or another window gets
/// it. The window of another program that has the focus keeps it.
void makeKey(QWidget& window);

/// Hides `window` at once and gives the keyboard back.
void orderOut(QWidget& window);

} // namespace Platform
