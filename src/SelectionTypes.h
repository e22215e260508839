#pragma once

#include "Support/Geometry.h"

#include <functional>

enum class SelectionMode {
    screenshot, ///< releasing the mouse after a drag ends the selection
    record,     ///< the rectangle can be adjusted and is confirmed on its own
};

/// What the user picked. `rect` is in global points.
struct SelectionResult {
    enum class Kind { screenshot, recordVideo, recordGIF };

    Kind kind = Kind::screenshot;
    Geometry::Rect rect;

    friend bool operator==(const SelectionResult&, const SelectionResult&) = default;
};

/// The switches that a selection for a recording offers. All four are set.
struct SelectionHooks {
    std::function<bool()> isMicOn;
    std::function<void()> toggleMic;
    std::function<bool()> isCameraOn;
    std::function<void()> toggleCamera;
};
