#include "SelectionView.h"

#include "Chrome.h"
#include "SelectionHUD.h"
#include "SelectionSession.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

using Geometry::Point;
using Geometry::Rect;

namespace {

const QColor dimming(0, 0, 0, 64); // black at 0.25
constexpr double outlineWidth = 1;
constexpr double outlineAlpha = 0.85;
constexpr double bracketWidth = 3;
constexpr double bracketArm = 18;
constexpr double bracketDistance = 3;
constexpr Point labelOffset = {6, 10};
constexpr double instructionInset = 80;

/// How far a line of `width` points must move sideways so that both its edges fall on device
/// pixels, when it is drawn along a whole one.
double crispOffset(double width, double scale)
{
    const bool odd = std::lround(width * scale) % 2 == 1;
    return odd ? 0.5 / scale : 0;
}

QString instruction(SelectionMode mode)
{
    switch (mode) {
    case SelectionMode::screenshot:
        return QStringLiteral("Drag to select capture area  ·  Esc to cancel");
    case SelectionMode::record:
        return QStringLiteral("Drag to select recording area  ·  Esc to cancel");
    }
    Q_UNREACHABLE();
}

} // namespace

SelectionView::SelectionView(Rect screenFrame, std::weak_ptr<SelectionSession> session,
                             std::optional<QPixmap> backdrop, QWidget* parent)
    : QWidget(parent)
    , m_session(std::move(session))
    , m_screenOrigin(screenFrame.origin())
    , m_model(screenFrame.size())
    , m_backdrop(std::move(backdrop))
{
    setObjectName(QStringLiteral("SelectionView"));
    setAccessibleName(QStringLiteral("Selection"));
    if (const auto open = m_session.lock())
        setAccessibleDescription(instruction(open->mode()));
    setCursor(Qt::CrossCursor);
    setFocusPolicy(Qt::StrongFocus);
    if (m_backdrop)
        setAttribute(Qt::WA_OpaquePaintEvent);
}

std::optional<Rect> SelectionView::globalSelectionRect() const
{
    const auto selection = m_model.usableSelection();
    if (!selection)
        return std::nullopt;
    return selection->translated(m_screenOrigin.x, m_screenOrigin.y);
}

void SelectionView::clear()
{
    m_model.clear();
    hideHUD();
    update();
}

void SelectionView::enterAdjusting()
{
    m_model.enterAdjusting();
    if (const auto session = m_session.lock()) {
        session->noteSelection();
        session->setActiveView(this);
    }
    showHUD();
    update();
}

void SelectionView::detach()
{
    const auto session = m_session.lock();
    if (session && session->activeView() == this)
        session->setActiveView(nullptr);
    m_session.reset();
    clear();
}

void SelectionView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const Point p = pointFrom(*event);
    switch (m_model.mouseDown(p)) {
    case SelectionModel::Press::adjusts:
        hideHUD();
        break;
    case SelectionModel::Press::newSelection:
        clear();
        if (const auto session = m_session.lock()) {
            if (SelectionView* other = session->activeView())
                other->clear();
            session->setActiveView(this);
        }
        m_model.beginDrag(p);
        break;
    }
    update();
}

void SelectionView::mouseMoveEvent(QMouseEvent* event)
{
    const QRegion before = decoratedRegion();
    const Rect unchangedBefore = m_model.selectionRect();
    if (!m_model.mouseDragged(pointFrom(*event)))
        return;
    // The common inside keeps its look, so a large selection does not repaint the whole screen.
    const QRect kept = widgetRect(unchangedBefore).toAlignedRect() &
                       widgetRect(m_model.selectionRect()).toAlignedRect();
    update((before + decoratedRegion()) - kept.adjusted(3, 3, -3, -3));
}

void SelectionView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const auto session = m_session.lock();
    switch (m_model.mouseUp()) {
    case SelectionModel::Release::nothing:
        return;
    case SelectionModel::Release::selected:
        if (session && session->mode() == SelectionMode::screenshot) {
            session->setActiveView(this);
            session->confirmActiveSelection(false);
        } else {
            enterAdjusting();
        }
        return;
    case SelectionModel::Release::tooSmall:
        clear();
        if (session && !session->hadSelection())
            session->finish(std::nullopt);
        return;
    case SelectionModel::Release::adjusted:
        enterAdjusting();
        return;
    }
}

void SelectionView::keyPressEvent(QKeyEvent* event)
{
    if (const auto session = m_session.lock())
        session->handleKey(*event);
}

// The bar beside the selection

void SelectionView::showHUD()
{
    const auto session = m_session.lock();
    if (!m_hud && session) {
        m_hud = new SelectionHUD(session->mode(), session->hooks(), session->clock(),
                                 {.onConfirm =
                                      [this](bool gif) {
                                          if (const auto open = m_session.lock())
                                              open->confirmActiveSelection(gif);
                                      },
                                  .onCancel =
                                      [this] {
                                          if (const auto open = m_session.lock())
                                              open->finish(std::nullopt);
                                      },
                                  .onReadjust = [this] { clear(); }},
                                 this);
    }
    if (!m_hud)
        return;
    m_hud->refreshToggleTints(); // the menu may have switched them
    m_hud->show();
    positionHUD();
}

