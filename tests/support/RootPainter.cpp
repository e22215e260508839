#include "support/RootPainter.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

struct RootPainter::Display {
    explicit Display(const std::string& name)
        : connection(xcb_connect(name.c_str(), nullptr))
    {
        if (xcb_connection_has_error(connection)) {
            xcb_disconnect(connection);
            throw std::runtime_error("cannot open display " + name);
        }
        screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        context = xcb_generate_id(connection);
        xcb_create_gc(connection, context, screen->root, 0, nullptr);
    }
    ~Display() { xcb_disconnect(connection); }

    void finish() const
    {
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }

    /// From one row of an image to the next, in bytes.
    std::uint32_t stride() const
    {
        for (auto format = xcb_setup_pixmap_formats_iterator(xcb_get_setup(connection)); format.rem;
             xcb_format_next(&format))
        {
            if (format.data->depth != screen->root_depth)
                continue;
            const std::uint32_t pad = format.data->scanline_pad;
            const std::uint32_t bits = format.data->bits_per_pixel * screen->width_in_pixels;
            return (bits + pad - 1) / pad * pad / 8;
        }
        throw std::runtime_error("the display has no format for its own depth");
    }

    xcb_connection_t* connection;
    xcb_screen_t* screen;
    xcb_gcontext_t context;
};

RootPainter::RootPainter(const std::string& display)
    : m_display(std::make_unique<Display>(display))
{
}

RootPainter::~RootPainter() = default;

void RootPainter::paintNoise(std::uint32_t seed)
{
    const Display& d = *m_display;
    const std::uint32_t stride = d.stride();
    const std::uint32_t rowsAtOnce = std::max(1U, 200000 / stride);
    std::mt19937 random(seed);
    for (std::uint32_t y = 0; y < d.screen->height_in_pixels; y += rowsAtOnce) {
        const std::uint32_t rows = std::min(rowsAtOnce, d.screen->height_in_pixels - y);
        std::vector<std::uint8_t> bytes(std::size_t{stride} * rows);
        std::generate(bytes.begin(), bytes.end(),
                      [&] { return static_cast<std::uint8_t>(random()); });
        xcb_put_image(d.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, d.screen->root, d.context,
                      d.screen->width_in_pixels, static_cast<std::uint16_t>(rows), 0,
                      static_cast<std::int16_t>(y), 0, d.screen->root_depth,
                      static_cast<std::uint32_t>(bytes.size()), bytes.data());
    }
    d.finish();
}

void RootPainter::paintRectangle(int x, int y, int width, int height, std::uint32_t pixel)
{
    const Display& d = *m_display;
    xcb_change_gc(d.connection, d.context, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                    static_cast<std::uint16_t>(width),
                                    static_cast<std::uint16_t>(height)};
    xcb_poly_fill_rectangle(d.connection, d.screen->root, d.context, 1, &rectangle);
    d.finish();
}

void RootPainter::showPointerAt(int x, int y)
{
    const Display& d = *m_display;
    constexpr std::string_view fontName = "cursor";
    constexpr std::uint16_t cross = 34; // XC_crosshair; its mask is the glyph behind it
    const xcb_font_t font = xcb_generate_id(d.connection);
    const xcb_cursor_t cursor = xcb_generate_id(d.connection);
    xcb_open_font(d.connection, font, fontName.size(), fontName.data());
    xcb_create_glyph_cursor(d.connection, cursor, font, font, cross, cross + 1, 0xffff, 0, 0, 0,
                            0xffff, 0xffff);
    const xcb_void_cookie_t defined =
        xcb_change_window_attributes_checked(d.connection, d.screen->root, XCB_CW_CURSOR, &cursor);
    xcb_generic_error_t* const error = xcb_request_check(d.connection, defined);
    if (error) {
        std::free(error);
        throw std::runtime_error("the display does not take a cursor");
    }
    xcb_warp_pointer(d.connection, XCB_NONE, d.screen->root, 0, 0, 0, 0,
                     static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
    d.finish();
}
