#pragma once

#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"

#include <optional>

/// Recordings with the program and the real capture tool, on a desktop.
class RecordingFlow : public FlowTest {
protected:
    /// Selects `area()` for a recording.
    void select();

    /// Selects and starts; comes back when there is some film.
    void record(const char* key = "Return");

    /// Waits for the controls, and until there are so many segments, begun or ended.
    void awaitFilming(int segments);
    QStringList segments() const;

    /// The capture tools that the program is running.
    QList<pid_t> tools() const;
    Desktop::Outcome<void> awaitNoTool() const;

    /// Clicks where the mouse is.
    void clickAgain() const;

    /// The one film that there is, once it has its chip.
    Desktop::Outcome<QString> awaitFilm() const;

    Desktop::Outcome<void> awaitRedIcon(bool wanted) const;

    /// Switches the microphone on in the preferences, while the program does not run.
    void wantMicrophone() const;

    /// Starts the program once more, in an environment to which `extra` adds.
    void restart(const QMap<QString, QString>& extra = {});

    /// Starts the program anew in a world where a piece of shell script has mounted what it wants.
    void startWithMounts(const QString& mounts, const QMap<QString, QString>& extra = {});

    static void write(const QString& path, const QByteArray& bytes);
    /// A program of the shell's.
    static void writeScript(const QString& path, const QString& lines);

    QPoint button; // that starts a recording
    std::optional<RecordingControls> controls;
};
