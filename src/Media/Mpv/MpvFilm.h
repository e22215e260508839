#pragma once

#include "Media/Cancellation.h"
#include "Media/Mpv/FileStream.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <initializer_list>
#include <memory>

struct mpv_event;
struct mpv_handle;
struct mpv_render_context;

/// A libmpv of its own for one film.
///
/// It is opened on a thread beside the main one, since that waits for the disk, and ends on such a
/// thread by itself, since that waits for the disk and the sound. Everything else is for one
/// thread, and waits for nothing.
class MpvFilm {
public:
    /// Null when the file cannot be read, or libmpv cannot be used. Waits.
    static std::shared_ptr<MpvFilm> open(const QString& path, const Cancellation& cancellation);
    MpvFilm(const MpvFilm&) = delete;
    MpvFilm& operator=(const MpvFilm&) = delete;

    /// Called on threads of libmpv's, with `context`: there is something to fetch.
    struct Calls {
        void (*event)(void* context) = nullptr;
        void (*picture)(void* context) = nullptr;
        void* context = nullptr;
    };
    /// When this has returned, earlier ones are called no more.
    void setCalls(const Calls& calls);
    /// Begins to read the film. False when that is impossible.
    bool load();

    /// Which change is told of as an event.
    void observe(std::uint64_t number, const char* property, int format);
    /// The next event, of type MPV_EVENT_NONE when there is none.
    const mpv_event& nextEvent();

    /// The answers come as events with `request`, if that is not 0. False when there will be none.
    bool command(std::uint64_t request, std::initializer_list<const char*> words);
    void ask(std::uint64_t request, const char* property, int format);
    void set(const char* property, bool on);
    void set(const char* property, double value);
    void set(const char* property, const QByteArray& value);

    /// Whether there is another picture than at the last call.
    bool hasNewPicture();
    /// As it is stored, as large as `pixels`; null when there is none.
    QImage picture(QSize pixels);

private:
    struct EndPlayer {
        void operator()(mpv_handle* player) const;
    };
    struct EndRendering {
        void operator()(mpv_render_context* context) const;
    };

    explicit MpvFilm(RegularFile file);
    bool begin();

    FileStream m_file; // outlives who reads it
    std::unique_ptr<mpv_handle, EndPlayer> m_player;
    std::unique_ptr<mpv_render_context, EndRendering> m_rendering; // ends before the player
};
