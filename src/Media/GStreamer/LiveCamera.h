#pragma once

#include "Media/CameraModule.h"
#include "Media/GStreamer/CameraPipeline.h"

#include <QObject>
#include <QTimer>

/// Runs the default camera, and again and again when no picture comes: it may be unplugged, or
/// another program has it.
class LiveCamera : public QObject, public CameraSource {
    Q_OBJECT

public:
    using Show = std::function<void(const QImage& picture)>;

    static bool exists();

    /// `show` is told of every picture, on any thread, and with a null one when there is none any
    /// more.
    LiveCamera(int side, Show show);

    void setSide(int side) override { m_side = side; }

private:
    void start();
    void check();

    std::atomic<int> m_side;             // of pictures, in pixels
    std::atomic<bool> m_isFresh = false; // whether a picture came since the last look
    Show m_show;
    bool m_hasPicture = false;
    int m_idleLooks = 0;                                         // in a row
    CameraPipeline::Way m_way = CameraPipeline::Way::BestFormat; // that was or is tried
    QTimer m_timer;
    std::unique_ptr<CameraPipeline>
        m_pipeline; // null while there is none; goes before what it uses
};
