#include "AppDelegate.h"

#include "CaptureKind.h"
#include "Chrome.h"
#include "Platform/Application.h"
#include "Platform/CapturePermission.h"
#include "Platform/Pasteboard.h"
#include "Platform/Screens.h"
#include "Preferences.h"
#include "SelectionSession.h"
#include "Support/CaptureFiles.h"
#include "Support/Guarded.h"
#include "Support/Log.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t annotateKeyCode = 14; // E
constexpr std::uint32_t recordKeyCode = 15;   // R
constexpr std::uint32_t fixedModifiers =
    Platform::HotKeyModifier::option | Platform::HotKeyModifier::shift;

/// How long after the start the overlay's font is loaded, so that the first overlay need not wait
/// for it, nor the icon in the status area.
constexpr auto fontDelay = 250ms;

/// Hands a file or folder to the user's desktop. One that does not exist opens nothing.
void openInWorkspace(const QUrl& url)
{
    if (CaptureFiles::exists(url))
        QDesktopServices::openUrl(url);
}

} // namespace

AppDelegate::AppDelegate(Preferences& preferences, Clock clock, Subsystems subsystems)
    : m_preferences(preferences)
    , m_clock(clock)
    , m_subsystems(std::move(subsystems))
    , m_capture(clock)
    , m_chips(m_preferences, clock, m_subsystems.loadChipContent)
    , m_recording(m_preferences, std::move(clock), m_subsystems,
                  {.setRecording = [this](bool recording) { updateRecordingUI(recording); },
                   .deliver = [this](const QUrl& file) { deliver(file); }})
    , m_camera(m_subsystems.camera, [this] { updateCameraUI(); })
{
}

AppDelegate::~AppDelegate()
{
    // A selection must not outlive what its completion calls.
    SelectionSession::current.reset();
}

void AppDelegate::applicationDidFinishLaunching(Platform::SingleInstance& instance)
{
    Platform::becomeAccessory();
    m_chips.onEdit = [this](const QUrl& file) { openEditor(file); };
    setupStatusItem();
    registerHotKeys();
    if (!Platform::preflightScreenCaptureAccess())
        (void)Platform::requestScreenCaptureAccess(); // the program works on whatever the answer is
    instance.onStartedAgain(Guarded::any(this, [this] { applicationStartedAgain(); }));
    m_recording.recover();
    m_clock.after(fontDelay, [] { Chrome::loadFont(); });
}

void AppDelegate::applicationStartedAgain()
{
    m_statusMenu->popUp();
}

void AppDelegate::setupStatusItem()
{
    m_statusMenu = std::make_unique<StatusMenu>(
        m_preferences, StatusMenu::Commands{
                           .captureArea = [this] { captureArea(); },
                           .toggleRecording = [this] { toggleRecording(); },
                           .annotateLast = [this] { annotateLast(); },
                           .openFolder = [this] { openFolder(); },
                           .toggleCamera = [this] { toggleCamera(); },
                           .toggleMic = [this] { toggleMic(); },
                           .hasLastCapture = [this] { return lastCaptureURL().has_value(); },
                           .mayPopUp = [] { return !SelectionSession::current; },
                           .chipPositionChanged = [this] { m_chips.layout(true); },
                       });
    m_statusMenu->show();
}

void AppDelegate::registerHotKeys()
{
    m_hotKey = HotKey::create(m_preferences.hotKeyCode(), m_preferences.hotKeyModifiers(),
                              Guarded::any(this, [this] { captureArea(); }));
    if (!m_hotKey) {
        Log::line(QStringLiteral("hotkey registration failed (already taken by another app?)"));
    }
    m_annotateHotKey = HotKey::create(annotateKeyCode, fixedModifiers,
                                      Guarded::any(this, [this] { annotateLast(); }));
    m_recordHotKey = HotKey::create(recordKeyCode, fixedModifiers,
                                    Guarded::any(this, [this] { toggleRecording(); }));
}

// Selection

