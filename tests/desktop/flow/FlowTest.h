#pragma once

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/Windows.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>

/// A sort of desktop, for tests that are run on several.
struct DesktopCase {
    const char* name;
    Desktop::Options options;
};

inline void PrintTo(const DesktopCase& c, std::ostream* out)
{
    *out << c.name;
}

inline std::string nameOf(const testing::TestParamInfo<DesktopCase>& instance)
{
    return instance.param.name;
}

/// The program on a desktop, beside a terminal of the user's that has the focus. A test fails when
/// the program ends, or says anything.
class FlowTest : public testing::Test {
protected:
    /// Call first.
    void begin(const Desktop::Options& options);
    void TearDown() override;

    double scale() const { return desktop->options().scale; }
    Desktop::Input input() const { return Desktop::Input(*desktop); }
    Desktop::Screen screen() const { return Desktop::Screen(*desktop); }
    Desktop::Windows windows() const { return Desktop::Windows(*desktop); }

    /// A rectangle whose edges fall on whole points at every scale tried here.
    static QRect area() { return {300, 240, 360, 180}; }
    /// Drags a rectangle out with the left button.
    Desktop::Outcome<void> dragOut(QRect pixels) const;

    static QByteArray contents(const QString& path);
    /// What the terminal was told, a line at a time.
    QByteArray typed() const;
    /// Waits until the terminal was told just that.
    Desktop::Outcome<void> awaitTyped(const QByteArray& lines) const;

    std::unique_ptr<Desktop::VirtualDesktop> desktop;
    std::optional<Desktop::Helper> terminal;
    std::unique_ptr<Tamrik> tamrik;
};

/// The same on the desktop that the parameter says.
class FlowTestOnDesktops : public FlowTest, public testing::WithParamInterface<DesktopCase> {
protected:
    void SetUp() override { begin(GetParam().options); }
};
