#include "Media/FFmpeg/Export/SoundWriter.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr std::int64_t bitsASecond = 192000;

} // namespace

SoundWriter::SoundWriter(Parts parts)
    : AacEncoder(std::move(parts))
    , m_blockSize(static_cast<std::size_t>(codec().frame_size))
{
}

Result<SoundWriter> SoundWriter::create()
{
    Result<Parts> parts = openParts(bitsASecond);
    if (!parts)
        return parts.failure();
    return SoundWriter(std::move(*parts));
}

Result<std::vector<Av::Packet>> SoundWriter::add(std::span<const float> left,
                                                 std::span<const float> right)
{
    std::vector<Av::Packet> packets;
    if (const PossibleFailure failure = fill(left.size(), left, right, packets))
        return *failure;
    return packets;
}

Result<std::vector<Av::Packet>> SoundWriter::addSilence(std::int64_t samples)
{
    std::vector<Av::Packet> packets;
    const auto count = static_cast<std::size_t>(std::max<std::int64_t>(samples, 0));
    if (const PossibleFailure failure = fill(count, {}, {}, packets))
        return *failure;
    return packets;
}

/// Silence when `left` is empty.
PossibleFailure SoundWriter::fill(std::size_t count, std::span<const float> left,
                                  std::span<const float> right, std::vector<Av::Packet>& packets)
{
    for (std::size_t done = 0; done < count;) {
        if (PossibleFailure failure = prepareBlock())
            return failure;
        const std::size_t part = std::min(count - done, m_blockSize - m_filled);
        for (int channel = 0; channel < channels; ++channel) {
            const std::span<const float> source = channel == 0 ? left : right;
            float* const target = samples(channel) + m_filled;
            if (source.empty())
                std::fill_n(target, part, 0.0F);
            else
                std::copy_n(source.data() + done, part, target);
        }
        done += part;
        m_filled += part;
        m_position += static_cast<std::int64_t>(part);
        if (m_filled < m_blockSize)
            continue;
        Result<std::vector<Av::Packet>> encoded = encodeFilled();
        if (!encoded)
            return encoded.failure();
        std::move(encoded->begin(), encoded->end(), std::back_inserter(packets));
    }
    return {};
}

Result<std::vector<Av::Packet>> SoundWriter::encodeFilled()
{
    const std::size_t count = std::exchange(m_filled, 0);
    return encodeBlock(static_cast<int>(count), m_position - static_cast<std::int64_t>(count));
}

Result<std::vector<Av::Packet>> SoundWriter::finish()
{
    std::vector<Av::Packet> packets;
    if (m_filled > 0) {
        Result<std::vector<Av::Packet>> last = encodeFilled();
        if (!last)
            return last;
        packets = std::move(*last);
    }
    Result<std::vector<Av::Packet>> rest = Encoder::finish();
    if (!rest)
        return rest;
    std::move(rest->begin(), rest->end(), std::back_inserter(packets));
    return packets;
}
