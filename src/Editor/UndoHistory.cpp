#include "Editor/UndoHistory.h"

#include <utility>

void UndoHistory::willReplace(const QList<Annotation>& list, qsizetype index, qsizetype count,
                              qsizetype newCount)
{
    m_undo.push_back({index, newCount, list.mid(index, count)});
    m_redo.clear();
}

bool UndoHistory::swap(QList<Annotation>& list, std::vector<Step>& from, std::vector<Step>& to)
{
    if (from.empty())
        return false;
    Step step = std::move(from.back());
    from.pop_back();
    QList<Annotation> replaced = list.mid(step.index, step.count);
    list.remove(step.index, step.count);
    for (qsizetype i = 0; i < step.others.size(); ++i)
        list.insert(step.index + i, step.others[i]);
    to.push_back({step.index, step.others.size(), std::move(replaced)});
    return true;
}
