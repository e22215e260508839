// Moves a picture over the whole screen, so that every pixel changes with every frame, and writes
// the frame's number into the top row of it, in 16 squares of which white ones are set bits, the
// lowest first. Goes on until it is ended.
//
// usage: bench_motion FRAMES_A_SECOND

#include "probes/Connection.h"
#include "probes/Contents.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

#include <sys/shm.h>
#include <xcb/shm.h>

namespace {

constexpr int square = 40; // pixels
constexpr int bits = 16;
constexpr int step = 6; // pixels a frame

/// An image that the server reads from memory.
class SharedImage {
public:
    SharedImage(const Bench::Connection& connection, QSize size)
        : m_segment(xcb_generate_id(connection))
        , m_image(attach(connection, size), size.width(), size.height(),
                  qsizetype{4} * size.width(), QImage::Format_RGB32)
    {
    }

    QImage& image() { return m_image; }
    xcb_shm_seg_t segment() const { return m_segment; }

private:
    std::uint8_t* attach(const Bench::Connection& connection, QSize size) const
    {
        const auto bytes =
            static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * 4;
        const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        void* const memory = id < 0 ? nullptr : shmat(id, nullptr, 0);
        const Bench::Owned<xcb_generic_error_t> error(xcb_request_check(
            connection,
            xcb_shm_attach_checked(connection, m_segment, static_cast<std::uint32_t>(id), true)));
        shmctl(id, IPC_RMID, nullptr);
        if (error)
            throw std::runtime_error("the server does not share memory");
        return static_cast<std::uint8_t*>(memory);
    }

    xcb_shm_seg_t m_segment;
    QImage m_image;
};

void paint(QImage& image, const QImage& content, int number)
{
    const int width = content.width();
    const int shift = number * step % width;
    for (int y = 0; y < content.height(); ++y) {
        const auto* const from = content.constScanLine(y);
        auto* const to = image.scanLine(y);
        const auto left = static_cast<std::size_t>(width - shift) * 4;
        std::memcpy(to, from + std::ptrdiff_t{4} * shift, left);
        std::memcpy(to + left, from, static_cast<std::size_t>(shift) * 4);
    }
    for (int y = 0; y < square; ++y) {
        auto* const row = image.scanLine(y);
        for (int bit = 0; bit < bits; ++bit)
            std::memset(row + std::ptrdiff_t{4} * bit * square, (number >> bit & 1) != 0 ? 255 : 0,
                        std::size_t{4} * square);
    }
}

void run(int framesASecond)
{
    const Bench::Connection connection;
    const QSize size(connection.screen().width_in_pixels, connection.screen().height_in_pixels);
    const auto width = static_cast<std::uint16_t>(size.width());
    const auto height = static_cast<std::uint16_t>(size.height());
    const QImage content = Bench::Contents::mixed(size).convertToFormat(QImage::Format_RGB32);
    SharedImage shared(connection, size);

    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t bypasses = 1;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, connection.root(), 0, 0, width,
                      height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT, &bypasses);
    xcb_map_window(connection, window);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, window, 0, nullptr);

    const auto start = Bench::Clock::now();
    for (int number = 0;; ++number) {
        paint(shared.image(), content, number);
        xcb_shm_put_image(connection, window, context, width, height, 0, 0, width, height, 0, 0,
                          connection.screen().root_depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0,
                          shared.segment(), 0);
        connection.finish();
        std::this_thread::sleep_until(
            start +
            std::chrono::microseconds(std::int64_t{1000000} * (number + 1) / framesASecond));
    }
}

} // namespace

int main(int argc, char** argv)
try {
    // Only for its fonts: nothing of Qt's is shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    if (argc != 2)
        throw std::runtime_error("usage: bench_motion FRAMES_A_SECOND");
    run(std::stoi(argv[1]));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_motion: %s\n", error.what());
    return 1;
}