SelectionHooks AppDelegate::selectionHooks()
{
    return {
        .isMicOn = Guarded::query(this, false, [this] { return m_preferences.recordMic(); }),
        .toggleMic = Guarded::any(this, [this] { toggleMic(); }),
        .isCameraOn = Guarded::query(this, false, [this] { return m_camera.isOn(); }),
        .toggleCamera = Guarded::any(this, [this] { toggleCamera(); }),
    };
}

void AppDelegate::select(SelectionMode mode, std::function<void(const SelectionResult&)> picked)
{
    if (SelectionSession::current)
        return;
    using Picked = std::optional<SelectionResult>;
    SelectionSession::current = SelectionSession::open(
        mode, selectionHooks(), m_clock,
        Guarded::once<const Picked&>(this, [picked = std::move(picked)](const Picked& result) {
            if (result)
                picked(*result);
        }));
}

// Screenshots

void AppDelegate::captureArea()
{
    select(SelectionMode::screenshot, [this](const SelectionResult& result) {
        if (result.kind != SelectionResult::Kind::screenshot)
            return;
        m_capture.captureRect(result.rect,
                              Guarded::once<const QUrl&>(
                                  this, [this](const QUrl& file) { screenshotFinished(file); }));
    });
}

void AppDelegate::screenshotFinished(const QUrl& file)
{
    if (file.isEmpty())
        return;
    Platform::writePasteboard({.png = CaptureFiles::contents(file), .fileURL = file});
    setLastCaptureURL(file);
    m_chips.add(file);
}

std::optional<QUrl> AppDelegate::lastCaptureURL() const
{
    const auto path = m_preferences.lastCapturePath();
    if (!path || !QFileInfo::exists(*path))
        return std::nullopt;
    return QUrl::fromLocalFile(*path);
}

void AppDelegate::setLastCaptureURL(const QUrl& file)
{
    m_preferences.setLastCapturePath(file.toLocalFile());
}

// Recordings

void AppDelegate::toggleRecording()
{
    if (!m_recording.isIdle()) {
        m_recording.stop();
        return;
    }
    select(SelectionMode::record, [this](const SelectionResult& result) {
        switch (result.kind) {
        case SelectionResult::Kind::screenshot:
            return;
        case SelectionResult::Kind::recordVideo:
            m_recording.start(result.rect, false);
            return;
        case SelectionResult::Kind::recordGIF:
            m_recording.start(result.rect, true);
            return;
        }
    });
}

void AppDelegate::deliver(const QUrl& file)
{
    Platform::writePasteboard({.png = std::nullopt, .fileURL = file});
    m_chips.add(file);
}

void AppDelegate::updateRecordingUI(bool recording)
{
    if (m_statusMenu)
        m_statusMenu->setRecording(recording);
}

// Microphone and camera

void AppDelegate::toggleMic()
{
    m_preferences.setRecordMic(!m_preferences.recordMic());
    if (m_statusMenu)
        m_statusMenu->setMicOn(m_preferences.recordMic());
}

void AppDelegate::toggleCamera()
{
    m_camera.toggle();
}

void AppDelegate::updateCameraUI()
{
    if (m_statusMenu)
        m_statusMenu->setCameraShown(m_camera.isOn());
    if (SelectionSession::current)
        SelectionSession::current->cameraAnswered();
}

// Files and editors

void AppDelegate::annotateLast()
{
    if (const auto file = lastCaptureURL())
        openEditor(*file);
}

void AppDelegate::openFolder()
{
    openInWorkspace(QUrl::fromLocalFile(CaptureFiles::folder()));
}

void AppDelegate::openEditor(const QUrl& file)
{
    switch (captureKind(file)) {
    case CaptureKind::video:
        openVideoEditor(file);
        return;
    case CaptureKind::gif:
        openInWorkspace(file);
        return;
    case CaptureKind::picture:
    case CaptureKind::other:
        openImageEditor(file);
        return;
    }
}

void AppDelegate::openImageEditor(const QUrl& file)
{
    m_editors.open(file, m_subsystems.editors.makeImageEditor, {});
}

void AppDelegate::openVideoEditor(const QUrl& file)
{
    m_videoEditors.open(
        file, m_subsystems.editors.makeVideoEditor,
        Guarded::any<const QUrl&>(this, [this](const QUrl& produced) { deliver(produced); }));
}
