#pragma once

#include "Movie/Alarm.h"
#include "Movie/Core/BoundedQueue.h"
#include "Movie/Core/Picture.h"
#include "Movie/Encode/VideoEncoder.h"
#include "Movie/Writing.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Makes packets of pictures, in a thread of its own.
class Encoding {
public:
    /// Rings whenever there is room again, and when something fails.
    Encoding(VideoEncoder encoder, Writing& writing, const Alarm& alarm);
    ~Encoding();
    Encoding(const Encoding&) = delete;
    Encoding& operator=(const Encoding&) = delete;

    /// Whether a picture would not have to wait.
    bool hasRoom() const { return m_queue.hasRoom(); }

    /// A copy of a picture, to be drawn on and then added. They are used again and again.
    std::unique_ptr<Picture> copyOf(const Picture& picture);

    /// `time` is in seconds since the movie's start.
    void add(std::unique_ptr<Picture> picture, double time, bool isKey);

    /// How many seconds each picture took that was encoded since the last call.
    std::vector<double> takeEfforts();

    PossibleFailure failure() const;

    /// Encodes what is waiting.
    PossibleFailure finish();

private:
    struct Job {
        std::unique_ptr<Picture> picture;
        std::int64_t ticks;
        bool isKey;
    };

    void run();
    PossibleFailure hand(Result<std::vector<Av::Packet>> packets);

    VideoEncoder m_encoder;
    Writing& m_writing;
    const Alarm& m_alarm;
    BoundedQueue<Job> m_queue;
    std::int64_t m_lastTicks = -1;

    mutable std::mutex m_mutex; // for the next three
    std::vector<std::unique_ptr<Picture>> m_spares;
    std::vector<double> m_efforts;
    PossibleFailure m_failure;
    std::thread m_thread; // last: it uses all of the above
};
