#include "Media/Mpv/MpvFilm.h"

#include "Media/Mpv/Options.h"
#include "Media/ReadableEnd.h"
#include "Support/Background.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <utility>

extern "C" {
#include <libavutil/log.h>
}

namespace {

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

} // namespace

void MpvFilm::EndPlayer::operator()(mpv_handle* player) const
{
    mpv_terminate_destroy(player);
}

void MpvFilm::EndRendering::operator()(mpv_render_context* context) const
{
    mpv_render_context_free(context);
}

std::shared_ptr<MpvFilm> MpvFilm::open(const QString& path, const Cancellation& cancellation)
{
    Result<RegularFile> file = RegularFile::open(QFile::encodeName(path).toStdString());
    if (!file)
        return nullptr;
    file->size = readableEnd(*file, [&] { return cancellation.isCancelled(); });
    if (cancellation.isCancelled())
        return nullptr;
    const std::shared_ptr<MpvFilm> film(new MpvFilm(std::move(*file)), [](MpvFilm* ended) {
        if (QCoreApplication::closingDown()) // nobody waits for a thread any more
            delete ended;
        else
            Background::threads().start([ended] { delete ended; });
    });
    return film->begin() ? film : nullptr;
}

MpvFilm::MpvFilm(RegularFile file)
    : m_file(std::move(file))
{
}

bool MpvFilm::begin()
{
    // For the whole process. The first of several libmpvs takes what FFmpeg says; when that one has
    // ended it would go to standard error.
    av_log_set_level(AV_LOG_QUIET);
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
    return true;
}

void MpvFilm::setCalls(const Calls& calls)
{
    mpv_render_context_set_update_callback(m_rendering.get(), calls.picture, calls.context);
    mpv_set_wakeup_callback(m_player.get(), calls.event, calls.context);
}

bool MpvFilm::load()
{
    return command(0, {"loadfile", FileStream::address});
}

void MpvFilm::observe(std::uint64_t number, const char* property, int format)
{
    mpv_observe_property(m_player.get(), number, property, static_cast<mpv_format>(format));
}

const mpv_event& MpvFilm::nextEvent()
{
    return *mpv_wait_event(m_player.get(), 0);
}

bool MpvFilm::command(std::uint64_t request, std::initializer_list<const char*> words)
{
    std::array<const char*, 8> command = {};
    std::copy_n(words.begin(), std::min(words.size(), command.size() - 1), command.begin());
    return mpv_command_async(m_player.get(), request, command.data()) >= 0;
}

void MpvFilm::ask(std::uint64_t request, const char* property, int format)
{
    mpv_get_property_async(m_player.get(), request, property, static_cast<mpv_format>(format));
}

void MpvFilm::set(const char* property, bool on)
{
    int value = on ? 1 : 0;
    mpv_set_property_async(m_player.get(), 0, property, MPV_FORMAT_FLAG, &value);
}

void MpvFilm::set(const char* property, double value)
{
    mpv_set_property_async(m_player.get(), 0, property, MPV_FORMAT_DOUBLE, &value);
}

void MpvFilm::set(const char* property, const QByteArray& value)
{
    const char* text = value.constData();
    mpv_set_property_async(m_player.get(), 0, property, MPV_FORMAT_STRING, &text);
}

bool MpvFilm::hasNewPicture()
{
    return (mpv_render_context_update(m_rendering.get()) & MPV_RENDER_UPDATE_FRAME) != 0;
}

QImage MpvFilm::picture(QSize pixels)
{
    QImage image = alignedImage(pixels);
    std::array size = {pixels.width(), pixels.height()};
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
    const bool isThere = mpv_render_context_render(m_rendering.get(), parameters.data()) >= 0;
    return isThere ? image : QImage();
}
