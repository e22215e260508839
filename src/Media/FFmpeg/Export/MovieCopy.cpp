#include "Media/FFmpeg/Export/MovieCopy.h"

#include "Media/FFmpeg/Export/IndexRoom.h"

Result<std::unique_ptr<MovieCopy>> MovieCopy::create(const std::string& destination,
                                                     MovieReader& source, const Patience& patience,
                                                     std::int64_t soundBegin,
                                                     std::optional<std::int64_t> soundEnd)
{
    std::unique_ptr<MovieCopy> copy(new MovieCopy(source, patience));
    if (const PossibleFailure failure = copy->addTracks(destination, soundBegin, soundEnd))
        return *failure;
    return copy;
}

PossibleFailure MovieCopy::addTracks(const std::string& destination, std::int64_t soundBegin,
                                     std::optional<std::int64_t> soundEnd)
{
    auto movie = MovieWriter::create(destination);
    if (!movie)
        return movie.failure();
    m_movie = std::move(*movie);
    const auto added = [this](const AVStream& track, AVStream*& copy) {
        copy = m_movie->addCopyOf(track);
        return copy ? std::nullopt : PossibleFailure(Failure{"there is no memory left"});
    };
    if (PossibleFailure failure = added(m_source.picture(), m_picture))
        return failure;
    const AVStream* const sound = m_source.sound();
    if (sound && MovieWriter::canHold(*sound->codecpar))
        return added(*sound, m_sound);
    if (!sound || !SoundReader::open(m_source.path(), m_patience))
        return {};
    auto join = SoundJoin::create({{m_source.path(), soundBegin, soundEnd}}, *m_movie, m_patience);
    if (!join)
        return join.failure();
    m_join = std::move(*join);
    return {};
}

PossibleFailure MovieCopy::beginWhole()
{
    if (m_join)
        return begin();
    return m_movie->begin(
        indexRoomFor({&m_source.picture(), m_sound ? m_source.sound() : nullptr}));
}

PossibleFailure MovieCopy::addPicture(AVPacket& packet)
{
    const std::int64_t sample =
        av_rescale_q(packet.dts, m_source.picture().time_base, {1, SoundWriter::rate});
    if (PossibleFailure failure = m_movie->add(packet, *m_picture))
        return failure;
    return m_join ? m_join->writeUpTo(sample) : std::nullopt;
}

PossibleFailure MovieCopy::addSound(AVPacket& packet)
{
    return m_sound ? m_movie->add(packet, *m_sound) : std::nullopt;
}

PossibleFailure MovieCopy::publish()
{
    if (PossibleFailure failure = m_join ? m_join->finish() : std::nullopt)
        return failure;
    return m_movie->publish(m_patience);
}
