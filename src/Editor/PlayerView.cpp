#include "Editor/PlayerView.h"

#include "ChromeButton.h"
#include "Editor/PlayerBar.h"
#include "Editor/PlayerSlider.h"
#include "Editor/TrimBar.h"
#include "Editor/TrimHandle.h"
#include "Editor/TrimStrip.h"
#include "Fade.h"
#include "Support/Guarded.h"

#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <cmath>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr int barMargin = 12;
constexpr auto restBeforeHiding = 2500ms;
/// A window that is being resized gets its new strip when it rests.
constexpr auto restBeforeReading = 200ms;
constexpr int manyFrames = 10;
constexpr double volumeStep = 0.05;

} // namespace

PlayerView::PlayerView(Film film, Clock clock, QWidget* parent)
    : QWidget(parent)
    , m_path(std::move(film.path))
    , m_loader(std::move(film.loader))
    , m_clock(std::move(clock))
    , m_playback(std::move(film.player))
    , m_bar(new PlayerBar(this))
    , m_trimBar(new TrimBar(this))
    , m_fade(new Fade(*m_bar, 1))
{
    setObjectName(QStringLiteral("PlayerView"));
    setAccessibleName(QStringLiteral("Video"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    // The mouse brings the controls back there too.
    m_bar->setMouseTracking(true);
    for (QWidget* control : m_bar->findChildren<QWidget*>())
        control->setMouseTracking(true);
    m_bar->hide();
    m_trimBar->hide();
    m_playback.onChange = [this] { playerChanged(); };
    m_playback.onPicture = [this] {
        m_picture = m_playback.picture(picturePixels());
        update();
    };
    connectBar();
    connectTrimBar();
}

PlayerView::~PlayerView()
{
    end();
}

void PlayerView::end()
{
    m_onceOpened = nullptr;
    m_closing.cancel();
    m_stripReading.cancel();
    m_playback.end();
}

void PlayerView::connectBar()
{
    connect(m_bar, &PlayerBar::playClicked, this, [this] { m_playback.togglePlaying(); });
    connect(m_bar, &PlayerBar::muteClicked, this, [this] { m_playback.toggleMuted(); });
    connect(m_bar, &PlayerBar::volumeChosen, this,
            [this](double volume) { m_playback.setVolume(volume); });
    connect(m_bar, &PlayerBar::seekBegan, this, [this] {
        m_playsAfterSeek = m_playback.state().playing;
        m_playback.pause();
    });
    connect(m_bar, &PlayerBar::sought, this, [this](double time) { m_playback.seek(time); });
    connect(m_bar, &PlayerBar::seekEnded, this, [this] {
        if (std::exchange(m_playsAfterSeek, false))
            m_playback.play();
        revealControls();
    });
}

void PlayerView::connectTrimBar()
{
    TrimStrip& strip = m_trimBar->strip();
    connect(m_trimBar, &TrimBar::playClicked, this, [this] { m_playback.togglePlaying(); });
    connect(m_trimBar, &TrimBar::trimClicked, this, &PlayerView::confirmTrimming);
    connect(m_trimBar, &TrimBar::cancelClicked, this, &PlayerView::cancelTrimming);
    connect(&strip, &TrimStrip::dragBegan, this, [this](TrimModel::Handle side) {
        m_playback.pause();
        handleMoved(side);
    });
    connect(&strip, &TrimStrip::moved, this, &PlayerView::moveHandle);
    connect(&strip, &TrimStrip::stepped, this, [this](TrimModel::Handle side, int frames) {
        if (!m_trim)
            return;
        m_playback.pause();
        m_trim->step(side, frames);
        handleMoved(side);
    });
    connect(&strip, &TrimStrip::sought, this, [this](double time) {
        m_playback.pause();
        m_playback.seek(time);
    });
    connect(&strip, &TrimStrip::resized, this, [this] {
        m_clock.after(restBeforeReading, Guarded::any(this, [this, version = ++m_stripVersion] {
                          if (version == m_stripVersion && isTrimming())
                              loadStrip();
                      }));
    });
}

void PlayerView::playerChanged()
{
    if (m_playback.isReady() && !std::exchange(m_timesAsked, true))
        loadTimes();
    showState();
    if (m_onceOpened && m_playback.state().phase != PlayerState::Phase::opening)
        std::exchange(m_onceOpened, nullptr)();
}

void PlayerView::showState()
{
    const bool wasHidden = m_bar->isHidden();
    const bool wasPlaying = m_bar->playButton().image()->symbol == Symbols::Symbol::pauseFill;
    m_bar->show(m_playback.state(), m_playback.limits());
    m_bar->setVisible(m_playback.isReady() && !isTrimming());
    m_trimBar->showState(m_playback.state());
    const bool hasAppeared = wasHidden && !m_bar->isHidden();
    if (hasAppeared || wasPlaying != m_playback.state().playing)
        revealControls();
}

void PlayerView::loadTimes()
{
    if (!m_loader.readTimes)
        return;
    m_loader.readTimes(m_path,
                       Guarded::once<const std::optional<FilmTimes>&>(
                           this,
                           [this](const std::optional<FilmTimes>& times) {
                               if (times)
                                   takeTimes(*times);
                           }),
                       m_closing);
}

void PlayerView::takeTimes(const FilmTimes& times)
{
    m_duration = times.duration;
    const FrameGrid frames(times.frames, times.duration);
    m_playback.setFrames(frames);
    m_playback.setOrientation(times.orientation);
    if (m_range)
        m_range = TrimModel(frames, *m_range).range();
    if (m_trim) {
        m_trim->setFrames(frames);
        m_trimBar->showModel(*m_trim);
    }
    m_playback.setLimits(m_trim ? m_trim->range() : m_range);
    showState();
}

bool PlayerView::controlsShow() const
{
    return m_trimBar->isVisible() || (m_bar->isVisible() && m_fade->opacity() > 0);
}

void PlayerView::onceOpened(std::function<void()> then)
{
    if (m_playback.state().phase == PlayerState::Phase::opening)
        m_onceOpened = std::move(then);
    else
        then();
}

bool PlayerView::canBeginTrimming() const
{
    return m_playback.isReady() && m_playback.frames().duration() > 0;
}

void PlayerView::beginTrimming()
{
    if (isTrimming() || !canBeginTrimming())
        return;
    m_playback.pause();
    m_timeBeforeTrimming = m_playback.state().time;
    const FrameGrid& frames = m_playback.frames();
    m_trim = m_range ? TrimModel(frames, *m_range) : TrimModel(frames);
    m_playback.setLimits(m_trim->range());
    m_trimBar->showModel(*m_trim);
    m_trimBar->setVisible(true);
    m_trimBar->layout()->activate();
    showState();
    loadStrip();
    m_trimBar->strip().handle(TrimModel::Handle::start).setFocus();
}

void PlayerView::loadStrip()
{
    TrimStrip& strip = m_trimBar->strip();
    const QSizeF size = m_playback.state().size;
    const double aspect = size.isEmpty() ? 1 : size.width() / size.height();
    const int count = strip.frameCount(aspect);
    strip.expectFrames(count);
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        times.push_back(strip.frameTime(i, count));
    m_stripReading.cancel();
    m_stripReading = Cancellation();
    if (m_loader.readFrames)
        m_loader.readFrames(m_path, times, strip.framePixels(aspect),
                            Guarded::any<int, const QImage&>(
                                this,
                                [this, reading = m_stripReading](int index, const QImage& frame) {
                                    if (!reading.isCancelled())
                                        m_trimBar->strip().setFrame(index, frame);
                                }),
                            m_stripReading);
}

void PlayerView::moveHandle(TrimModel::Handle side, double time)
{
    if (!m_trim)
        return;
    m_trim->move(side, time);
    handleMoved(side);
}

void PlayerView::handleMoved(TrimModel::Handle side)
{
    m_trimBar->showModel(*m_trim);
    m_playback.setLimits(m_trim->range());
    m_playback.seek(m_trim->shownTime(side));
}

void PlayerView::confirmTrimming()
{
    if (!m_trim)
        return;
    m_range = m_trim->isWhole() ? std::nullopt : std::optional(m_trim->range());
    const double time = m_playback.state().time;
    endTrimming();
    m_playback.seek(time);
}

void PlayerView::cancelTrimming()
{
    if (!m_trim)
        return;
    endTrimming();
    m_playback.seek(m_timeBeforeTrimming);
}

void PlayerView::endTrimming()
{
    m_trim.reset();
    m_stripReading.cancel();
    m_playback.pause();
    m_playback.setLimits(m_range);
    setFocus();
    m_trimBar->hide();
    showState();
}

QRectF PlayerView::pictureRect() const
{
    const QSizeF size = m_playback.state().size;
    if (size.isEmpty())
        return {};
    const QSizeF fitted = size.scaled(QSizeF(QWidget::size()), Qt::KeepAspectRatio);
    const double ratio = devicePixelRatioF();
    const QSizeF pixels(std::max(std::round(fitted.width() * ratio), 1.0),
                        std::max(std::round(fitted.height() * ratio), 1.0));
    const QPointF corner(std::floor((width() * ratio - pixels.width()) / 2),
                         std::floor((height() * ratio - pixels.height()) / 2));
    return {corner / ratio, pixels / ratio};
}

QSize PlayerView::picturePixels() const
{
    return (pictureRect().size() * devicePixelRatioF()).toSize();
}

void PlayerView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (m_picture.size() != picturePixels())
        m_picture = m_playback.picture(picturePixels());
    if (m_picture.isNull())
        return;
    // On whole pixels, wherever the widget begins.
    const double ratio = devicePixelRatioF();
    const QTransform toPixels = painter.deviceTransform();
    const QPointF corner = toPixels.map(pictureRect().topLeft());
    const QPointF shift =
        QPointF(std::round(corner.x()) - corner.x(), std::round(corner.y()) - corner.y()) / ratio;
    m_picture.setDevicePixelRatio(ratio);
    painter.drawImage(pictureRect().topLeft() + shift, m_picture);
}

void PlayerView::resizeEvent(QResizeEvent*)
{
    placeBars();
}

void PlayerView::placeBars()
{
    for (QWidget* bar : std::initializer_list<QWidget*>{m_bar, m_trimBar}) {
        const int height = bar->sizeHint().height();
        bar->setGeometry(barMargin, QWidget::height() - height - barMargin, width() - 2 * barMargin,
                         height);
    }
}

void PlayerView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && !isTrimming())
        m_playback.togglePlaying();
    revealControls();
}

