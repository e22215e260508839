#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Patience.h"
#include "Support/OutputFile.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Writes packets into an MP4 file whose index comes first.
class MovieWriter {
public:
    static Result<std::unique_ptr<MovieWriter>> create(const std::string& path);
    MovieWriter(const MovieWriter&) = delete;
    MovieWriter& operator=(const MovieWriter&) = delete;

    /// Whether there is a place for such a track in an MP4 file.
    static bool canHold(const AVCodecParameters& parameters);

    /// A track, to which more may be said until the beginning. The times of its packets are in
    /// `ticks`. Null when there is no memory left.
    AVStream* addTrack(const AVCodecParameters& parameters, AVRational ticks);

    /// A track for the packets of `track`, another file's, as they are: with its ticks, turn,
    /// colours and names. Null when there is no memory left.
    AVStream* addCopyOf(const AVStream& track);

    /// `indexRoom` are bytes for an index that is known not to be larger. Without them the samples
    /// are moved at the end to make room.
    PossibleFailure begin(std::optional<std::int64_t> indexRoom = {});

    /// A track's packets come in order; tracks may be some seconds apart. The packet is taken over.
    PossibleFailure add(AVPacket& packet, const AVStream& track);

    /// Finishes the movie and publishes its file, unless `patience` is over by then or something
    /// could not be read.
    PossibleFailure publish(const Patience& patience);

private:
    /// A place in the file, for one of FFmpeg's streams of bytes.
    struct Place {
        MovieWriter& writer;
        std::int64_t position = 0;
    };
    struct Track {
        AVRational ticks;
        std::int64_t lastTime = INT64_MIN; // in the ticks that the file has for it
    };

    explicit MovieWriter(std::unique_ptr<OutputFile> file)
        : m_file(std::move(file))
    {
    }
    PossibleFailure open();
    PossibleFailure finish();
    Failure failureOf(int error) const;

    static int write(void* place, std::uint8_t* bytes, int size);
    static int read(void* place, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* place, std::int64_t offset, int whence);
    static int openAgain(AVFormatContext* context, AVIOContext** io, const char*, int,
                         AVDictionary**);
    static int closeAgain(AVFormatContext* context, AVIOContext* io);

    std::unique_ptr<OutputFile> m_file;
    PossibleFailure m_writeFailure; // why the file could not be written
    Place m_end{*this};
    Place m_again{*this}; // where what was written is read
    std::vector<Track> m_tracks;
    Av::Io m_io;
    Av::Output m_output; // goes before what it writes to
};
