#pragma once

#include "Editor/FilmLoader.h"
#include "Editor/FilmPlayback.h"
#include "Editor/TrimModel.h"
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
    bool controlsShow() const;

    /// What the user has confirmed; absent while that is the whole film.
    std::optional<FilmRange> selectedRange() const { return m_range; }
    /// By the file itself; absent until it is known.
    std::optional<double> duration() const { return m_duration; }

    /// Calls `then` when the film is open or has turned out not to be playable: at once when that
    /// is known. Of several that wait the last one is called.
    void onceOpened(std::function<void()> then);
    bool canBeginTrimming() const;
    bool isTrimming() const { return m_trim.has_value(); }
    /// Shows the handles, around the range as it is. Does nothing when they show already.
    void beginTrimming();
    void confirmTrimming();
    void cancelTrimming();

    /// Where the picture is, in points.
    QRectF pictureRect() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectBar();
    void connectTrimBar();
    void playerChanged();
    void showState();
    void loadTimes();
    void takeTimes(const FilmTimes& times);
    void loadStrip();
    void moveHandle(TrimModel::Handle side, double time);
    void handleMoved(TrimModel::Handle side);
    void endTrimming();
    void placeBars();
    void revealControls();
    void hideControlsIfUnused(int since);
    QSize picturePixels() const;

    QString m_path;
    FilmLoader m_loader;
    Clock m_clock;
    FilmPlayback m_playback;
    QImage m_picture;
    std::optional<double> m_duration;
    std::optional<FilmRange> m_range;
    std::optional<TrimModel> m_trim; ///< While the handles show.
    double m_timeBeforeTrimming = 0;
    std::function<void()> m_onceOpened;
    bool m_timesAsked = false;
    bool m_playsAfterSeek = false;
    int m_activity = 0; ///< Grows with whatever the user does.
    int m_stripVersion = 0;
    QPoint m_lastMouse;
    Cancellation m_closing;
    Cancellation m_stripReading;
    // Children.
    PlayerBar* m_bar;
    TrimBar* m_trimBar;
    Fade* m_fade;
};
