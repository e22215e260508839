#pragma once

#include "ChromeViews.h"
#include "Editor/FrameGrid.h"

class ChromeButton;
class NumberLabel;
class PlayerSlider;
struct PlayerState;

/// Seconds as people read them: "0:07", "1:02:03".
QString clockText(double seconds);

/// The button that plays and pauses, of either bar.
ChromeButton* makePlayButton();
void showPlaying(ChromeButton& button, bool isPlaying);

/// The controls over the bottom of a playing film. It shows what it is told.
class PlayerBar : public ChromeBarView {
    Q_OBJECT

public:
    explicit PlayerBar(QWidget* parent = nullptr);

    /// Shows `state` of a player that plays `range`.
    void show(const PlayerState& state, FilmRange range);

    ChromeButton& playButton() { return *m_play; }
    ChromeButton& muteButton() { return *m_mute; }
    PlayerSlider& position() { return *m_position; }
    PlayerSlider& volume() { return *m_volume; }
    NumberLabel& elapsed() { return *m_elapsed; }
    NumberLabel& total() { return *m_total; }

    using QWidget::show;

Q_SIGNALS:
    void playClicked();
    void muteClicked();
    /// Seconds of the film.
    void sought(double time);
    void seekBegan();
    void seekEnded();
    /// From 0 to 1.
    void volumeChosen(double volume);

protected:
    /// Between two controls it is no press on the picture.
    void mousePressEvent(QMouseEvent* event) override;

private:
    FilmRange m_range;
    // Children.
    ChromeButton* m_play;
    NumberLabel* m_elapsed;
    PlayerSlider* m_position; // milliseconds from the range's start
    NumberLabel* m_total;
    ChromeButton* m_mute;
    PlayerSlider* m_volume; // percent
};
