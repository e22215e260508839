#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <cstdint>
#include <memory>

namespace Desktop {

class VirtualDesktop;

/// A window of another program that fills the screen with coloured noise.
class FullScreenWindow {
public:
    enum class Kind {
        Managed, ///< asks the window manager to be full-screen, as video players do
        Bypass,  ///< covers the screen without asking, as some games do
    };

    /// Shows it and waits until all of it is seen, but for a part that others may lie above.
    static Outcome<std::unique_ptr<FullScreenWindow>> show(const VirtualDesktop& desktop, Kind kind,
                                                           QRect others = {});
    ~FullScreenWindow();
    FullScreenWindow(const FullScreenWindow&) = delete;
    FullScreenWindow& operator=(const FullScreenWindow&) = delete;

    std::uint32_t id() const { return m_id; }
    /// What it shows on a part of the screen.
    static QImage picture(QRect area);

private:
    FullScreenWindow(const VirtualDesktop& desktop, std::uint32_t id);

    const VirtualDesktop& m_desktop;
    std::uint32_t m_id;
};

} // namespace Desktop
