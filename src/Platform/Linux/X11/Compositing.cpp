#include "Platform/Compositing.h"

#include "Platform/Linux/X11/QtConnection.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QObject>

#include <xcb/xfixes.h>

namespace {

/// A compositing manager owns a selection named after the screen (Extended Window Manager Hints
/// 1.5, "Compositing Managers").
xcb_atom_t managerSelection()
{
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(X11::qtScreenNumber());
    return X11::atom(name.constData());
}

/// Hears of compositing managers that come and go. Qt has asked the server to tell.
class Watcher : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    static Watcher& instance()
    {
        static auto* const watcher = new Watcher; // the application owns it
        return *watcher;
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto* event = static_cast<const xcb_xfixes_selection_notify_event_t*>(message);
        constexpr unsigned sentEventBit = 0x80;
        if ((event->response_type & ~sentEventBit) == m_selectionNotify &&
            event->selection == m_selection)
            look();
        return false;
    }

Q_SIGNALS:
    void changed();

private:
    Watcher()
        : QObject(QCoreApplication::instance())
        , m_selection(managerSelection())
        , m_selectionNotify(X11::firstEventOf("XFIXES") + unsigned{XCB_XFIXES_SELECTION_NOTIFY})
        , m_wasComposited(Platform::isComposited())
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    void look()
    {
        if (m_wasComposited == Platform::isComposited())
            return;
        m_wasComposited = !m_wasComposited;
        Q_EMIT changed();
    }

    xcb_atom_t m_selection;
    unsigned m_selectionNotify;
    bool m_wasComposited;
};

} // namespace

bool Platform::isComposited()
{
    if (!X11::qtConnection())
        return false;
    const auto cookie = xcb_get_selection_owner(X11::qtConnection(), managerSelection());
    const X11::Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(X11::qtConnection(), cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void Platform::onCompositingChanged(QObject* context, std::function<void()> changed)
{
    if (X11::qtConnection())
        QObject::connect(&Watcher::instance(), &Watcher::changed, context, std::move(changed));
}

#include "Compositing.moc"
