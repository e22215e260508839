#include "Editor/UndoHistory.h"

#include "support/PeakMemory.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr int listLength = 10'000;
constexpr int stepCount = 1'000;

/// Labels, each with a text of its own.
QList<Annotation> labels(int count)
{
    QList<Annotation> result(count);
    for (int i = 0; i < count; ++i) {
        result[i].kind = AnnotationKind::text;
        result[i].text = QString::number(i);
    }
    return result;
}

} // namespace

TEST(UndoHistory, StepsOnALongListTakeTheMemoryOfWhatTheyChange)
{
    const QList<Annotation> original = labels(listLength);
    QList<Annotation> list = original;
    list.detach(); // the copy's memory is not the history's
    std::mt19937 random(1);
    const auto somewhere = [&] { return static_cast<qsizetype>(random()) % list.size(); };

    UndoHistory history;
    const PeakMemory memory;
    for (int step = 0; step < stepCount; ++step) {
        const qsizetype index = somewhere();
        switch (step % 3) {
        case 0: // one is moved
            history.willReplace(list, index, 1, 1);
            list[index].translate(1, 2);
            break;
        case 1: // one is removed
            history.willReplace(list, index, 1, 0);
            list.removeAt(index);
            break;
        default: // one comes on top
            history.willReplace(list, list.size(), 0, 1);
            list.append(labels(1));
        }
    }
    const QList<Annotation> last = list;
    ASSERT_EQ(history.undoCount(), static_cast<std::size_t>(stepCount));
    for (int step = 0; step < stepCount; ++step)
        ASSERT_TRUE(history.undo(list));
    EXPECT_TRUE(list == original);
    for (int step = 0; step < stepCount; ++step)
        ASSERT_TRUE(history.redo(list));
    EXPECT_TRUE(list == last);
    // A copy of the list takes two megabytes: `last` is one, and growing lists need some room.
    constexpr long megabyte = 1 << 20;
    EXPECT_LT(memory.growth(), 20 * megabyte);
}

TEST(UndoHistory, ALongListThatWasClearedComesAndGoesAtOnce)
{
    const QList<Annotation> original = labels(listLength);
    QList<Annotation> list = original;
    UndoHistory history;
    history.willReplace(list, 0, list.size(), 0);
    list.clear();
    for (int i = 0; i < 5; ++i) {
        const auto back = history.undo(list);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->index, 0);
        EXPECT_EQ(back->count, 0);
        EXPECT_EQ(back->newCount, listLength);
        EXPECT_TRUE(list == original);
        ASSERT_TRUE(history.redo(list));
        EXPECT_TRUE(list.isEmpty());
    }
    EXPECT_FALSE(history.redo(list));
}
