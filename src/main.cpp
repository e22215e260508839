#include "AppDelegate.h"
#include "CameraBubblePanel.h"
#include "ChipThumbnail.h"
#include "Editor/EditorWindowController.h"
#include "Editor/VideoEditorWindowController.h"
#include "GIFExporter.h"
#include "Platform/Application.h"
#include "Platform/CameraAccess.h"
#include "Platform/Defaults.h"
#include "Preferences.h"
#include "RecordingControlsPanel.h"
#include "RecordingManager.h"
#include "Support/Clock.h"
#include "Support/Guarded.h"
#include "Support/Log.h"

#include <QApplication>
#include <QTimer>

#include <clocale>

namespace {

/// How a further start ends, without a word: the one that runs has shown itself, or it could not.
int exitStatus(Platform::SingleInstance::Role role)
{
    return role == Platform::SingleInstance::Role::HandedOver ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// What the application has of an editor of `file`, which keeps the editor; null without one.
template <typename Controller>
std::shared_ptr<Subsystems::Editor> editorOf(const QUrl& file, std::unique_ptr<Controller> opened)
{
    if (!opened)
        return nullptr;
    Controller& controller = *opened;
    // It may end from within one of its own events.
    const std::shared_ptr<Controller> kept(opened.release(),
                                           [](Controller* closed) { closed->deleteLater(); });
    auto editor = std::make_shared<Subsystems::Editor>();
    editor->fileURL = file;
    editor->makeKeyAndOrderFront = [kept] { kept->makeKeyAndOrderFront(); };
    // The editor's owner drops it meanwhile.
    controller.onClose = [handle = std::weak_ptr(editor)](Controller*) {
        if (const auto closed = handle.lock(); closed && closed->onClose)
            closed->onClose(closed.get());
    };
    return editor;
}

std::shared_ptr<Subsystems::Editor> makeImageEditor(const QUrl& image)
{
    return editorOf(image, EditorWindowController::open(image, Clock::system()));
}

/// The end of the program waits for it: the file is wanted, and is there within seconds.
void trim(const QString& source, double start, double end, const QString& destination,
          MovieExport::Completion completion)
{
    MovieExport::trimInBackground(source, start, end, destination, std::move(completion));
}

/// `exportGIF` may be unset.
std::shared_ptr<Subsystems::Editor>
makeVideoEditor(const QUrl& video, const decltype(Subsystems::GIF::exportVideo)& exportGIF)
{
    VideoEditorServices services{.clock = Clock::system(),
                                 .openPlayer = Player::open,
                                 .loader = FilmLoader::system(),
                                 .canTrim = MovieExport::isPossible,
                                 .trim = trim,
                                 .exportGIF = exportGIF};
    auto opened = VideoEditorWindowController::open(video, std::move(services));
    VideoEditorWindowController* const controller = opened.get();
    auto editor = editorOf(video, std::move(opened));
    if (editor) {
        controller->onFileProduced = [handle = std::weak_ptr(editor)](const QUrl& file) {
            if (const auto open = handle.lock(); open && open->onFileProduced)
                open->onFileProduced(file);
        };
    }
    return editor;
}

/// `recorder` outlives what comes back.
Subsystems::Recorder recorderSubsystem(RecordingManager& recorder)
{
    return {
        .state = [&] { return recorder.state(); },
        .start = [&](const RecordingSession& session) { recorder.start(session); },
        .togglePause = [&] { recorder.togglePause(); },
        .restart = [&] { recorder.restart(); },
        .stop = [&](bool discard) { recorder.stop(discard); },
        .isPaused = [&] { return recorder.isPaused(); },
        .elapsed = [&] { return recorder.elapsed(); },
        .recover =
            [&](const RecordingManager::Recovered& recovered) { recorder.recover(recovered); },
    };
}

std::shared_ptr<Subsystems::Panel>
makeRecordingControls(Geometry::Rect near, const Subsystems::RecordingControlsCallbacks& callbacks)
{
    // It is closed from within one of its own buttons.
    const std::shared_ptr<RecordingControlsPanel> panel(
        new RecordingControlsPanel(near, Clock::system(),
                                   {.isPaused = callbacks.isPaused,
                                    .elapsed = callbacks.elapsed,
                                    .onPauseResume = callbacks.onPauseResume,
                                    .onStop = callbacks.onStop,
                                    .onRestart = callbacks.onRestart,
                                    .onDelete = callbacks.onDelete}),
        [](RecordingControlsPanel* closed) { closed->deleteLater(); });
    return std::make_shared<Subsystems::Panel>(
        Subsystems::Panel{.stop = [panel] { panel->stopTimer(); },
                          .orderFrontRegardless = [panel] { panel->orderFrontRegardless(); },
                          .close = [panel] { panel->close(); }});
}

Subsystems::CameraAuthorization cameraAuthorization()
{
    switch (Platform::cameraAuthorization()) {
    case Platform::CameraAuthorization::NotDetermined:
        return Subsystems::CameraAuthorization::notDetermined;
    case Platform::CameraAuthorization::Restricted:
        return Subsystems::CameraAuthorization::restricted;
    case Platform::CameraAuthorization::Denied:
        return Subsystems::CameraAuthorization::denied;
    case Platform::CameraAuthorization::Authorized:
        return Subsystems::CameraAuthorization::authorized;
    }
    Q_UNREACHABLE();
}

std::shared_ptr<Subsystems::Panel> showCameraBubble()
{
    const auto panel = std::make_shared<CameraBubblePanel>(Camera::open, Clock::system());
    panel->orderFrontRegardless();
    return std::make_shared<Subsystems::Panel>(
        Subsystems::Panel{.stop = [panel] { panel->stopSession(); },
                          .orderFrontRegardless = [panel] { panel->orderFrontRegardless(); },
                          .close = [panel] { panel->close(); }});
}

void makeCameraBubble(QObject& request, Subsystems::Camera::Completion completion)
{
    Camera::find(Guarded::once<bool>(&request, [completion = std::move(completion)](bool exists) {
        completion(exists ? showCameraBubble() : nullptr);
    }));
}

void requestCameraBubble(QObject& request, Subsystems::Camera::Completion completion)
{
    Platform::requestCameraAccess(Guarded::once<bool>(
        &request, [&request, completion = std::move(completion)](bool isGranted) {
            if (isGranted)
                makeCameraBubble(request, completion);
            else
                completion(nullptr);
        }));
}

} // namespace

int main(int argc, char** argv)
{
    if (const PossibleFailure failure = Platform::prepareApplication()) {
        Log::line(QString::fromStdString(failure->message));
        return EXIT_FAILURE;
    }
    Platform::SingleInstance instance;
    if (instance.role() != Platform::SingleInstance::Role::First)
        return exitStatus(instance.role());
    QApplication app(argc, argv);
    // No display name: Qt would put it behind the title of every window.
    QApplication::setApplicationName(QStringLiteral("Tamrik"));
    QApplication::setDesktopFileName(QStringLiteral("tamrik"));
    // The application object has taken the locale from the environment; libraries that we call
    // write and read numbers for machines.
    std::setlocale(LC_NUMERIC, "C");
    Platform::quitOnSignals();

    Preferences preferences(Platform::openDefaults());
    Subsystems subsystems;
    subsystems.loadChipContent = ChipThumbnail::loadInBackground;
    subsystems.editors.makeImageEditor = makeImageEditor;
    RecordingManager recorder(RecordingTools::system());
    subsystems.recorder = recorderSubsystem(recorder);
    subsystems.controls.make = makeRecordingControls;
    subsystems.camera = {.authorization = cameraAuthorization,
                         .make = makeCameraBubble,
                         .requestAndShow = requestCameraBubble};
    subsystems.gif.exportVideo = GIFExporter::exportVideo;
    subsystems.editors.makeVideoEditor = [exportGIF =
                                              subsystems.gif.exportVideo](const QUrl& video) {
        return makeVideoEditor(video, exportGIF);
    };
    AppDelegate delegate(preferences, Clock::system(), std::move(subsystems));
    QTimer::singleShot(0, &delegate, [&] { delegate.applicationDidFinishLaunching(instance); });
    return QApplication::exec();
}
