#include "Editor/EditorWindow.h"

#include "Editor/EditorLayout.h"
#include "Platform/Screens.h"
#include "Platform/WindowTraits.h"
#include "StatusIcon.h"
#include "Support/Guarded.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

constexpr Geometry::Rect assumedScreen = {0, 0, 1440, 900};

} // namespace

EditorWindow::EditorWindow(const QString& path, Clock clock)
    : m_fileName(QFileInfo(path).fileName())
    , m_clock(std::move(clock))
{
    setTitle(m_fileName);
    setWindowIcon(StatusIcon::icon(false));
    setWindowFilePath(path);
}

Geometry::Rect EditorWindow::visibleFrame()
{
    const auto screens = Platform::screens();
    return screens.empty() ? assumedScreen : screens.front().visibleFrame;
}

void EditorWindow::place(Geometry::Size content, Geometry::Size smallest)
{
    const Geometry::Rect visible = visibleFrame();
    const Geometry::Size least = EditorLayout::smallestContent(smallest, visible.size());
    setMinimumSize(static_cast<int>(least.width), static_cast<int>(least.height));
    const Geometry::Size size = {std::max(content.width, least.width),
                                 std::max(content.height, least.height)};
    Platform::setFrame(*this, EditorLayout::placed(size, visible));
}

void EditorWindow::setTitle(QString text)
{
    // Qt replaces this mark in titles.
    setWindowTitle(text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")));
}

void EditorWindow::flashTitle(const QString& message, std::chrono::milliseconds time)
{
    setTitle(message);
    m_clock.after(time, Guarded::any(this, [this] { setTitle(m_fileName); }));
}

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
