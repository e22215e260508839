#pragma once

#include "Editor/FilmLoader.h"
#include "Editor/FrameGrid.h"
#include "Media/MovieExport.h"
#include "Media/Player.h"
#include "Support/Clock.h"
#include "TimeRange.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class EditorWindow;
class PlayerView;
class QWidget;
class VideoEditorToolbar;

/// What a video editor needs of the world.
struct VideoEditorServices {
    Clock clock;
    /// Null when there is no player.
    std::function<std::unique_ptr<Player>(const QString& path)> openPlayer;
    FilmLoader loader;
    /// Whether `trim` has what it needs.
    std::function<bool()> canTrim;
    /// Copies a range of a movie without encoding it again. The completion is called once, on any
    /// thread.
    std::function<void(const QString& source, double start, double end, const QString& destination,
                       MovieExport::Completion completion)>
        trim;
    /// Makes a GIF of a range of a video. The completion is called once, on the main thread.
    std::function<void(const QUrl& video, TimeRange range, const QUrl& destination,
                       std::function<void(bool succeeded)> completion)>
        exportGIF;
};

/// One video in a window of its own: it is played, a range of it is chosen, and saved or made a GIF
/// of. Main thread only. What is being written when the window closes is written to its end.
class VideoEditorWindowController : public QObject {
    Q_OBJECT

public:
    /// Null when there is no such file. The window is not shown yet.
    static std::unique_ptr<VideoEditorWindowController> open(const QUrl& video,
                                                             VideoEditorServices services);
    /// The window goes later: the end may come from within one of its events.
    ~VideoEditorWindowController() override;

    /// Called once, when the window closes.
    std::function<void(VideoEditorWindowController*)> onClose;
    /// Called with each file that was written.
    std::function<void(const QUrl& file)> onFileProduced;

    const QUrl& videoURL() const { return m_videoURL; }
    QWidget& window();
    PlayerView& playerView() { return *m_playerView; }

    /// Shows the window on top, with the keyboard.
    void makeKeyAndOrderFront();

    void trimClicked();
    void saveTrimmed();
    void exportGIF();
    void copyFile();

    /// What the user has chosen, else the whole video.
    FilmRange exportRange() const;

private:
    VideoEditorWindowController(const QUrl& video, VideoEditorServices services);

    void buildUI();
    void addShortcuts();
    void flashTitle(const QString& message);
    void trimEnded(const MovieExport::Outcome& outcome, const QUrl& output);
    void windowWillClose();

    QUrl m_videoURL;
    VideoEditorServices m_services;
    std::unique_ptr<EditorWindow> m_window;
    // In the window.
    VideoEditorToolbar* m_toolbar = nullptr;
    PlayerView* m_playerView = nullptr;
    bool m_isClosed = false;
};
