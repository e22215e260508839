#include "SelectionWindow.h"

#include "Platform/WindowTraits.h"
#include "SelectionSession.h"
#include "SelectionView.h"

#include <QKeyEvent>

SelectionWindow::SelectionWindow(const Platform::Screen& screen,
                                 std::weak_ptr<SelectionSession> session,
                                 std::optional<QPixmap> backdrop)
    : m_session(session)
{
    setObjectName(QStringLiteral("SelectionWindow"));
    setWindowTitle(QStringLiteral("Tamrik Selection"));
    Platform::applyTraits(*this, {.level = Platform::WindowLevel::ScreenSaver,
                                  .nonActivating = false,
                                  .translucent = !backdrop.has_value()});
    if (screen.handle) {
        setScreen(screen.handle);
        setGeometry(screen.handle->geometry());
    }
    m_view = new SelectionView(screen.frame, std::move(session), std::move(backdrop), this);
    m_view->setGeometry(rect());
    setFocusProxy(m_view);
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
