#pragma once

#include "Media/MovieExport.h"

/// As MovieExport::concatenate.
MovieExport::Outcome concatenateMovies(const QStringList& segments, const QString& destination,
                                       const Cancellation& cancellation);
