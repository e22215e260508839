#include "Media/FFmpeg/Export/ChunkEncoder.h"

#include "Media/FFmpeg/Export/ExportPatience.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr std::int64_t chunkLength = std::int64_t{2} * Segment::ticksASecond;
constexpr std::int64_t betweenKeys = Segment::ticksASecond;

} // namespace

std::vector<Chunk> Chunk::of(const std::vector<Segment>& segments)
{
    std::vector<Chunk> chunks;
    std::int64_t cursor = 0;
    for (const Segment& segment : segments) {
        const std::int64_t length =
            av_rescale_q(chunkLength, {1, Segment::ticksASecond}, segment.ticks);
        std::int64_t begin = INT64_MIN;
        std::int64_t since = segment.keys.front();
        for (const std::int64_t key : segment.keys) {
            if (key - since < length)
                continue;
            chunks.push_back({segment, cursor, begin, key});
            begin = since = key;
        }
        chunks.push_back({segment, cursor, begin, INT64_MAX});
        cursor += segment.duration;
    }
    return chunks;
}

ChunkEncoder::ChunkEncoder(const PictureKind& kind, const AVCodecParameters& track,
                           const Patience& patience)
    : m_kind(kind)
    , m_track(track)
    , m_patience(patience)
    , m_fitter(kind)
{
}

PossibleFailure ChunkEncoder::open(const Segment& segment)
{
    if (m_segment == &segment)
        return {};
    m_segment = nullptr;
    m_decoder.reset();
    auto file = VideoFile::open(segment.path, m_patience);
    if (!file)
        return file.failure();
    m_file = std::move(*file);
    auto decoder = FrameDecoder::open(m_file->context(), m_patience);
    if (!decoder)
        return decoder.failure();
    m_decoder = std::move(*decoder);
    m_segment = &segment;
    return {};
}

PossibleFailure ChunkEncoder::openWriter()
{
    Result<PictureWriter> writer = PictureWriter::create(m_kind);
    if (!writer)
        return writer.failure();
    const Av::Parameters own = writer->parameters();
    if (!std::equal(own->extradata, own->extradata + own->extradata_size, m_track.extradata,
                    m_track.extradata + m_track.extradata_size))
        return Failure{"the encoder libx264 does not do the same twice"};
    m_writer = std::make_unique<PictureWriter>(std::move(*writer));
    return {};
}

/// The first frame that shows in the chunk.
Av::Frame ChunkEncoder::firstOf(const Chunk& chunk)
{
    // Where pictures refer to later ones, a key frame shows later than it is decoded; what shows
    // between belongs to the one before, which is where FFmpeg goes then.
    if (!m_decoder->seek(std::max(chunk.begin, chunk.segment.keys.front())))
        return nullptr;
    Av::Frame frame = m_decoder->next();
    while (frame && frame->pts < chunk.begin)
        frame = m_decoder->next();
    return frame;
}

Result<std::vector<Av::Packet>> ChunkEncoder::encode(const Chunk& chunk)
{
    if (PossibleFailure failure = open(chunk.segment))
        return *failure;
    if (PossibleFailure failure = openWriter())
        return *failure;
    m_packets.clear();
    m_lastKey = INT64_MIN;
    // A segment's first picture shows from its beginning, even if it comes late.
    const auto timeOf = [&](const AVFrame& frame, bool isFirst) {
        const std::int64_t time =
            av_rescale_q(frame.pts, chunk.segment.ticks, {1, Segment::ticksASecond});
        return isFirst ? 0 : std::max<std::int64_t>(time, 0);
    };
    Av::Frame frame = firstOf(chunk);
    std::int64_t time = frame ? timeOf(*frame, chunk.isFirst()) : 0;
    while (frame && frame->pts < chunk.end && time < chunk.segment.duration) {
        Av::Frame next = m_decoder->next();
        const std::int64_t nextTime = next ? timeOf(*next, false) : chunk.segment.duration;
        // Of frames that come at once the last one is seen.
        if (nextTime > time) {
            if (PossibleFailure failure =
                    encodeFrame(std::move(frame), chunk.cursor + time, chunk.cursor + nextTime))
                return *failure;
            time = nextTime;
        }
        frame = std::move(next);
    }
    if (m_patience.isOver())
        return ExportPatience::cancelled();
    Result<std::vector<Av::Packet>> rest = m_writer->finish();
    if (!rest)
        return rest.failure();
    std::move(rest->begin(), rest->end(), std::back_inserter(m_packets));
    return std::exchange(m_packets, {});
}

PossibleFailure ChunkEncoder::encodeFrame(Av::Frame frame, std::int64_t time, std::int64_t nextTime)
{
    Result<Av::Frame> fitted = m_fitter.fit(std::move(frame));
    if (!fitted)
        return fitted.failure();
    // The next one may come too late to be the next key.
    const bool isKey = m_lastKey == INT64_MIN || nextTime - m_lastKey > betweenKeys;
    if (isKey)
        m_lastKey = time;
    Result<std::vector<Av::Packet>> packets = m_writer->encode(**fitted, time, isKey);
    if (!packets)
        return packets.failure();
    std::move(packets->begin(), packets->end(), std::back_inserter(m_packets));
    return {};
}
