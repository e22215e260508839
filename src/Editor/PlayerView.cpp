#include "Editor/PlayerView.h"

#include "ChromeButton.h"
#include "Editor/PlayerBar.h"
#include "Editor/PlayerSlider.h"
#include "Editor/TrimBar.h"
#include "Fade.h"
#include "Support/Guarded.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <cmath>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr int barMargin = 12;
constexpr auto restBeforeHiding = 2500ms;
constexpr int manyFrames = 10;
constexpr double volumeStep = 0.05;

} // namespace

PlayerView::PlayerView(Film film, Clock clock, QWidget* parent)
    : QWidget(parent)
    , m_path(std::move(film.path))
    , m_loader(film.loader)
    , m_clock(std::move(clock))
    , m_playback(std::move(film.player))
    , m_bar(new PlayerBar(this))
    , m_trimBar(new TrimBar(this))
    , m_fade(new Fade(*m_bar, 1))
    , m_trimming(m_playback, *m_trimBar, m_path, std::move(film.loader), m_clock)
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
    connect(m_trimBar, &TrimBar::playClicked, this, [this] { m_playback.togglePlaying(); });
    connect(&m_trimming, &Trimming::toggled, this, &PlayerView::showState);
}

PlayerView::~PlayerView()
{
    end();
}

void PlayerView::end()
{
    m_onceOpened = nullptr;
    m_closing.cancel();
    m_trimming.stopReading();
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

void PlayerView::playerChanged()
{
    if (m_playback.isReady() && !std::exchange(m_timesAsked, true))
        loadTimes();
    const QSize size = m_playback.state().size;
    if (std::exchange(m_filmSize, size) != size)
        update(); // the picture may have come before its size
    showState();
    if (m_onceOpened && m_playback.state().phase != PlayerState::Phase::opening)
        std::exchange(m_onceOpened, nullptr)();
}

void PlayerView::showState()
{
    const bool wasHidden = m_bar->isHidden();
    const bool wasPlaying = m_bar->playButton().image()->symbol == Symbols::Symbol::pauseFill;
    m_bar->show(m_playback.state(), m_playback.limits());
    m_bar->setVisible(m_playback.isReady() && !m_trimming.isOn());
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
    m_playback.setFrames(FrameGrid(times.frames, times.duration));
    m_playback.setOrientation(times.orientation);
    m_trimming.takeFrames();
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
    if (event->button() == Qt::LeftButton && !m_trimming.isOn())
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

void PlayerView::leaveEvent(QEvent* event)
{
    revealControls(); // and looks again later
    QWidget::leaveEvent(event);
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
    if (since != m_activity)
        return;
    // A film that stands still can be seen whole when the mouse is elsewhere.
    if (!m_playback.state().playing && underMouse())
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
        m_trimming.confirm();
        break;
    case Qt::Key_Escape:
        m_trimming.cancel();
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    revealControls();
}
