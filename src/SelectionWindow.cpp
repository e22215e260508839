#include "SelectionWindow.h"

#include "Platform/WindowTraits.h"
#include "SelectionSession.h"
#include "SelectionView.h"

#include <QKeyEvent>

SelectionWindow::SelectionWindow(const Platform::Screen& screen,
                                 std::weak_ptr<SelectionSession> session,
                                 std::optional<QPixmap> backdrop)
    : m_session(session)
    , m_screen(screen)
    , m_place(screen.handle ? screen.handle->geometry() : QRect())
{
    setObjectName(QStringLiteral("SelectionWindow"));
    setWindowTitle(QStringLiteral("Tamrik Selection"));
    Platform::applyTraits(*this, {.level = Platform::WindowLevel::ScreenSaver,
                                  .nonActivating = false,
                                  .translucent = !backdrop.has_value()});
    if (screen.handle)
        Platform::coverScreen(*this, *screen.handle);
    m_view = new SelectionView(screen.frame, std::move(session), std::move(backdrop), this);
    m_view->setGeometry(rect());
    setFocusProxy(m_view);
}

bool SelectionWindow::covers(const Platform::Screen& screen) const
{
    return screen.handle && screen.handle == m_screen.handle &&
           screen.handle->geometry() == m_place && screen.frame.size() == m_screen.frame.size() &&
           screen.scale == m_screen.scale;
}

void SelectionWindow::setScreenOrigin(Geometry::Point origin)
{
    m_view->setScreenOrigin(origin);
}

void SelectionWindow::detach()
{
    m_session.reset();
    m_view->detach();
}

void SelectionWindow::keyPressEvent(QKeyEvent* event)
{
    if (const auto session = m_session.lock())
        session->handleKey(*event);
}

void SelectionWindow::resizeEvent(QResizeEvent*)
{
    m_view->setGeometry(rect());
}
