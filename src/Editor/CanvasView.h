#pragma once

#include "Editor/BaseImage.h"
#include "Editor/CanvasModel.h"
#include "Editor/CanvasPicture.h"

#include <QWidget>

#include <functional>
#include <optional>

class LabelField;

/// The picture with its annotations, as large as the zoom makes it, and the pointer and keys on it.
class CanvasView : public QWidget {
    Q_OBJECT

public:
    CanvasView(BaseImage image, QList<Annotation> annotations, QWidget* parent = nullptr);
    ~CanvasView() override;

    CanvasModel& model() { return m_model; }
    const CanvasModel& model() const { return m_model; }
    const BaseImage& image() const { return m_image; }

    /// Points of the screen for a point of the picture.
    double zoom() const { return m_zoom; }
    /// Resizes the view accordingly.
    void setZoom(double zoom);

    /// The cursor follows the tool; call when that has changed.
    void toolChanged();
    /// While the pointer moves the picture, the cursor is a hand that holds it.
    void setPanning(bool isPanning);
    /// A label being typed follows the colour and the stroke width; call when one has changed.
    void styleChanged();

    bool isTyping() const { return m_activeTextField != nullptr; }
    /// What the press under way has done was not meant.
    void cancelPress();
    /// Ends typing: what was typed becomes a label.
    void commitActiveTextField();

Q_SIGNALS:
    void typingChanged(bool isTyping);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    Geometry::Point pointFrom(const QMouseEvent& event) const;
    Geometry::Flip flip() const;
    void beginTextEntry(Geometry::Point p);
    void placeTextField();
    void redraw(const Geometry::Rect& area);
    void paintSelection(QPainter& painter, const Geometry::Rect& bounds) const;

    BaseImage m_image;
    CanvasModel m_model;
    CanvasPicture m_picture;
    double m_zoom = 1;
    bool m_isPanning = false;
    bool m_pressBeganTyping = false;         ///< The press that is under way.
    LabelField* m_activeTextField = nullptr; // a child
    Geometry::Point m_editingTextOrigin;
};
