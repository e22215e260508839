#pragma once

#include "Editor/FilmLoader.h"
#include "Editor/FilmPlayback.h"
#include "Editor/Trimming.h"
#include "Support/Clock.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <optional>

class Fade;
class PlayerBar;
class TrimBar;

/// Shows a film with its controls, and lets the user choose a range of it.
class PlayerView : public QWidget {
    Q_OBJECT

public:
    struct Film {
        QString path;
        std::unique_ptr<Player> player; ///< May be null: nothing shows then.
        FilmLoader loader;
    };

    PlayerView(Film film, Clock clock, QWidget* parent = nullptr);
    ~PlayerView() override;

    /// Plays and reads no more. Nothing shows from then on.
    void end();

    FilmPlayback& playback() { return m_playback; }
    PlayerBar& bar() { return *m_bar; }
    TrimBar& trimBar() { return *m_trimBar; }
    Trimming& trimming() { return m_trimming; }
    bool controlsShow() const;

    /// By the file itself; absent until it is known.
    std::optional<double> duration() const { return m_duration; }

    /// Calls `then` when the film is open or has turned out not to be playable: at once when that
    /// is known. Of several that wait the last one is called.
    void onceOpened(std::function<void()> then);
    /// Where the picture is, in points.
    QRectF pictureRect() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectBar();
    void playerChanged();
    void showState();
    void loadTimes();
    void takeTimes(const FilmTimes& times);
    void placeBars();
    void revealControls();
    void hideControlsIfUnused(int since);
    QSize picturePixels() const;

    QString m_path;
    FilmLoader m_loader;
    Clock m_clock;
    FilmPlayback m_playback;
    QImage m_picture;
    QSize m_filmSize;
    std::optional<double> m_duration;
    std::function<void()> m_onceOpened;
    bool m_timesAsked = false;
    bool m_playsAfterSeek = false;
    int m_activity = 0; ///< Grows with whatever the user does.
    QPoint m_lastMouse;
    Cancellation m_closing;
    // Children.
    PlayerBar* m_bar;
    TrimBar* m_trimBar;
    Fade* m_fade;
    Trimming m_trimming;
};
