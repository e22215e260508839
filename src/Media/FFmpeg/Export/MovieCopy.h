#pragma once

#include "Media/FFmpeg/Export/MovieReader.h"
#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Export/SoundJoin.h"

/// A new MP4 for the pictures and the sound of one other movie, as they are. Sound that MP4 has no
/// place for is encoded; it comes by itself, not by `addSound`.
class MovieCopy {
public:
    /// `soundBegin` and `soundEnd` say where the source's sound goes, as SoundPart does; of sound
    /// that is encoded. Both references outlive this.
    static Result<std::unique_ptr<MovieCopy>> create(const std::string& destination,
                                                     MovieReader& source, const Patience& patience,
                                                     std::int64_t soundBegin = 0,
                                                     std::optional<std::int64_t> soundEnd = {});

    /// The copy's, before it has begun: what the source does not say may be added.
    AVCodecParameters& pictureParameters() { return *m_picture->codecpar; }

    PossibleFailure begin() { return m_movie->begin(); }
    /// The same when all of the source's samples are going to come: the index has room in front of
    /// them then, and they need not be moved.
    PossibleFailure beginWhole();

    /// Times are in the source's ticks. The packets are taken over.
    PossibleFailure addPicture(AVPacket& packet);
    PossibleFailure addSound(AVPacket& packet);

    /// As MovieWriter::publish, after what is left of the sound.
    PossibleFailure publish();

private:
    MovieCopy(MovieReader& source, const Patience& patience)
        : m_source(source)
        , m_patience(patience)
    {
    }
    PossibleFailure addTracks(const std::string& destination, std::int64_t soundBegin,
                              std::optional<std::int64_t> soundEnd);

    MovieReader& m_source;
    const Patience& m_patience;
    std::unique_ptr<MovieWriter> m_movie;
    AVStream* m_picture = nullptr;
    AVStream* m_sound = nullptr;       // null when it is encoded, or there is none
    std::unique_ptr<SoundJoin> m_join; // when it is encoded
};
