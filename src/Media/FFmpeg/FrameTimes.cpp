#include "Media/FFmpeg/FrameTimes.h"

#include "Media/FFmpeg/FrameImage.h"
#include "Media/FFmpeg/Tracks.h"
#include "Media/FFmpeg/Video.h"
#include "Media/FFmpeg/VideoFile.h"

#include <QFile>

#include <algorithm>

namespace {

/// A day at 60 frames a second.
constexpr std::size_t mostFrames = std::size_t{24} * 3600 * 60;

std::vector<double> timesOf(VideoFile& file, const AVStream& track, const Patience& patience)
{
    std::vector<double> times;
    const Av::Packet packet(av_packet_alloc());
    while (packet && times.size() < mostFrames && !patience.isOver() &&
           av_read_frame(&file.context(), packet.get()) >= 0)
    {
        const std::int64_t ticks = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts;
        const bool shows = packet->stream_index == track.index && ticks != AV_NOPTS_VALUE &&
                           (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
        if (shows)
            times.push_back(static_cast<double>(ticks) * av_q2d(track.time_base));
        av_packet_unref(packet.get());
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

} // namespace

Result<FilmTimes> readFilmTimes(const QString& path, const FrameReaderLimits& limits)
{
    const auto video = Video::open(path, limits);
    if (!video)
        return video.failure();
    Patience patience(limits.time, limits.cancellation);
    patience.begin();
    auto file = VideoFile::open(QFile::encodeName(path).toStdString(), patience);
    if (!file)
        return file.failure();
    const AVStream* const track = Tracks::picture((*file)->context());
    if (!track)
        return Failure{"there is no video in it"};
    Tracks::readOnly((*file)->context(), track);
    std::vector<double> frames = timesOf(**file, *track, patience);
    if (frames.empty() || patience.isOver())
        return Failure{"its frames cannot be counted"};
    const double last = *frames.rbegin();
    return FilmTimes{std::move(frames), std::max((*video)->duration().value_or(last), last),
                     orientationOf(*track)};
}
