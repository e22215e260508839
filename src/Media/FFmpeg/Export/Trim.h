#pragma once

#include "Media/MovieExport.h"

#include <cstddef>

/// As MovieExport::trim.
MovieExport::Outcome trimMovie(const QString& source, double start, double end,
                               const QString& destination, const Cancellation& cancellation);

/// The same, which fails where it would have to hold more than so many bytes of what comes before
/// the range and is needed for it.
MovieExport::Outcome trimMovieHolding(std::size_t mostHeld, const QString& source, double start,
                                      double end, const QString& destination,
                                      const Cancellation& cancellation);