void PlayerView::mouseMoveEvent(QMouseEvent* event)
{
    // Windows that come and go under a resting mouse move it too.
    const QPoint place = event->globalPosition().toPoint();
    if (std::exchange(m_lastMouse, place) != place)
        revealControls();
}

void PlayerView::revealControls()
{
    ++m_activity;
    m_fade->set(1);
    m_clock.after(restBeforeHiding,
                  Guarded::any(this, [this, since = m_activity] { hideControlsIfUnused(since); }));
}

void PlayerView::hideControlsIfUnused(int since)
{
    if (since != m_activity || !m_playback.state().playing)
        return;
    if (m_bar->underMouse() || m_bar->position().isSliderDown() || m_bar->volume().isSliderDown())
        revealControls(); // and looks again later
    else
        m_fade->animateTo(0);
}

void PlayerView::keyPressEvent(QKeyEvent* event)
{
    const int frames = event->modifiers().testFlag(Qt::ShiftModifier) ? manyFrames : 1;
    switch (event->key()) {
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            m_playback.togglePlaying();
        break;
    case Qt::Key_Left:
        m_playback.step(-frames);
        break;
    case Qt::Key_Right:
        m_playback.step(frames);
        break;
    case Qt::Key_Home:
        m_playback.seek(m_playback.limits().start);
        break;
    case Qt::Key_End:
        m_playback.pause();
        m_playback.seek(m_playback.limits().end);
        break;
    case Qt::Key_Up:
        m_playback.changeVolume(volumeStep);
        break;
    case Qt::Key_Down:
        m_playback.changeVolume(-volumeStep);
        break;
    case Qt::Key_M:
        m_playback.toggleMuted();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        confirmTrimming();
        break;
    case Qt::Key_Escape:
        cancelTrimming();
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    revealControls();
}
