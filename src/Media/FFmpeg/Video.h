#pragma once

#include "Media/FFmpeg/FrameDecoder.h"
#include "Media/FFmpeg/FrameImage.h"
#include "Media/FFmpeg/VideoFile.h"
#include "Media/FrameReader.h"

/// The frames of one file, as FrameReader gives them.
class Video : public FrameSource {
public:
    static Result<std::unique_ptr<FrameSource>> open(const QString& path,
                                                     const FrameReaderLimits& limits);

    QSize size() const override { return m_size; }
    std::optional<double> duration() const override;
    Result<Showing> goTo(double seconds) override;
    Result<QImage> picture(QSize box) override;

private:
    explicit Video(const FrameReaderLimits& limits)
        : m_patience(limits.time, limits.cancellation)
    {
    }

    PossibleFailure open(const std::string& path);
    void goToTicks(std::int64_t time);
    bool mustSeek(std::int64_t time) const;
    void seek(std::int64_t time);
    bool isFirst(const AVFrame& frame) const { return frame.pts <= m_firstFrame; }

    Patience m_patience;
    std::unique_ptr<VideoFile> m_file;
    std::unique_ptr<FrameDecoder> m_decoder;
    std::optional<FrameImage> m_image;
    QSize m_size;
    std::int64_t m_firstFrame = 0; // its time, in the stream's ticks
    Av::Frame m_shown;             // absent after a search that was not finished
    Av::Frame m_next;              // the one after it, when it is known
};
