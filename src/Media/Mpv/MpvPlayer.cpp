#include "Media/Mpv/MpvPlayer.h"

#include "Media/Mpv/Options.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <QFile>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr double fullVolume = 100;

/// What we are told of, each by its number.
enum class Property : std::uint64_t {
    atEnd = 1,
    duration,
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

/// As mpv likes it: rows that begin at multiples of 64 bytes.
QImage alignedImage(QSize pixels)
{
    constexpr std::size_t alignment = 64;
    const std::size_t row =
        (static_cast<std::size_t>(pixels.width()) * 4 + alignment - 1) / alignment * alignment;
    void* const bytes =
        std::aligned_alloc(alignment, row * static_cast<std::size_t>(pixels.height()));
    if (!bytes)
        throw std::bad_alloc();
    return {static_cast<uchar*>(bytes),
            pixels.width(),
            pixels.height(),
            static_cast<qsizetype>(row),
            QImage::Format_RGB32,
            std::free,
            bytes};
}

template <typename Value>
std::optional<Value> valueOf(const mpv_event_property& property)
{
    if (!property.data)
        return {};
    return *static_cast<const Value*>(property.data);
}

} // namespace

void MpvPlayer::EndPlayer::operator()(mpv_handle* player) const
{
    mpv_terminate_destroy(player);
}

void MpvPlayer::EndRendering::operator()(mpv_render_context* context) const
{
    mpv_render_context_free(context);
}

std::unique_ptr<Player> MpvPlayer::open(const QString& path)
{
    Result<RegularFile> file = RegularFile::open(QFile::encodeName(path).toStdString());
    const bool isReadable = static_cast<bool>(file);
    std::unique_ptr<MpvPlayer> player(
        new MpvPlayer(isReadable ? std::move(*file) : RegularFile{FileDescriptor(), 0}));
    if (!isReadable || !player->start())
        player->fail();
    return player;
}

MpvPlayer::MpvPlayer(RegularFile file)
    : m_file(std::move(file))
{
}

MpvPlayer::~MpvPlayer()
{
    if (m_player)
        mpv_set_wakeup_callback(m_player.get(), nullptr, nullptr);
}

bool MpvPlayer::start()
{
    m_player.reset(mpv_create());
    if (!m_player)
        return false;
    setPlayerOptions(m_player.get(), m_file.format());
    if (mpv_initialize(m_player.get()) < 0 || !m_file.registerAt(m_player.get()))
        return false;

    std::array<char, sizeof MPV_RENDER_API_TYPE_SW> software = {MPV_RENDER_API_TYPE_SW};
    std::array parameters = {mpv_render_param{MPV_RENDER_PARAM_API_TYPE, software.data()},
                             mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context* rendering = nullptr;
    if (mpv_render_context_create(&rendering, m_player.get(), parameters.data()) < 0)
        return false;
    m_rendering.reset(rendering);
    // Both are called on threads of mpv's, and not any more once their object is gone.
    mpv_render_context_set_update_callback(
        rendering,
        [](void* self) {
            auto* const player = static_cast<MpvPlayer*>(self);
            QMetaObject::invokeMethod(
                &player->m_mainThread, [player] { player->fetchPicture(); }, Qt::QueuedConnection);
        },
        this);
    mpv_set_wakeup_callback(
        m_player.get(),
        [](void* self) {
            auto* const player = static_cast<MpvPlayer*>(self);
            QMetaObject::invokeMethod(
                &player->m_mainThread, [player] { player->fetchEvents(); }, Qt::QueuedConnection);
        },
        this);
    observe();
    std::array<const char*, 3> load = {"loadfile", FileStream::address, nullptr};
    return mpv_command_async(m_player.get(), 0, load.data()) >= 0;
}

void MpvPlayer::observe()
{
    for (const Observed& it : observed)
        mpv_observe_property(m_player.get(), static_cast<std::uint64_t>(it.property), it.name,
                             it.format);
}

void MpvPlayer::fetchEvents()
{
    for (;;) {
        const mpv_event* const event = mpv_wait_event(m_player.get(), 0);
        if (event->event_id == MPV_EVENT_NONE)
            break;
        const bool isReply = event->event_id == MPV_EVENT_COMMAND_REPLY ||
                             event->event_id == MPV_EVENT_GET_PROPERTY_REPLY;
        const bool failedToSeek =
            isReply && event->reply_userdata == seekRequest && event->error < 0;
        const bool hasTime = isReply && event->reply_userdata == timeRequest && event->error >= 0;
        if (event->event_id == MPV_EVENT_PROPERTY_CHANGE || hasTime)
            take(*static_cast<const mpv_event_property*>(event->data));
        else if (event->event_id == MPV_EVENT_PLAYBACK_RESTART || failedToSeek)
            arrived();
        else if (event->event_id == MPV_EVENT_END_FILE)
            fail();
    }
    changed();
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
        m_rotation = whole();
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
    if ((mpv_render_context_update(m_rendering.get()) & MPV_RENDER_UPDATE_FRAME) == 0)
        return;
    m_hasPicture = m_state.phase != PlayerState::Phase::failed;
    changed();
    if (m_hasPicture && onPicture)
        onPicture();
}

bool MpvPlayer::liesOnItsSide() const
{
    return m_rotation % 180 != 0;
}

QImage MpvPlayer::picture(QSize pixels)
{
    if (!m_hasPicture || pixels.isEmpty())
        return {};
    const QSize stored = liesOnItsSide() ? pixels.transposed() : pixels;
    QImage image = alignedImage(stored);
    std::array size = {stored.width(), stored.height()};
    std::array<char, 5> format = {"bgr0"};
    auto row = static_cast<std::size_t>(image.bytesPerLine());
    int waitsForItsTime = 0;
    std::array parameters = {
        mpv_render_param{MPV_RENDER_PARAM_SW_SIZE, size.data()},
        mpv_render_param{MPV_RENDER_PARAM_SW_FORMAT, format.data()},
        mpv_render_param{MPV_RENDER_PARAM_SW_STRIDE, &row},
        mpv_render_param{MPV_RENDER_PARAM_SW_POINTER, image.bits()},
        mpv_render_param{MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForItsTime},
        mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr},
    };
    if (mpv_render_context_render(m_rendering.get(), parameters.data()) < 0)
        return {};
    return m_rotation == 0 ? image : image.transformed(QTransform().rotate(m_rotation));
}

