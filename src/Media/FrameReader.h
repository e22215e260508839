#pragma once

#include "Media/Cancellation.h"
#include "Support/Result.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

/// How long a file may keep its reader busy.
struct FrameReaderLimits {
    /// What an opening, and each frame, may take at most; then it is a failure.
    std::chrono::milliseconds time{20'000};
    /// Ends either as a failure too. A cancelled reader stays so.
    Cancellation cancellation;
};

/// The pictures of a video file (MOV, MP4, Matroska, WebM; the content decides, not the name).
///
/// One thread at a time, any thread. Nothing but the file itself is ever opened, nothing is logged.
class FrameReader {
public:
    /// Reads the header and the first frame: a file without one is a failure, as is anything that
    /// is no video in a regular file.
    static Result<FrameReader> open(const QString& path, const FrameReaderLimits& limits = {});

    FrameReader(FrameReader&&) noexcept;
    FrameReader& operator=(FrameReader&&) noexcept;
    ~FrameReader();

    /// Upright, with square pixels, of the first frame.
    QSize size() const;

    /// In seconds; absent when the file does not say.
    std::optional<double> duration() const;

    /// The frame that shows at `seconds` of the file's time: the last one that is due by then, to
    /// the microsecond; the first before it, the last past the end. Upright, with square pixels,
    /// scaled down to fit into `box` (pixels; whole without one), RGB32. Times that grow are read
    /// on from where the last one was, times with a key frame between are sought.
    Result<QImage> frameAt(double seconds, QSize box = {});

private:
    class Video;
    explicit FrameReader(std::unique_ptr<Video> video);
    std::unique_ptr<Video> m_video;
};
