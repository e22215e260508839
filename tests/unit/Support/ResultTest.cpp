#include "Support/Result.h"

#include <gtest/gtest.h>

TEST(Result, HoldsAValueOrTheReasonForNone)
{
    const Result<int> value = 5;
    ASSERT_TRUE(value);
    EXPECT_EQ(value.value(), 5);

    const Result<int> failure = Error{QStringLiteral("no room")};
    ASSERT_FALSE(failure);
    EXPECT_EQ(failure.error(), QStringLiteral("no room"));
}

TEST(Result, OfNothingSucceedsByDefault)
{
    EXPECT_TRUE(Result<void>());
    const Result<void> failure = Error{QStringLiteral("taken")};
    ASSERT_FALSE(failure);
    EXPECT_EQ(failure.error(), QStringLiteral("taken"));
}
