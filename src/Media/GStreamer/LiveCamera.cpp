#include "Media/GStreamer/LiveCamera.h"

#include "Media/GStreamer/Devices.h"

#include <chrono>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto lookTime = 500ms;
/// A camera that sends nothing for so many looks is gone. Dark rooms make them slow, but not so
/// slow.
constexpr int mostIdleLooks = 5;
/// One that has sent nothing at all in so many does not begin.
constexpr int mostFirstLooks = 10;

} // namespace

bool LiveCamera::exists()
{
    return Devices::first() != nullptr;
}

LiveCamera::LiveCamera(int side, Show show)
    : m_side(side)
    , m_show(std::move(show))
{
    connect(&m_timer, &QTimer::timeout, this, &LiveCamera::check);
    m_timer.start(lookTime);
    start();
}

void LiveCamera::start()
{
    m_idleLooks = 0;
    if (const Gst::Owner<GstDevice> device = Devices::first()) {
        m_pipeline = CameraPipeline::start(*device, m_side, [this](const QImage& picture) {
            m_isFresh = true;
            m_show(picture);
        });
    }
}

void LiveCamera::check()
{
    const bool isFresh = m_isFresh.exchange(false);
    m_hasPicture = m_hasPicture || isFresh;
    m_idleLooks = isFresh ? 0 : m_idleLooks + 1;
    if (m_pipeline && !m_pipeline->hasEnded() &&
        m_idleLooks < (m_hasPicture ? mostIdleLooks : mostFirstLooks))
        return;
    m_pipeline.reset();
    if (std::exchange(m_hasPicture, false))
        m_show({});
    start();
}
