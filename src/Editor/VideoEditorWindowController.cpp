#include "Editor/VideoEditorWindowController.h"

#include "Editor/EditorWindow.h"
#include "Editor/PlayerView.h"
#include "Editor/VideoEditorToolbar.h"
#include "Platform/Pasteboard.h"
#include "Platform/WindowTraits.h"
#include "Support/Guarded.h"
#include "Support/Log.h"
#include "Support/RemoveFile.h"
#include "Support/Sibling.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QShortcut>
#include <QVBoxLayout>

#include <limits>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto flashTime = 1600ms;
constexpr Geometry::Size contentSize = {980, 640};
constexpr Geometry::Size smallestWindow = {720, 440};

/// Whatever it is; a link, not what it leads to. What cannot be removed is left to the export.
void removeItem(const QString& path)
{
    const QFileInfo item(path);
    if (item.isDir() && !item.isSymLink())
        QDir(path).removeRecursively();
    else
        removeFile(path);
}

} // namespace

std::unique_ptr<VideoEditorWindowController>
VideoEditorWindowController::open(const QUrl& video, VideoEditorServices services)
{
    if (!QFileInfo::exists(video.toLocalFile()))
        return nullptr;
    return std::unique_ptr<VideoEditorWindowController>(
        new VideoEditorWindowController(video, std::move(services)));
}

VideoEditorWindowController::VideoEditorWindowController(const QUrl& video,
                                                         VideoEditorServices services)
    : m_videoURL(video)
    , m_services(std::move(services))
    , m_window(std::make_unique<EditorWindow>(video.toLocalFile(), m_services.clock))
{
    m_window->setObjectName(QStringLiteral("VideoEditorWindow"));
    m_window->willClose = [this] { windowWillClose(); };
    buildUI();
    addShortcuts();
    m_window->place(contentSize, smallestWindow);
}

VideoEditorWindowController::~VideoEditorWindowController()
{
    m_window->willClose = {};
    m_window->hide();
    // The window may outlive the event loop, which the player must not.
    m_playerView->end();
    m_window.release()->deleteLater();
}

QWidget& VideoEditorWindowController::window()
{
    return *m_window;
}

void VideoEditorWindowController::buildUI()
{
    const QString path = m_videoURL.toLocalFile();
    m_toolbar = new VideoEditorToolbar;
    m_playerView =
        new PlayerView({.path = path,
                        .player = m_services.openPlayer ? m_services.openPlayer(path) : nullptr,
                        .loader = m_services.loader},
                       m_services.clock);
    auto* column = new QVBoxLayout(m_window.get());
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolbar);
    column->addWidget(m_playerView, 1);
    m_playerView->setFocus();
    connect(m_toolbar, &VideoEditorToolbar::trimClicked, this,
            &VideoEditorWindowController::trimClicked);
    connect(m_toolbar, &VideoEditorToolbar::saveClicked, this,
            &VideoEditorWindowController::saveTrimmed);
    connect(m_toolbar, &VideoEditorToolbar::exportClicked, this,
            &VideoEditorWindowController::exportGIF);
    connect(m_toolbar, &VideoEditorToolbar::copyClicked, this,
            &VideoEditorWindowController::copyFile);
}

void VideoEditorWindowController::addShortcuts()
{
    struct Command {
        QKeyCombination keys;
        std::function<void()> action;
    };
    const Command commands[] = {
        {Qt::CTRL | Qt::Key_T, [this] { trimClicked(); }},
        {Qt::CTRL | Qt::Key_S, [this] { saveTrimmed(); }},
        {Qt::CTRL | Qt::Key_C, [this] { copyFile(); }},
        {Qt::CTRL | Qt::Key_W, [this] { m_window->close(); }},
    };
    for (const auto& [keys, action] : commands) {
        auto* shortcut = new QShortcut(QKeySequence(keys), m_window.get());
        shortcut->setAutoRepeat(false);
        connect(shortcut, &QShortcut::activated, this, action);
    }
}

void VideoEditorWindowController::makeKeyAndOrderFront()
{
    Platform::bringToFront(*m_window);
}

FilmRange VideoEditorWindowController::exportRange() const
{
    if (const auto selected = m_playerView->trimming().selectedRange())
        return *selected;
    // Who exports finds the end where it is not known yet.
    return {0, m_playerView->duration().value_or(std::numeric_limits<double>::infinity())};
}

void VideoEditorWindowController::trimClicked()
{
    m_playerView->onceOpened([this] {
        if (m_playerView->trimming().canBegin())
            m_playerView->trimming().begin();
        else
            flashTitle(QStringLiteral("Trimming unavailable"));
    });
}

void VideoEditorWindowController::saveTrimmed()
{
    if (!m_services.canTrim || !m_services.canTrim()) {
        flashTitle(QStringLiteral("Export failed"));
        return;
    }
    const QUrl destination = sibling(m_videoURL, QStringLiteral(" trimmed.mp4"));
    const FilmRange range = exportRange();
    removeItem(destination.toLocalFile());
    flashTitle(QStringLiteral("Exporting video…"));
    // The application holds it, since a failure is told when this is gone too.
    const auto ended = [self = QPointer(this), destination](const MovieExport::Outcome& outcome) {
        if (outcome.end == MovieExport::End::failed)
            Log::line(QStringLiteral("video export failed: ") +
                      QString::fromStdString(outcome.reason));
        if (self)
            self->trimEnded(outcome, destination);
    };
    m_services.trim(
        m_videoURL.toLocalFile(), range.start, range.end, destination.toLocalFile(),
        Guarded::once<const MovieExport::Outcome&>(QCoreApplication::instance(), ended));
}

void VideoEditorWindowController::trimEnded(const MovieExport::Outcome& outcome, const QUrl& output)
{
    if (!outcome.succeeded()) {
        flashTitle(QStringLiteral("Export failed"));
        return;
    }
    flashTitle(QStringLiteral("Saved ✓ ") + output.fileName());
    if (onFileProduced)
        onFileProduced(output);
}

void VideoEditorWindowController::exportGIF()
{
    const QUrl destination = sibling(m_videoURL, QStringLiteral(".gif"));
    flashTitle(QStringLiteral("Exporting GIF…"));
    const auto ended = [this, destination](bool succeeded) {
        if (!succeeded) {
            flashTitle(QStringLiteral("GIF export failed"));
            return;
        }
        flashTitle(QStringLiteral("GIF ✓ ") + destination.fileName());
        if (onFileProduced)
            onFileProduced(destination);
    };
    if (!m_services.exportGIF) {
        ended(false);
        return;
    }
    const FilmRange range = exportRange();
    m_services.exportGIF(m_videoURL, {range.start, range.end - range.start}, destination,
                         Guarded::once<bool>(this, ended));
}

void VideoEditorWindowController::copyFile()
{
    Platform::writePasteboard({.png = std::nullopt, .fileURL = m_videoURL});
    flashTitle(QStringLiteral("Copied ✓"));
}

void VideoEditorWindowController::flashTitle(const QString& message)
{
    m_window->flashTitle(message, flashTime);
}

void VideoEditorWindowController::windowWillClose()
{
    m_playerView->playback().pause();
    if (std::exchange(m_isClosed, true))
        return;
    if (onClose)
        onClose(this);
}
