#pragma once

#include <QImage>

#include <functional>
#include <memory>

/// A camera that runs until it is deleted.
class CameraSource {
public:
    virtual ~CameraSource() = default;
    virtual void setSide(int side) = 0;
};

/// The library that speaks to cameras. It brings a hundred others along, which cost a start tens of
/// milliseconds and megabytes: it is loaded when the camera is first wanted, and stays then.
/// Everything is called on one thread, which has an event loop, and so are the pictures handed
/// over.
struct CameraModule {
    bool (*exists)();
    /// As Camera::open; `show` is called on any thread, but not once the source is deleted. A null
    /// picture means that there is none any more.
    std::unique_ptr<CameraSource> (*open)(int side, std::function<void(const QImage&)> show);

    /// The module, loaded by the first call; null when it is missing.
    static const CameraModule* get();

    /// The name of the function in the library that returns the module.
    static constexpr const char* entry = "tamrikCameraModule";
};
