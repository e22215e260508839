#include "RecordingTools.h"

#include "Platform/ThreadPriority.h"
#include "Support/CaptureFiles.h"

#include <QTimer>

#include <memory>
#include <utility>

using namespace std::chrono_literals;

namespace {

Result<RecordingTools::Film> launchTool(const Process::Command& command,
                                        std::function<void()> ended)
{
    const auto process = std::make_shared<Process>();
    const PossibleFailure failure =
        process->start(command, [watched = std::weak_ptr(process), ended = std::move(ended)] {
            // Whoever is told lets go of the process, in the middle of whose event this is.
            QTimer::singleShot(0ms, [alive = watched.lock()] {});
            ended();
        });
    if (failure)
        return *failure;
    return RecordingTools::Film{.interrupt = [process] { process->interrupt(); },
                                .waitForEnd = [process] { return process->waitForEnd(); },
                                .errors = [process] { return process->errors(); }};
}

} // namespace

// Films are made beside the user's work, maybe the next recording.
RecordingTools RecordingTools::system()
{
    return {.clock = Clock::system(),
            .folder = CaptureFiles::temporaryFolder(),
            .launch = launchTool,
            .remux =
                [](const QString& segment, const QString& destination,
                   MovieExport::Completion completion, const Cancellation& cancellation) {
                    MovieExport::remuxInBackground(segment, destination, std::move(completion),
                                                   cancellation, Platform::lowerThreadPriority);
                },
            .concatenate =
                [](const QStringList& segments, const QString& destination,
                   MovieExport::Completion completion, const Cancellation& cancellation) {
                    MovieExport::concatenateInBackground(segments, destination,
                                                         std::move(completion), cancellation,
                                                         Platform::lowerThreadPriority);
                }};
}
