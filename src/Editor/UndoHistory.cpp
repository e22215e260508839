#include "Editor/UndoHistory.h"

#include <algorithm>
#include <utility>

void UndoHistory::willReplace(const QList<Annotation>& list, qsizetype index, qsizetype count,
                              qsizetype newCount)
{
    m_undo.push_back({index, newCount, list.mid(index, count)});
    m_redoBefore = std::exchange(m_redo, {});
}

std::optional<UndoHistory::Replacement> UndoHistory::forget(QList<Annotation>& list)
{
    const std::optional<Replacement> result = undo(list);
    m_redo = std::exchange(m_redoBefore, {});
    return result;
}

std::optional<UndoHistory::Replacement>
UndoHistory::swap(QList<Annotation>& list, std::vector<Step>& from, std::vector<Step>& to)
{
    if (from.empty())
        return std::nullopt;
    const Step step = std::move(from.back());
    from.pop_back();
    const Replacement result{step.index, step.count, step.others.size()};
    QList<Annotation> replaced = list.mid(step.index, step.count);
    const qsizetype inPlace = std::min(step.count, step.others.size());
    std::copy_n(step.others.begin(), inPlace, list.begin() + step.index);
    list.remove(step.index + inPlace, step.count - inPlace);
    if (step.index + inPlace == list.size()) {
        list.append(step.others.mid(inPlace));
    } else {
        for (qsizetype i = inPlace; i < step.others.size(); ++i)
            list.insert(step.index + i, step.others[i]);
    }
    to.push_back({step.index, step.others.size(), std::move(replaced)});
    return result;
}
