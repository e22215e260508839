#pragma once

#include "Editor/Annotation.h"
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
    /// When anything looks different now. Called before `onChange`.
    std::function<void()> onRedraw;

    /// The lowest first.
    const QList<Annotation>& annotations() const { return m_annotations; }
    /// The annotation that is being dragged out; not in the list.
    const std::optional<Annotation>& draft() const { return m_draft; }
    const std::optional<QUuid>& selectedID() const { return m_selectedID; }
    /// The selected annotation; null when none is.
    const Annotation* selection() const;

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

    /// Adds a label of the trimmed text; none when nothing is left of it.
    void commitText(const QString& typed, Geometry::Point origin);

    void deleteSelection();
    void deselect();
    /// Removes all annotations; nothing to undo when there are none.
    void clear();
    void undo();
    void redo();

private:
    Annotation annotation(AnnotationKind kind, Geometry::Point p) const;
    std::optional<qsizetype> selectedIndex() const;
    void select(Geometry::Point p);
    void beginDraft(AnnotationKind kind, Geometry::Point p);
    void append(Annotation annotation);
    void addCounter(Geometry::Point p);
    void redraw() const;
    void changed() const;

    QList<Annotation> m_annotations;
    UndoHistory m_history;
    EditorTool m_tool = EditorTool::arrow;
    QString m_colorHex = QStringLiteral("#FF3B30");
    double m_strokeWidth = 4;
    std::optional<Annotation> m_draft;
    std::optional<QUuid> m_selectedID;
    /// The last point of the drag that is under way.
    std::optional<Geometry::Point> m_dragStart;
    bool m_didMoveSelection = false;
};
