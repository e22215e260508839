#include "RecordingTools.h"

#include "Support/Background.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

#include <atomic>

TEST(RecordingTools, FilmsAreMadeAtALowPriority)
{
    FakePlatform::reset();
    const RecordingTools tools = RecordingTools::system();
    const QString file = QStringLiteral("/nothing/here");
    std::atomic<int> lowBefore = 0;
    const auto completion = [&](const MovieExport::Outcome& outcome) {
        EXPECT_EQ(outcome.end, MovieExport::End::impossible); // there is no library here
        lowBefore += FakePlatform::current().lowPriorities;
    };
    tools.remux(file, file, completion, {});
    Background::threads().waitForDone();
    EXPECT_EQ(lowBefore, 1);
    tools.concatenate({file, file}, file, completion, {});
    Background::threads().waitForDone();
    EXPECT_EQ(lowBefore, 1 + 2);
}
