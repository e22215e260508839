#include "RecordingControlsPanel.h"

#include "ChromeButton.h"
#include "NumberLabel.h"
#include "Platform/Colors.h"
#include "Platform/Compositing.h"
#include "Platform/Screens.h"
#include "Platform/WindowTraits.h"
#include "RecordingControlsPlacement.h"
#include "SoftShadow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QWindow>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;
using Symbols::Symbol;

namespace {

constexpr int spacing = 8;
constexpr QMargins insets = {14, 8, 10, 8};
constexpr int separatorHeight = 18;
constexpr double textSize = 13;
constexpr double symbolSize = 12;
constexpr auto tick = 300ms;

/// How long panels and docks get to move after the screens have changed.
constexpr auto settlingTime = 200ms;

/// Room for the shadow on every side, in points: what is beside the recorded rectangle must not
/// darken it.
constexpr int shadowMargin = static_cast<int>(RecordingControlsPlacement::distance);

std::vector<RecordingControlsPlacement::Screen> screenFrames()
{
    std::vector<RecordingControlsPlacement::Screen> result;
    for (const Platform::Screen& screen : Platform::screens())
        result.push_back({screen.frame, screen.visibleFrame});
    return result;
}

} // namespace

/// Says by its colour whether anything is being recorded.
class RecordingControlsPanel::Dot : public QWidget {
public:
    explicit Dot(QWidget* parent = nullptr)
        : QWidget(parent)
    {
        setFixedSize(8, 8);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

    void setColor(const QColor& color)
    {
        if (m_color == color)
            return;
        m_color = color;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_color);
        painter.drawEllipse(rect());
    }

private:
    QColor m_color;
};

RecordingControlsPanel::RecordingControlsPanel(Rect near, Clock clock, Callbacks callbacks)
    : m_recorded(near)
    , m_clock(std::move(clock))
    , m_callbacks(std::move(callbacks))
    , m_bar(new ChromeBarView(this))
    , m_dot(new Dot)
    , m_timeLabel(new NumberLabel(QStringLiteral("0:00"), textSize))
{
    setObjectName(QStringLiteral("RecordingControlsPanel"));
    setWindowTitle(QStringLiteral("Tamrik Recording Controls"));
    setAccessibleName(QStringLiteral("Recording controls"));
    m_bar->setAccessibleName(accessibleName());
    Platform::applyTraits(
        *this,
        {.level = Platform::WindowLevel::StatusPanel, .nonActivating = true, .translucent = true});
    setCursor(Qt::ArrowCursor);

    fillBar();
    fit();
    positionNearRecording();
    tellTime();
    connect(&m_screenWatcher, &ScreenWatcher::changed, this,
            &RecordingControlsPanel::screensChanged);
    Platform::onCompositingChanged(this, [this] {
        updateBody();
        update();
    });
}

void RecordingControlsPanel::fillBar()
{
    m_dot->setColor(Platform::systemRed());
    m_pauseButton = makeButton(Symbol::pauseFill, "Pause / resume", m_callbacks.onPauseResume);
    auto* stop = makeButton(Symbol::stopFill, "Stop & save (⌥⇧R)", m_callbacks.onStop);
    stop->setAccent(Chrome::Accent::red);
    auto* restart = makeButton(Symbol::arrowCounterclockwise, "Restart recording (discard so far)",
                               m_callbacks.onRestart);
    auto* discard = makeButton(Symbol::trash, "Discard recording", m_callbacks.onDelete);

    auto* row = new QHBoxLayout(m_bar);
    row->setContentsMargins(insets);
    row->setSpacing(spacing);
    for (QWidget* item : {static_cast<QWidget*>(m_dot), static_cast<QWidget*>(m_timeLabel),
                          static_cast<QWidget*>(new ChromeSeparator(separatorHeight)),
                          static_cast<QWidget*>(m_pauseButton), static_cast<QWidget*>(stop),
                          static_cast<QWidget*>(restart),
                          static_cast<QWidget*>(new ChromeSeparator(separatorHeight)),
                          static_cast<QWidget*>(discard)})
        row->addWidget(item);
}

