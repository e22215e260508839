#pragma once

#include "Platform/Application.h"
#include "Platform/CaptureTool.h"
#include "Platform/HotKeys.h"
#include "Platform/Pasteboard.h"
#include "Platform/Screens.h"
#include "Platform/WindowTraits.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

class QMenu;
class QSettings;

/// One more implementation of the seam: a desktop that exists only in the test, which arranges it
/// and looks at what the program did to it.
struct FakePlatform {
    struct HotKey {
        std::uint32_t keyCode;
        std::uint32_t modifiers;
        std::uint32_t identifier;
    };

    /// A picture of a screen that the program took.
    struct Look {
        QString screen;
        /// Whether a window of the program was on it.
        bool showsUs;

        friend bool operator==(const Look&, const Look&) = default;
    };

    // The desktop as the program finds it.
    std::vector<Platform::Screen> screens;
    Geometry::Point mouse;
    std::optional<QPixmap> backdrop;
    /// What becomes of a rectangle measured on a screen; it stays as it is when unset.
    std::function<Geometry::Rect(Geometry::Rect, const QScreen*)> nameable;
    Platform::CaptureTool tool;
    std::set<std::uint32_t> refusedKeyCodes;
    bool composited = true;
    bool captureAllowed = true;
    bool loginItem = false;
    QString loginItemError;
    Platform::SingleInstance::Role role = Platform::SingleInstance::Role::First;

    // What the program did.
    std::function<void(std::uint32_t)> hotKeyHandler;
    int handlersInstalled = 0;
    std::map<std::uint32_t, HotKey> hotKeys;
    std::vector<std::uint32_t> askedIdentifiers;
    std::vector<Platform::PasteboardItem> pasteboard;
    std::map<const QWidget*, Platform::WindowTraits> traits;
    /// Global points, of windows that were put somewhere.
    std::map<const QWidget*, Geometry::Rect> frames;
    std::map<const QWidget*, QRectF> bodies;
    /// In the order that they were set.
    std::map<const QWidget*, std::vector<double>> opacities;
    std::vector<Look> looks;
    std::vector<QPointer<QWidget>> front;
    QPointer<QWidget> key;
    std::vector<QPointer<QWidget>> orderedOut;
    std::vector<const QMenu*> poppedUp;
    std::function<void()> startedAgain; ///< what the program does on a further start
    int accessory = 0;
    int activations = 0;
    int captureRequests = 0;
    std::atomic<int> lowPriorities = 0; ///< of threads

    /// The desktop of the running test.
    static FakePlatform& current();
    /// A fresh one: a single screen of 1440 x 900 points.
    static void reset();

    /// Puts other screens in place, and says so as Qt does: more than once.
    void changeScreens(std::vector<Platform::Screen> now);

    /// Presses a registered hot key's keys.
    void press(std::uint32_t keyCode, std::uint32_t modifiers);
};
