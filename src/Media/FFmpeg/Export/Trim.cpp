#include "Media/FFmpeg/Export/Trim.h"

#include "Media/FFmpeg/Export/DecodingTimes.h"
#include "Media/FFmpeg/Export/ExportPatience.h"
#include "Media/FFmpeg/Export/MovieReader.h"
#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Export/SoundJoin.h"
#include "Media/FFmpeg/Export/Vp9.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <deque>
#include <optional>
#include <utility>

namespace {

/// Read before the start, in seconds: containers look key frames up by when they are decoded, which
/// may be that long before they show.
constexpr double margin = 10;
/// Decoded before the first sample that is heard, in seconds: what it builds upon.
constexpr double preroll = 0.1;
/// How long what is not to be seen shows in a player that shows it, in seconds: less than screens
/// notice, more than players take for the same time.
constexpr double hiddenTime = 0.01;

/// From the beginning of a film; rounded down but for a microsecond, as FrameReader does.
std::int64_t ticksAt(double seconds, AVRational base)
{
    constexpr double microsecond = 1e-6, most = 1e9;
    return static_cast<std::int64_t>(
        std::floor((std::clamp(seconds, 0.0, most) + microsecond) / av_q2d(base)));
}

/// A part of one movie on its way into another file.
///
/// What is read waits until it is known with which picture the part begins (`settle`): everything
/// from the key frame on that this picture needs goes along, at times before 0.
class Trim {
public:
    Trim(std::string source, double start, double end, std::string destination,
         std::size_t mostHeld, const Cancellation& cancellation)
        : m_source(std::move(source))
        , m_start(start)
        , m_stop(end)
        , m_destination(std::move(destination))
        , m_mostHeld(mostHeld)
        , m_patience(ExportPatience::endless(cancellation))
        , m_packet(av_packet_alloc())
    {
    }

    PossibleFailure run();

private:
    /// A part of a track, in its ticks.
    struct Span {
        std::int64_t begin = 0;
        std::int64_t end = 0;
    };

    PossibleFailure open();
    PossibleFailure readAll();
    PossibleFailure take(Av::Packet packet);
    PossibleFailure takeOrdered();
    PossibleFailure takePicture(Av::Packet packet);
    PossibleFailure takeSound(Av::Packet packet);
    PossibleFailure checkHeld() const;
    PossibleFailure settle();
    bool beginWithShown();
    void hurryUpTo(const AVPacket& shown);
    PossibleFailure addTracks();
    PossibleFailure addSoundTrack();
    PossibleFailure addPicture(Av::Packet packet);
    PossibleFailure put(Av::Packet picture);
    PossibleFailure writeHeld();
    PossibleFailure addSound(Av::Packet packet);
    PossibleFailure finish();
    Failure nothingThere() const { return {"nothing plays then in " + m_source}; }

    std::string m_source;
    double m_start, m_stop; // in seconds
    std::string m_destination;
    std::size_t m_mostHeld;
    Patience m_patience;
    std::unique_ptr<MovieReader> m_reader;
    AVStream* m_picture = nullptr; // the source's
    AVStream* m_sound = nullptr;   // the source's; null when there is none
    Span m_shown, m_heard;         // in the source's ticks
    Av::Packet m_packet;
    std::optional<DecodingTimes> m_order; // absent when the source says itself

    std::deque<Av::Packet> m_pictures, m_sounds;      // until it is settled
    std::size_t m_heldPictures = 0, m_heldSounds = 0; // their bytes
    bool m_isSettled = false;
    bool m_hasAllPictures = false, m_hasAllSound = false;
    std::int64_t m_soundUntil = INT64_MIN; // so much of it was read

