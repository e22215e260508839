#include "Media/FFmpeg/Export/Concatenation.h"

#include "Media/FFmpeg/Export/ChunkEncoder.h"
#include "Media/FFmpeg/Export/ExportPatience.h"
#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Export/OrderedWork.h"
#include "Media/FFmpeg/Export/SoundJoin.h"
#include "Media/FFmpeg/Tracks.h"

#include <QFile>

#include <algorithm>
#include <numeric>
#include <optional>
#include <thread>

namespace {

using Packets = Result<std::vector<Av::Packet>>;

/// An encoder of pictures as large as a 4K screen takes a few hundred megabytes.
constexpr unsigned mostWorkers = 16;

/// Several movies on their way into one file.
class Concatenation {
public:
    Concatenation(std::string destination, const Cancellation& cancellation)
        : m_destination(std::move(destination))
        , m_patience(ExportPatience::endless(cancellation))
    {
    }

    MovieExport::Outcome run(const std::vector<std::string>& paths)
    {
        return ExportPatience::outcome(m_patience, makeMovie(paths));
    }

private:
    PossibleFailure makeMovie(const std::vector<std::string>& paths);
    PossibleFailure inspect(const std::vector<std::string>& paths);
    PossibleFailure findKind();
    PossibleFailure addTracks();
    PossibleFailure addSound();
    PossibleFailure write();
    PossibleFailure writePictures(std::vector<Av::Packet> packets);
    PossibleFailure writeHeld(std::int64_t until);

    std::string m_destination;
    Patience m_patience;
    std::vector<Segment> m_segments; // with pictures in them
    std::optional<AllocationLimit> m_limit;
    PictureKind m_kind;
    std::vector<std::uint8_t> m_turn; // the first segment's matrix, as FFmpeg has it; may be empty
    Av::Parameters m_parameters;      // of the pictures
    std::unique_ptr<MovieWriter> m_movie;
    AVStream* m_pictures = nullptr;
    std::unique_ptr<SoundJoin> m_sound; // null when there is none
    Av::Packet m_held;                  // how long it shows is known when the next one is there
};

PossibleFailure Concatenation::makeMovie(const std::vector<std::string>& paths)
{
    if (PossibleFailure failure = inspect(paths))
        return failure;
    for (const auto step :
         {&Concatenation::findKind, &Concatenation::addTracks, &Concatenation::write}) {
        if (PossibleFailure failure = (this->*step)())
            return failure;
    }
    return m_movie->publish(m_patience);
}

PossibleFailure Concatenation::inspect(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) {
        // What cannot be read is left out.
        if (Result<Segment> segment = Segment::inspect(path, m_patience))
            m_segments.push_back(std::move(*segment));
    }
    m_limit.emplace(std::accumulate(
        m_segments.begin(), m_segments.end(), std::int64_t{0},
        [](std::int64_t sum, const Segment& segment) { return sum + segment.fileSize; }));
    return m_patience.unreadable();
}

/// The first picture says how all of them are.
PossibleFailure Concatenation::findKind()
{
    for (const Segment& segment : m_segments) {
        const auto file = VideoFile::open(segment.path, m_patience);
        if (!file)
            continue;
        const auto decoder = FrameDecoder::open((*file)->context(), m_patience);
        const Av::Frame frame = decoder ? (*decoder)->next() : nullptr;
        if (!frame)
            continue;
        m_kind = PictureKind::of(*frame);
        std::size_t size = 0;
        if (const std::uint8_t* const turn =
                av_stream_get_side_data(&(*decoder)->stream(), AV_PKT_DATA_DISPLAYMATRIX, &size))
            m_turn.assign(turn, turn + size);
        return {};
    }
    return Failure{"there is no picture in any segment"};
}

PossibleFailure Concatenation::addTracks()
{
    const Result<PictureWriter> encoder = PictureWriter::create(m_kind);
    if (!encoder)
        return encoder.failure();
    m_parameters = encoder->parameters();
    auto movie = MovieWriter::create(m_destination);
    if (!movie)
        return movie.failure();
    m_movie = std::move(*movie);
    m_pictures = m_movie->addTrack(*m_parameters, {1, Segment::ticksASecond});
    if (!m_pictures)
        return Failure{"there is no memory left"};
    if (!m_turn.empty()) {
        std::uint8_t* const turn =
            av_stream_new_side_data(m_pictures, AV_PKT_DATA_DISPLAYMATRIX, m_turn.size());
        if (!turn)
            return Failure{"there is no memory left"};
        std::copy(m_turn.begin(), m_turn.end(), turn);
    }
    if (PossibleFailure failure = addSound())
        return failure;
    return m_movie->begin();
}

std::int64_t samplesAt(std::int64_t movieTicks)
{
    return av_rescale_q(movieTicks, {1, Segment::ticksASecond}, {1, SoundWriter::rate});
}

PossibleFailure Concatenation::addSound()
{
    std::vector<SoundPart> parts;
    std::int64_t cursor = 0;
    for (const Segment& segment : m_segments) {
        const std::int64_t end = cursor + segment.duration;
        if (segment.hasSound)
            parts.push_back({segment.path, samplesAt(cursor), samplesAt(end)});
        cursor = end;
    }
    if (parts.empty())
        return {};
    auto sound = SoundJoin::create(std::move(parts), *m_movie, m_patience);
    if (!sound)
        return sound.failure();
    m_sound = std::move(*sound);
    return {};
}

PossibleFailure Concatenation::write()
{
    const std::vector<Chunk> chunks = Chunk::of(m_segments);
    const std::size_t count = std::clamp(std::thread::hardware_concurrency(), 1U, mostWorkers);
    std::vector<OrderedWork<Packets>::Worker> workers;
    for (std::size_t i = 0; i < std::min(count, chunks.size()); ++i) {
        auto encoder = std::make_shared<ChunkEncoder>(m_kind, *m_parameters, m_patience);
        workers.emplace_back(
            [&chunks, encoder](std::size_t number) { return encoder->encode(chunks[number]); });
    }
    OrderedWork<Packets> work(chunks.size(), std::move(workers));
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        Packets packets = work.take();
        if (PossibleFailure failure = m_patience.unreadable())
            return failure;
        if (!packets)
            return packets.failure();
        if (PossibleFailure failure = writePictures(std::move(*packets)))
            return failure;
    }
    const Chunk& last = chunks.back();
    if (!m_held)
        return Failure{"there is no picture in any segment"};
    if (PossibleFailure failure = writeHeld(last.cursor + last.segment.duration))
        return failure;
    return m_sound ? m_sound->finish() : std::nullopt;
}

PossibleFailure Concatenation::writePictures(std::vector<Av::Packet> packets)
{
    for (Av::Packet& packet : packets) {
        if (PossibleFailure failure = writeHeld(packet->pts))
            return failure;
        m_held = std::move(packet);
        PossibleFailure failure =
            m_sound ? m_sound->writeUpTo(samplesAt(m_held->pts)) : std::nullopt;
        if (failure)
            return failure;
    }
    return {};
}

PossibleFailure Concatenation::writeHeld(std::int64_t until)
{
    if (!m_held)
        return {};
    m_held->duration = std::max<std::int64_t>(until - m_held->pts, 1);
    return m_movie->add(*m_held, *m_pictures);
}

} // namespace

MovieExport::Outcome concatenateMovies(const QStringList& segments, const QString& destination,
                                       const Cancellation& cancellation)
{
    std::vector<std::string> paths;
    for (const QString& segment : segments)
        paths.push_back(QFile::encodeName(segment).toStdString());
    return Concatenation(QFile::encodeName(destination).toStdString(), cancellation).run(paths);
}
