#include "Movie/Screen/ScreenSource.h"

#include "Movie/Core/Damage.h"
#include "Platform/Linux/X11/Handles.h"

#include <utility>

#include <xcb/xcb.h>

using ScreenTable::PixelRect;

Result<std::unique_ptr<ScreenSource>> ScreenSource::create(const X11::Connection& connection,
                                                           const PixelRect& area)
{
    const Result<PixelRect> there = X11::onRoot(area, X11::sizeOf(connection.screen()));
    if (!there)
        return there.failure();
    Result<X11::RootReader> reader = X11::RootReader::create(connection, *there);
    if (!reader)
        return reader.failure();
    return std::unique_ptr<ScreenSource>(new ScreenSource(connection, *there, std::move(*reader)));
}

ScreenSource::ScreenSource(const X11::Connection& connection, const PixelRect& area,
                           X11::RootReader reader)
    : m_connection(&connection)
    , m_area(area)
    , m_reader(std::move(reader))
    , m_damage(DamageTracker::create(connection))
    , m_pointer(connection)
    , m_conversion(area.width)
    , m_picture(area.width, area.height)
{
}

int ScreenSource::descriptor() const
{
    return xcb_get_file_descriptor(m_connection->get());
}

PossibleFailure ScreenSource::listen()
{
    xcb_connection_t* const xcb = m_connection->get();
    while (const X11::Reply<xcb_generic_event_t> event{xcb_poll_for_event(xcb)}) {
        if (m_damage && (event->response_type & 0x7f) == m_damage->event())
            m_isDamaged = true;
        else
            m_pointer.see(event.get());
    }
    if (xcb_connection_has_error(xcb))
        return m_connection->lostOr("");
    xcb_flush(xcb);
    return std::nullopt;
}

Result<ScreenSource::Look> ScreenSource::look(bool atAll)
{
    const PixelRect whole{0, 0, m_area.width, m_area.height};
    Look look;
    const unsigned place = m_pointer.ask();
    std::vector<PixelRect> parts;
    if (m_damage && m_isDamaged) {
        m_isDamaged = false;
        // Asked for even when all is read: what has changed up to now is done with then.
        parts = Damage::parts(m_damage->reply(m_damage->ask()), m_area);
    }
    if (atAll || !m_damage)
        parts = {whole};
    look.wasWhole = parts.size() == 1 && parts.front() == whole;
    look.pointer = m_pointer.reply(place);
    if (look.pointer) {
        look.pointer->x -= m_area.x;
        look.pointer->y -= m_area.y;
    }
    const auto take = [&](const PixelRect& part, const std::uint32_t* pixels, std::size_t stride) {
        look.isChanged |= m_conversion.update(m_picture, part, pixels, stride);
    };
    if (PossibleFailure failure = m_reader.read(parts, take))
        return *failure;
    return look;
}