    std::unique_ptr<OutputFile> m_output;
    std::unique_ptr<MovieWriter> m_movie;
    AVStream* m_copiedPicture = nullptr;
    AVStream* m_copiedSound = nullptr;      // null when it is encoded
    std::unique_ptr<SoundJoin> m_soundJoin; // when MP4 has no place for the sound as it is
    Av::Packet m_held;                      // how long it shows may be known only with the next one
    std::vector<Av::Packet> m_late;         // show past the end; earlier ones may refer to them
};

PossibleFailure Trim::run()
{
    for (const auto step : {&Trim::open, &Trim::readAll, &Trim::finish}) {
        if (PossibleFailure failure = (this->*step)())
            return failure;
    }
    return m_movie->publish(m_patience);
}

PossibleFailure Trim::open()
{
    auto reader = MovieReader::open(m_source, m_patience);
    if (!reader)
        return reader.failure();
    m_reader = std::move(*reader);
    m_picture = &m_reader->picture();
    m_sound = m_reader->sound();
    const AVRational ticks = m_picture->time_base;
    if (!(m_start < m_stop))
        return Failure{"the range is empty"};
    m_shown = {ticksAt(m_start, ticks), ticksAt(m_stop, ticks)};
    if (m_shown.begin >= m_shown.end)
        return Failure{"the range is empty"};
    if (m_sound) {
        m_heard = {av_rescale_q(m_shown.begin, ticks, m_sound->time_base),
                   av_rescale_q(m_shown.end, ticks, m_sound->time_base)};
    }
    m_hasAllSound = !m_sound;
    if (!m_reader->hasDecodingTimes())
        m_order.emplace();
    m_reader->readOnly(m_picture, m_sound);
    // Where that is not possible everything is read. (Before the first key frame of a WebM FFmpeg
    // finds the second picture.)
    if (const std::int64_t from = m_shown.begin - ticksAt(margin, ticks); from > 0)
        m_reader->seek(from);
    return {};
}

PossibleFailure Trim::readAll()
{
    while (!(m_hasAllPictures && m_hasAllSound) && m_reader->read(*m_packet)) {
        Av::Packet packet(av_packet_alloc());
        if (!packet)
            return Failure{"there is no memory left"};
        av_packet_move_ref(packet.get(), m_packet.get());
        if (PossibleFailure failure = take(std::move(packet)))
            return failure;
    }
    if (m_patience.isOver())
        return ExportPatience::cancelled();
    if (PossibleFailure failure = m_reader->readFailure())
        return failure;
    if (m_order) {
        m_order->put(nullptr);
        if (PossibleFailure failure = takeOrdered())
            return failure;
    }
    return m_isSettled ? std::nullopt : settle();
}

PossibleFailure Trim::take(Av::Packet packet)
{
    if (packet->pts == AV_NOPTS_VALUE)
        packet->pts = packet->dts;
    if (packet->dts == AV_NOPTS_VALUE)
        packet->dts = packet->pts;
    if (packet->pts == AV_NOPTS_VALUE)
        return {};
    const bool isPicture = packet->stream_index == m_picture->index;
    if (isPicture && m_order) {
        m_order->put(std::move(packet));
        return takeOrdered();
    }
    return isPicture ? takePicture(std::move(packet)) : takeSound(std::move(packet));
}

PossibleFailure Trim::takeOrdered()
{
    while (Av::Packet packet = m_order->next()) {
        if (m_hasAllPictures)
            return {};
        if (PossibleFailure failure = takePicture(std::move(packet)))
            return failure;
    }
    return m_order->failure();
}

PossibleFailure Trim::takePicture(Av::Packet packet)
{
    if (m_isSettled)
        return addPicture(std::move(packet));
    const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
    if (isKey && packet->pts <= m_shown.begin) {
        m_pictures.clear(); // nothing from here on needs them
        m_heldPictures = 0;
    }
    if (!isKey && m_pictures.empty())
        return {}; // it refers to what is not there
    m_heldPictures += static_cast<std::size_t>(packet->size);
    m_pictures.push_back(std::move(packet));
    if (PossibleFailure failure = checkHeld())
        return failure;
    return m_pictures.back()->dts > m_shown.begin ? settle() : std::nullopt;
}

PossibleFailure Trim::takeSound(Av::Packet packet)
{
    const std::int64_t end = packet->pts + packet->duration;
    if (packet->pts >= m_heard.end) {
        m_hasAllSound = true;
        m_reader->readOnly(m_picture, nullptr);
        return {};
    }
    m_soundUntil = std::max(m_soundUntil, std::min(end, m_heard.end));
    if (end <= m_heard.begin - ticksAt(preroll, m_sound->time_base))
        return {};
    if (m_isSettled)
        return addSound(std::move(packet));
    m_heldSounds += static_cast<std::size_t>(packet->size);
    m_sounds.push_back(std::move(packet));
    return checkHeld();
}

PossibleFailure Trim::checkHeld() const
{
    if (m_heldPictures + m_heldSounds > m_mostHeld)
        return Failure{"the range begins too far from a key frame of " + m_source};
    return {};
}

/// What waits is enough to begin, or all there is.
PossibleFailure Trim::settle()
{
    m_isSettled = true;
    if (!beginWithShown())
        return nothingThere();
    if (PossibleFailure failure = addTracks())
        return failure;
    for (Av::Packet& packet : std::exchange(m_pictures, {})) {
        if (PossibleFailure failure = addPicture(std::move(packet)))
            return failure;
    }
    for (Av::Packet& packet : std::exchange(m_sounds, {})) {
        if (PossibleFailure failure = addSound(std::move(packet)))
            return failure;
    }
    return {};
}

/// Lets the picture that shows at the beginning begin there: players leave out what begins before.
/// False when nothing plays in the part.
bool Trim::beginWithShown()
{
    AVPacket* shown = nullptr;
    for (const Av::Packet& picture : m_pictures) {
        if (picture->pts <= m_shown.begin && (!shown || picture->pts >= shown->pts))
            shown = picture.get();
    }
    if (!shown)
        return !m_pictures.empty() && m_pictures.front()->pts < m_shown.end;
    const std::int64_t early = m_shown.begin - shown->pts;
    const bool isLast = m_pictures.back()->dts <= m_shown.begin; // or else that one would be there
    shown->duration -= early;
    if (isLast && shown->duration <= 0) {
        if (!m_sound || m_soundUntil <= m_heard.begin)
            return false;
        // It stays as long as there is sound.
        shown->duration =
            av_rescale_q(m_soundUntil - m_heard.begin, m_sound->time_base, m_picture->time_base);
    }
    if (shown->dts == shown->pts)
        shown->dts = m_shown.begin;
    shown->pts = m_shown.begin;
    hurryUpTo(*shown);
    return true;
}

/// Moves all that comes before it together, since nobody is to see it: some players (mpv) do show
/// what an edit list leaves out. But not up to it, since they take what is near a time that they
/// seek for what is there.
void Trim::hurryUpTo(const AVPacket& shown)
{
    const auto end =
        std::find_if(m_pictures.begin(), m_pictures.end(),
                     [&](const Av::Packet& picture) { return picture.get() == &shown; });
    if (std::any_of(m_pictures.begin(), end,
                    [](const Av::Packet& picture) { return picture->pts != picture->dts; }))
        return;
    const std::int64_t gap = ticksAt(hiddenTime, m_picture->time_base) + 1;
    std::int64_t time = shown.dts - gap - (end - m_pictures.begin());
    for (auto picture = m_pictures.begin(); picture != end; ++picture, ++time)
        (*picture)->pts = (*picture)->dts = time;
}

PossibleFailure Trim::addTracks()
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
    if (PossibleFailure failure = describeVp9(*m_copiedPicture->codecpar, *m_pictures.front()))
        return failure;
    if (PossibleFailure failure = addSoundTrack())
        return failure;
    return m_movie->begin();
}

