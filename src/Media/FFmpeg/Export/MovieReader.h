#pragma once

#include "Media/FFmpeg/VideoFile.h"

#include <string>

/// The packets of a movie that are to be copied into an MP4.
class MovieReader {
public:
    /// A failure when there are no pictures that an MP4 can hold. `patience` outlives this.
    static Result<std::unique_ptr<MovieReader>> open(const std::string& path,
                                                     const Patience& patience);

    const std::string& path() const { return m_path; }
    AVStream& picture() { return m_picture; }
    AVStream* sound() { return m_sound; } ///< Null when there is none.

    /// Other tracks are not read any more; both may be null.
    void readOnly(const AVStream* wanted, const AVStream* alsoWanted);

    /// Whether it says when pictures are to be decoded; Matroska says only when they show.
    bool hasDecodingTimes() const;

    /// How many pictures may be decoded before the first one shows, by what a key frame says.
    std::size_t pictureDelay(const AVPacket& key) const;

    /// In the sound's ticks, by the file's header; 0 when it does not say or there is none.
    std::int64_t soundDuration() const;

    /// Goes on near a key frame at or before `time`, in the picture's ticks; false when it cannot,
    /// and nothing has changed then.
    bool seek(std::int64_t time);

    /// The next packet, with how long it shows or sounds. False at the end, where the file is
    /// broken off or cannot be read, and when patience is over.
    bool read(AVPacket& packet);

    static Failure noPictureIn(const std::string& path)
    {
        return {"there is no picture in " + path};
    }

private:
    MovieReader(std::string path, std::unique_ptr<VideoFile> file, AVStream& picture,
                const Patience& patience);

    std::string m_path;
    const Patience& m_patience;
    std::unique_ptr<VideoFile> m_file;
    AVStream& m_picture;
    AVStream* m_sound;
};
