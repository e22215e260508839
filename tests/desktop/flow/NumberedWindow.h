#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QList>
#include <QtCore/QRect>
#include <QtGui/QImage>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>

namespace Desktop {

class VirtualDesktop;

/// A window above all others that shows a number, or a picture, and changes all of it at once.
///
/// A number is written four times, in rows of squares of which white ones are set bits; every other
/// row is the opposite. So a film that mixes two pictures gives itself away.
class NumberedWindow {
public:
    static constexpr int bits = 16;
    static constexpr int rows = 4;
    static constexpr QSize square = {20, 40}; // pixels

    using Instant = std::chrono::steady_clock::time_point;

    /// When a number came onto the screen: not before `from`, and no later than `to`.
    struct Showing {
        int number = 0;
        Instant from;
        Instant to;
    };

    /// `place` is in pixels of the desktop. Shows the number 0.
    static Outcome<std::unique_ptr<NumberedWindow>> show(const VirtualDesktop& desktop,
                                                         QRect place);
    ~NumberedWindow();
    NumberedWindow(const NumberedWindow&) = delete;
    NumberedWindow& operator=(const NumberedWindow&) = delete;

    /// Returns when it is on the screen. Not while it counts.
    Showing show(int number);
    /// Its corner is the window's. Not while it counts.
    void show(const QImage& picture);

    /// Shows the next number in such distances, on and on.
    void count(std::chrono::milliseconds distance);
    /// Ends that; all that were shown since it began.
    QList<Showing> stop();

private:
    NumberedWindow(const VirtualDesktop& desktop, QRect place);

    Showing showSheet(int number) const;
    void finish() const;

    const VirtualDesktop& m_desktop;
    QRect m_place;
    std::uint32_t m_window;
    std::uint32_t m_sheet; // a picture in the server's memory that nobody sees
    std::uint32_t m_black;
    std::uint32_t m_white;
    int m_number = 0;
    QList<Showing> m_counted;
    std::atomic<bool> m_counts = false;
    std::thread m_counter;
};

/// What a film of a NumberedWindow shows, a frame each.
struct NumberedFrame {
    double time = 0; // seconds
    int number = 0;
};

/// All frames of a film whose corner is the window's. Fails when a frame shows no number, or parts
/// of two.
Outcome<QList<NumberedFrame>> readNumbers(const QString& film);

} // namespace Desktop
