#pragma once

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

/// The duration that a video's chip shows in its corner, such as "0:07", read off the screen once
/// that can be done. Below a minute. Needs a QGuiApplication, for its fonts.
Desktop::Outcome<QString> awaitDurationOn(const Desktop::VirtualDesktop& desktop,
                                          const Desktop::Window& chip);
