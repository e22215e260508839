#pragma once

#include "Editor/Annotation.h"

#include <optional>
#include <vector>

/// The earlier states of a list of annotations, and those that were undone. Each is kept as what
/// differs from its neighbour, so a step costs what it changed, however long the list is.
class UndoHistory {
public:
    /// To be called right before `count` annotations from `index` on are replaced by `newCount`
    /// others. The list after that is the newest state; what was undone can't be redone any more.
    void willReplace(const QList<Annotation>& list, qsizetype index, qsizetype count,
                     qsizetype newCount);

    /// `count` annotations from `index` on were replaced by `newCount` others.
    struct Replacement {
        qsizetype index;
        qsizetype count;
        qsizetype newCount;
    };

    /// Turns `list`, the state after the newest step, into the one before it. Nothing happens when
    /// there is no step.
    std::optional<Replacement> undo(QList<Annotation>& list) { return swap(list, m_undo, m_redo); }
    /// The other way round.
    std::optional<Replacement> redo(QList<Annotation>& list) { return swap(list, m_redo, m_undo); }

    /// Undoes the newest step as if it had never been: what could be redone before it can be again,
    /// and the step itself cannot. To be called before anything else happens after `willReplace`
    /// and the replacement.
    std::optional<Replacement> forget(QList<Annotation>& list);

    std::size_t undoCount() const { return m_undo.size(); }
    std::size_t redoCount() const { return m_redo.size(); }

private:
    /// In place of `count` annotations from `index` on there are `others` in the neighbour state.
    struct Step {
        qsizetype index;
        qsizetype count;
        QList<Annotation> others;
    };

    static std::optional<Replacement> swap(QList<Annotation>& list, std::vector<Step>& from,
                                           std::vector<Step>& to);

    std::vector<Step> m_undo;       // the newest last
    std::vector<Step> m_redo;       // the same
    std::vector<Step> m_redoBefore; ///< What could be redone before the newest step.
};
