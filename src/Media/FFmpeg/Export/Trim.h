#pragma once

#include "Media/MovieExport.h"

/// As MovieExport::trim.
MovieExport::Outcome trimMovie(const QString& source, double start, double end,
                               const QString& destination, const Cancellation& cancellation);
