#include "Support/Result.h"

#include <gtest/gtest.h>

#include <memory>

TEST(Result, HoldsAValueOrTheReasonForNone)
{
    const Result<int> value = 5;
    ASSERT_TRUE(value);
    EXPECT_EQ(*value, 5);

    const Result<int> none = Failure{"no room"};
    ASSERT_FALSE(none);
    EXPECT_EQ(none.failure().message, "no room");
}

TEST(Result, GivesItsValueAway)
{
    Result<std::unique_ptr<int>> value = std::make_unique<int>(7);
    ASSERT_TRUE(value);
    const std::unique_ptr<int> taken = std::move(*value);
    EXPECT_EQ(*taken, 7);
}
