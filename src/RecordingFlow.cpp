#include "RecordingFlow.h"

#include "Platform/Screens.h"
#include "Preferences.h"
#include "Support/CaptureFiles.h"
#include "Support/Guarded.h"
#include "Support/Sibling.h"

#include <limits>
#include <utility>

namespace {

template <typename Operation, typename... Args>
void callIfSet(const Operation& operation, Args... args)
{
    if (operation)
        operation(args...);
}

} // namespace

RecordingFlow::RecordingFlow(Preferences& preferences, Clock clock, const Subsystems& subsystems,
                             Outside outside)
    : m_preferences(preferences)
    , m_clock(std::move(clock))
    , m_subsystems(subsystems)
    , m_outside(std::move(outside))
{
}

bool RecordingFlow::isIdle() const
{
    const auto& state = m_subsystems.recorder.state;
    return !state || state() == RecordingState::idle;
}

void RecordingFlow::stop()
{
    callIfSet(m_subsystems.recorder.stop, false);
}

void RecordingFlow::start(Geometry::Rect rect, bool asGIF)
{
    if (!m_subsystems.recorder.start)
        return;
    if (!isIdle() || Platform::screens().empty()) {
        finished({}, asGIF);
        return;
    }
    CaptureFiles::createFolder();
    m_subsystems.recorder.start({
        .rect = rect,
        .micEnabled = m_preferences.recordMic() && !asGIF,
        .showClicks = true,
        .finalURL = CaptureFiles::newRecording(m_clock),
        .asGIF = asGIF,
        .started = Guarded::once(this, [this, rect] { started(rect); }),
        .completion = Guarded::once<const QUrl&>(
            this, [this, asGIF](const QUrl& file) { finished(file, asGIF); }),
    });
}

void RecordingFlow::started(Geometry::Rect rect)
{
    m_outside.setRecording(true);
    showControls(rect);
}

void RecordingFlow::finished(const QUrl& file, bool asGIF)
{
    m_outside.setRecording(false);
    closeControls();
    if (!file.isEmpty())
        handOver(file, asGIF);
}

void RecordingFlow::recover()
{
    callIfSet(m_subsystems.recorder.recover,
              Guarded::any<const QUrl&, bool>(
                  this, [this](const QUrl& file, bool asGIF) { handOver(file, asGIF); }));
}

void RecordingFlow::handOver(const QUrl& file, bool asGIF)
{
    if (!asGIF || !m_subsystems.gif.exportVideo) {
        m_outside.deliver(file);
        return;
    }
    const QUrl gif = sibling(file, QStringLiteral(".gif"));
    const auto converted = [this, file, gif](bool succeeded) {
        m_outside.deliver(succeeded ? gif : file);
    };
    m_subsystems.gif.exportVideo(file,
                                 {.start = 0, .duration = std::numeric_limits<double>::infinity()},
                                 gif, Guarded::once<bool>(this, converted));
}

void RecordingFlow::showControls(Geometry::Rect near)
{
    closeControls();
    if (m_subsystems.controls.make)
        m_controls = m_subsystems.controls.make(near, controlsCallbacks());
    if (m_controls)
        m_controls->orderFrontRegardless();
}

void RecordingFlow::closeControls()
{
    if (!m_controls)
        return;
    const auto controls = std::exchange(m_controls, nullptr);
    controls->stop();
    controls->close();
}

Subsystems::RecordingControlsCallbacks RecordingFlow::controlsCallbacks()
{
    const auto& recorder = m_subsystems.recorder;
    return {
        .isPaused = Guarded::query(
            this, false, [&recorder] { return recorder.isPaused && recorder.isPaused(); }),
        .elapsed = Guarded::query(
            this, 0.0, [&recorder] { return recorder.elapsed ? recorder.elapsed() : 0.0; }),
        .onPauseResume = Guarded::any(this, [&recorder] { callIfSet(recorder.togglePause); }),
        .onStop = Guarded::any(this, [&recorder] { callIfSet(recorder.stop, false); }),
        .onRestart = Guarded::any(this, [&recorder] { callIfSet(recorder.restart); }),
        .onDelete = Guarded::any(this, [&recorder] { callIfSet(recorder.stop, true); }),
    };
}
