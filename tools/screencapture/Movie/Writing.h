#pragma once

#include "Movie/Alarm.h"
#include "Movie/Core/BoundedQueue.h"
#include "Movie/Encode/MovieStream.h"
#include "Movie/MovieFile.h"

#include <cstdint>
#include <future>
#include <mutex>
#include <thread>

/// What a track says about itself. No parameters: there is no such track.
struct TrackKind {
    Av::Parameters parameters;
    int ticksASecond = 1;
};

/// Puts packets into the file, in a thread of its own.
class Writing {
public:
    /// The file begins when it is known whether there is sound. Rings when something fails.
    Writing(MovieFile file, TrackKind video, std::future<TrackKind> sound, const Alarm& alarm);
    ~Writing();
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    /// Wait while too much is on its way; from any thread.
    void addVideo(Av::Packet packet);
    void addSound(Av::Packet packet);

    /// Why it has stopped writing, if it has.
    PossibleFailure failure() const;

    /// Writes what there is; the last picture shows until `end`, in the picture track's ticks.
    PossibleFailure finish(std::int64_t end);

private:
    enum class Kind { Video, Sound };
    struct Piece {
        Kind kind;
        Av::Packet packet;
    };

    void run();
    PossibleFailure begin();
    PossibleFailure take(Piece piece);
    PossibleFailure takeVideo(Av::Packet packet);
    PossibleFailure releaseHeld(std::int64_t until);
    PossibleFailure writeFragment();
    PossibleFailure writeEnd();

    MovieFile m_file;
    TrackKind m_video;
    std::future<TrackKind> m_sound;
    const Alarm& m_alarm;
    BoundedQueue<Piece> m_queue;

    // The thread's own.
    std::optional<MovieStream> m_stream;
    Av::Packet m_held; // how long it shows is known when the next one is there
    std::int64_t m_fragmentStart = 0;

    std::int64_t m_end = 0; // set before the queue is closed
    mutable std::mutex m_mutex;
    PossibleFailure m_failure; // under the mutex
    std::thread m_thread;      // last: it uses all of the above
};
