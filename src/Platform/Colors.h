#pragma once

#include <QColor>

/// Colours that belong to the desktop rather than to the program.
namespace Platform {

/// What warns, or records.
QColor systemRed();
/// What waits.
QColor systemOrange();
/// What stands out as chosen.
QColor controlAccentColor();
/// A line between parts, over something dark.
QColor separatorColor();
/// Behind a document that does not fill its window.
QColor underPageColor();

} // namespace Platform
