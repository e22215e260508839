#pragma once

#include <functional>

/// The desktop's permission to use the camera.
namespace Platform {

enum class CameraAuthorization { NotDetermined, Restricted, Denied, Authorized };

/// Authorized, too, where there is no camera.
CameraAuthorization cameraAuthorization();

/// Asks the user; `answer` is called once, on any thread.
void requestCameraAccess(const std::function<void(bool isGranted)>& answer);

} // namespace Platform
