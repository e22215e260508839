#include "Editor/EditorWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>

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
