#include "Platform/Backdrop.h"

#include "Platform/Linux/X11/QtConnection.h"

namespace {

/// Whether a compositing manager runs: it owns a selection named after the screen (Extended Window
/// Manager Hints 1.5, "Compositing Managers").
bool composited()
{
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(X11::qtScreenNumber());
    const auto cookie = xcb_get_selection_owner(X11::qtConnection(), X11::atom(name.constData()));
    const X11::Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(X11::qtConnection(), cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace

std::optional<QPixmap> Platform::frozenBackdrop(const Screen& screen)
{
    if (!X11::qtConnection() || !screen.handle || composited())
        return std::nullopt;
    QPixmap picture = screen.handle->grabWindow(0);
    if (picture.isNull())
        return std::nullopt;
    return picture;
}
