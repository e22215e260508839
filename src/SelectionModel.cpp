#include "SelectionModel.h"

#include <algorithm>
#include <array>

using Geometry::Point;
using Geometry::Rect;

SelectionModel::SelectionModel(Geometry::Size viewSize)
    : m_viewSize(viewSize)
{
}

std::optional<Rect> SelectionModel::usableSelection() const
{
    if (m_selectionRect.width < minimumSize || m_selectionRect.height < minimumSize)
        return std::nullopt;
    return m_selectionRect;
}

SelectionModel::Press SelectionModel::mouseDown(Point p)
{
    if (!isIn<Adjusting>())
        return Press::newSelection;
    if (const auto anchor = resizeAnchor(p)) {
        m_phase = Resizing{*anchor};
        return Press::adjusts;
    }
    if (m_selectionRect.grown(moveTolerance).contains(p)) {
        m_phase = Moving{{p.x - m_selectionRect.x, p.y - m_selectionRect.y}};
        return Press::adjusts;
    }
    return Press::newSelection;
}

void SelectionModel::beginDrag(Point start)
{
    m_phase = Dragging{start};
}

bool SelectionModel::mouseDragged(Point p)
{
    const Rect before = m_selectionRect;
    if (const auto* dragging = std::get_if<Dragging>(&m_phase)) {
        m_selectionRect = Rect::spanning(dragging->start, p);
    } else if (const auto* resizing = std::get_if<Resizing>(&m_phase)) {
        m_selectionRect = Rect::spanning(resizing->anchor, p);
    } else if (const auto* moving = std::get_if<Moving>(&m_phase)) {
        // In a view smaller than the selection the upper bound wins, so it comes last.
        const double maxX = m_viewSize.width - m_selectionRect.width;
        const double maxY = m_viewSize.height - m_selectionRect.height;
        m_selectionRect.x = std::min(std::max(p.x - moving->offset.x, 0.0), maxX);
        m_selectionRect.y = std::min(std::max(p.y - moving->offset.y, 0.0), maxY);
    }
    return m_selectionRect != before;
}

SelectionModel::Release SelectionModel::mouseUp() const
{
    if (isIn<Dragging>())
        return usableSelection() ? Release::selected : Release::tooSmall;
    if (isIn<Moving>() || isIn<Resizing>())
        return Release::adjusted;
    return Release::nothing;
}

void SelectionModel::enterAdjusting()
{
    m_phase = Adjusting{};
}

void SelectionModel::clear()
{
    m_selectionRect = {};
    m_phase = Idle{};
}

std::optional<Point> SelectionModel::resizeAnchor(Point p) const
{
    const Rect& r = m_selectionRect;
    const std::array<Point, 4> corners = {{
        {r.minX(), r.minY()},
        {r.maxX(), r.minY()},
        {r.minX(), r.maxY()},
        {r.maxX(), r.maxY()},
    }};
    const auto grabbed = std::find_if(corners.begin(), corners.end(), [p](Point corner) {
        return Geometry::distance(corner, p) <= cornerRadius;
    });
    if (grabbed == corners.end())
        return std::nullopt;
    return Point{grabbed->x == r.minX() ? r.maxX() : r.minX(),
                 grabbed->y == r.minY() ? r.maxY() : r.minY()};
}

Point SelectionModel::hudOrigin(Geometry::Size hudSize) const
{
    const Rect& r = m_selectionRect;
    // Where both bounds cannot be kept, the second one wins.
    const double centred = r.x + r.width / 2 - hudSize.width / 2;
    const double x = std::min(std::max(centred, hudEdgeMargin),
                              m_viewSize.width - hudSize.width - hudEdgeMargin);
    double y = r.minY() - hudSize.height - hudDistance;
    if (y < hudEdgeMargin) {
        y = std::min(r.maxY() + hudDistance, m_viewSize.height - hudSize.height - hudEdgeMargin);
    }
    return {x, y};
}
