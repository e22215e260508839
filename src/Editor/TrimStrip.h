#pragma once

#include "Editor/TrimModel.h"

#include <QImage>
#include <QWidget>

#include <optional>
#include <vector>

class TrimHandle;

/// A film as a row of its frames, with two yellow handles around the range that is chosen.
class TrimStrip : public QWidget {
    Q_OBJECT

public:
    explicit TrimStrip(QWidget* parent = nullptr);

    void showModel(const TrimModel& model);
    /// Where the film stands, in seconds.
    void showTime(double time);

    /// The frames that the row has room for, when their width is `aspect` times their height: how
    /// many, and how large, in pixels of the screen.
    int frameCount(double aspect) const;
    QSize framePixels(double aspect) const;
    /// When the frame in a place of the row shows; the middle of what it stands for.
    double frameTime(int index, int count) const;

    /// An empty row for so many frames; those that are there stay until others come.
    void expectFrames(int count);
    void setFrame(int index, const QImage& image);
    bool hasAllFrames() const;

    TrimHandle& handle(TrimModel::Handle side);
    FilmLine line() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void dragBegan(TrimModel::Handle side);
    void moved(TrimModel::Handle side, double time);
    void stepped(TrimModel::Handle side, int frames);
    /// The row itself was pressed or drawn along, at a time in seconds.
    void sought(double time);
    void resized();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    TrimHandle* makeHandle(TrimModel::Handle side);
    void placeHandles();
    QRectF frameArea() const;
    void paintFrames(QPainter& painter) const;
    void seekTo(double x);

    TrimModel m_model{FrameGrid()};
    double m_time = 0;
    std::vector<QImage> m_images; // null ones are still to come
    // Children.
    TrimHandle* m_start;
    TrimHandle* m_end;
};
