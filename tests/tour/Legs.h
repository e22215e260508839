#pragma once

#include "desktop/flow/Tamrik.h"
#include "tour/Tour.h"

/// The parts of the tour, in the order in which they are played. Each is given what all share: the
/// tour, the desktop, and the running program, which the last one ends.
namespace Legs {

void screenshot(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
/// Begins with one chip.
void chips(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
/// Begins with chips; the newest one is of the newest capture.
void editor(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
void adjusting(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
/// With a camera as tests/support/VirtualCamera.
void camera(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
void recording(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
/// Begins with a film; the newest chip is its.
void videoEditor(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
void recordingAsGIF(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);
/// `program` is the path of what `tamrik` runs.
void secondStart(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik,
                 const QString& program);
void statusMenu(Tour& tour, const Desktop::VirtualDesktop& desktop, Tamrik& tamrik);

} // namespace Legs
