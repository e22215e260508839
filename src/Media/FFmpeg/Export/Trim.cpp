#include "Media/FFmpeg/Export/Trim.h"

#include "Media/FFmpeg/Export/DecodingTimes.h"
#include "Media/FFmpeg/Export/ExportPatience.h"
#include "Media/FFmpeg/Export/MovieCopy.h"
#include "Media/FFmpeg/Export/PartBeginning.h"
#include "Media/FFmpeg/Export/Vp9.h"
#include "Media/FFmpeg/Ticks.h"

#include <QFile>

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// Read before the start, in seconds: containers look key frames up by when they are decoded, which
/// may be that long before they show.
constexpr double margin = 10;
/// Decoded before the first sample that is heard, in seconds: what it builds upon.
constexpr double preroll = 0.1;
/// Of a film, in seconds: more has no place in ticks.
constexpr double longest = 1e9;

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

    MovieExport::Outcome run()
    {
        // It is asked for anew, if at all.
        return ExportPatience::outcome(m_patience, makeMovie(), MovieExport::End::failed);
    }

private:
    PossibleFailure makeMovie();
    PossibleFailure open();
    PossibleFailure readAll();
    PossibleFailure take(Av::Packet packet);
    PossibleFailure takeOrdered();
    PossibleFailure takePicture(Av::Packet packet);
    PossibleFailure takeSound(Av::Packet packet);
    PossibleFailure checkHeld() const;
    PossibleFailure settle();
    PossibleFailure beginMovie();
    PossibleFailure addPicture(Av::Packet packet);
    PossibleFailure put(Av::Packet picture);
    PossibleFailure writeHeld();
    PossibleFailure addSound(Av::Packet packet);

    std::string m_source;
    double m_start, m_stop; // in seconds
    std::string m_destination;
    std::size_t m_mostHeld;
    Patience m_patience;
    std::unique_ptr<MovieReader> m_reader;
    AVStream* m_picture = nullptr; // the source's
    AVStream* m_sound = nullptr;   // the source's; null when there is none
    TrackPart m_shown, m_heard;    // in the source's ticks
    Av::Packet m_packet;
    std::optional<DecodingTimes> m_order; // absent when the source says itself

    std::deque<Av::Packet> m_pictures, m_sounds;      // until it is settled
    std::size_t m_heldPictures = 0, m_heldSounds = 0; // their bytes
    bool m_isSettled = false;
    bool m_hasAllPictures = false, m_hasAllSound = false;
    std::int64_t m_soundUntil = INT64_MIN; // so much of it was read

    std::unique_ptr<MovieCopy> m_copy;
    Av::Packet m_held;              // how long it shows may be known only with the next one
    std::vector<Av::Packet> m_late; // show past the end; earlier ones may refer to them
};

PossibleFailure Trim::makeMovie()
{
    for (const auto step : {&Trim::open, &Trim::readAll, &Trim::writeHeld}) {
        if (PossibleFailure failure = (this->*step)())
            return failure;
    }
    return m_copy->publish();
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
    m_shown = {ticksAt(std::clamp(m_start, 0.0, longest), ticks),
               ticksAt(std::clamp(m_stop, 0.0, longest), ticks)};
    if (m_shown.begin >= m_shown.end)
        return Failure{"the range is empty"};
    if (m_sound) {
        m_heard = {av_rescale_q(m_shown.begin, ticks, m_sound->time_base),
                   av_rescale_q(m_shown.end, ticks, m_sound->time_base)};
    }
    m_hasAllSound = !m_sound;
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
    if (PossibleFailure failure = ExportPatience::cutShort(m_patience))
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
    if (isPicture && !m_reader->hasDecodingTimes()) {
        if (!m_order)
            m_order.emplace(m_reader->pictureDelay(*packet));
        m_order->put(std::move(packet));
        return takeOrdered();
    }
    return isPicture ? takePicture(std::move(packet)) : takeSound(std::move(packet));
}

PossibleFailure Trim::takeOrdered()
{
    while (!m_hasAllPictures) {
        Av::Packet packet = m_order->next();
        if (!packet)
            return m_order->failure();
        if (PossibleFailure failure = takePicture(std::move(packet)))
            return failure;
    }
    return {};
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
    const std::int64_t sounds =
        m_sound && m_soundUntil > m_heard.begin
            ? av_rescale_q(m_soundUntil - m_heard.begin, m_sound->time_base, m_picture->time_base)
            : 0;
    if (!beginPart(m_pictures, m_shown, sounds, m_picture->time_base))
        return Failure{"nothing plays then in " + m_source};
    if (PossibleFailure failure = beginMovie())
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

PossibleFailure Trim::beginMovie()
{
    const auto samples = [&](std::int64_t ticks) {
        return av_rescale_q(ticks, m_picture->time_base, {1, SoundWriter::rate});
    };
    // No silence is made up behind the film's end.
    const std::int64_t length = samples(m_shown.end - m_shown.begin);
    const bool endsBefore = m_sound && m_heard.end < m_reader->soundDuration();
    auto copy = MovieCopy::create(m_destination, *m_reader, m_patience, -samples(m_shown.begin),
                                  endsBefore ? std::optional(length) : std::nullopt);
    if (!copy)
        return copy.failure();
    m_copy = std::move(*copy);
    if (PossibleFailure failure = describeVp9(m_copy->pictureParameters(), *m_pictures.front()))
        return failure;
    return m_copy->begin();
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
    return m_copy->addPicture(*packet);
}

PossibleFailure Trim::addSound(Av::Packet packet)
{
    packet->duration = std::min(packet->duration, m_heard.end - packet->pts);
    packet->pts -= m_heard.begin;
    packet->dts -= m_heard.begin;
    return m_copy->addSound(*packet);
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
    return Trim(QFile::encodeName(source).toStdString(), start, end,
                QFile::encodeName(destination).toStdString(), mostHeld, cancellation)
        .run();
}
