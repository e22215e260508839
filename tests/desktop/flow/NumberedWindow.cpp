#include "desktop/flow/NumberedWindow.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"

#include <xcb/xcb.h>

#include <utility>
#include <vector>

namespace Desktop {
namespace {

constexpr std::uint8_t depth = 24;

bool isWhite(int number, int row, int bit)
{
    return ((number >> bit & 1) != 0) != (row % 2 == 1);
}

} // namespace

NumberedWindow::NumberedWindow(const VirtualDesktop& desktop, QRect place)
    : m_desktop(desktop)
    , m_place(place)
    , m_window(xcb_generate_id(desktop.server().connection()))
    , m_sheet(xcb_generate_id(desktop.server().connection()))
    , m_black(xcb_generate_id(desktop.server().connection()))
    , m_white(xcb_generate_id(desktop.server().connection()))
{
    const Server& server = desktop.server();
    xcb_connection_t* const connection = server.connection();
    const auto width = static_cast<std::uint16_t>(place.width());
    const auto height = static_cast<std::uint16_t>(place.height());
    const std::uint32_t bypasses = 1;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, server.root(),
                      static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()),
                      width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT, &bypasses);
    xcb_map_window(connection, m_window);
    xcb_create_pixmap(connection, depth, m_sheet, m_window, width, height);
    for (const auto& [context, colour] : {std::pair{m_black, 0U}, {m_white, 0xffffffU}})
        xcb_create_gc(connection, context, m_sheet, XCB_GC_FOREGROUND, &colour);
}

Outcome<std::unique_ptr<NumberedWindow>> NumberedWindow::show(const VirtualDesktop& desktop,
                                                              QRect place)
{
    if (place.width() < bits * square.width() || place.height() < rows * square.height())
        return Failure{QStringLiteral("a number does not fit")};
    std::unique_ptr<NumberedWindow> window(new NumberedWindow(desktop, place));
    window->show(0);
    return window;
}

NumberedWindow::~NumberedWindow()
{
    stop();
    xcb_connection_t* const connection = m_desktop.server().connection();
    xcb_destroy_window(connection, m_window);
    xcb_free_pixmap(connection, m_sheet);
    xcb_free_gc(connection, m_black);
    xcb_free_gc(connection, m_white);
    xcb_flush(connection);
}

void NumberedWindow::finish() const
{
    xcb_connection_t* const connection = m_desktop.server().connection();
    // An answer comes when all that was asked for before has been done.
    const Reply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

NumberedWindow::Showing NumberedWindow::showSheet(int number) const
{
    const auto width = static_cast<std::uint16_t>(m_place.width());
    const auto height = static_cast<std::uint16_t>(m_place.height());
    Showing showing{number, std::chrono::steady_clock::now(), {}};
    xcb_copy_area(m_desktop.server().connection(), m_sheet, m_window, m_black, 0, 0, 0, 0, width,
                  height);
    finish();
    showing.to = std::chrono::steady_clock::now();
    return showing;
}

NumberedWindow::Showing NumberedWindow::show(int number)
{
    const auto squareWidth = static_cast<std::uint16_t>(square.width());
    const auto squareHeight = static_cast<std::uint16_t>(square.height());
    std::vector<xcb_rectangle_t> whites;
    for (int row = 0; row < rows; ++row) {
        for (int bit = 0; bit < bits; ++bit) {
            if (isWhite(number, row, bit))
                whites.push_back({static_cast<std::int16_t>(bit * squareWidth),
                                  static_cast<std::int16_t>(row * squareHeight), squareWidth,
                                  squareHeight});
        }
    }
    xcb_connection_t* const connection = m_desktop.server().connection();
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(m_place.width()),
                              static_cast<std::uint16_t>(m_place.height())};
    xcb_poly_fill_rectangle(connection, m_sheet, m_black, 1, &all);
    xcb_poly_fill_rectangle(connection, m_sheet, m_white, static_cast<std::uint32_t>(whites.size()),
                            whites.data());
    m_number = number;
    return showSheet(number);
}

void NumberedWindow::show(const QImage& picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    xcb_put_image(m_desktop.server().connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_sheet, m_black,
                  static_cast<std::uint16_t>(image.width()),
                  static_cast<std::uint16_t>(image.height()), 0, 0, 0, depth,
                  static_cast<std::uint32_t>(image.sizeInBytes()), image.constBits());
    showSheet(m_number);
}

void NumberedWindow::count(std::chrono::milliseconds distance)
{
    stop();
    m_counts = true;
    m_counter = std::thread([this, distance] {
        auto next = std::chrono::steady_clock::now();
        while (m_counts) {
            m_counted += show(m_number + 1);
            next += distance;
            std::this_thread::sleep_until(next);
        }
    });
}

QList<NumberedWindow::Showing> NumberedWindow::stop()
{
    m_counts = false;
    if (m_counter.joinable())
        m_counter.join();
    return std::exchange(m_counted, {});
}

Outcome<QList<NumberedFrame>> readNumbers(const QString& film)
{
    constexpr int bits = NumberedWindow::bits;
    constexpr int rows = NumberedWindow::rows;
    const auto environment = QProcessEnvironment::systemEnvironment();
    const auto times = run(QStringLiteral("ffprobe"),
                           {QStringLiteral("-v"), QStringLiteral("error"),
                            QStringLiteral("-select_streams"), QStringLiteral("v"),
                            QStringLiteral("-show_entries"), QStringLiteral("packet=pts_time"),
                            QStringLiteral("-of"), QStringLiteral("csv=p=0"), film},
                           environment);
    if (!times)
        return times.failure();
    const QList<QByteArray> lines = times->trimmed().split('\n');
    const QString filter = QStringLiteral("crop=%1:%2:0:0,scale=%3:%4:flags=area")
                               .arg(bits * NumberedWindow::square.width())
                               .arg(rows * NumberedWindow::square.height())
                               .arg(bits)
                               .arg(rows);
    const auto squares =
        run(QStringLiteral("ffmpeg"),
            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), film,
             QStringLiteral("-an"), QStringLiteral("-vf"), filter, QStringLiteral("-fps_mode"),
             QStringLiteral("passthrough"), QStringLiteral("-enc_time_base"),
             QStringLiteral("1:90000"), QStringLiteral("-f"), QStringLiteral("rawvideo"),
             QStringLiteral("-pix_fmt"), QStringLiteral("gray"), QStringLiteral("-")},
            environment);
    if (!squares)
        return squares.failure();
    if (squares->size() != lines.size() * bits * rows)
        return Failure{QStringLiteral("of %1 frames there are %2 bytes")
                           .arg(lines.size())
                           .arg(squares->size())};
    QList<NumberedFrame> frames;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const char* const frame = squares->constData() + i * bits * rows;
        const auto isLight = [&](int row, int bit) {
            return static_cast<unsigned char>(frame[row * bits + bit]) > 128;
        };
        NumberedFrame read{lines[i].split(',').front().toDouble(), 0};
        for (int bit = 0; bit < bits; ++bit)
            read.number |= isLight(0, bit) << bit;
        for (int row = 0; row < rows; ++row) {
            for (int bit = 0; bit < bits; ++bit) {
                const int light = static_cast<unsigned char>(frame[row * bits + bit]);
                if (isLight(row, bit) != isWhite(read.number, row, bit) ||
                    (light > 48 && light < 208))
                    return Failure{QStringLiteral("row %1 of the frame at %2 s is no %3: %4")
                                       .arg(row)
                                       .arg(read.time)
                                       .arg(read.number)
                                       .arg(light)};
            }
        }
        frames += read;
    }
    return frames;
}

} // namespace Desktop
