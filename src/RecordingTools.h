#pragma once

#include "Media/MovieExport.h"
#include "Support/Clock.h"
#include "Support/Process.h"
#include "Support/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

/// What a recording is made with.
struct RecordingTools {
    /// The capture tool while it films. Going, it waits for the tool as `waitForEnd` does, and
    /// leaves it to itself then: one that was asked to end does so when its file is complete.
    struct Film {
        /// Asks it to finish its file and to end.
        std::function<void()> interrupt;
        /// Waits for it to end, but not for long; whether it has.
        std::function<bool()> waitForEnd;
        /// What it has said on standard error.
        std::function<QByteArray()> errors;
    };
    using Launch =
        std::function<Result<Film>(const Process::Command& command, std::function<void()> ended)>;
    using Remux =
        std::function<void(const QString& segment, const QString& destination,
                           MovieExport::Completion completion, const Cancellation& cancellation)>;
    using Concatenate =
        std::function<void(const QStringList& segments, const QString& destination,
                           MovieExport::Completion completion, const Cancellation& cancellation)>;

    Clock clock;
    /// Where segments lie until the recording is finished.
    QString folder;
    /// Runs the capture tool. `ended` is called once on the main thread, after this has returned.
    Launch launch;
    Remux remux;
    Concatenate concatenate;

    /// The machine's own.
    static RecordingTools system();
};
