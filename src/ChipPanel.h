#pragma once

#include "ChipContent.h"
#include "ChipView.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QWidget>

#include <chrono>
#include <functional>
#include <memory>

QT_FORWARD_DECLARE_CLASS(QVariantAnimation)

/// A small floating window that shows one capture. It is above ordinary windows, on every desktop,
/// and never takes the keyboard.
///
/// Its frame is the chip's, in global points; the shadow around the chip is not part of it.
class ChipPanel : public QWidget {
    Q_OBJECT

public:
    /// The panel is not shown yet.
    ChipPanel(const QUrl& file, const ChipContent& content, const Clock& clock,
              ChipView::OnEdit onEdit);
    ~ChipPanel() override;

    /// Called once, when the panel closes by whatever road.
    std::function<void(ChipPanel*)> onClosed;

    ChipView& view() { return *m_view; }

    /// Where it stands now, also while it moves.
    Geometry::Rect frame() const;

    /// At once; ends a move that is under way.
    void setFrameOrigin(Geometry::Point origin);
    /// Smoothly from where it stands now; at once when `duration` is zero.
    void moveTo(Geometry::Point origin, std::chrono::milliseconds duration);
    void orderFrontRegardless();

    /// Fades away, then closes.
    void fadeClose();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void place(Geometry::Point origin);
    /// The chip in the window, in points.
    QRectF body() const;
    void updateBody();

    ChipView* m_view; // a child
    Geometry::Rect m_frame;
    double m_bodyScale = 0; // pixels a point when the platform was told of the body
    bool m_closeNotified = false;
    QVariantAnimation* m_move; // a child
    QVariantAnimation* m_fade; // a child
};
