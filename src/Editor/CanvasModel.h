#pragma once

#include "Editor/Annotation.h"
#include "Editor/AnnotationPlaces.h"
#include "Editor/UndoHistory.h"

#include <functional>
#include <optional>

/// What the pointer does on the canvas. Every tool but `select` makes annotations of the kind of
/// the same name.
enum class EditorTool {
    select,
    arrow,
    line,
    rect,
    ellipse,
    freehand,
    highlight,
    text,
    counter,
    redact,
};

/// The annotations of an open picture and every way to change them. Points are in the picture's
/// space: points, y up.
class CanvasModel {
public:
    explicit CanvasModel(QList<Annotation> annotations);

    /// After every committed change of the annotations.
    std::function<void()> onChange;

    // Where something looks different now. Called before `onChange`. Areas are but for what comes
    // from rounding to whole pixels.
    /// The draft, or which annotation is selected.
    std::function<void(const Geometry::Rect& area)> onRedraw;
    /// The annotations themselves.
    std::function<void(const Geometry::Rect& area)> onAnnotationsRedraw;
    /// There is one more on top.
    std::function<void()> onAppend;
    /// The selected annotation moves; `onRedraw` has both places.
    std::function<void(const Geometry::Rect& from, const Geometry::Rect& to)> onMove;

    /// The lowest first.
    const QList<Annotation>& annotations() const { return m_annotations; }
    const AnnotationPlaces& places() const { return m_places; }
    /// The annotation that is being dragged out; not in the list.
    const std::optional<Annotation>& draft() const { return m_draft; }
    std::optional<QUuid> selectedID() const;
    /// Its place in the list.
    std::optional<qsizetype> selectedIndex() const { return m_selected; }
    /// Whether a drag has moved the selected annotation and goes on.
    bool isMoving() const { return m_selected && m_didMoveSelection; }

    EditorTool tool() const { return m_tool; }
    /// Clears the selection.
    void setTool(EditorTool tool);

    // What new annotations get; those that are there keep theirs.
    const QString& colorHex() const { return m_colorHex; }
    void setColorHex(const QString& hex) { m_colorHex = hex; }
    double strokeWidth() const { return m_strokeWidth; }
    void setStrokeWidth(double width) { m_strokeWidth = width; }

    /// The size of a label's text for a stroke width, both in points.
    static double textSize(double strokeWidth);

    /// What a press asks for beside what it does.
    enum class Press {
        handled,
        beginsText, ///< a label is to be typed at the point
    };
    Press mouseDown(Geometry::Point p);
    void mouseDragged(Geometry::Point p);
    void mouseUp();
    /// The press that is under way was not meant: everything is as it was before it.
    void cancelPress();

    /// Adds a label of the trimmed text; none when nothing is left of it.
    void commitText(const QString& typed, Geometry::Point origin);

    void deleteSelection();
    void deselect();
    /// Removes all annotations; nothing to undo when there are none.
    void clear();
    void undo();
    void redo();

private:
    void endPress();
    void cancelDraft();
    void forgetPress();
    Annotation annotation(AnnotationKind kind, Geometry::Point p) const;
    void select(std::optional<qsizetype> index);
    void redrawSelection() const;
    void beginDraft(AnnotationKind kind, Geometry::Point p);
    void remove(qsizetype index, qsizetype count);
    void restored(const std::optional<UndoHistory::Replacement>& change);
    void append(const Annotation& annotation);
    void addCounter(Geometry::Point p);
    void redraw(const Geometry::Rect& area) const;
    void redrawAnnotations(qsizetype index, qsizetype count) const;
    void changed() const;

    QList<Annotation> m_annotations;
    AnnotationPlaces m_places;
    UndoHistory m_history;
    EditorTool m_tool = EditorTool::arrow;
    QString m_colorHex = QStringLiteral("#FF3B30");
    double m_strokeWidth = 4;
    std::optional<Annotation> m_draft;
    std::optional<qsizetype> m_selected; ///< Only the list's end changes while there is one.
    /// The last point of the drag that is under way.
    std::optional<Geometry::Point> m_dragStart;
    bool m_didMoveSelection = false;
    /// Whether the newest step to undo is of the press that is under way.
    bool m_pressMadeStep = false;
    std::optional<qsizetype> m_selectedBefore; ///< Before the press.
};
