#include "Media/FFmpeg/Export/Remux.h"

#include "Media/FFmpeg/Export/ExportPatience.h"
#include "Media/FFmpeg/Export/MovieCopy.h"

#include <QFile>

#include <utility>
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

    MovieExport::Outcome run() { return ExportPatience::outcome(m_patience, makeMovie()); }

private:
    PossibleFailure makeMovie();
    PossibleFailure open();
    PossibleFailure findFirst();
    PossibleFailure copyPackets();
    PossibleFailure copy(AVPacket& packet);

    std::string m_source;
    std::string m_destination;
    Patience m_patience;
    std::unique_ptr<MovieReader> m_reader;
    Av::Packet m_packet;
    bool m_hasKey = false;
    std::vector<Av::Packet> m_first; // up to the first picture
    std::unique_ptr<MovieCopy> m_copy;
};

PossibleFailure Remux::makeMovie()
{
    for (const auto step : {&Remux::open, &Remux::findFirst, &Remux::copyPackets}) {
        if (PossibleFailure failure = (this->*step)())
            return failure;
    }
    return m_copy->publish();
}

PossibleFailure Remux::open()
{
    auto reader = MovieReader::open(m_source, m_patience);
    if (!reader)
        return reader.failure();
    m_reader = std::move(*reader);
    const AVStream* const sound = m_reader->sound();
    const bool isCopied = sound && MovieWriter::canHold(*sound->codecpar);
    m_reader->readOnly(&m_reader->picture(), isCopied ? sound : nullptr);
    return {};
}

/// Reads up to the first picture: nothing is written before it is known that there is one.
PossibleFailure Remux::findFirst()
{
    std::size_t bytes = 0;
    while (!m_hasKey && bytes < mostBytesBefore && m_reader->read(*m_packet)) {
        const bool isPicture = m_packet->stream_index == m_reader->picture().index;
        m_hasKey = isPicture && (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
        if (isPicture && !m_hasKey)
            continue; // it refers to what is not there
        bytes += static_cast<std::size_t>(m_packet->size);
        m_first.emplace_back(av_packet_clone(m_packet.get()));
        if (!m_first.back())
            return Failure{"there is no memory left"};
    }
    return m_hasKey ? std::nullopt : PossibleFailure(MovieReader::noPictureIn(m_source));
}

PossibleFailure Remux::copyPackets()
{
    auto copied = MovieCopy::create(m_destination, *m_reader, m_patience);
    if (!copied)
        return copied.failure();
    m_copy = std::move(*copied);
    if (PossibleFailure failure = m_copy->beginWhole())
        return failure;
    for (const Av::Packet& packet : m_first) {
        if (PossibleFailure failure = copy(*packet))
            return failure;
    }
    m_first.clear();
    while (m_reader->read(*m_packet)) {
        if (PossibleFailure failure = copy(*m_packet))
            return failure;
    }
    return ExportPatience::cutShort(m_patience);
}

PossibleFailure Remux::copy(AVPacket& packet)
{
    const bool isPicture = packet.stream_index == m_reader->picture().index;
    return isPicture ? m_copy->addPicture(packet) : m_copy->addSound(packet);
}

} // namespace

MovieExport::Outcome remuxMovie(const QString& source, const QString& destination,
                                const Cancellation& cancellation)
{
    return Remux(QFile::encodeName(source).toStdString(),
                 QFile::encodeName(destination).toStdString(), cancellation)
        .run();
}
