#pragma once

#include <QImage>

#include <functional>
#include <memory>

/// The live picture of a camera, as the camera sees it. Main thread.
class CameraFeed {
public:
    virtual ~CameraFeed() = default;

    /// The newest picture, a square of about the wanted size; null while there is none, since the
    /// camera has not begun or is unplugged.
    virtual QImage picture() const = 0;

    /// From now on pictures are to be `side` pixels high and wide.
    virtual void setSide(int side) = 0;
};

/// The system's default camera. Nothing here waits for it: it works on a thread of its own, which
/// begins with the first call. Where the library for cameras is missing there is no camera.
namespace Camera {

/// Finds out whether there is one. `found` is called on that thread.
void find(std::function<void(bool exists)> found);

/// Starts it, and begins again for as long as it does not come or stops. It ends with what is
/// returned. `changed` is called on any thread when there is another picture than the one that
/// was asked for last, and then not again until that was asked for.
std::unique_ptr<CameraFeed> open(int side, std::function<void()> changed);

} // namespace Camera
