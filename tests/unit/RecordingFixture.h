#pragma once

#include "RecordingManager.h"

#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/TestLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Records with a capture tool and a video library that exist only here and do what the test says.
class RecordingFixture : public testing::Test {
protected:
    RecordingFixture()
    {
        FakePlatform::reset();
        FakePlatform::current().tool = {QStringLiteral("/tools/screencapture"),
                                        {{QStringLiteral("SCREENS"), QStringLiteral("one")}}};
        QDir(folder.path()).mkdir(QStringLiteral("segments"));
        QDir(folder.path()).mkdir(QStringLiteral("captures"));
        makeManager();
    }

    /// One run of the capture tool.
    struct Run {
        Process::Command command;
        std::function<void()> ended;
        int interrupts = 0;
        QByteArray errors;
        bool endsInTime = true; ///< When it is waited for.

        QString file() const { return command.arguments.back(); }
    };

    /// One use of the video library.
    struct Export {
        QStringList sources;
        QString destination;
        MovieExport::Completion completion;
        Cancellation cancellation;
        bool copies = false;
    };

    void makeManager()
    {
        manager.reset();
        manager = std::make_unique<RecordingManager>(RecordingTools{
            .clock = clock.clock(),
            .folder = segmentFolder(),
            .launch = [this](const Process::Command& command,
                             std::function<void()> ended) -> Result<RecordingTools::Film> {
                if (!launchError.empty())
                    return Failure{launchError};
                const auto run = std::make_shared<Run>(Run{command, std::move(ended), 0, {}, true});
                runs.push_back(run);
                return RecordingTools::Film{.interrupt = [run] { ++run->interrupts; },
                                            .waitForEnd = [run] { return run->endsInTime; },
                                            .errors = [run] { return run->errors; }};
            },
            .remux =
                [this](const QString& source, const QString& destination,
                       MovieExport::Completion completion, const Cancellation& cancellation) {
                    exports.push_back(
                        {{source}, destination, std::move(completion), cancellation, true});
                },
            .concatenate =
                [this](const QStringList& sources, const QString& destination,
                       MovieExport::Completion completion, const Cancellation& cancellation) {
                    exports.push_back(
                        {sources, destination, std::move(completion), cancellation, false});
                },
        });
    }

    RecordingSession session(bool mic = false, bool clicks = true)
    {
        return {.rect = {100, 200, 300.4, 150.6},
                .micEnabled = mic,
                .showClicks = clicks,
                .finalURL = QUrl::fromLocalFile(finalPath()),
                .started = [this] { ++startedCalls; },
                .completion = [this](const QUrl& file) { results.append(file); }};
    }

    void start() { manager->start(session()); }

    Run& run(std::size_t index) { return *runs.at(index); }

    /// The newest run of the tool ends; it has left a film unless the test says otherwise.
    void end(bool leavesFilm = true)
    {
        Run& last = *runs.back();
        if (leavesFilm)
            write(last.file(), "film");
        last.ended();
    }

    /// Records for a while and comes to rest in a pause.
    void recordAndPause()
    {
        manager->togglePause();
        end();
    }

    /// The newest export ends, and has left its file if it succeeded.
    void complete(MovieExport::End how, const std::string& reason = {})
    {
        const Export newest = exports.back();
        if (how == MovieExport::End::completed)
            write(newest.destination, "mp4");
        newest.completion({how, reason});
    }

    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
        file.write(bytes);
    }

    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString segmentFolder() const { return folder.filePath(QStringLiteral("segments")); }
    QString finalPath() const
    {
        return folder.filePath(QStringLiteral("captures/Tamrik Rec 1.mp4"));
    }
    QString fallbackPath() const
    {
        return folder.filePath(QStringLiteral("captures/Tamrik Rec 1.mov"));
    }

    QStringList named(const char* pattern) const
    {
        return QDir(segmentFolder()).entryList({QString::fromLatin1(pattern)}, QDir::Files);
    }
    QStringList segmentFiles() const { return named("tamrik-seg-*.mov"); }
    QStringList journals() const { return named("tamrik-rec-*.json"); }
    /// Nothing is left of a recording but what it was to become.
    bool isTidy() const { return QDir(segmentFolder()).isEmpty(); }

    QTemporaryDir folder;
    FakeClock clock;
    std::vector<std::shared_ptr<Run>> runs;
    std::vector<Export> exports;
    std::string launchError;
    int startedCalls = 0;
    QList<QUrl> results;
    std::unique_ptr<RecordingManager> manager;
};

namespace testing::internal {

inline void PrintTo(RecordingState state, std::ostream* out)
{
    *out << static_cast<int>(state);
}

} // namespace testing::internal
