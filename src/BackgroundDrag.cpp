#include "BackgroundDrag.h"

#include "Platform/Screens.h"

#include <QMouseEvent>

#include <utility>

BackgroundDrag::BackgroundDrag(QObject& panel, std::function<void(Geometry::Point by)> move)
    : m_move(std::move(move))
{
    panel.installEventFilter(this);
}

bool BackgroundDrag::eventFilter(QObject*, QEvent* event)
{
    const auto isOfLeftButton = [event] {
        return static_cast<const QMouseEvent*>(event)->button() == Qt::LeftButton;
    };
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: // a second press
        if (isOfLeftButton())
            m_pointer = Platform::mouseLocation();
        return true;
    case QEvent::MouseMove:
        follow();
        return true;
    case QEvent::MouseButtonRelease:
        if (isOfLeftButton())
            m_pointer.reset();
        return true;
    default: // any other event
        return false;
    }
}

void BackgroundDrag::follow()
{
    if (!m_pointer)
        return;
    const Geometry::Point now = Platform::mouseLocation();
    const Geometry::Point by = {now.x - m_pointer->x, now.y - m_pointer->y};
    m_pointer = now;
    m_move(by);
}
