#pragma once

#include "Arguments.h"
#include "StopSignals.h"
#include "Support/Result.h"

/// Films until a signal comes, or until the process that started this one is gone. On a failure
/// what was filmed up to then is in the file, if there was anything.
///
/// Returns the signal that came before the first picture was taken, in which case there is no file,
/// or 0.
Result<int> recordMovie(const Arguments& arguments, const StopSignals& signals);
