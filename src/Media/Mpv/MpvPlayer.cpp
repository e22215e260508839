#include "Media/Mpv/MpvPlayer.h"

#include "Support/Background.h"
#include "Support/Guarded.h"

#include <mpv/client.h>

#include <QtGlobal>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr double fullVolume = 100;

/// What we are told of, each by its number.
enum class Property : std::uint64_t {
    atEnd = 1,
    duration,
    frameRate,
    height,
    mute,
    pause,
    rotation,
    sound,
    time,
    volume,
    width,
};

struct Observed {
    Property property;
    const char* name;
    mpv_format format;
};

constexpr Observed observed[] = {
    {Property::atEnd, "eof-reached", MPV_FORMAT_FLAG},
    {Property::duration, "duration", MPV_FORMAT_DOUBLE},
    {Property::frameRate, "container-fps", MPV_FORMAT_DOUBLE},
    {Property::height, "video-params/dh", MPV_FORMAT_INT64},
    {Property::mute, "mute", MPV_FORMAT_FLAG},
    {Property::pause, "pause", MPV_FORMAT_FLAG},
    {Property::rotation, "current-tracks/video/demux-rotation", MPV_FORMAT_INT64},
    {Property::sound, "current-tracks/audio/id", MPV_FORMAT_INT64},
    {Property::time, "time-pos", MPV_FORMAT_DOUBLE},
    {Property::volume, "volume", MPV_FORMAT_DOUBLE},
    {Property::width, "video-params/dw", MPV_FORMAT_INT64},
};

/// What we ask for, by number.
constexpr std::uint64_t seekRequest = 1;
constexpr std::uint64_t timeRequest = 2;
constexpr std::uint64_t pictureRequest = 3;

template <typename Value>
std::optional<Value> valueOf(const mpv_event_property& property)
{
    if (!property.data)
        return {};
    return *static_cast<const Value*>(property.data);
}

} // namespace

std::unique_ptr<Player> MpvPlayer::open(const QString& path)
{
    std::unique_ptr<MpvPlayer> player(new MpvPlayer);
    player->begin(path);
    return player;
}

MpvPlayer::~MpvPlayer()
{
    m_ending.cancel();
    if (m_film)
        m_film->setCalls({});
}

void MpvPlayer::begin(const QString& path)
{
    const auto opened = Guarded::once<const std::shared_ptr<MpvFilm>&>(
        &m_mainThread, [this](const std::shared_ptr<MpvFilm>& film) { take(film); });
    Background::threads().start(
        [path, opened, ending = m_ending] { opened(MpvFilm::open(path, ending)); });
}

void MpvPlayer::take(std::shared_ptr<MpvFilm> film)
{
    m_film = std::move(film);
    if (m_film) {
        m_film->setCalls({.event =
                              [](void* self) {
                                  auto* const player = static_cast<MpvPlayer*>(self);
                                  QMetaObject::invokeMethod(
                                      &player->m_mainThread, [player] { player->fetchEvents(); },
                                      Qt::QueuedConnection);
                              },
                          .picture =
                              [](void* self) {
                                  auto* const player = static_cast<MpvPlayer*>(self);
                                  QMetaObject::invokeMethod(
                                      &player->m_mainThread, [player] { player->fetchPicture(); },
                                      Qt::QueuedConnection);
                              },
                          .context = this});
        for (const Observed& it : observed)
            m_film->observe(static_cast<std::uint64_t>(it.property), it.name, it.format);
    }
    if (!m_film || !m_film->load())
        fail();
    changed();
}

void MpvPlayer::fetchEvents()
{
    for (;;) {
        const mpv_event& event = m_film->nextEvent();
        if (event.event_id == MPV_EVENT_NONE)
            break;
        take(event);
    }
    changed();
}

void MpvPlayer::take(const mpv_event& event)
{
    const bool isReply =
        event.event_id == MPV_EVENT_COMMAND_REPLY || event.event_id == MPV_EVENT_GET_PROPERTY_REPLY;
    const bool failedToSeek = isReply && event.reply_userdata == seekRequest && event.error < 0;
    const bool hasNoPicture = isReply && event.reply_userdata == pictureRequest && event.error < 0;
    const bool hasTime = isReply && event.reply_userdata == timeRequest && event.error >= 0;
    if (event.event_id == MPV_EVENT_PROPERTY_CHANGE || hasTime)
        take(*static_cast<const mpv_event_property*>(event.data));
    else if (event.event_id == MPV_EVENT_PLAYBACK_RESTART || failedToSeek)
        arrived();
    else if (event.event_id == MPV_EVENT_END_FILE || hasNoPicture)
        fail();
}