PossibleFailure Trim::addSoundTrack()
{
    if (!m_sound)
        return {};
    if (MovieWriter::canHold(*m_sound->codecpar)) {
        m_copiedSound = m_movie->addCopyOf(*m_sound);
        return m_copiedSound ? std::nullopt : PossibleFailure(Failure{"there is no memory left"});
    }
    if (!SoundReader::open(m_source, m_patience))
        return {};
    const auto samples = [&](std::int64_t ticks) {
        return av_rescale_q(ticks, m_picture->time_base, {1, SoundWriter::rate});
    };
    // No silence is made up behind the film's end.
    const std::int64_t length = samples(m_shown.end - m_shown.begin);
    const bool endsBefore = m_sound->duration > 0 && m_heard.end < m_sound->duration;
    auto join = SoundJoin::create(
        {{m_source, -samples(m_shown.begin), endsBefore ? std::optional(length) : std::nullopt}},
        *m_movie, m_patience);
    if (!join)
        return join.failure();
    m_soundJoin = std::move(*join);
    return {};
}

PossibleFailure Trim::addPicture(Av::Packet packet)
{
    if (m_held && m_held->pts == m_held->dts)
        m_held->duration = packet->dts - m_held->dts;
    if (packet->dts >= m_shown.end) {
        m_hasAllPictures = true;
        m_reader->readOnly(nullptr, m_hasAllSound ? nullptr : m_sound);
        return {};
    }
    if (packet->pts >= m_shown.end) {
        m_late.push_back(std::move(packet));
        return {};
    }
    for (Av::Packet& late : std::exchange(m_late, {})) {
        if (PossibleFailure failure = put(std::move(late)))
            return failure;
    }
    return put(std::move(packet));
}

