#pragma once

#include "Movie/Core/SoundTimeline.h"
#include "Movie/Encode/SoundEncoder.h"
#include "Movie/Sound/Microphone.h"
#include "Movie/Writing.h"

#include <future>
#include <optional>

/// The movie's sound: what the microphone hears, from the movie's start on.
///
/// It is known only after a moment whether there is any. When there is none, that is said on
/// standard error, and the movie has no such track.
class SoundTrack {
public:
    /// `start` is the movie's, on the monotonic clock. An unwanted track never is.
    SoundTrack(bool isWanted, double start);

    /// What kind of track it is, when that is known; once.
    std::future<TrackKind> kind() { return m_kind.get_future(); }

    /// Begins. Packets go to `writing`.
    void begin(Writing& writing);

    /// Ends at `end`, in seconds since the start.
    PossibleFailure finish(double end);

    /// Sees to it that nothing more is given to the writing, on whatever way out.
    class Stopping {
    public:
        explicit Stopping(SoundTrack& track)
            : m_track(track)
        {
        }
        ~Stopping() { m_track.m_microphone.reset(); }
        Stopping(const Stopping&) = delete;
        Stopping& operator=(const Stopping&) = delete;

    private:
        SoundTrack& m_track;
    };

private:
    void decide(bool isThere);
    void encodeWhatIsReady();
    void hand(Result<std::vector<Av::Packet>> packets);
    double time() const;

    double m_start;
    bool m_isWanted;
    std::promise<TrackKind> m_kind;
    Writing* m_writing = nullptr;

    // The microphone's thread's, until that has been stopped.
    bool m_isDecided = false;
    SoundTimeline m_timeline;
    std::optional<SoundEncoder> m_encoder; // when there is sound
    PossibleFailure m_failure;
    std::optional<Microphone> m_microphone; // last: it uses all of the above
};