ChromeButton* RecordingControlsPanel::makeButton(Symbol symbol, const char* meaning,
                                                 std::function<void()> action)
{
    const QString text = QString::fromUtf8(meaning);
    auto* button =
        new ChromeButton(Symbols::Image{symbol, symbolSize, Symbols::Weight::semibold, text});
    button->setToolTip(text);
    connect(button, &ChromeButton::clicked, this, [action = std::move(action)] { action(); });
    return button;
}

void RecordingControlsPanel::fit()
{
    m_bar->layout()->activate();
    const QSize size = m_bar->sizeHint();
    m_bar->setGeometry(QRect(QPoint(shadowMargin, shadowMargin), size));
    m_frame.width = size.width();
    m_frame.height = size.height();
    resize(size + QSize(2 * shadowMargin, 2 * shadowMargin));
}

void RecordingControlsPanel::positionNearRecording()
{
    if (const auto origin =
            RecordingControlsPlacement::origin(m_recorded, m_frame.size(), screenFrames()))
        place(*origin);
}

void RecordingControlsPanel::screensChanged()
{
    m_clock.after(settlingTime, [self = QPointer(this), change = ++m_screenChanges] {
        if (!self || change != self->m_screenChanges)
            return;
        const Point middle = {self->m_frame.x + self->m_frame.width / 2,
                              self->m_frame.y + self->m_frame.height / 2};
        const auto screens = Platform::screens();
        if (std::none_of(screens.begin(), screens.end(),
                         [&](const auto& screen) { return screen.frame.contains(middle); }))
            self->positionNearRecording();
    });
}

void RecordingControlsPanel::place(Point origin)
{
    m_frame.x = origin.x;
    m_frame.y = origin.y;
    Platform::setFrame(*this, m_frame.grown(shadowMargin));
}

void RecordingControlsPanel::orderFrontRegardless()
{
    Platform::orderFrontRegardless(*this);
}

// The time

void RecordingControlsPanel::tellTime()
{
    m_clock.after(tick, [self = QPointer(this)] {
        if (!self || !self->m_tellsTime)
            return;
        self->refresh();
        self->tellTime();
    });
}

void RecordingControlsPanel::stopTimer()
{
    m_tellsTime = false;
}

void RecordingControlsPanel::refresh()
{
    const QString text = RecordingControlsPlacement::timeText(m_callbacks.elapsed());
    if (text != m_timeLabel->text()) {
        m_timeLabel->setText(text);
        if (m_bar->sizeHint() != m_bar->size()) {
            fit();
            place(m_frame.origin());
            updateBody();
        }
    }
    const bool paused = m_callbacks.isPaused();
    m_dot->setColor(paused ? Platform::systemOrange() : Platform::systemRed());
    const Symbol symbol = paused ? Symbol::playFill : Symbol::pauseFill;
    const QString meaning = paused ? QStringLiteral("Resume") : QStringLiteral("Pause");
    if (m_pauseButton->accessibleName() != meaning) {
        Symbols::Image image; // at the usual size
        image.symbol = symbol;
        image.description = meaning;
        m_pauseButton->setImage(image);
    }
}

// The window

void RecordingControlsPanel::updateBody()
{
    Platform::setBody(*this, m_bar->geometry(), m_bar->cornerRadius());
}

void RecordingControlsPanel::showEvent(QShowEvent*)
{
    updateBody();
    connect(windowHandle(), &QWindow::screenChanged, this, &RecordingControlsPanel::updateBody,
            Qt::UniqueConnection);
}

void RecordingControlsPanel::closeEvent(QCloseEvent* event)
{
    stopTimer();
    event->accept();
}

void RecordingControlsPanel::paintEvent(QPaintEvent* event)
{
    // The bar covers all but its round corners, and is what changes.
    constexpr int cornerReach = 4;
    const QRect covered =
        m_bar->geometry().adjusted(cornerReach, cornerReach, -cornerReach, -cornerReach);
    const QRegion bare = event->region() - covered;
    if (bare.isEmpty())
        return;
    QPainter painter(this);
    painter.setClipRegion(bare);
    SoftShadow::paint(painter, m_bar->geometry(), m_bar->cornerRadius());
}
