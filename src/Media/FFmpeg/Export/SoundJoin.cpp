#include "Media/FFmpeg/Export/SoundJoin.h"

#include <algorithm>
#include <utility>

static_assert(SoundReader::rate == SoundWriter::rate);

SoundJoin::SoundJoin(std::vector<SoundPart> parts, MovieWriter& movie, SoundWriter encoder,
                     const Patience& patience)
    : m_parts(std::move(parts))
    , m_movie(movie)
    , m_encoder(std::move(encoder))
    , m_patience(patience)
{
}

Result<std::unique_ptr<SoundJoin>> SoundJoin::create(std::vector<SoundPart> parts,
                                                     MovieWriter& movie, const Patience& patience)
{
    Result<SoundWriter> encoder = SoundWriter::create();
    if (!encoder)
        return encoder.failure();
    const Av::Parameters parameters = encoder->parameters();
    std::unique_ptr<SoundJoin> join(
        new SoundJoin(std::move(parts), movie, std::move(*encoder), patience));
    join->m_track = movie.addTrack(*parameters, {1, SoundWriter::rate});
    if (!join->m_track)
        return Failure{"there is no memory left"};
    return join;
}

PossibleFailure SoundJoin::writeUpTo(std::int64_t sample)
{
    while (m_encoder.position() < sample && m_current < m_parts.size() && !m_patience.isOver()) {
        const std::int64_t begin = m_parts[m_current].begin;
        const bool isBefore = m_encoder.position() < begin;
        if (PossibleFailure failure =
                isBefore ? silentUpTo(std::min(begin, sample)) : writeNextBlock())
            return failure;
    }
    return {};
}

/// Of the current part; goes to the next part where there is none.
PossibleFailure SoundJoin::writeNextBlock()
{
    const SoundPart& part = m_parts[m_current];
    if (!m_reader) {
        if (auto reader = SoundReader::open(part.path, m_patience))
            m_reader = std::move(*reader);
    }
    // What cannot be read is silent.
    if (const std::optional<SoundBlock> block = m_reader ? m_reader->next() : std::nullopt)
        return writeBlock(*block);
    m_reader.reset();
    ++m_current;
    return silentUpTo(part.end.value_or(m_encoder.position()));
}

PossibleFailure SoundJoin::writeBlock(const SoundBlock& block)
{
    const SoundPart& part = m_parts[m_current];
    const std::int64_t start = part.begin + block.start;
    const auto length = static_cast<std::int64_t>(block.left.size());
    const std::int64_t first = std::max(start, m_encoder.position());
    const std::int64_t last = std::min(start + length, part.end.value_or(start + length));
    if (last <= first)
        return {};
    if (PossibleFailure failure = silentUpTo(first))
        return failure;
    const auto offset = static_cast<std::size_t>(first - start);
    const auto count = static_cast<std::size_t>(last - first);
    return hand(m_encoder.add(std::span(block.left).subspan(offset, count),
                              std::span(block.right).subspan(offset, count)));
}

PossibleFailure SoundJoin::silentUpTo(std::int64_t sample)
{
    return hand(m_encoder.addSilence(sample - m_encoder.position()));
}

PossibleFailure SoundJoin::finish()
{
    while (m_current < m_parts.size() && !m_patience.isOver()) {
        if (PossibleFailure failure = writeUpTo(m_encoder.position() + SoundWriter::rate))
            return failure;
    }
    return hand(m_encoder.finish());
}

PossibleFailure SoundJoin::hand(Result<std::vector<Av::Packet>> packets)
{
    if (!packets)
        return packets.failure();
    for (const Av::Packet& packet : *packets) {
        if (PossibleFailure failure = m_movie.add(*packet, *m_track))
            return failure;
    }
    return {};
}
