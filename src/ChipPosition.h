#pragma once

#include <QString>

#include <array>
#include <optional>

/// Where the stack of chips stands on its screen.
enum class ChipPosition {
    bottomLeft,
    bottomCenter,
    bottomRight,
    topLeft,
    topCenter,
    topRight,
    custom, ///< at an origin that the user chose by dragging
};

/// All positions in the order of the menu.
inline constexpr std::array allChipPositions = {
    ChipPosition::bottomLeft, ChipPosition::bottomCenter, ChipPosition::bottomRight,
    ChipPosition::topLeft,    ChipPosition::topCenter,    ChipPosition::topRight,
    ChipPosition::custom,
};

/// The name under which a position is stored, such as "bottomLeft".
QString rawValue(ChipPosition position);

/// The position with that name, if there is one.
std::optional<ChipPosition> chipPositionFromRawValue(const QString& rawValue);

/// What the menu calls a position, such as "Bottom Left".
QString menuTitle(ChipPosition position);
