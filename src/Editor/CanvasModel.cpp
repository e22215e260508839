#include "Editor/CanvasModel.h"

#include "Editor/AnnotationRenderer.h"

#include <algorithm>
#include <limits>

using Geometry::Point;

namespace {

/// A drag this short is a click, in points.
constexpr double clickReach = 3;
/// A stroke with as many points is kept however near its ends are.
constexpr qsizetype scribble = 3;
/// How far the selection's outline is drawn outside of the bounds, in points.
constexpr double outlineReach = 2;

bool isStroke(AnnotationKind kind)
{
    return kind == AnnotationKind::freehand || kind == AnnotationKind::highlight;
}

bool isWorthKeeping(const Annotation& draft)
{
    return distance(draft.start, draft.end) > clickReach ||
           (isStroke(draft.kind) && draft.path && draft.path->size() >= scribble);
}

} // namespace

CanvasModel::CanvasModel(QList<Annotation> annotations)
    : m_annotations(std::move(annotations))
    , m_places(m_annotations)
{
}

double CanvasModel::textSize(double strokeWidth)
{
    if (strokeWidth < 3)
        return 14;
    if (strokeWidth < 5)
        return 19;
    return 26;
}

void CanvasModel::setTool(EditorTool tool)
{
    endPress();
    m_tool = tool;
    select(std::nullopt);
}

std::optional<QUuid> CanvasModel::selectedID() const
{
    return m_selected ? std::optional(m_annotations[*m_selected].id) : std::nullopt;
}

Annotation CanvasModel::annotation(AnnotationKind kind, Point p) const
{
    Annotation result;
    result.kind = kind;
    result.start = p;
    result.end = p;
    result.colorHex = m_colorHex;
    result.lineWidth = m_strokeWidth;
    return result;
}

CanvasModel::Press CanvasModel::mouseDown(Point p)
{
    endPress();
    m_dragStart = p;
    m_selectedBefore = m_selected;
    switch (m_tool) {
    case EditorTool::select:
        select(m_places.highestAt(p));
        return Press::handled;
    case EditorTool::arrow:
        beginDraft(AnnotationKind::arrow, p);
        return Press::handled;
    case EditorTool::line:
        beginDraft(AnnotationKind::line, p);
        return Press::handled;
    case EditorTool::rect:
        beginDraft(AnnotationKind::rect, p);
        return Press::handled;
    case EditorTool::ellipse:
        beginDraft(AnnotationKind::ellipse, p);
        return Press::handled;
    case EditorTool::freehand:
        beginDraft(AnnotationKind::freehand, p);
        return Press::handled;
    case EditorTool::highlight:
        beginDraft(AnnotationKind::highlight, p);
        return Press::handled;
    case EditorTool::redact:
        beginDraft(AnnotationKind::redact, p);
        return Press::handled;
    case EditorTool::text:
        return Press::beginsText;
    case EditorTool::counter:
        addCounter(p);
        return Press::handled;
    }
    return Press::handled; // no such tool
}

void CanvasModel::select(std::optional<qsizetype> index)
{
    redrawSelection();
    m_selected = index;
    redrawSelection();
}

void CanvasModel::redrawSelection() const
{
    if (!m_selected)
        return;
    redraw(m_places[*m_selected].bounds.grown(outlineReach));
    if (m_didMoveSelection)
        redraw(m_places[*m_selected].painted);
}

void CanvasModel::beginDraft(AnnotationKind kind, Point p)
{
    m_draft = annotation(kind, p);
    if (isStroke(kind))
        m_draft->path = QList<Point>{p};
}

void CanvasModel::addCounter(Point p)
{
    std::optional<std::int64_t> largest;
    for (const Annotation& a : m_annotations)
        largest = std::max(largest, a.number); // one that is absent is the least
    constexpr auto last = std::numeric_limits<std::int64_t>::max();
    Annotation counter = annotation(AnnotationKind::counter, p);
    counter.number = largest ? std::min(*largest, last - 1) + 1 : 1;
    append(counter);
    m_pressMadeStep = true;
}

void CanvasModel::append(const Annotation& annotation)
{
    forgetPress();
    const qsizetype index = m_annotations.size();
    m_history.willReplace(m_annotations, index, 0, 1);
    m_annotations.append(annotation);
    m_places.replaced(m_annotations, index, 0, 1);
    if (onAppend)
        onAppend();
    changed();
}

void CanvasModel::remove(qsizetype index, qsizetype count)
{
    forgetPress();
    m_history.willReplace(m_annotations, index, count, 0);
    redrawAnnotations(index, count);
    m_annotations.remove(index, count);
    m_places.replaced(m_annotations, index, count, 0);
    changed();
}

