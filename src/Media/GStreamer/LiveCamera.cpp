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

using Way = CameraPipeline::Way;

constexpr Way otherThan(Way way)
{
    return way == Way::BestFormat ? Way::AnyFormat : Way::BestFormat;
}

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
    m_isFresh = false; // the last camera's
    const Gst::Owner<GstDevice> device = Devices::first();
    if (!device) {
        m_way = Way::BestFormat; // the next one may be another
        return;
    }
    for (const Way way : {m_way, otherThan(m_way)}) {
        m_pipeline = CameraPipeline::start(*device, way, m_side, [this](const QImage& picture) {
            m_isFresh = true;
            m_show(picture);
        });
        if (m_pipeline) {
            m_way = way;
            return;
        }
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
    const bool wasTried = std::exchange(m_pipeline, nullptr) != nullptr;
    if (std::exchange(m_hasPicture, false)) {
        m_way = Way::BestFormat;
        m_show({});
    } else if (wasTried) {
        m_way = otherThan(m_way);
    }
    start();
}
