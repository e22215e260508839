#pragma once

#include "ChromeViews.h"
#include "Editor/TrimModel.h"

class ChromeButton;
class NumberLabel;
class TrimStrip;
struct PlayerState;

/// Takes the place of the player's controls while a range is chosen.
class TrimBar : public ChromeBarView {
    Q_OBJECT

public:
    explicit TrimBar(QWidget* parent = nullptr);

    void showState(const PlayerState& state);
    void showModel(const TrimModel& model);

    TrimStrip& strip() { return *m_strip; }
    ChromeButton& playButton() { return *m_play; }
    ChromeButton& trimButton() { return *m_trim; }
    ChromeButton& cancelButton() { return *m_cancel; }
    NumberLabel& length() { return *m_length; }

Q_SIGNALS:
    void playClicked();
    void trimClicked();
    void cancelClicked();

protected:
    /// Between two controls it is no press on the picture.
    void mousePressEvent(QMouseEvent* event) override;

private:
    // Children.
    ChromeButton* m_play;
    TrimStrip* m_strip;
    NumberLabel* m_length;
    ChromeButton* m_cancel;
    ChromeButton* m_trim;
};
