#pragma once

#include "Editor/FilmLoader.h"
#include "Editor/FilmPlayback.h"
#include "Editor/TrimModel.h"
#include "Support/Clock.h"

#include <QObject>

#include <optional>

class TrimBar;

/// The user's choice of a range of a film: what the bar with the handles does to the film, and what
/// comes of it.
class Trimming : public QObject {
    Q_OBJECT

public:
    /// `bar`, which is hidden still, and `playback` outlive this.
    Trimming(FilmPlayback& playback, TrimBar& bar, QString path, FilmLoader loader, Clock clock);

    /// What was confirmed; absent while that is the whole film.
    std::optional<FilmRange> selectedRange() const;

    bool canBegin() const;
    bool isOn() const { return m_model.has_value(); }
    /// Shows the handles, around the range as it is. Does nothing when they show already.
    void begin();
    void confirm();
    void cancel();

    /// The film's frames are known better now; the ranges stay as near as may be.
    void takeFrames();
    /// Reads no more frames for the bar.
    void stopReading() { m_reading.cancel(); }

Q_SIGNALS:
    /// The handles are shown or hidden now.
    void toggled();

private:
    void connectBar();
    void loadStrip();
    void move(TrimModel::Handle side, double time);
    void moved(TrimModel::Handle side);
    void end();

    FilmPlayback& m_playback;
    TrimBar& m_bar;
    QString m_path;
    FilmLoader m_loader;
    Clock m_clock;
    std::optional<TrimModel> m_chosen; ///< What was confirmed last.
    std::optional<TrimModel> m_model;  ///< While the handles show.
    double m_timeBefore = 0;
    int m_stripVersion = 0;
    Cancellation m_reading;
};
