#pragma once

#include "Media/FFmpeg/Export/PictureWriter.h"
#include "Media/FFmpeg/Export/Segment.h"
#include "Media/FFmpeg/FrameDecoder.h"
#include "Media/FFmpeg/VideoFile.h"

#include <memory>
#include <vector>

/// A stretch of a segment that is encoded by itself.
struct Chunk {
    const Segment& segment;
    std::int64_t cursor;     ///< Where the segment begins in the movie, in movie ticks.
    std::int64_t begin, end; ///< In the segment's own ticks; its first and last reach to infinity.

    bool isFirst() const { return begin == INT64_MIN; }

    /// Of all segments, one right behind the other, cut at key frames.
    static std::vector<Chunk> of(const std::vector<Segment>& segments);
};

/// Decodes chunks and encodes them again. One thread.
class ChunkEncoder {
public:
    /// `track` says what the movie says about its pictures: a chunk to which that does not apply is
    /// a failure. Both references outlive this.
    ChunkEncoder(const PictureKind& kind, const AVCodecParameters& track, const Patience& patience);

    /// In the movie's ticks. Begins with a key frame; has none where nothing can be decoded.
    Result<std::vector<Av::Packet>> encode(const Chunk& chunk);

private:
    PossibleFailure open(const Segment& segment);
    PossibleFailure openWriter();
    Av::Frame firstOf(const Chunk& chunk);
    PossibleFailure encodeFrame(Av::Frame frame, std::int64_t time, std::int64_t nextTime);

    PictureKind m_kind;
    const AVCodecParameters& m_track;
    const Patience& m_patience;
    PictureFitter m_fitter;
    const Segment* m_segment = nullptr; // the open one
    std::unique_ptr<VideoFile> m_file;
    std::unique_ptr<FrameDecoder> m_decoder;

    // While a chunk is encoded.
    std::unique_ptr<PictureWriter> m_writer;
    std::vector<Av::Packet> m_packets;
    std::int64_t m_lastKey = INT64_MIN;
};