void MpvPlayer::play()
{
    setFlag("pause", false);
}

void MpvPlayer::pause()
{
    setFlag("pause", true);
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
    std::array<const char*, 4> command = {"seek", time.constData(), "absolute+exact", nullptr};
    m_isSeeking = mpv_command_async(m_player.get(), seekRequest, command.data()) >= 0;
}

void MpvPlayer::arrived()
{
    // The first time it tells so of the beginning, which comes after its picture: a seek that was
    // begun before would be taken for done.
    m_hasBegun = true;
    m_isSeeking = false;
    if (const auto next = std::exchange(m_nextSeek, std::nullopt))
        startSeek(*next);
    else
        mpv_get_property_async(m_player.get(), timeRequest, "time-pos", MPV_FORMAT_DOUBLE);
}

void MpvPlayer::setEnd(std::optional<double> seconds)
{
    // Its number is rounded, and the frame that begins there must not show.
    constexpr double margin = 5e-4;
    const QByteArray end =
        seconds ? QByteArray::number(*seconds - margin, 'f', 6) : QByteArray("none");
    const char* value = end.constData();
    if (m_player)
        mpv_set_property_async(m_player.get(), 0, "end", MPV_FORMAT_STRING, &value);
}

void MpvPlayer::setMuted(bool muted)
{
    setFlag("mute", muted);
}

void MpvPlayer::setVolume(double volume)
{
    double value = std::clamp(volume, 0.0, 1.0) * fullVolume;
    if (m_player)
        mpv_set_property_async(m_player.get(), 0, "volume", MPV_FORMAT_DOUBLE, &value);
}

void MpvPlayer::setFlag(const char* name, bool on)
{
    int value = on ? 1 : 0;
    if (m_player)
        mpv_set_property_async(m_player.get(), 0, name, MPV_FORMAT_FLAG, &value);
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
        m_state.size = liesOnItsSide() ? m_stored.transposed() : m_stored;
        m_state.seeking = m_isSeeking;
        if (m_hasPicture && m_hasBegun && !m_state.size.isEmpty())
            m_state.phase = PlayerState::Phase::ready;
    }
    if (std::exchange(m_told, m_state) != m_state && onChange)
        onChange();
}
