#pragma once

#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Export/SoundReader.h"
#include "Media/FFmpeg/Export/SoundWriter.h"

/// Where the sound of a file goes in a movie; in samples.
struct SoundPart {
    std::string path;
    std::int64_t begin = 0;
    /// What would sound later is cut off, and what is missing up to there is silent. Absent: the
    /// movie's sound ends where the file's does.
    std::optional<std::int64_t> end;
};

/// The sound of several files as one track of a movie, silent where there is none.
class SoundJoin {
public:
    /// `parts` are in order and do not overlap. Both references outlive this. Adds the track.
    static Result<std::unique_ptr<SoundJoin>> create(std::vector<SoundPart> parts,
                                                     MovieWriter& movie, const Patience& patience);

    /// Writes what sounds before `sample`, or some more.
    PossibleFailure writeUpTo(std::int64_t sample);

    /// Writes all the rest.
    PossibleFailure finish();

private:
    SoundJoin(std::vector<SoundPart> parts, MovieWriter& movie, SoundWriter encoder,
              const Patience& patience);

    PossibleFailure writeNextBlock();
    PossibleFailure writeBlock(const SoundBlock& block);
    PossibleFailure silentUpTo(std::int64_t sample);
    PossibleFailure hand(Result<std::vector<Av::Packet>> packets);

    std::vector<SoundPart> m_parts;
    MovieWriter& m_movie;
    SoundWriter m_encoder;
    const Patience& m_patience;
    AVStream* m_track = nullptr; // the movie's
    std::size_t m_current = 0;   // which part
    std::unique_ptr<SoundReader> m_reader;
};
