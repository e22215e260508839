#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Converters.h"
#include "Media/FFmpeg/Patience.h"
#include "Media/FFmpeg/VideoFile.h"
#include "Support/Result.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// Stereo sound that begins at a sample.
struct SoundBlock {
    std::int64_t start = 0; ///< In samples since the file's beginning.
    std::vector<float> left;
    std::vector<float> right; ///< As long as the left.
};

/// The sound of a file, one block after the other, as stereo at `rate`.
class SoundReader {
public:
    static constexpr int rate = 48000;

    /// A failure when there is no sound in it that can be decoded. `patience` outlives this.
    static Result<std::unique_ptr<SoundReader>> open(const std::string& path,
                                                     const Patience& patience);

    /// Blocks follow each other without gap, unless the file has one. Nothing at the end, where the
    /// file is broken off, and when patience is over.
    std::optional<SoundBlock> next();

private:
    SoundReader(std::unique_ptr<VideoFile> file, AVStream& stream, const Patience& patience);
    PossibleFailure openCodec();
    bool decode(); // into the frame
    void sendPacket();
    bool prepareFor(const AVFrame& frame);
    SoundBlock converted(const AVFrame* frame);

    const Patience& m_patience;
    std::unique_ptr<VideoFile> m_file;
    AVStream& m_stream;
    Av::Codec m_codec;
    Av::Packet m_packet;
    Av::Frame m_frame;
    Av::Resampler m_resampler;
    Av::Frame m_kind;         // of what frames the resampler is for
    std::int64_t m_place = 0; // of the next sample that comes out
    bool m_isPlaced = false;
    bool m_isDrained = false;
};