void CanvasModel::mouseDragged(Point p)
{
    if (m_tool == EditorTool::select) {
        if (!m_selected || !m_dragStart || p == *m_dragStart)
            return;
        // The whole drag is one step to undo.
        if (!std::exchange(m_didMoveSelection, true)) {
            m_history.willReplace(m_annotations, *m_selected, 1, 1);
            m_pressMadeStep = true;
        }
        const Geometry::Rect before = m_places[*m_selected].painted;
        redrawSelection();
        m_annotations[*m_selected].translate(p.x - m_dragStart->x, p.y - m_dragStart->y);
        m_places.replaced(m_annotations, *m_selected, 1, 1);
        redrawSelection();
        m_dragStart = p;
        if (onMove)
            onMove(before, m_places[*m_selected].painted);
    } else if (m_draft) {
        const bool isStroke = m_draft->path.has_value();
        if (!isStroke)
            redraw(AnnotationRenderer::painted(*m_draft));
        m_draft->end = p;
        if (isStroke)
            m_draft->path->append(p);
        redraw(isStroke ? AnnotationRenderer::paintedStrokeEnd(*m_draft)
                        : AnnotationRenderer::painted(*m_draft));
    }
}

void CanvasModel::mouseUp()
{
    if (m_tool == EditorTool::select) {
        endPress();
        return;
    }
    m_dragStart.reset();
    m_pressMadeStep = false;
    const auto draft = std::exchange(m_draft, std::nullopt);
    if (!draft)
        return;
    redraw(AnnotationRenderer::painted(*draft));
    if (isWorthKeeping(*draft))
        append(*draft);
}

/// A release may never come: another program can take the pointer in the middle of a drag.
void CanvasModel::endPress()
{
    cancelDraft();
    m_dragStart.reset();
    m_pressMadeStep = false;
    redrawSelection();
    if (std::exchange(m_didMoveSelection, false))
        changed();
}

void CanvasModel::cancelPress()
{
    if (!m_dragStart)
        return;
    m_dragStart.reset();
    cancelDraft();
    redrawSelection();
    m_didMoveSelection = false;
    const std::optional<qsizetype> before = m_selectedBefore;
    if (m_pressMadeStep)
        restored(m_history.forget(m_annotations));
    if (m_tool == EditorTool::select)
        select(before);
}

/// The annotations have become others: it cannot be taken back any more.
void CanvasModel::forgetPress()
{
    m_pressMadeStep = false;
    m_selectedBefore.reset();
}

void CanvasModel::cancelDraft()
{
    if (const auto draft = std::exchange(m_draft, std::nullopt))
        redraw(AnnotationRenderer::painted(*draft));
}

void CanvasModel::commitText(const QString& typed, Point origin)
{
    const QString trimmed = typed.trimmed();
    if (trimmed.isEmpty())
        return;
    Annotation label = annotation(AnnotationKind::text, origin);
    label.text = trimmed;
    label.fontSize = textSize(m_strokeWidth);
    append(label);
}

void CanvasModel::deleteSelection()
{
    if (!m_selected)
        return;
    const qsizetype index = *m_selected;
    select(std::nullopt);
    remove(index, 1);
}

void CanvasModel::deselect()
{
    select(std::nullopt);
}

void CanvasModel::clear()
{
    if (m_annotations.isEmpty())
        return;
    select(std::nullopt);
    remove(0, m_annotations.size());
}

void CanvasModel::undo()
{
    if (m_history.undoCount() > 0)
        select(std::nullopt);
    restored(m_history.undo(m_annotations));
}

void CanvasModel::redo()
{
    if (m_history.redoCount() > 0)
        select(std::nullopt);
    restored(m_history.redo(m_annotations));
}

void CanvasModel::restored(const std::optional<UndoHistory::Replacement>& change)
{
    if (!change)
        return;
    forgetPress();
    redrawAnnotations(change->index, change->count);
    m_places.replaced(m_annotations, change->index, change->count, change->newCount);
    redrawAnnotations(change->index, change->newCount);
    changed();
}

void CanvasModel::redraw(const Geometry::Rect& area) const
{
    if (onRedraw)
        onRedraw(area);
}

void CanvasModel::redrawAnnotations(qsizetype index, qsizetype count) const
{
    if (!onAnnotationsRedraw)
        return;
    for (qsizetype i = index; i < index + count; ++i)
        onAnnotationsRedraw(m_places[i].painted);
}

void CanvasModel::changed() const
{
    if (onChange)
        onChange();
}
