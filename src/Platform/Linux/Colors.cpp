#include "Platform/Colors.h"

#include <QGuiApplication>
#include <QPalette>

QColor Platform::systemRed()
{
    return {0xFF, 0x3B, 0x30};
}

QColor Platform::systemOrange()
{
    return {0xFF, 0x95, 0x00};
}

QColor Platform::controlAccentColor()
{
    return QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
}

QColor Platform::separatorColor()
{
    QColor white(Qt::white);
    white.setAlphaF(0.12F);
    return white;
}

QColor Platform::underPageColor()
{
    return {0x1E, 0x20, 0x24};
}
