#pragma once

#include "Support/FileDescriptor.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <memory>
#include <vector>

/// A small file beside a recording's segments that says what they are to become, so that the next
/// start of the program can finish what this one did not.
///
/// Whoever holds the journal has its file locked, until the object goes or the process ends,
/// however it ends. Main thread only.
class RecordingJournal {
public:
    struct Entry {
        /// The MP4 to produce.
        QUrl finalURL;
        bool asGIF = false;
        /// The segments, oldest first, also one that is still being filmed. All lie in the
        /// journal's folder.
        QList<QUrl> segments;
        /// Whether nobody wants the segments any more.
        bool discarded = false;
        /// How often in a row the program has ended without a word while it made the film of what
        /// an earlier one had left, or could not read that.
        int lostAttempts = 0;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    /// A journal of a new name in `folder`. There is no file before the first `write`.
    explicit RecordingJournal(const QString& folder);

    /// Puts `entry` in place of what the file said, in one step. Whether it worked. Waits for the
    /// disk for a tenth of a second; a slower one is left to another thread, and a power cut
    /// meanwhile may cost the file.
    bool write(const Entry& entry);

    /// Notes that nobody wants the segments any more. Whether it worked. Unlike `write` it leaves
    /// the lock with all who share it. Only after a `write`.
    bool discard();

    /// Removes the file, if there is one.
    void remove();

    /// Notes that the film is being made of what an earlier program left. Should this one end
    /// before it has called `endAttempt`, that counts as a lost one.
    void beginAttempt();
    void endAttempt();

    /// However this attempt ends, it counts as a lost one.
    void loseAttempt() { m_isAttemptLost = true; }

    /// Gives the file another name, under which nobody looks for it.
    void putAside();

    /// Is open, and holds the lock; another process that gets it holds the lock too, for as long as
    /// it runs. -1 before the first `write`, different after each.
    int lockedDescriptor() const { return m_file.get(); }

    const QString& path() const { return m_path; }

    struct Found;
    struct Search;

    /// The journals in `folder` that nobody holds any more, now held by the caller. Broken ones are
    /// put aside; those that a newer version of the program has written are left to it.
    static Search claimAbandoned(const QString& folder);

private:
    RecordingJournal(QString path, FileDescriptor file, Entry entry);

    QString m_path;
    FileDescriptor m_file;
    Entry m_entry; // as the file has it
    bool m_isAttemptLost = false;
};

struct RecordingJournal::Found {
    std::unique_ptr<RecordingJournal> journal;
    Entry entry;
};

struct RecordingJournal::Search {
    std::vector<Found> found;
    /// Whether there are journals that somebody else holds.
    bool othersAreHeld = false;
};
