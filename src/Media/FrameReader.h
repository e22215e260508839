#pragma once

#include "Media/Cancellation.h"
#include "Support/Result.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

/// How long a file may keep its reader busy.
struct FrameReaderLimits {
    /// What an opening, and each frame, may take at most; then it is a failure.
    std::chrono::milliseconds time{20'000};
    /// Ends either as a failure too. A cancelled reader stays so.
    Cancellation cancellation;
};

/// What a FrameReader reads through; its members are as the reader's.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    virtual QSize size() const = 0;
    virtual std::optional<double> duration() const = 0;

    /// When a frame shows, in seconds of the file's time.
    struct Showing {
        double begin;
        double end;
    };

    /// Goes to the frame that frameAt() gives.
    virtual Result<Showing> goTo(double seconds) = 0;
    /// The frame that it last went to.
    virtual Result<QImage> picture(QSize box) = 0;
};

/// The pictures of a video file (MOV, MP4, Matroska, WebM; the content decides, not the name).
///
/// One thread at a time, any thread. Nothing but the file itself is ever opened, nothing is logged.
class FrameReader {
public:
    /// Reads the header and the first frame: a file without one is a failure, as is anything that
    /// is no video in a regular file.
    static Result<FrameReader> open(const QString& path, const FrameReaderLimits& limits = {});

    /// Upright, with square pixels, of the first frame.
    QSize size() const { return m_source->size(); }

    /// In seconds; absent when the file does not say.
    std::optional<double> duration() const { return m_source->duration(); }

    /// The frame that shows at `seconds` of the file's time: the last one that is due by then, to
    /// the microsecond; the first before it, the last past the end. Upright, with square pixels,
    /// scaled down to fit into `box` (pixels; whole without one), RGB32. Times that grow are read
    /// on from where the last one was, times with a key frame between are sought.
    Result<QImage> frameAt(double seconds, QSize box = {})
    {
        if (const auto showing = m_source->goTo(seconds); !showing)
            return showing.failure();
        return m_source->picture(box);
    }

    /// When it shows. Of times past the end that is how one learns of the end.
    Result<FrameSource::Showing> showingAt(double seconds) { return m_source->goTo(seconds); }

private:
    explicit FrameReader(std::unique_ptr<FrameSource> source)
        : m_source(std::move(source))
    {
    }
    std::unique_ptr<FrameSource> m_source;
};
