#include "Media/FFmpeg/Export/Remux.h"

#include "Media/FFmpeg/Export/ExportPatience.h"
#include "Media/FFmpeg/Export/IndexRoom.h"
#include "Media/FFmpeg/Export/MovieReader.h"
#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Export/SoundJoin.h"

#include <QFile>

#include <algorithm>
#include <vector>

namespace {

/// Of sound, before the first picture.
constexpr std::size_t mostBytesBefore = std::size_t{64} << 20;

/// One movie on its way into another file.
class Remux {
public:
    Remux(std::string source, std::string destination, const Cancellation& cancellation)
        : m_source(std::move(source))
        , m_destination(std::move(destination))
        , m_patience(ExportPatience::endless(cancellation))
        , m_packet(av_packet_alloc())
    {
    }

    PossibleFailure run();

private:
    PossibleFailure open();
    PossibleFailure findFirst();
    PossibleFailure addTracks();
    PossibleFailure copyPackets();
    PossibleFailure copy(AVPacket& packet);
    Failure nothingToPlay() const { return MovieReader::noPictureIn(m_source); }

    std::string m_source;
    std::string m_destination;
    Patience m_patience;
    std::unique_ptr<MovieReader> m_reader;
    AVStream* m_picture = nullptr; // the source's
    AVStream* m_sound = nullptr;   // the source's; null when there is none
    Av::Packet m_packet;
    bool m_hasKey = false;
    std::vector<Av::Packet> m_first; // up to the first picture
    std::unique_ptr<OutputFile> m_output;
    std::unique_ptr<MovieWriter> m_movie;
    AVStream* m_copiedPicture = nullptr;
    AVStream* m_copiedSound = nullptr;      // null when it is encoded
    std::unique_ptr<SoundJoin> m_soundJoin; // when MP4 has no place for the sound as it is
};

PossibleFailure Remux::run()
{
    for (const auto step :
         {&Remux::open, &Remux::findFirst, &Remux::addTracks, &Remux::copyPackets}) {
        if (PossibleFailure failure = (this->*step)())
            return failure;
    }
    return m_movie->publish(m_patience);
}

PossibleFailure Remux::open()
{
    auto reader = MovieReader::open(m_source, m_patience);
    if (!reader)
        return reader.failure();
    m_reader = std::move(*reader);
    m_picture = &m_reader->picture();
    m_sound = m_reader->sound();
    const bool isCopied = m_sound && MovieWriter::canHold(*m_sound->codecpar);
    m_reader->readOnly(m_picture, isCopied ? m_sound : nullptr);
    return {};
}

/// Reads up to the first picture: nothing is written before it is known that there is one.
PossibleFailure Remux::findFirst()
{
    std::size_t bytes = 0;
    while (!m_hasKey && bytes < mostBytesBefore && m_reader->read(*m_packet)) {
        const bool isPicture = m_packet->stream_index == m_picture->index;
        m_hasKey = isPicture && (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
        if (isPicture && !m_hasKey)
            continue; // it refers to what is not there
        bytes += static_cast<std::size_t>(m_packet->size);
        m_first.emplace_back(av_packet_clone(m_packet.get()));
        if (!m_first.back())
            return Failure{"there is no memory left"};
    }
    return m_hasKey ? std::nullopt : PossibleFailure(nothingToPlay());
}

PossibleFailure Remux::addTracks()
{
    auto output = OutputFile::create(m_destination);
    if (!output)
        return output.failure();
    m_output = std::move(*output);
    auto movie = MovieWriter::create(*m_output);
    if (!movie)
        return movie.failure();
    m_movie = std::move(*movie);
    m_copiedPicture = m_movie->addCopyOf(*m_picture);
    if (!m_copiedPicture)
        return Failure{"there is no memory left"};
    if (m_sound && MovieWriter::canHold(*m_sound->codecpar)) {
        m_copiedSound = m_movie->addCopyOf(*m_sound);
        if (!m_copiedSound)
            return Failure{"there is no memory left"};
    } else if (m_sound && SoundReader::open(m_source, m_patience)) {
        auto join = SoundJoin::create({{m_source, 0, std::nullopt}}, *m_movie, m_patience);
        if (!join)
            return join.failure();
        m_soundJoin = std::move(*join);
    }
    return m_movie->begin(
        m_soundJoin ? std::nullopt : indexRoomFor({m_picture, m_copiedSound ? m_sound : nullptr}));
}

PossibleFailure Remux::copyPackets()
{
    for (const Av::Packet& packet : m_first) {
        if (PossibleFailure failure = copy(*packet))
            return failure;
    }
    m_first.clear();
    while (m_reader->read(*m_packet)) {
        if (PossibleFailure failure = copy(*m_packet))
            return failure;
    }
    if (m_patience.isOver())
        return ExportPatience::cancelled();
    if (PossibleFailure failure = m_reader->readFailure())
        return failure;
    return m_soundJoin ? m_soundJoin->finish() : std::nullopt;
}

PossibleFailure Remux::copy(AVPacket& packet)
{
    if (packet.stream_index != m_picture->index)
        return m_movie->add(packet, *m_copiedSound);
    const std::int64_t sample =
        av_rescale_q(packet.dts, m_picture->time_base, {1, SoundWriter::rate});
    if (PossibleFailure failure = m_movie->add(packet, *m_copiedPicture))
        return failure;
    return m_soundJoin ? m_soundJoin->writeUpTo(sample) : std::nullopt;
}

} // namespace

MovieExport::Outcome remuxMovie(const QString& source, const QString& destination,
                                const Cancellation& cancellation)
{
    return ExportPatience::outcome(cancellation,
                                   Remux(QFile::encodeName(source).toStdString(),
                                         QFile::encodeName(destination).toStdString(), cancellation)
                                       .run());
}
