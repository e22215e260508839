#include "Editor/CanvasModel.h"

#include "Editor/AnnotationRenderer.h"

#include <algorithm>

using Geometry::Point;

namespace {

/// A drag this short is a click, in points.
constexpr double clickReach = 3;
/// A stroke with as many points is kept however near its ends are.
constexpr qsizetype scribble = 3;

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
    m_tool = tool;
    m_selectedID.reset();
    redraw();
}

std::optional<qsizetype> CanvasModel::selectedIndex() const
{
    if (!m_selectedID)
        return std::nullopt;
    const auto found = std::find_if(m_annotations.begin(), m_annotations.end(),
                                    [this](const auto& a) { return a.id == *m_selectedID; });
    if (found == m_annotations.end())
        return std::nullopt;
    return found - m_annotations.begin();
}

const Annotation* CanvasModel::selection() const
{
    const auto index = selectedIndex();
    return index ? &m_annotations[*index] : nullptr;
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
    m_dragStart = p;
    m_didMoveSelection = false;
    switch (m_tool) {
    case EditorTool::select:
        select(p);
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

void CanvasModel::select(Point p)
{
    const auto hit = std::find_if(m_annotations.rbegin(), m_annotations.rend(), [p](const auto& a) {
        return AnnotationRenderer::bounds(a).contains(p);
    });
    m_selectedID = hit == m_annotations.rend() ? std::nullopt : std::optional(hit->id);
    redraw();
}

void CanvasModel::beginDraft(AnnotationKind kind, Point p)
{
    m_draft = annotation(kind, p);
    if (isStroke(kind))
        m_draft->path = QList<Point>{p};
}

void CanvasModel::addCounter(Point p)
{
    std::int64_t largest = 0;
    for (const Annotation& a : m_annotations)
        largest = std::max(largest, a.number.value_or(0));
    Annotation counter = annotation(AnnotationKind::counter, p);
    counter.number = largest + 1;
    append(std::move(counter));
}

void CanvasModel::append(Annotation annotation)
{
    m_history.willReplace(m_annotations, m_annotations.size(), 0, 1);
    m_annotations.append(std::move(annotation));
    changed();
}

void CanvasModel::mouseDragged(Point p)
{
    if (m_tool == EditorTool::select) {
        const auto index = selectedIndex();
        if (!index || !m_dragStart)
            return;
        // The whole drag is one step to undo.
        if (!std::exchange(m_didMoveSelection, true))
            m_history.willReplace(m_annotations, *index, 1, 1);
        m_annotations[*index].translate(p.x - m_dragStart->x, p.y - m_dragStart->y);
        m_dragStart = p;
        redraw();
    } else if (m_draft) {
        m_draft->end = p;
        if (m_draft->path)
            m_draft->path->append(p);
        redraw();
    }
}

void CanvasModel::mouseUp()
{
    m_dragStart.reset();
    if (m_tool == EditorTool::select) {
        if (std::exchange(m_didMoveSelection, false))
            changed();
        return;
    }
    auto draft = std::exchange(m_draft, std::nullopt);
    if (!draft)
        return;
    if (isWorthKeeping(*draft))
        append(std::move(*draft));
    else
        redraw();
}

void CanvasModel::commitText(const QString& typed, Point origin)
{
    const QString trimmed = typed.trimmed();
    if (trimmed.isEmpty())
        return;
    Annotation label = annotation(AnnotationKind::text, origin);
    label.text = trimmed;
    label.fontSize = textSize(m_strokeWidth);
    append(std::move(label));
}

void CanvasModel::deleteSelection()
{
    const auto index = selectedIndex();
    if (!index)
        return;
    m_history.willReplace(m_annotations, *index, 1, 0);
    m_annotations.removeAt(*index);
    m_selectedID.reset();
    changed();
}

void CanvasModel::deselect()
{
    m_selectedID.reset();
    redraw();
}

void CanvasModel::clear()
{
    if (m_annotations.isEmpty())
        return;
    m_history.willReplace(m_annotations, 0, m_annotations.size(), 0);
    m_annotations.clear();
    m_selectedID.reset();
    changed();
}

void CanvasModel::undo()
{
    if (!m_history.undo(m_annotations))
        return;
    m_selectedID.reset();
    changed();
}

void CanvasModel::redo()
{
    if (!m_history.redo(m_annotations))
        return;
    m_selectedID.reset();
    changed();
}

void CanvasModel::redraw() const
{
    if (onRedraw)
        onRedraw();
}

void CanvasModel::changed() const
{
    redraw();
    if (onChange)
        onChange();
}
