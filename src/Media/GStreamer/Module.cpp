#include "Media/CameraModule.h"
#include "Media/GStreamer/LiveCamera.h"

#include <QtGlobal>

extern "C" Q_DECL_EXPORT const CameraModule* tamrikCameraModule();

const CameraModule* tamrikCameraModule()
{
    static const CameraModule module = {
        .exists = LiveCamera::exists,
        .open = [](int side,
                   std::function<void(const QImage&)> show) -> std::unique_ptr<CameraSource> {
            return std::make_unique<LiveCamera>(side, std::move(show));
        }};
    return &module;
}
