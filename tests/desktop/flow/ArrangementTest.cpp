// What is selected is what is saved: on every arrangement of two screens, at every scale.

#include "desktop/flow/Arrangement.h"
#include "desktop/flow/CaptureChecks.h"
#include "desktop/flow/Tamrik.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/PatternedBackground.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

using namespace Desktop;

namespace {

/// Where the second screen lies; the sizes are such that no scale divides them.
struct Placement {
    const char* name;
    QRect primary;
    QRect second;
};

constexpr QSize primarySize(1000, 750);
constexpr QSize secondSize(701, 533);
const Placement placements[] = {
    {"Right", {{0, 0}, primarySize}, {{1000, 37}, secondSize}},
    {"LeftAndHigher", {{701, 211}, primarySize}, {{0, 0}, secondSize}},
    {"AboveAndLeft", {{83, 533}, primarySize}, {{0, 0}, secondSize}},
    {"Below", {{0, 0}, primarySize}, {{83, 750}, secondSize}},
};
constexpr QSize desktopSize(1704, 1284); // holds all of them

struct Scales {
    double primary;
    double second;
};

void PrintTo(const Placement& placement, std::ostream* out)
{
    *out << placement.name;
}

void PrintTo(const Scales& scales, std::ostream* out)
{
    *out << scales.primary << " and " << scales.second;
}

using Case = std::tuple<Placement, Scales>;

std::string nameOf(const testing::TestParamInfo<Case>& instance)
{
    const auto& [placement, scales] = instance.param;
    const auto percent = [](double scale) { return std::to_string(static_cast<int>(scale * 100)); };
    return placement.name + percent(scales.primary) + "And" + percent(scales.second);
}

class Arranged : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite()
    {
        auto started = VirtualDesktop::start({.windowManager = WindowManager::None,
                                              .compositor = Compositor::None,
                                              .tray = Tray::None,
                                              .size = desktopSize});
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        ASSERT_TRUE(succeeded(PatternedBackground::paint(*desktop)));
    }
    static void TearDownTestSuite() { desktop.reset(); }

    void SetUp() override
    {
        ASSERT_TRUE(desktop);
        const Monitors monitors(*desktop);
        ASSERT_TRUE(succeeded(monitors.add(primary().primaryMonitor())));
        ASSERT_TRUE(succeeded(monitors.add(second().monitor())));
        const auto factors =
            QStringLiteral("first=%1;second=%2").arg(primary().scale).arg(second().scale);
        auto launched =
            Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM),
                                      {{QStringLiteral("QT_SCREEN_SCALE_FACTORS"), factors}});
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
    }

    void TearDown() override
    {
        if (tamrik) {
            EXPECT_TRUE(tamrik->app().isRunning());
            EXPECT_EQ(tamrik->app().errorOutput(), QString());
        }
        tamrik.reset();
        const Monitors monitors(*desktop);
        EXPECT_TRUE(succeeded(monitors.remove(second().name)));
        EXPECT_TRUE(succeeded(monitors.remove(primary().name)));
    }

    const ArrangedScreen& primary() const { return arrangement.screens().at(0); }
    const ArrangedScreen& second() const { return arrangement.screens().at(1); }

    /// The pixel of `screen` nearest to `target`, at least so many pixels inside.
    static QPoint towards(QPoint target, QRect screen, int inside)
    {
        const QRect inner = screen.adjusted(inside, inside, -inside, -inside);
        return {std::clamp(target.x(), inner.left(), inner.right()),
                std::clamp(target.y(), inner.top(), inner.bottom())};
    }

    void expectSaved(const ArrangedScreen& on, QPoint from, QPoint to)
    {
        CaptureChecks(*desktop, *tamrik, arrangement).expectSelectedIsSaved(on, from, to);
    }

    static inline std::unique_ptr<VirtualDesktop> desktop;
    const Arrangement arrangement{{
        {QStringLiteral("first"), std::get<Placement>(GetParam()).primary,
         std::get<Scales>(GetParam()).primary},
        {QStringLiteral("second"), std::get<Placement>(GetParam()).second,
         std::get<Scales>(GetParam()).second},
    }};
    std::unique_ptr<Tamrik> tamrik;
};

} // namespace

TEST_P(Arranged, WhatIsSelectedIsWhatIsSaved)
{
    const QRect first = primary().pixels;
    const QRect other = second().pixels;
    {
        SCOPED_TRACE("an odd rectangle on the primary screen, dragged to its top left");
        expectSaved(primary(), first.topLeft() + QPoint(288, 166),
                    first.topLeft() + QPoint(31, 23));
    }
    {
        SCOPED_TRACE("the whole primary screen");
        expectSaved(primary(), first.topLeft(), first.bottomRight());
    }
    {
        SCOPED_TRACE("an odd rectangle on the second screen");
        expectSaved(second(), other.topLeft() + QPoint(17, 29), other.topLeft() + QPoint(318, 228));
    }
    {
        SCOPED_TRACE("to the second screen's far edges");
        expectSaved(second(), other.center(), other.bottomRight());
    }
    {
        SCOPED_TRACE("across both, half of each");
        expectSaved(primary(), first.center(), other.center());
    }
    // Most of it lies on the other screen than the one that it was dragged on.
    {
        SCOPED_TRACE("from the second screen's rim to the primary one's far rim");
        const QPoint beyond = 2 * first.center() - other.center();
        expectSaved(second(), towards(first.center(), other, 21), towards(beyond, first, 49));
    }
    {
        SCOPED_TRACE("from the primary screen's rim to the middle of the second one");
        const QPoint aside = other.center() + QPoint(101, 97);
        expectSaved(primary(), towards(aside, first, 35), other.center());
    }
}

INSTANTIATE_TEST_SUITE_P(SameScale, Arranged,
                         testing::Combine(testing::ValuesIn(placements),
                                          testing::Values(Scales{1, 1}, Scales{1.25, 1.25},
                                                          Scales{1.5, 1.5}, Scales{2, 2})),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(OtherScale, Arranged,
                         testing::Combine(testing::ValuesIn(placements),
                                          testing::Values(Scales{2, 1}, Scales{1, 1.5},
                                                          Scales{1.25, 2})),
                         nameOf);