void MpvPlayer::take(const mpv_event_property& property)
{
    const auto found = std::find_if(std::begin(observed), std::end(observed), [&](const auto& it) {
        return std::strcmp(it.name, property.name) == 0;
    });
    if (found == std::end(observed))
        return;
    const auto flag = [&] { return valueOf<int>(property).value_or(0) != 0; };
    const auto whole = [&] {
        return static_cast<int>(valueOf<std::int64_t>(property).value_or(0));
    };
    switch (found->property) {
    case Property::atEnd:
        m_state.atEnd = flag();
        break;
    case Property::duration:
        m_state.duration = valueOf<double>(property);
        break;
    case Property::frameRate:
        m_state.frameRate = valueOf<double>(property);
        break;
    case Property::height:
        m_stored.setHeight(whole());
        break;
    case Property::mute:
        m_state.muted = flag();
        break;
    case Property::pause:
        m_state.playing = property.data && !flag();
        break;
    case Property::rotation:
        if (!m_isOrientationTold)
            m_orientation = {false, qRound(whole() / 90.0) & 3};
        break;
    case Property::sound:
        m_state.hasSound = property.data != nullptr;
        break;
    case Property::time:
        if (const auto time = valueOf<double>(property); time && !m_isSeeking)
            m_state.time = *time;
        break;
    case Property::volume:
        m_state.volume = valueOf<double>(property).value_or(fullVolume) / fullVolume;
        break;
    case Property::width:
        m_stored.setWidth(whole());
        break;
    }
}

void MpvPlayer::fetchPicture()
{
    if (!m_film->hasNewPicture())
        return;
    m_hasPicture = m_state.phase != PlayerState::Phase::failed;
    changed();
    if (m_hasPicture && onPicture)
        onPicture();
}

QImage MpvPlayer::picture(QSize pixels)
{
    if (!m_hasPicture || pixels.isEmpty())
        return {};
    return m_orientation.upright(m_film->picture(m_orientation.upright(pixels)));
}

void MpvPlayer::play()
{
    if (m_film)
        m_film->set("pause", false);
}

void MpvPlayer::pause()
{
    if (m_film)
        m_film->set("pause", true);
}

void MpvPlayer::seek(double seconds)
{
    if (!isLoaded())
        return;
    m_state.time = seconds;
    if (m_isSeeking)
        m_nextSeek = seconds;
    else
        startSeek(seconds);
    changed();
}

void MpvPlayer::startSeek(double seconds)
{
    const QByteArray time = QByteArray::number(seconds, 'f', 6);
    m_isSeeking = m_film->command(seekRequest, {"seek", time.constData(), "absolute+exact"});
}

void MpvPlayer::arrived()
{
    // The first time it tells so of the beginning, which comes after its picture: a seek that was
    // begun before would be taken for done.
    if (!std::exchange(m_hasBegun, true)) // sound alone plays too
        m_film->ask(pictureRequest, "current-tracks/video/id", MPV_FORMAT_INT64);
    m_isSeeking = false;
    if (const auto next = std::exchange(m_nextSeek, std::nullopt))
        startSeek(*next);
    else
        m_film->ask(timeRequest, "time-pos", MPV_FORMAT_DOUBLE);
}

void MpvPlayer::setEnd(std::optional<double> seconds)
{
    // Its number is rounded, and the frame that begins there must not show.
    constexpr double margin = 5e-4;
    if (m_film)
        m_film->set("end",
                    seconds ? QByteArray::number(*seconds - margin, 'f', 6) : QByteArray("none"));
}

void MpvPlayer::setOrientation(Orientation orientation)
{
    m_isOrientationTold = true;
    if (std::exchange(m_orientation, orientation) == orientation)
        return;
    changed();
    if (m_hasPicture && onPicture)
        onPicture();
}

void MpvPlayer::setMuted(bool muted)
{
    if (m_film)
        m_film->set("mute", muted);
}

void MpvPlayer::setVolume(double volume)
{
    if (m_film)
        m_film->set("volume", std::clamp(volume, 0.0, 1.0) * fullVolume);
}

bool MpvPlayer::isLoaded() const
{
    return m_state.phase == PlayerState::Phase::ready;
}

void MpvPlayer::fail()
{
    m_state = {};
    m_state.phase = PlayerState::Phase::failed;
    m_hasPicture = false;
}

void MpvPlayer::changed()
{
    if (m_state.phase != PlayerState::Phase::failed) {
        m_state.size = m_orientation.upright(m_stored);
        m_state.seeking = m_isSeeking;
        if (m_hasPicture && m_hasBegun && !m_state.size.isEmpty())
            m_state.phase = PlayerState::Phase::ready;
    }
    if (std::exchange(m_told, m_state) != m_state && onChange)
        onChange();
}
