#include "Media/FFmpeg/Video.h"

#include "Media/FFmpeg/Ticks.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace {

std::optional<double> longestTrack(const AVFormatContext& file)
{
    double longest = 0;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVStream& stream = *file.streams[i];
        if (stream.duration > 0)
            longest =
                std::max(longest, static_cast<double>(stream.duration) * av_q2d(stream.time_base));
    }
    return longest > 0 ? std::optional(longest) : std::nullopt;
}

} // namespace

PossibleFailure Video::open(const std::string& path)
{
    m_patience.begin();
    auto file = VideoFile::open(path, m_patience);
    if (!file)
        return file.failure();
    m_file = std::move(*file);
    auto decoder = FrameDecoder::open(m_file->context(), m_patience);
    if (!decoder)
        return Failure{"cannot read " + path + ": " + decoder.failure().message};
    m_decoder = std::move(*decoder);
    m_shown = m_decoder->next();
    if (!m_shown)
        return Failure{"cannot read " + path + ": there is no frame in it"};
    m_firstFrame = m_shown->pts;
    m_image.emplace(orientationOf(m_decoder->stream()));
    m_size = m_image->sizeOf(*m_shown);
    return {};
}

std::optional<double> Video::duration() const
{
    const AVFormatContext& file = m_file->context();
    if (const auto longest = longestTrack(file))
        return longest;
    if (file.duration > 0)
        return static_cast<double>(file.duration) / AV_TIME_BASE;
    return {};
}

Result<FrameSource::Showing> Video::goTo(double seconds)
{
    m_patience.begin();
    goToTicks(ticksAt(seconds, m_decoder->stream().time_base));
    if (m_patience.isOver())
        m_shown.reset(); // it may be on its way
    if (!m_shown)
        return Failure{"the frame cannot be read"};
    const double tick = av_q2d(m_decoder->stream().time_base);
    return Showing{static_cast<double>(m_shown->pts) * tick,
                   static_cast<double>(m_next ? m_next->pts : m_decoder->endOf(*m_shown)) * tick};
}

Result<QImage> Video::picture(QSize box)
{
    if (!m_shown)
        return Failure{"the frame cannot be read"};
    return m_image->render(*m_shown, box);
}

void Video::goToTicks(std::int64_t time)
{
    m_decoder->setWanted(time);
    if (mustSeek(time))
        seek(time);
    while (m_shown) {
        if (!m_next && m_decoder->isKnownToShow(*m_shown, time))
            return;
        if (!m_next)
            m_next = m_decoder->next();
        if (!m_next || m_next->pts > time)
            return;
        m_shown = std::move(m_next);
    }
}

bool Video::mustSeek(std::int64_t time) const
{
    if (!m_shown)
        return true;
    if (time < m_shown->pts)
        return !isFirst(*m_shown);
    return (!m_next || m_next->pts <= time) && m_decoder->hasNewKeyFrame(time);
}

void Video::seek(std::int64_t time)
{
    // Containers look key frames up by decoding time, and frames that refer to what was before
    // their key frame are lost: where the first frame is too late, an earlier key frame is needed.
    m_next.reset();
    for (std::int64_t from = time; !m_patience.isOver();) {
        m_shown = m_decoder->seek(from) ? m_decoder->next() : nullptr;
        if (m_shown && (m_shown->pts <= time || isFirst(*m_shown)))
            return;
        const std::int64_t start = m_decoder->firstTime();
        if (from <= m_firstFrame)
            return; // there is nothing before it
        from = start == INT64_MIN ? m_firstFrame : std::clamp(start - 1, m_firstFrame, from - 1);
    }
}

Result<std::unique_ptr<FrameSource>> Video::open(const QString& path,
                                                 const FrameReaderLimits& limits)
{
    std::unique_ptr<Video> video(new Video(limits));
    if (const PossibleFailure failure = video->open(QFile::encodeName(path).toStdString()))
        return *failure;
    return std::unique_ptr<FrameSource>(std::move(video));
}
