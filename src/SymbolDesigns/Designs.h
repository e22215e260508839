#pragma once

#include "SymbolDesigns/Shapes.h"

/// Every symbol, one function each; `line` is the width of its lines in ems (text sizes).
///
/// Boxes have even sides where the symbol is symmetric, so that it stands in the middle of a button
/// on whole pixels, and outer edges lie on the box.
namespace SymbolDesigns {

// What is done to a capture or a window: Actions.cpp
Design arrowUturnBackward(double line);
Design arrowUturnForward(double line);
Design crop(double line);
Design docOnDoc(double line);
Design pencil(double line);
Design trash(double line);
Design xmark(double line);

// Cameras, microphones, players: Media.cpp
Design arrowCounterclockwise(double line);
Design cameraViewfinder(double line);
Design micFill(double line);
Design pauseFill(double line);
Design playFill(double line);
Design speakerSlashFill(double line);
Design speakerWaveFill(double line);
Design stopCircleFill(double line);
Design stopFill(double line);
Design videoFill(double line);

// What the image editor draws with: Tools.cpp
Design arrowUpRight(double line);
Design checkerboardRectangle(double line);
Design circle(double line);
Design cursorArrow(double line);
Design highlighter(double line);
Design lineDiagonal(double line);
Design oneCircle(double line);
Design rectangle(double line);
Design scribble(double line);
Design textFormat(double line);

} // namespace SymbolDesigns
