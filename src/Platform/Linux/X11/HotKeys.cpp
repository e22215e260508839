#include "Platform/HotKeys.h"

#include "Platform/Linux/X11/EventTimes.h"
#include "Platform/Linux/X11/KeyCodes.h"
#include "Platform/Linux/X11/ModifierMap.h"
#include "Platform/Linux/X11/QtConnection.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <algorithm>
#include <map>

namespace {

/// How long after a key's release its next press still is the keyboard repeating it, in
/// milliseconds of the server's clock. A repeat is a release and a press at the same time; a finger
/// takes longer.
constexpr std::uint32_t repeatGap = 5;

/// The events of the XKB extension that tell of another keyboard, and of other keys on it.
constexpr std::uint8_t xkbNewKeyboardNotify = 0;
constexpr std::uint8_t xkbMapNotify = 1;

/// Bits of an event's response type that say something else than its type.
constexpr std::uint8_t sentEventBit = 0x80;

/// Grabs keys on the root window and hears of their presses through Qt's event loop.
class HotKeyGrabber : public QAbstractNativeEventFilter {
public:
    struct Registration {
        xcb_keycode_t keyCode;
        std::uint16_t modifiers;
        std::uint32_t mask;
        std::uint32_t identifier;
    };

    static HotKeyGrabber& instance()
    {
        // As long as the process: hot keys are its first and last users.
        static HotKeyGrabber grabber;
        return grabber;
    }

    std::function<void(std::uint32_t)> handler;

    std::optional<Platform::HotKeyReference> add(xcb_keycode_t keyCode, std::uint32_t mask,
                                                 std::uint32_t identifier)
    {
        if (!m_map)
            m_map.emplace();
        const Registration wanted{keyCode, m_map->fromHotKeyMask(mask), mask, identifier};
        // The server would grant us one key twice, but take it away at the first ungrabbing.
        const bool ours = std::any_of(m_registrations.begin(), m_registrations.end(),
                                      [&wanted](const auto& entry) {
                                          return entry.second.keyCode == wanted.keyCode &&
                                                 entry.second.modifiers == wanted.modifiers;
                                      });
        if (ours || !grab(wanted, *m_map))
            return std::nullopt;
        if (m_registrations.empty())
            QCoreApplication::instance()->installNativeEventFilter(this);
        m_registrations[++m_lastReference] = wanted;
        return Platform::HotKeyReference{m_lastReference};
    }

    void remove(Platform::HotKeyReference reference)
    {
        const auto found = m_registrations.find(reference.value);
        if (found == m_registrations.end())
            return;
        ungrab(found->second, *m_map);
        m_registrations.erase(found);
        if (!m_registrations.empty())
            return;
        m_map.reset(); // nobody tells it of changes any more
        if (QCoreApplication::instance())
            QCoreApplication::instance()->removeNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if (tellsOfNewKeyboard(*event)) {
            followKeyboard();
            return false;
        }
        switch (event->response_type & ~sentEventBit) {
        case XCB_KEY_PRESS:
            return keyPressed(*static_cast<const xcb_key_press_event_t*>(message));
        case XCB_KEY_RELEASE:
            return keyReleased(*static_cast<const xcb_key_release_event_t*>(message));
        default: // all other events
            return false;
        }
    }

private:
    /// Grabs the key under every state of the locks; none of them when the server refuses one.
    static bool grab(const Registration& wanted, const X11::ModifierMap& map)
    {
        xcb_connection_t* connection = X11::qtConnection();
        bool granted = true;
        for (const std::uint16_t locks : map.lockVariants()) {
            const auto cookie =
                xcb_grab_key_checked(connection, 1, X11::qtScreen().root,
                                     static_cast<std::uint16_t>(wanted.modifiers | locks),
                                     wanted.keyCode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            const X11::Reply<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
            granted = granted && !error;
        }
        if (!granted)
            ungrab(wanted, map);
        return granted;
    }

    static void ungrab(const Registration& registration, const X11::ModifierMap& map)
    {
        xcb_connection_t* connection = X11::qtConnection();
        if (!connection)
            return;
        for (const std::uint16_t locks : map.lockVariants()) {
            xcb_ungrab_key(connection, registration.keyCode, X11::qtScreen().root,
                           static_cast<std::uint16_t>(registration.modifiers | locks));
        }
        xcb_flush(connection);
    }

    /// Whether keys may mean something else from now on. Who changes the keyboard through the XKB
    /// extension, as setxkbmap does, is not always heard of by the core protocol's event, and the
    /// other way round.
    bool tellsOfNewKeyboard(const xcb_generic_event_t& event)
    {
        if (!m_firstXkbEvent)
            m_firstXkbEvent = X11::firstEventOf("XKEYBOARD");
        const std::uint8_t type = event.response_type & ~sentEventBit;
        if (type == XCB_MAPPING_NOTIFY)
            return true;
        // Which of the extension's events it is stands in the second byte.
        return *m_firstXkbEvent != 0 && type == *m_firstXkbEvent &&
               (event.pad0 == xkbNewKeyboardNotify || event.pad0 == xkbMapNotify);
    }

    /// The modifier keys may have been assigned anew: Alt, Super and the locks may set other bits.
    void followKeyboard()
    {
        const X11::ModifierMap now;
        if (now == m_map)
            return;
        for (const auto& [reference, registration] : m_registrations)
            ungrab(registration, *m_map);
        m_map = now;
        for (auto& [reference, registration] : m_registrations) {
            registration.modifiers = m_map->fromHotKeyMask(registration.mask);
            // A key that another program took meanwhile is lost, and there is nobody to tell.
            (void)grab(registration, *m_map);
        }
    }

    bool keyPressed(const xcb_key_press_event_t& event)
    {
        if (event.event != X11::qtScreen().root)
            return false;
        const unsigned state = event.state & m_map->relevant();
        for (const auto& [reference, registration] : m_registrations) {
            if (registration.keyCode != event.detail || registration.modifiers != state)
                continue;
            const bool repeated =
                event.detail == m_releasedKey && event.time - m_releaseTime <= repeatGap;
            X11::noteTime(event.time);
            if (!repeated && handler) {
                const auto identifier = registration.identifier;
                handler(identifier); // may change m_registrations
            }
            return true;
        }
        return false;
    }

    bool keyReleased(const xcb_key_release_event_t& event)
    {
        if (event.event != X11::qtScreen().root)
            return false;
        X11::noteTime(event.time);
        m_releasedKey = event.detail;
        m_releaseTime = event.time;
        return false;
    }

    /// As the keyboard was when it was last told of a change; there is one while anything is
    /// registered.
    std::optional<X11::ModifierMap> m_map;
    std::map<std::uint32_t, Registration> m_registrations;
    std::uint32_t m_lastReference = 0;
    /// 0 when the server has no such extension.
    std::optional<std::uint8_t> m_firstXkbEvent;
    xcb_keycode_t m_releasedKey = 0;
    xcb_timestamp_t m_releaseTime = 0;
};

} // namespace

void Platform::setHotKeyHandler(std::function<void(std::uint32_t)> handler)
{
    HotKeyGrabber::instance().handler = std::move(handler);
}

std::optional<Platform::HotKeyReference>
Platform::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t identifier)
{
    const auto key = X11::keyCodeFromVirtual(keyCode);
    if (!key || !X11::qtConnection())
        return std::nullopt;
    return HotKeyGrabber::instance().add(*key, modifiers, identifier);
}

void Platform::unregisterHotKey(HotKeyReference reference)
{
    HotKeyGrabber::instance().remove(reference);
}
