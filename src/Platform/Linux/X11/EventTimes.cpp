#include "Platform/Linux/X11/EventTimes.h"

#include "Platform/Linux/X11/QtConnection.h"
#include "Platform/Linux/X11/ServerClock.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QObject>
#include <QPointer>
#include <QScreen>
#include <qpa/qplatformnativeinterface.h>

#include <optional>
#include <utility>

namespace {

/// Events of the X Input extension that come from devices have their time here: "X Input Device
/// Extension Protocol 2", events.
struct DeviceEvent {
    std::uint8_t responseType;
    std::uint8_t extension;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint16_t eventType;
    std::uint16_t device;
    std::uint32_t time;
};

std::uint32_t timeOfQt()
{
    const void* time = QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
        "apptime", QGuiApplication::primaryScreen());
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(time));
}

void setTimeOfQt(std::uint32_t time)
{
    using Setter = void (*)(QScreen*, xcb_timestamp_t);
    const auto function =
        QGuiApplication::platformNativeInterface()->nativeResourceFunctionForScreen("setapptime");
    if (function)
        reinterpret_cast<Setter>(reinterpret_cast<void (*)()>(function))(
            QGuiApplication::primaryScreen(), time);
}

class Watcher : public QObject, public QAbstractNativeEventFilter {
public:
    explicit Watcher(QObject* parent)
        : QObject(parent)
        , m_inputExtension(X11::opcodeOf("XInputExtension"))
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto now = std::chrono::steady_clock::now();
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        // Events that programs send to each other have a bit set beside their type.
        if (const auto time = stamped(*event))
            m_clock.note(*time, now);
        if (event->response_type == XCB_SELECTION_REQUEST) {
            const auto* request = static_cast<const xcb_selection_request_event_t*>(message);
            // The answer has to repeat the time, and a drag counts by it to its end, so Qt must get
            // to see it.
            if (!m_clock.isPossible(request->time, now))
                m_isMisled = true;
        }
        return false;
    }

    void mend()
    {
        if (!std::exchange(m_isMisled, false))
            return;
        // No step back is taken, but the time goes round in a circle: half of it is a step ahead.
        constexpr std::uint32_t nearlyHalf = 0x7fffffff;
        const auto now = m_clock.time();
        for (int steps = 0; now && steps < 3 && timeOfQt() != *now; ++steps) {
            setTimeOfQt(*now);
            if (timeOfQt() != *now)
                setTimeOfQt(timeOfQt() + nearlyHalf);
        }
    }

private:
    /// The server's own time in one of its events; absent in those that have none.
    std::optional<std::uint32_t> stamped(const xcb_generic_event_t& event) const
    {
        switch (event.response_type) {
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE:
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE:
        case XCB_MOTION_NOTIFY:
        case XCB_ENTER_NOTIFY:
        case XCB_LEAVE_NOTIFY: // all of one form
            return reinterpret_cast<const xcb_key_press_event_t&>(event).time;
        case XCB_PROPERTY_NOTIFY:
            return reinterpret_cast<const xcb_property_notify_event_t&>(event).time;
        case XCB_GE_GENERIC: {
            const auto& device = reinterpret_cast<const DeviceEvent&>(event);
            if (device.extension == m_inputExtension && device.time != XCB_CURRENT_TIME)
                return device.time;
            return std::nullopt;
        }
        default: // all other events
            return std::nullopt;
        }
    }

    X11::ServerClock m_clock;
    std::uint8_t m_inputExtension;
    /// Whether Qt has met a time that cannot be.
    bool m_isMisled = false;
};

QPointer<Watcher>& watcher()
{
    static QPointer<Watcher> only; // the application owns it
    return only;
}

} // namespace

void X11::watchEventTimes()
{
    if (qtConnection())
        watcher() = new Watcher(QCoreApplication::instance());
}

void X11::mendTime()
{
    if (watcher())
        watcher()->mend();
}
