#include "fakes/FakePlatform.h"

#include "Platform/Backdrop.h"
#include "Platform/CapturePermission.h"
#include "Platform/Colors.h"
#include "Platform/Compositing.h"
#include "Platform/LoginItem.h"
#include "Platform/Menus.h"
#include "Platform/ThreadPriority.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {

std::unique_ptr<FakePlatform>& instance()
{
    static auto platform = std::make_unique<FakePlatform>();
    return platform;
}

} // namespace

FakePlatform& FakePlatform::current()
{
    return *instance();
}

void FakePlatform::reset()
{
    // The handler is installed once in a process, so it stays.
    const auto handler = current().hotKeyHandler;
    instance() = std::make_unique<FakePlatform>();
    current().hotKeyHandler = handler;
    current().screens = {{.name = QStringLiteral("Fake"),
                          .frame = {0, 0, 1440, 900},
                          .visibleFrame = {0, 0, 1440, 875},
                          .scale = 1,
                          .handle = QGuiApplication::primaryScreen()}};
}

void FakePlatform::changeScreens(std::vector<Platform::Screen> now)
{
    screens = std::move(now);
    Q_EMIT qGuiApp->primaryScreenChanged(QGuiApplication::primaryScreen());
    const auto handles = QGuiApplication::screens();
    for (QScreen* screen : handles)
        Q_EMIT screen->geometryChanged(screen->geometry());
}

void FakePlatform::press(std::uint32_t keyCode, std::uint32_t modifiers)
{
    const auto registered = hotKeys; // a press may change them
    for (const auto& [reference, hotKey] : registered) {
        if (hotKey.keyCode == keyCode && hotKey.modifiers == modifiers)
            hotKeyHandler(hotKey.identifier);
    }
}

namespace Platform {

PossibleFailure prepareApplication()
{
    return std::nullopt;
}

class SingleInstance::Implementation {};

SingleInstance::SingleInstance() = default;

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::role() const
{
    return FakePlatform::current().role;
}

void SingleInstance::onStartedAgain(std::function<void()> startedAgain)
{
    FakePlatform::current().startedAgain = std::move(startedAgain);
}

void becomeAccessory()
{
    ++FakePlatform::current().accessory;
}

void activateIgnoringOthers()
{
    ++FakePlatform::current().activations;
}

std::optional<QPixmap> frozenBackdrop(const Screen& screen)
{
    auto& platform = FakePlatform::current();
    platform.looks.push_back({screen.name, std::any_of(platform.front.begin(), platform.front.end(),
                                                       [&](const QPointer<QWidget>& window) {
                                                           return window && window->isVisible() &&
                                                                  window->screen() == screen.handle;
                                                       })});
    return platform.backdrop;
}

bool preflightScreenCaptureAccess()
{
    return FakePlatform::current().captureAllowed;
}

bool requestScreenCaptureAccess()
{
    ++FakePlatform::current().captureRequests;
    return false;
}

void lowerThreadPriority()
{
    ++FakePlatform::current().lowPriorities;
}

CaptureTool captureTool()
{
    return FakePlatform::current().tool;
}

void setHotKeyHandler(std::function<void(std::uint32_t)> handler)
{
    ++FakePlatform::current().handlersInstalled;
    FakePlatform::current().hotKeyHandler = std::move(handler);
}

std::optional<HotKeyReference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              std::uint32_t identifier)
{
    auto& platform = FakePlatform::current();
    platform.askedIdentifiers.push_back(identifier);
    if (platform.refusedKeyCodes.contains(keyCode))
        return std::nullopt;
    platform.hotKeys[identifier] = {keyCode, modifiers, identifier};
    return HotKeyReference{identifier};
}

void unregisterHotKey(HotKeyReference reference)
{
    FakePlatform::current().hotKeys.erase(reference.value);
}

bool loginItemEnabled()
{
    return FakePlatform::current().loginItem;
}

PossibleFailure enableLoginItem()
{
    auto& platform = FakePlatform::current();
    if (!platform.loginItemError.isEmpty())
        return Failure{platform.loginItemError.toStdString()};
    platform.loginItem = true;
    return std::nullopt;
}

PossibleFailure disableLoginItem()
{
    auto& platform = FakePlatform::current();
    if (!platform.loginItemError.isEmpty())
        return Failure{platform.loginItemError.toStdString()};
    platform.loginItem = false;
    return std::nullopt;
}

void popUpAtPointer(QMenu& menu, std::function<bool()> isWanted)
{
    if (!isWanted())
        return;
    FakePlatform::current().poppedUp.push_back(&menu);
}

bool isComposited()
{
    return FakePlatform::current().composited;
}

void onCompositingChanged(QObject*, std::function<void()>) {}

void setFrame(QWidget& window, Geometry::Rect frame)
{
    FakePlatform::current().frames[&window] = frame;
}

void setBody(QWidget& window, const QRectF& body, double)
{
    FakePlatform::current().bodies[&window] = body;
}

QColor systemRed()
{
    return {0xFF, 0x3B, 0x30};
}

QColor systemOrange()
{
    return {0xFF, 0x95, 0x00};
}

QColor controlAccentColor()
{
    return {0x0A, 0x84, 0xFF};
}

QColor separatorColor()
{
    return {0x40, 0x41, 0x42};
}

QColor underPageColor()
{
    return {0x1E, 0x20, 0x24};
}

void bringToFront(QWidget& window)
{
    FakePlatform::current().front.emplace_back(&window);
    window.show();
}

void setOpacity(QWidget& window, double opacity)
{
    FakePlatform::current().opacities[&window].push_back(opacity);
}

void writePasteboard(const PasteboardItem& item)
{
    FakePlatform::current().pasteboard.push_back(item);
}

void prepareDrag() {}

std::vector<Screen> screens()
{
    return FakePlatform::current().screens;
}

Geometry::Point mouseLocation()
{
    return FakePlatform::current().mouse;
}

Geometry::Rect nameable(Geometry::Rect rect, const QScreen* screen)
{
    const auto& answer = FakePlatform::current().nameable;
    return answer ? answer(rect, screen) : rect;
}

void coverScreen(QWidget& window, QScreen& screen)
{
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
}

void applyTraits(QWidget& window, WindowTraits traits)
{
    FakePlatform::current().traits[&window] = traits;
    window.setWindowFlags(Qt::FramelessWindowHint);
    window.setAttribute(Qt::WA_TranslucentBackground, traits.translucent);
}

void orderFrontRegardless(QWidget& window)
{
    FakePlatform::current().front.emplace_back(&window);
    window.show();
}

void makeKey(QWidget& window)
{
    FakePlatform::current().key = &window;
}

void orderOut(QWidget& window)
{
    FakePlatform::current().orderedOut.emplace_back(&window);
    window.hide();
}

} // namespace Platform
