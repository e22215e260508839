#pragma once

#include "desktop/flow/NumberedWindow.h"
#include "desktop/flow/RecordingFlow.h"

#include <memory>

/// Recordings of a window that tells what was on the screen.
class NumberedRecording : public RecordingFlow {
protected:
    void SetUp() override
    {
        // A compositor would show things later than they are.
        begin({.compositor = Desktop::Compositor::None});
        auto shown = Desktop::NumberedWindow::show(*desktop, area());
        ASSERT_TRUE(succeeded(shown));
        window = std::move(*shown);
    }

    std::unique_ptr<Desktop::NumberedWindow> window;
};
