#include "desktop/harness/Input.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/WaitUntil.h"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdlib>

namespace Desktop {
namespace {

Outcome<void> xdotool(const VirtualDesktop& desktop, const QStringList& arguments)
{
    const auto output = run(QStringLiteral("xdotool"), arguments, desktop.environment());
    if (!output)
        return output.failure();
    return {};
}

QString number(Button button)
{
    return QString::number(static_cast<int>(button));
}

QStringList jump(QPoint point)
{
    return {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())};
}

QStringList pause(std::chrono::milliseconds time)
{
    return {QStringLiteral("sleep"), QString::number(static_cast<double>(time.count()) / 1000)};
}

QStringList travel(QPoint from, QPoint to, Motion motion)
{
    QStringList result;
    for (int step = 1; step <= motion.steps; ++step) {
        const QPoint way = (to - from) * step / motion.steps;
        result += jump(from + way) + pause(motion.pause);
    }
    return result;
}

/// Time in which a program sees one thing before the next one happens.
const QStringList& breath()
{
    static const QStringList result = pause(std::chrono::milliseconds(30));
    return result;
}

QStringList pressed(Button button)
{
    return QStringList{QStringLiteral("mousedown"), number(button)} + breath();
}

QStringList released(Button button)
{
    return QStringList{QStringLiteral("mouseup"), number(button)} + breath();
}

} // namespace

Outcome<QPoint> Input::position() const
{
    const Server& server = m_desktop.server();
    const auto cookie = xcb_query_pointer(server.connection(), server.root());
    const Reply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(server.connection(), cookie, nullptr));
    if (!reply)
        return Failure{QStringLiteral("the X server did not tell where the pointer is")};
    return QPoint(reply->root_x, reply->root_y);
}

Outcome<void> Input::moveTo(QPoint point, Motion motion) const
{
    const auto from = position();
    if (!from)
        return from.failure();
    return xdotool(m_desktop, travel(*from, point, motion));
}

Outcome<void> Input::press(Button button) const
{
    return xdotool(m_desktop, pressed(button));
}

Outcome<void> Input::release(Button button) const
{
    return xdotool(m_desktop, released(button));
}

Outcome<void> Input::click(QPoint point, Button button) const
{
    if (const auto moved = moveTo(point); !moved)
        return moved;
    return xdotool(m_desktop, pressed(button) + released(button));
}

Outcome<void> Input::doubleClick(QPoint point, Button button) const
{
    if (const auto moved = moveTo(point); !moved)
        return moved;
    const QStringList once = pressed(button) + released(button);
    return xdotool(m_desktop, once + once);
}

Outcome<void> Input::drag(QPoint from, QPoint to, Motion motion, Button button) const
{
    if (const auto moved = moveTo(from); !moved)
        return moved;
    return xdotool(m_desktop,
                   pressed(button) + travel(from, to, motion) + breath() + released(button));
}

QString Input::cursorName() const
{
    xcb_connection_t* const server = m_desktop.server().connection();
    // Which is asked for before any other of the extension's.
    const Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        server, xcb_xfixes_query_version(server, XCB_XFIXES_MAJOR_VERSION, 0), nullptr));
    const Reply<xcb_xfixes_get_cursor_image_and_name_reply_t> cursor(
        xcb_xfixes_get_cursor_image_and_name_reply(
            server, xcb_xfixes_get_cursor_image_and_name(server), nullptr));
    if (!version || !cursor)
        return {};
    return QString::fromLatin1(xcb_xfixes_get_cursor_image_and_name_name(cursor.get()),
                               xcb_xfixes_get_cursor_image_and_name_name_length(cursor.get()));
}

Outcome<void> Input::dragAndDrop(QPoint from, QPoint to) const
{
    if (const auto moved = moveTo(from); !moved)
        return moved;
    const Motion motion{12, std::chrono::milliseconds(30)};
    if (const auto begun = xdotool(m_desktop, pressed(Button::Left) + travel(from, to, motion));
        !begun)
        return begun;
    // A target may want to be asked again once it knows what comes, and is when the pointer moves.
    int step = 0;
    const auto taken = waitFor(
        QStringLiteral("somebody who takes it"),
        [&]() -> Outcome<void> {
            const QString name = cursorName();
            if (name == QStringLiteral("dnd-copy"))
                return {};
            const auto moved = xdotool(m_desktop, jump(to + QPoint(++step % 2, 0)));
            return moved ? Failure{name} : moved;
        },
        3 * patience);
    const auto let = release();
    return taken ? let : taken;
}

Outcome<void> Input::scroll(QPoint point, int notches) const
{
    if (const auto moved = moveTo(point); !moved)
        return moved;
    // To X11 the wheel is two more buttons.
    const QString wheel = notches > 0 ? QStringLiteral("4") : QStringLiteral("5");
    QStringList arguments;
    for (int notch = 0; notch < std::abs(notches); ++notch)
        arguments += QStringList{QStringLiteral("click"), wheel} + breath();
    return xdotool(m_desktop, arguments);
}

Outcome<void> Input::key(const QString& combination) const
{
    return xdotool(m_desktop, {QStringLiteral("key"), combination});
}

Outcome<void> Input::keyDown(const QString& key) const
{
    return xdotool(m_desktop, {QStringLiteral("keydown"), key});
}

Outcome<void> Input::keyUp(const QString& key) const
{
    return xdotool(m_desktop, {QStringLiteral("keyup"), key});
}

Outcome<void> Input::type(const QString& text) const
{
    return xdotool(m_desktop, {QStringLiteral("type"), QStringLiteral("--delay"),
                               QStringLiteral("20"), QStringLiteral("--"), text});
}

} // namespace Desktop
