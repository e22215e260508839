#pragma once

#include "Movie/Core/Sprite.h"
#include "Platform/Linux/X11/Connection.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Where the mouse pointer is, what it looks like, and when its buttons go down.
class PointerTracker {
public:
    explicit PointerTracker(const X11::Connection& connection);

    struct Image {
        Sprite sprite;
        int hotX = 0; // the pixel that points
        int hotY = 0;
    };

    struct Place {
        int x = 0; // pixels of the root window
        int y = 0;

        friend bool operator==(const Place&, const Place&) = default;
    };

    struct Button {
        int number = 0;
        bool isDown = false;
    };

    /// Takes note of an event (an xcb_generic_event_t, which cannot be declared by itself), if it
    /// is about the pointer.
    void see(const void* event);

    /// Whether the pointer may have moved or changed since the last question for its place.
    bool hasNews() const { return m_hasNews; }

    /// Buttons that went down or up since the last call. The mouse wheel is not among them.
    std::vector<Button> takeButtons();

    /// Asks where the pointer is. Something else may be asked before the reply is waited for.
    unsigned ask();
    /// Absent when the connection is lost, or the pointer on another screen of the server.
    std::optional<Place> reply(unsigned question);

    /// What the pointer looks like, asked for again when it has changed; empty when unknown.
    const Image& image();
    /// The same, as it was then.
    const Image& lastImage() const { return m_image; }

    /// Goes up with every change of the image.
    int imageNumber() const { return m_imageNumber; }

private:
    void watchImages();
    void watchDevices();
    void seeRaw(int type, std::uint32_t detail);

    const X11::Connection* m_connection;
    int m_imageEvent = -1; // the number of the event; -1 when there is none
    int m_devicesOpcode = -1;
    bool m_hasNews = true;
    bool m_isImageOld = true;
    Image m_image;
    int m_imageNumber = 0;
    std::vector<Button> m_buttons;
};
