#pragma once

#include "CameraSwitch.h"
#include "CaptureManager.h"
#include "ChipManager.h"
#include "HotKey.h"
#include "OpenEditors.h"
#include "RecordingFlow.h"
#include "SelectionTypes.h"
#include "StatusMenu.h"
#include "Subsystems.h"
#include "Support/Clock.h"

#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

class Preferences;

namespace Platform {
class SingleInstance;
}

/// The app controller: owns what lives as long as the program and runs every command flow. Main
/// thread only.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// `preferences` is borrowed and outlives the controller.
    AppDelegate(Preferences& preferences, Clock clock, Subsystems subsystems);
    ~AppDelegate() override;

    /// Makes the program an accessory, builds the status menu, registers the hot keys, asks for the
    /// screen once, and from now on opens the menu when the user starts the program again. Call it
    /// once, when the event loop is about to run. `instance` is borrowed and outlives the
    /// controller.
    void applicationDidFinishLaunching(Platform::SingleInstance& instance);

    // The commands of the menu, the hot keys and the selection's bar.
    void captureArea();
    /// Starts a selection for a recording, or stops the recording that runs.
    void toggleRecording();
    void toggleMic();
    void toggleCamera();
    void annotateLast();
    void openFolder();

    /// Opens the editor for a file, by the kind that its extension names.
    void openEditor(const QUrl& file);

    /// The newest screenshot, if its file still exists.
    std::optional<QUrl> lastCaptureURL() const;

    StatusMenu* statusMenu() const { return m_statusMenu.get(); }
    const CaptureManager& capture() const { return m_capture; }
    const ChipManager& chips() const { return m_chips; }
    bool hasCameraBubble() const { return m_camera.isOn(); }
    bool hasRecordingControls() const { return m_recording.hasControls(); }

private:
    void setupStatusItem();
    void registerHotKeys();
    void applicationStartedAgain();

    SelectionHooks selectionHooks();
    /// Opens a selection; does nothing while one is open. `picked` is called with what the user
    /// picked.
    void select(SelectionMode mode, std::function<void(const SelectionResult&)> picked);

    void setLastCaptureURL(const QUrl& file);
    void screenshotFinished(const QUrl& file);

    /// Puts a finished recording, or a file that an editor wrote, on the pasteboard and shows its
    /// chip.
    void deliver(const QUrl& file);
    void updateRecordingUI(bool recording);

    void updateCameraUI();

    void openImageEditor(const QUrl& file);
    void openVideoEditor(const QUrl& file);

    Preferences& m_preferences;
    Clock m_clock;
    Subsystems m_subsystems;
    std::unique_ptr<StatusMenu> m_statusMenu;
    std::unique_ptr<HotKey> m_hotKey;
    std::unique_ptr<HotKey> m_annotateHotKey;
    std::unique_ptr<HotKey> m_recordHotKey;
    CaptureManager m_capture;
    ChipManager m_chips;
    RecordingFlow m_recording;
    OpenEditors m_editors;
    OpenEditors m_videoEditors;
    CameraSwitch m_camera;
};
