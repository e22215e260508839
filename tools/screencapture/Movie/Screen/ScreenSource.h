#pragma once

#include "Movie/Core/Conversion.h"
#include "Movie/Screen/DamageTracker.h"
#include "Movie/Screen/PointerTracker.h"
#include "Platform/Linux/X11/RootReader.h"

#include <memory>
#include <optional>

/// A rectangle of the screen as a picture that is kept up to date, and the pointer over it.
class ScreenSource {
public:
    /// `area` is in pixels of the root window and is cut to it.
    static Result<std::unique_ptr<ScreenSource>> create(const X11::Connection& connection,
                                                        const ScreenTable::PixelRect& area);

    /// Readable when the server has something to say.
    int descriptor() const;
    /// Takes note of what the server has said. Fails when the server is gone.
    PossibleFailure listen();

    /// Whether the screen, or the pointer, may look different from what was last looked at. For
    /// the screen that is always so on a server that does not tell.
    bool hasScreenNews() const { return !m_damage || m_isDamaged; }
    bool hasPointerNews() const { return m_pointer.hasNews(); }

    struct Look {
        bool isChanged = false;                       ///< The picture is another than before.
        bool wasWhole = false;                        ///< All of it was compared with the screen.
        std::optional<PointerTracker::Place> pointer; ///< Pixels from the area's top left corner.
    };

    /// Brings the picture up to date: all of it, or what the server says has changed.
    Result<Look> look(bool atAll);

    const Picture& picture() const { return m_picture; }
    PointerTracker& pointer() { return m_pointer; }

private:
    ScreenSource(const X11::Connection& connection, const ScreenTable::PixelRect& area,
                 X11::RootReader reader);

    const X11::Connection* m_connection;
    ScreenTable::PixelRect m_area;
    X11::RootReader m_reader;
    std::optional<DamageTracker> m_damage;
    PointerTracker m_pointer;
    Conversion m_conversion;
    Picture m_picture;
    bool m_isDamaged = true;
};