PossibleFailure Trim::put(Av::Packet picture)
{
    if (PossibleFailure failure = writeHeld())
        return failure;
    m_held = std::move(picture);
    return {};
}

PossibleFailure Trim::writeHeld()
{
    if (!m_held)
        return {};
    const Av::Packet packet = std::move(m_held);
    if (packet->pts < m_shown.end)
        packet->duration = std::min(packet->duration, m_shown.end - packet->pts);
    packet->duration = std::max<std::int64_t>(packet->duration, 1);
    packet->pts -= m_shown.begin;
    packet->dts -= m_shown.begin;
    const std::int64_t sample =
        av_rescale_q(packet->dts, m_picture->time_base, {1, SoundWriter::rate});
    if (PossibleFailure failure = m_movie->add(*packet, *m_copiedPicture))
        return failure;
    return m_soundJoin ? m_soundJoin->writeUpTo(sample) : std::nullopt;
}

PossibleFailure Trim::addSound(Av::Packet packet)
{
    if (!m_copiedSound)
        return {};
    packet->duration = std::min(packet->duration, m_heard.end - packet->pts);
    packet->pts -= m_heard.begin;
    packet->dts -= m_heard.begin;
    return m_movie->add(*packet, *m_copiedSound);
}

PossibleFailure Trim::finish()
{
    if (PossibleFailure failure = writeHeld())
        return failure;
    return m_soundJoin ? m_soundJoin->finish() : std::nullopt;
}

} // namespace

MovieExport::Outcome trimMovie(const QString& source, double start, double end,
                               const QString& destination, const Cancellation& cancellation)
{
    constexpr std::size_t mostHeld = std::size_t{1} << 29; // minutes of the best that there is
    return trimMovieHolding(mostHeld, source, start, end, destination, cancellation);
}

MovieExport::Outcome trimMovieHolding(std::size_t mostHeld, const QString& source, double start,
                                      double end, const QString& destination,
                                      const Cancellation& cancellation)
{
    return ExportPatience::outcome(
        cancellation, Trim(QFile::encodeName(source).toStdString(), start, end,
                           QFile::encodeName(destination).toStdString(), mostHeld, cancellation)
                          .run());
}
