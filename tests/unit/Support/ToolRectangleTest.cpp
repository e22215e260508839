#include "Support/ToolRectangle.h"

#include "support/Printers.h"

#include <gtest/gtest.h>

namespace {

constexpr Geometry::Rect primary = {0, 0, 1440, 900};

} // namespace

TEST(ToolRectangle, TurnsOverAndRoundsEachValue)
{
    EXPECT_EQ(ToolRectangle::text({100, 200, 300.4, 150.6}, primary),
              QStringLiteral("100,549,300,151"));
}

TEST(ToolRectangle, AScreenBelowThePrimaryLiesBeyondItsHeight)
{
    EXPECT_EQ(ToolRectangle::text({10, -500, 200, 100}, primary),
              QStringLiteral("10,1300,200,100"));
}

TEST(ToolRectangle, AScreenLeftAndAboveHasNegativeCoordinates)
{
    EXPECT_EQ(ToolRectangle::text({-1920, 950, 200, 100}, primary),
              QStringLiteral("-1920,-150,200,100"));
}

TEST(ToolRectangle, RoundsHalvesToEven)
{
    EXPECT_EQ(ToolRectangle::text({0.5, 900 - 2.5 - 8.5, 2.5, 8.5}, primary),
              QStringLiteral("0,2,2,8"));
    EXPECT_EQ(ToolRectangle::text({-0.5, 0, 1.5, 900}, primary), QStringLiteral("-0,0,2,900"));
}

TEST(ToolRectangle, IsNotCutShortForHugeValues)
{
    const QString text = ToolRectangle::text({1e300, 0, 1e300, 1e300}, primary);
    EXPECT_EQ(text.count(QLatin1Char(',')), 3);
    EXPECT_GT(text.size(), 1200);
}
