#pragma once

#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QObject>
#include <QUrl>

#include <functional>

/// Turns a rectangle of the desktop into a PNG file in the captures folder, by running the capture
/// tool. Main thread only.
class CaptureManager : public QObject {
public:
    /// Given the file, or an empty URL when there is none.
    using Completion = std::function<void(const QUrl& file)>;

    explicit CaptureManager(Clock clock, QObject* parent = nullptr);

    /// Captures `rect` (global points). `completion` is called exactly once on the main thread: at
    /// once without a file when a capture is already under way, when there is no screen, or when
    /// the tool does not start; otherwise when the tool has ended, with the file if it left one.
    /// The tool's exit status does not count.
    void captureRect(Geometry::Rect rect, const Completion& completion);

    /// From just before the tool starts until its end has been handled.
    bool isCapturing() const { return m_isCapturing; }

private:
    Clock m_clock;
    bool m_isCapturing = false;
};
