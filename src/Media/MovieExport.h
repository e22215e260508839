#pragma once

#include "Media/Cancellation.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>

/// Makes a plain MP4 file of the movies that the capture tool films: its index in front, so that it
/// plays before all of it was read, and readable by its owner alone.
///
/// A file that stands at `destination` is removed as soon as it is known that there is something to
/// take its place, a link itself and not what it points at. The new file has its name when it is
/// complete and on the disk itself: whoever sees it sees all of it, and the segments may be deleted
/// then without a power cut taking both. Until then it has none (a hidden one in the same folder on
/// file systems where every file has a name), so that nothing stays behind of an export that fails,
/// is cancelled or is killed. Sources are only read. Nothing is logged.
namespace MovieExport {

enum class End {
    completed,  ///< The file is in its place.
    failed,     ///< There is no file; `reason` says why. A cancelled export ends so too.
    unreadable, ///< As failed: the disk did not give some of a segment, which it may another time.
    impossible, ///< It was not begun, since the library for video files is missing.
};

/// How an export ended.
struct Outcome {
    End end;
    std::string reason; ///< One line for people, without full stop; empty when it completed.

    bool succeeded() const { return end == End::completed; }
};

/// Called once, on a thread of the export's own: a callback made by Guarded::once brings itself to
/// the main thread.
using Completion = std::function<void(const Outcome& outcome)>;
using OnThread = std::function<void()>;

/// Whether the library for video files is there. The first call loads it, unless something was read
/// already, which takes tens of milliseconds. Any thread.
bool isPossible();

/// Copies the pictures and the sound of `source` without encoding them again, with their turn,
/// colours and timing; sound that MP4 cannot hold becomes AAC. Of a source that is broken off there
/// is what can be played. It is a failure when that is nothing. Takes about a second for half a
/// gigabyte. Any thread.
Outcome remux(const QString& source, const QString& destination,
              const Cancellation& cancellation = {});

/// Plays `segments` into one movie, one right behind the other, encoded again (H.264 without frames
/// that refer to later ones, a key frame at least every second) such that nobody sees a difference.
/// It has the size of the first segment; pictures of another size are fitted into that. Each
/// segment is as long as the longer of its picture and its sound. Sound is silent where a segment
/// has none, and ends with the last segment that has some. Segments in which there is no picture,
/// missing ones too, are left out; it is a failure when none is left, or when a disk fails. Uses
/// every core. Any thread.
Outcome concatenate(const QStringList& segments, const QString& destination,
                    const Cancellation& cancellation = {});

/// Copies what `source` plays from `start` up to `end`, in seconds of FrameReader's time line, into
/// a movie that plays just that: the same pictures to the frame, the same sound to the sample,
/// neither encoded again (sound that MP4 cannot hold becomes AAC). The first picture is the one
/// that shows at `start`, for as long as it still does. What the first pictures refer to comes
/// along and is not shown, which an edit list says. An `end` past the film's is the film's; it is a
/// failure when nothing plays in the range. Of films whose pictures refer to later ones, which ours
/// never do, a few more pictures may show at the end. FFmpeg's players may sound up to an AAC block
/// (21 ms) past the end, since they read of that in whole blocks. Any thread.
Outcome trim(const QString& source, double start, double end, const QString& destination,
             const Cancellation& cancellation = {});

/// The same on a thread of their own. `completion` is called in any case; the end of the program
/// waits for it, so whoever does not want that cancels. Exports do not wait for each other.
/// `onThread` is called on that thread first, before it starts any others.
void remuxInBackground(const QString& source, const QString& destination, Completion completion,
                       const Cancellation& cancellation = {}, OnThread onThread = {});
void concatenateInBackground(const QStringList& segments, const QString& destination,
                             Completion completion, const Cancellation& cancellation = {},
                             OnThread onThread = {});
/// Several trims to one destination happen in the order of the calls.
void trimInBackground(const QString& source, double start, double end, const QString& destination,
                      Completion completion, const Cancellation& cancellation = {});

} // namespace MovieExport
