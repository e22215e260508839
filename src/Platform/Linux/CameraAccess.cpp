#include "Platform/CameraAccess.h"

#include "Platform/Linux/VideoDevices.h"

#include <cerrno>
#include <filesystem>

#include <unistd.h>

bool VideoDevices::areRefused(const std::string& folder)
{
    bool isAnyRefused = false;
    std::error_code error;
    std::filesystem::directory_iterator at(folder, error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
        const std::filesystem::directory_entry& entry = *at;
        if (!entry.path().filename().string().starts_with("video"))
            continue;
        // To open a camera may switch it on.
        if (access(entry.path().c_str(), R_OK | W_OK) == 0)
            return false;
        isAnyRefused = isAnyRefused || errno == EACCES;
    }
    return isAnyRefused;
}

// PipeWire opens cameras with the rights of the same user.
Platform::CameraAuthorization Platform::cameraAuthorization()
{
    return VideoDevices::areRefused("/dev") ? CameraAuthorization::Denied
                                            : CameraAuthorization::Authorized;
}

void Platform::requestCameraAccess(const std::function<void(bool isGranted)>& answer)
{
    answer(cameraAuthorization() == CameraAuthorization::Authorized); // nobody is to be asked
}
