#pragma once

#include "Subsystems.h"

#include <QObject>

#include <functional>
#include <memory>

/// The camera command: shows the camera bubble, or takes it away. Main thread only.
class CameraSwitch {
public:
    /// `camera` is borrowed and outlives this. `changed` is called each time that a bubble has come
    /// or gone, or that it turns out that none comes.
    CameraSwitch(const Subsystems::Camera& camera, std::function<void()> changed);

    /// A bubble that is on its way, however long a camera takes to be found, is called off.
    void toggle();

    /// Whether there is a bubble.
    bool isOn() const { return m_bubble != nullptr; }

private:
    void turnOff();
    void answered(std::shared_ptr<Subsystems::Panel> bubble);

    const Subsystems::Camera& m_camera;
    std::function<void()> m_changed;
    std::shared_ptr<Subsystems::Panel> m_bubble;
    std::unique_ptr<QObject> m_request; // while a bubble is on its way
};
