#include "Placing.h"

#include "Platform/Linux/X11/Screens.h"

#include <cstdlib>

namespace {

using Screens = std::vector<ScreenTable::Screen>;

/// The program's own table, or else the X server's answer.
Result<Screens> screensFor(const X11::Connection& connection)
{
    const char* const text = std::getenv(ScreenTable::variable);
    if (!text)
        return X11::screens(connection);
    std::optional<Screens> screens = ScreenTable::read(text);
    if (!screens)
        return Failure{std::string("the environment variable ") + ScreenTable::variable +
                       " holds no table of screens"};
    return std::move(*screens);
}

} // namespace

Result<ScreenTable::Placement> placed(Geometry::TopLeftRect rectangle,
                                      const X11::Connection& connection)
{
    const Result<Screens> screens = screensFor(connection);
    if (!screens)
        return screens.failure();
    const auto placement = ScreenTable::place(rectangle, *screens);
    if (!placement)
        return Failure{"the rectangle lies off the desktop"};
    return *placement;
}
