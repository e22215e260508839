#include "CameraBubblePanel.h"

#include "Platform/Compositing.h"
#include "Platform/Screens.h"
#include "Platform/WindowTraits.h"
#include "SoftShadow.h"
#include "Support/Guarded.h"

#include <QCloseEvent>
#include <QPainter>
#include <QPointer>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;

namespace {

/// From the right and the bottom edge of the screen.
constexpr double distance = 24;
constexpr Rect fallbackScreen = {0, 0, 1440, 900};
constexpr int borderWidth = 2;
constexpr QRgb borderColor = 0x4C5058;
/// Room for the shadow on every side, in points.
constexpr int shadowMargin = static_cast<int>(SoftShadow::reach);
constexpr int side = static_cast<int>(CameraBubblePanel::diameter);

/// How long panels and docks get to move after the screens have changed.
constexpr auto settlingTime = 200ms;

int pixelsAt(double scale)
{
    return static_cast<int>(std::lround(CameraBubblePanel::diameter * scale));
}

} // namespace

CameraBubblePanel::CameraBubblePanel(const OpenCamera& openCamera, Clock clock)
    : m_clock(std::move(clock))
{
    setObjectName(QStringLiteral("CameraBubblePanel"));
    setWindowTitle(QStringLiteral("Tamrik Camera Bubble"));
    setAccessibleName(QStringLiteral("Camera bubble"));
    Platform::applyTraits(
        *this,
        {.level = Platform::WindowLevel::StatusPanel, .nonActivating = true, .translucent = true});
    setCursor(Qt::ArrowCursor);
    resize(side + 2 * shadowMargin, side + 2 * shadowMargin);
    placeInCorner();
    connect(&m_screenWatcher, &ScreenWatcher::changed, this, &CameraBubblePanel::screensChanged);
    Platform::onCompositingChanged(this, [this] {
        Platform::setBody(*this, body(), diameter / 2);
        update();
    });
    m_scale = devicePixelRatioF();
    m_session = openCamera(pixelsAt(m_scale), Guarded::any<>(this, [this] {
                               if (!m_session)
                                   return;
                               m_picture = m_session->picture();
                               update(body());
                           }));
}

CameraBubblePanel::~CameraBubblePanel() = default;

void CameraBubblePanel::stopSession()
{
    m_session.reset();
    m_picture = {};
    update(body());
}

void CameraBubblePanel::closeEvent(QCloseEvent* event)
{
    stopSession();
    event->accept();
}

// Where it is

void CameraBubblePanel::placeInCorner()
{
    const auto screens = Platform::screens();
    const Rect screen = screens.empty() ? fallbackScreen : screens.front().visibleFrame;
    place({screen.x + screen.width - diameter - distance, screen.y + distance});
}

void CameraBubblePanel::place(Point origin)
{
    m_frame.x = origin.x;
    m_frame.y = origin.y;
    Platform::setFrame(*this, m_frame.grown(shadowMargin));
    // The scale of a screen can change under a window whose size in points stays as it is.
    if (isVisible() && devicePixelRatioF() != m_scale)
        fitToScreen();
}

void CameraBubblePanel::screensChanged()
{
    m_clock.after(settlingTime, [self = QPointer(this), change = ++m_screenChanges] {
        if (!self || change != self->m_screenChanges)
            return;
        const Point middle = {self->m_frame.x + diameter / 2, self->m_frame.y + diameter / 2};
        const auto screens = Platform::screens();
        if (std::none_of(screens.begin(), screens.end(),
                         [&](const auto& screen) { return screen.frame.contains(middle); }))
            self->placeInCorner();
    });
}

void CameraBubblePanel::orderFrontRegardless()
{
    Platform::orderFrontRegardless(*this);
}

void CameraBubblePanel::showEvent(QShowEvent*)
{
    fitToScreen();
    connect(windowHandle(), &QWindow::screenChanged, this, &CameraBubblePanel::fitToScreen,
            Qt::UniqueConnection);
}

void CameraBubblePanel::fitToScreen()
{
    if (const double scale = devicePixelRatioF(); scale != m_scale) {
        m_scale = scale;
        if (m_session)
            m_session->setSide(pixelsAt(scale));
    }
    Platform::setBody(*this, body(), diameter / 2);
    update();
}

// What it shows

QRect CameraBubblePanel::body() const
{
    return {shadowMargin, shadowMargin, side, side};
}

void CameraBubblePanel::paintEvent(QPaintEvent*)
{
    // Many layers, and a picture comes thirty times a second.
    if (m_shadow.devicePixelRatio() != devicePixelRatioF() || m_shadow.isNull()) {
        m_shadow = QPixmap(size() * devicePixelRatioF());
        m_shadow.setDevicePixelRatio(devicePixelRatioF());
        m_shadow.fill(Qt::transparent);
        QPainter painter(&m_shadow);
        SoftShadow::paint(painter, body(), diameter / 2);
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_shadow);
    paintCircle(painter);
}

void CameraBubblePanel::paintCircle(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
    QBrush content(Qt::black);
    if (!m_picture.isNull()) {
        content = QBrush(m_picture);
        // Mirrored: what is on the user's left is on the left.
        const double scale = diameter / m_picture.width();
        content.setTransform(
            QTransform(-scale, 0, 0, scale, shadowMargin + diameter, shadowMargin));
    }
    if (!Platform::isComposited()) { // or else what is smooth would have a dark rim
        painter.setBrush(QColor(borderColor));
        painter.drawEllipse(body().adjusted(-1, -1, 1, 1));
    }
    // It ends below the border, of which alone the smooth edge is.
    constexpr double inset = borderWidth / 2.0;
    const QRectF circle = QRectF(body()).adjusted(inset, inset, -inset, -inset);
    painter.setBrush(content);
    painter.drawEllipse(circle);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(borderColor), borderWidth));
    painter.drawEllipse(circle);
}
