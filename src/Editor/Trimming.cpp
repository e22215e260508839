#include "Editor/Trimming.h"

#include "Editor/TrimBar.h"
#include "Editor/TrimHandle.h"
#include "Editor/TrimStrip.h"
#include "Support/Guarded.h"

#include <QLayout>

#include <utility>

using namespace std::chrono_literals;

namespace {

/// A window that is being resized gets its new strip when it rests.
constexpr auto restBeforeReading = 200ms;

} // namespace

Trimming::Trimming(FilmPlayback& playback, TrimBar& bar, QString path, FilmLoader loader,
                   Clock clock)
    : m_playback(playback)
    , m_bar(bar)
    , m_path(std::move(path))
    , m_loader(std::move(loader))
    , m_clock(std::move(clock))
{
    connectBar();
}

void Trimming::connectBar()
{
    TrimStrip& strip = m_bar.strip();
    connect(&m_bar, &TrimBar::trimClicked, this, &Trimming::confirm);
    connect(&m_bar, &TrimBar::cancelClicked, this, &Trimming::cancel);
    connect(&strip, &TrimStrip::dragBegan, this, [this](TrimModel::Handle side) {
        m_playback.pause();
        moved(side);
    });
    connect(&strip, &TrimStrip::moved, this, &Trimming::move);
    connect(&strip, &TrimStrip::stepped, this, [this](TrimModel::Handle side, int frames) {
        if (!m_model)
            return;
        m_playback.pause();
        m_model->step(side, frames);
        moved(side);
    });
    connect(&strip, &TrimStrip::sought, this, [this](double time) {
        m_playback.pause();
        m_playback.seek(time);
    });
    connect(&strip, &TrimStrip::resized, this, [this] {
        m_clock.after(restBeforeReading, Guarded::any(this, [this, version = ++m_stripVersion] {
                          if (version == m_stripVersion && isOn())
                              loadStrip();
                      }));
    });
}

std::optional<FilmRange> Trimming::selectedRange() const
{
    return m_chosen && !m_chosen->isWhole() ? std::optional(m_chosen->range()) : std::nullopt;
}

bool Trimming::canBegin() const
{
    return m_playback.isReady() && m_playback.frames().duration() > 0;
}

void Trimming::begin()
{
    if (isOn() || !canBegin())
        return;
    m_playback.pause();
    m_timeBefore = m_playback.state().time;
    const FrameGrid& frames = m_playback.frames();
    m_model = m_chosen.value_or(TrimModel(frames));
    m_model->setFrames(frames);
    m_playback.setLimits(m_model->range());
    m_bar.showModel(*m_model);
    m_bar.setVisible(true);
    m_bar.layout()->activate();
    Q_EMIT toggled();
    loadStrip();
    m_bar.strip().handle(TrimModel::Handle::start).setFocus();
}

void Trimming::takeFrames()
{
    const FrameGrid& frames = m_playback.frames();
    if (m_chosen)
        m_chosen->setFrames(frames);
    if (m_model) {
        m_model->setFrames(frames);
        m_bar.showModel(*m_model);
    }
    m_playback.setLimits(m_model ? m_model->range() : selectedRange());
}

void Trimming::loadStrip()
{
    TrimStrip& strip = m_bar.strip();
    const QSizeF size = m_playback.state().size;
    const double aspect = size.isEmpty() ? 1 : size.width() / size.height();
    const int count = strip.frameCount(aspect);
    strip.expectFrames(count);
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        times.push_back(strip.frameTime(i, count));
    m_reading.cancel();
    m_reading = Cancellation();
    if (m_loader.readFrames)
        m_loader.readFrames(m_path, times, strip.framePixels(aspect),
                            Guarded::any<int, const QImage&>(
                                this,
                                [this, reading = m_reading](int index, const QImage& frame) {
                                    if (!reading.isCancelled())
                                        m_bar.strip().setFrame(index, frame);
                                }),
                            m_reading);
}

void Trimming::move(TrimModel::Handle side, double time)
{
    if (!m_model)
        return;
    m_model->move(side, time);
    moved(side);
}

void Trimming::moved(TrimModel::Handle side)
{
    m_bar.showModel(*m_model);
    m_playback.setLimits(m_model->range());
    m_playback.seek(m_model->shownTime(side));
}

void Trimming::confirm()
{
    if (!m_model)
        return;
    m_chosen = m_model;
    const double time = m_playback.state().time;
    end();
    m_playback.seek(time);
}

void Trimming::cancel()
{
    if (!m_model)
        return;
    end();
    m_playback.seek(m_timeBefore);
}

void Trimming::end()
{
    m_model.reset();
    m_reading.cancel();
    m_playback.pause();
    m_playback.setLimits(selectedRange());
    m_bar.parentWidget()->setFocus(); // before it would go anywhere
    m_bar.hide();
    Q_EMIT toggled();
}
