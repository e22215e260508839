#include "Editor/EditorWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QWindow>

void EditorWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (willClose)
        willClose();
}

void EditorWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return && event->modifiers() == Qt::NoModifier &&
        !event->isAutoRepeat())
        Q_EMIT returnPressed();
    else
        QWidget::keyPressEvent(event);
}

void EditorWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // A window keeps its size in pixels then. On a screen of a larger scale these are fewer points,
    // which Qt is told of a moment later.
    connect(windowHandle(), &QWindow::screenChanged, this, &EditorWindow::makeRoom,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection));
}

void EditorWindow::makeRoom()
{
    const QSize enough = size().expandedTo(minimumSize());
    if (size() != enough)
        resize(enough);
}
