#include "CameraSwitch.h"

#include "Support/Guarded.h"
#include "Support/Log.h"

#include <utility>

CameraSwitch::CameraSwitch(const Subsystems::Camera& camera, std::function<void()> changed)
    : m_camera(camera)
    , m_changed(std::move(changed))
{
}

void CameraSwitch::toggle()
{
    if (m_bubble) {
        turnOff();
        return;
    }
    if (m_request) {
        m_request.reset();
        return;
    }
    if (!m_camera.authorization || !m_camera.make || !m_camera.requestAndShow)
        return;
    const auto begin = [this](const auto& how) {
        m_request = std::make_unique<QObject>();
        using Panel = std::shared_ptr<Subsystems::Panel>;
        how(*m_request, Guarded::once<Panel>(m_request.get(),
                                             [this](const Panel& bubble) { answered(bubble); }));
    };
    switch (m_camera.authorization()) {
    case Subsystems::CameraAuthorization::notDetermined:
        begin(m_camera.requestAndShow);
        return;
    case Subsystems::CameraAuthorization::authorized:
        begin(m_camera.make);
        return;
    case Subsystems::CameraAuthorization::restricted:
    case Subsystems::CameraAuthorization::denied:
        Log::line(
            QStringLiteral("camera access denied — System Settings → Privacy & Security → Camera"));
        answered(nullptr);
        return;
    }
}

void CameraSwitch::turnOff()
{
    const auto bubble = std::exchange(m_bubble, nullptr);
    bubble->stop();
    bubble->close();
    m_changed();
}

void CameraSwitch::answered(std::shared_ptr<Subsystems::Panel> bubble)
{
    m_request.reset();
    m_bubble = std::move(bubble);
    m_changed();
}
