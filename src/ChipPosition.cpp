#include "ChipPosition.h"

QString rawValue(ChipPosition position)
{
    switch (position) {
    case ChipPosition::bottomLeft:
        return QStringLiteral("bottomLeft");
    case ChipPosition::bottomCenter:
        return QStringLiteral("bottomCenter");
    case ChipPosition::bottomRight:
        return QStringLiteral("bottomRight");
    case ChipPosition::topLeft:
        return QStringLiteral("topLeft");
    case ChipPosition::topCenter:
        return QStringLiteral("topCenter");
    case ChipPosition::topRight:
        return QStringLiteral("topRight");
    case ChipPosition::custom:
        return QStringLiteral("custom");
    }
    Q_UNREACHABLE();
}

std::optional<ChipPosition> chipPositionFromRawValue(const QString& raw)
{
    for (const ChipPosition position : allChipPositions) {
        if (rawValue(position) == raw)
            return position;
    }
    return std::nullopt;
}

QString menuTitle(ChipPosition position)
{
    switch (position) {
    case ChipPosition::bottomLeft:
        return QStringLiteral("Bottom Left");
    case ChipPosition::bottomCenter:
        return QStringLiteral("Bottom Center");
    case ChipPosition::bottomRight:
        return QStringLiteral("Bottom Right");
    case ChipPosition::topLeft:
        return QStringLiteral("Top Left");
    case ChipPosition::topCenter:
        return QStringLiteral("Top Center");
    case ChipPosition::topRight:
        return QStringLiteral("Top Right");
    case ChipPosition::custom:
        return QStringLiteral("Custom (⌘-drag a thumbnail)");
    }
    Q_UNREACHABLE();
}