void SelectionView::hideHUD()
{
    if (m_hud)
        m_hud->hide();
}

void SelectionView::positionHUD()
{
    if (!m_hud || m_hud->isHidden())
        return;
    const Rect& selection = m_model.selectionRect();
    m_hud->update(static_cast<int>(selection.width), static_cast<int>(selection.height));
    const Geometry::Size size = {static_cast<double>(m_hud->width()),
                                 static_cast<double>(m_hud->height())};
    const Point origin = m_model.hudOrigin(size);
    const auto corner = flip().topLeftFromBottomLeft(Point{origin.x, origin.y + size.height});
    m_hud->move(static_cast<int>(std::lround(corner.x)), static_cast<int>(std::lround(corner.y)));
}

Geometry::Flip SelectionView::flip() const
{
    return Geometry::Flip({0, 0, static_cast<double>(width()), static_cast<double>(height())});
}

Point SelectionView::pointFrom(const QMouseEvent& event) const
{
    // The pointer names the pixel that it stands on. On a screen's last column or row it means the
    // screen's edge, or nobody could drag out a whole screen.
    const auto snapped = [](double position, int extent) {
        const bool onLastPoint = position >= extent - 1 && position < extent;
        return onLastPoint ? static_cast<double>(extent) : std::round(position);
    };
    // In the window, which the view fills: Qt takes position() through global coordinates, and is
    // up to a point off where they have holes, beyond the screen's edge.
    const QPointF p = event.scenePosition();
    return flip().bottomLeftFromTopLeft(
        Geometry::TopLeftPoint{snapped(p.x(), width()), snapped(p.y(), height())});
}

QRectF SelectionView::widgetRect(Rect viewRect) const
{
    const Geometry::TopLeftRect r = flip().topLeftFromBottomLeft(viewRect);
    return {r.x, r.y, r.width, r.height};
}

QString SelectionView::sizeLabel() const
{
    const Rect& selection = m_model.selectionRect();
    return QStringLiteral("%1 × %2")
        .arg(static_cast<int>(selection.width))
        .arg(static_cast<int>(selection.height));
}

Point SelectionView::sizeLabelPosition() const
{
    const Rect& selection = m_model.selectionRect();
    return {selection.minX() + labelOffset.x, selection.maxY() + labelOffset.y};
}

QRegion SelectionView::decoratedRegion() const
{
    constexpr double frameReach = bracketDistance + bracketWidth;
    QRegion region(widgetRect(m_model.selectionRect().grown(frameReach)).toAlignedRect());
    const auto label = Chrome::pillLayout(sizeLabel(), sizeLabelPosition(), false);
    return region + widgetRect(label.pill.grown(1)).toAlignedRect();
}

void SelectionView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (m_backdrop) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        for (const QRect& part : event->region()) {
            const double scale = devicePixelRatioF();
            const QRectF source(part.x() * scale, part.y() * scale, part.width() * scale,
                                part.height() * scale);
            painter.drawPixmap(QRectF(part), *m_backdrop, source);
        }
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    paintDimming(painter);
    if (!m_model.selectionRect().isEmpty()) {
        paintOutline(painter);
        paintBrackets(painter);
    }
    paintLabels(painter);
}

void SelectionView::paintDimming(QPainter& painter) const
{
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    path.addRect(rect());
    if (!m_model.selectionRect().isEmpty())
        path.addRect(widgetRect(m_model.selectionRect()));
    painter.fillPath(path, dimming);
}

void SelectionView::paintOutline(QPainter& painter) const
{
    const double offset = crispOffset(outlineWidth, devicePixelRatioF());
    QColor white(Qt::white);
    white.setAlphaF(static_cast<float>(outlineAlpha));
    QPen pen(white, outlineWidth);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(widgetRect(m_model.selectionRect().grown(offset)));
}

void SelectionView::paintBrackets(QPainter& painter) const
{
    const double offset = crispOffset(bracketWidth, devicePixelRatioF());
    const QRectF box = widgetRect(m_model.selectionRect().grown(bracketDistance + offset));
    QPainterPath path;
    for (const double x : {box.left(), box.right()}) {
        for (const double y : {box.top(), box.bottom()}) {
            const double inwardX = x == box.left() ? bracketArm : -bracketArm;
            const double inwardY = y == box.top() ? bracketArm : -bracketArm;
            path.moveTo(x + inwardX, y);
            path.lineTo(x, y);
            path.lineTo(x, y + inwardY);
        }
    }
    QPen pen(Qt::white, bracketWidth);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(path, pen);
}

void SelectionView::paintLabels(QPainter& painter) const
{
    if (m_model.isIn<SelectionModel::Dragging>()) {
        Chrome::drawPill(painter, flip(), sizeLabel(), sizeLabelPosition(), false);
    } else if (m_model.isIn<SelectionModel::Idle>()) {
        const auto session = m_session.lock();
        const auto mode = session ? session->mode() : SelectionMode::screenshot;
        const Point top{width() / 2.0, height() - instructionInset};
        Chrome::drawPill(painter, flip(), instruction(mode), top, true);
    }
}
