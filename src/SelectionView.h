#pragma once

#include "SelectionModel.h"
#include "Support/Geometry.h"

#include <QPixmap>
#include <QRegion>
#include <QWidget>

#include <memory>
#include <optional>

class SelectionHUD;
class SelectionSession;

/// Dims one screen and lets the user drag out a rectangle on it. The selection's logic is
/// SelectionModel's; this class forwards the mouse to it and paints it.
class SelectionView : public QWidget {
    Q_OBJECT

public:
    /// `screenFrame` is the frame of the screen that the view covers, in global points.
    SelectionView(Geometry::Rect screenFrame, std::weak_ptr<SelectionSession> session,
                  std::optional<QPixmap> backdrop, QWidget* parent);

    const SelectionModel& model() const { return m_model; }

    /// Null until there has been a selection to adjust.
    SelectionHUD* hud() const { return m_hud; }

    /// The selection in global points; absent when it is smaller than the minimum.
    std::optional<Geometry::Rect> globalSelectionRect() const;

    /// Drops the selection.
    void clear();

    void enterAdjusting();

    /// Moves the view's place in global points; the selection stays where it is in the view.
    void setScreenOrigin(Geometry::Point origin) { m_screenOrigin = origin; }

    /// Takes the view, which loses its selection, out of its session: nothing that happens to it
    /// afterwards reaches the session.
    void detach();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Geometry::Flip flip() const;
    /// Where the event's pointer is, in view coordinates, on whole points.
    Geometry::Point pointFrom(const QMouseEvent& event) const;
    QRectF widgetRect(Geometry::Rect viewRect) const;

    void showHUD();
    void hideHUD();
    void positionHUD();

    QString sizeLabel() const;
    Geometry::Point sizeLabelPosition() const;
    /// What the selection's outline, brackets and label cover, and its inside.
    QRegion decoratedRegion() const;

    void paintDimming(QPainter& painter) const;
    void paintOutline(QPainter& painter) const;
    void paintBrackets(QPainter& painter) const;
    void paintLabels(QPainter& painter) const;

    std::weak_ptr<SelectionSession> m_session;
    Geometry::Point m_screenOrigin;
    SelectionModel m_model;
    std::optional<QPixmap> m_backdrop;
    SelectionHUD* m_hud = nullptr; // a child
};
