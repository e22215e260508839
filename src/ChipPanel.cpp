#include "ChipPanel.h"

#include "ChipPlacement.h"
#include "Platform/Compositing.h"
#include "Platform/WindowTraits.h"
#include "SoftShadow.h"

#include <QCloseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QVariantAnimation>
#include <QWindow>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;
using Geometry::Size;

namespace {

/// Room for the shadow on every side, in points.
constexpr int shadowMargin = static_cast<int>(SoftShadow::reach);
constexpr auto closingTime = 250ms;

} // namespace

ChipPanel::ChipPanel(const QUrl& file, const ChipContent& content, const Clock& clock,
                     ChipView::OnEdit onEdit)
    : m_move(new QVariantAnimation(this))
    , m_fade(new QVariantAnimation(this))
{
    setObjectName(QStringLiteral("ChipPanel"));
    setWindowTitle(QStringLiteral("Tamrik Chip"));
    Platform::applyTraits(
        *this,
        {.level = Platform::WindowLevel::StatusPanel, .nonActivating = true, .translucent = true});
    setCursor(Qt::ArrowCursor);

    const Size size = ChipPlacement::chipSize(content.pictureSize);
    m_frame = {0, 0, size.width, size.height};
    m_view = new ChipView(file, content, size, std::move(onEdit), clock, this);
    m_view->move(shadowMargin, shadowMargin);
    setAccessibleName(m_view->accessibleName());
    resize(m_view->size() + QSize(2 * shadowMargin, 2 * shadowMargin));

    m_move->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_move, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        const QPointF origin = value.toPointF();
        place({origin.x(), origin.y()});
    });
    m_fade->setStartValue(1.0);
    m_fade->setEndValue(0.0);
    m_fade->setDuration(static_cast<int>(closingTime / 1ms));
    connect(m_fade, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { Platform::setOpacity(*this, value.toDouble()); });
    connect(m_fade, &QVariantAnimation::finished, this, &ChipPanel::close);

    Platform::onCompositingChanged(this, [this] {
        updateBody();
        update();
    });
}

ChipPanel::~ChipPanel() = default;

Rect ChipPanel::frame() const
{
    return m_frame;
}

void ChipPanel::setFrameOrigin(Point origin)
{
    m_move->stop();
    place(origin);
}

void ChipPanel::moveTo(Point origin, std::chrono::milliseconds duration)
{
    m_move->stop();
    if (duration == 0ms || m_frame.origin() == origin) {
        place(origin);
        return;
    }
    m_move->setStartValue(QPointF(m_frame.x, m_frame.y));
    m_move->setEndValue(QPointF(origin.x, origin.y));
    m_move->setDuration(static_cast<int>(duration.count()));
    m_move->start();
}

void ChipPanel::place(Point origin)
{
    m_frame.x = origin.x;
    m_frame.y = origin.y;
    Platform::setFrame(*this, m_frame.grown(shadowMargin));
    // The scale of a screen can change under a window whose size in points stays as it is.
    if (isVisible() && devicePixelRatioF() != m_bodyScale)
        updateBody();
}

QRectF ChipPanel::body() const
{
    return m_view->body().translated(m_view->pos());
}

void ChipPanel::orderFrontRegardless()
{
    Platform::orderFrontRegardless(*this);
}

void ChipPanel::fadeClose()
{
    if (m_fade->state() != QAbstractAnimation::Running)
        m_fade->start();
}

void ChipPanel::closeEvent(QCloseEvent* event)
{
    event->accept();
    m_move->stop();
    if (m_closeNotified)
        return;
    m_closeNotified = true;
    if (onClosed)
        onClosed(this);
}

void ChipPanel::updateBody()
{
    m_bodyScale = devicePixelRatioF();
    // Where there is no shadow, its innermost point is: a black line, without which a picture of
    // something white would be lost on white.
    const double rim = Platform::isComposited() ? 0 : 1;
    Platform::setBody(*this, body().adjusted(-rim, -rim, rim, rim), ChipView::cornerRadius + rim);
}

void ChipPanel::showEvent(QShowEvent*)
{
    updateBody();
    connect(windowHandle(), &QWindow::screenChanged, this, &ChipPanel::updateBody,
            Qt::UniqueConnection);
}

void ChipPanel::resizeEvent(QResizeEvent*)
{
    if (isVisible())
        updateBody();
}

void ChipPanel::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    // The view covers all but its round corners, and is what changes most.
    constexpr int cornerReach = 4;
    const QRect covered =
        body().toRect().adjusted(cornerReach, cornerReach, -cornerReach, -cornerReach);
    painter.setClipRegion(event->region() - covered);
    SoftShadow::paint(painter, body(), ChipView::cornerRadius);
}
