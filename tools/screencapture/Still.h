#pragma once

#include "Arguments.h"

#include "Support/Result.h"

/// Grabs the rectangle and writes it as PNG, with native pixels and a density of 72 dots an inch
/// for each pixel a point has.
PossibleFailure takeStill(const Arguments& arguments);
