#include "RecordingTools.h"

#include "Support/CaptureFiles.h"

#include <QTimer>

#include <memory>

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

RecordingTools RecordingTools::system()
{
    return {.clock = Clock::system(),
            .folder = CaptureFiles::temporaryFolder(),
            .launch = launchTool,
            .remux = MovieExport::remuxInBackground,
            .concatenate = MovieExport::concatenateInBackground};
}
