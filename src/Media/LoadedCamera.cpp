#include "Media/CameraModule.h"
#include "Media/ModuleLibrary.h"

const CameraModule* CameraModule::get()
{
    static const CameraModule* const module =
        loadModule<CameraModule>(TAMRIK_CAMERA_FROM_PROGRAM, entry);
    return module;
}
