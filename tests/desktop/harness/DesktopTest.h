#pragma once

#include "desktop/harness/Outcome.h"

#include <gtest/gtest.h>

namespace Desktop {

/// For ASSERT_TRUE(succeeded(...)): a failed step's own words become the test's message.
template <typename T>
testing::AssertionResult succeeded(const Outcome<T>& outcome)
{
    if (outcome)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << qUtf8Printable(outcome.error());
}

} // namespace Desktop
