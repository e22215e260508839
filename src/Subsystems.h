#pragma once

#include "ChipContent.h"
#include "RecordingTypes.h"
#include "Support/Geometry.h"
#include "TimeRange.h"

#include <QUrl>

#include <functional>
#include <memory>

QT_FORWARD_DECLARE_CLASS(QObject)

/// The subsystems that the controller's command flows use, as far as they are built in: `main`
/// fills them in. A member that is not set makes the step that would call it do nothing. All are
/// called, and all call back, on the main thread.
struct Subsystems {
    /// Records a rectangle to a video file. Without it the state is idle.
    struct Recorder {
        std::function<RecordingState()> state;
        std::function<void(RecordingSession)> start;
        std::function<void()> togglePause;
        std::function<void()> restart;
        std::function<void(bool discard)> stop;
        std::function<bool()> isPaused;
        /// Recorded seconds, pauses not counted.
        std::function<double()> elapsed;
        /// Finishes what recordings that were interrupted have left, and hands over each file.
        std::function<void(std::function<void(const QUrl& file, bool asGIF)> recovered)> recover;
    };

    /// An open editor. The controller keeps it until it reports that its window closed.
    struct Editor {
        QUrl fileURL;
        /// Makes its window key and brings it to the front.
        std::function<void()> makeKeyAndOrderFront;
        /// Set by the controller; the editor calls it with itself when its window closes.
        std::function<void(const Editor* closed)> onClose;
        /// Set by the controller for video editors, which call it with each file that they wrote.
        std::function<void(const QUrl& file)> onFileProduced;
    };

    /// Each makes an editor for a file, or null when the file cannot be opened.
    struct Editors {
        std::function<std::shared_ptr<Editor>(const QUrl& image)> makeImageEditor;
        std::function<std::shared_ptr<Editor>(const QUrl& video)> makeVideoEditor;
    };

    /// A panel that the controller shows and closes.
    struct Panel {
        /// Ends what runs for the panel: its timer, or its camera session.
        std::function<void()> stop;
        std::function<void()> orderFrontRegardless;
        std::function<void()> close;
    };

    struct RecordingControlsCallbacks {
        std::function<bool()> isPaused;
        std::function<double()> elapsed;
        std::function<void()> onPauseResume;
        std::function<void()> onStop;
        std::function<void()> onRestart;
        std::function<void()> onDelete;
    };

    struct Controls {
        /// `near` is the recorded rectangle in global points.
        std::function<std::shared_ptr<Panel>(Geometry::Rect near, RecordingControlsCallbacks)> make;
    };

    enum class CameraAuthorization { notDetermined, restricted, denied, authorized };

    struct Camera {
        using Completion = std::function<void(std::shared_ptr<Panel> panel)>;

        std::function<CameraAuthorization()> authorization;
        /// Makes a bubble that is already shown, or null. To look for a camera takes a moment, or
        /// as long as a driver hangs. Once `request` is deleted none is made, and nobody called.
        std::function<void(QObject& request, Completion)> make;
        /// Asks the user for the camera, then as `make`; null when access was refused.
        std::function<void(QObject& request, Completion)> requestAndShow;
    };

    struct GIF {
        std::function<void(const QUrl& video, TimeRange range, const QUrl& destination,
                           std::function<void(bool succeeded)> completion)>
            exportVideo;
    };

    Recorder recorder;
    LoadChipContent loadChipContent;
    Editors editors;
    Controls controls;
    Camera camera;
    GIF gif;
};
