#pragma once

#include "Media/MovieExport.h"

/// As MovieExport::remux.
MovieExport::Outcome remuxMovie(const QString& source, const QString& destination,
                                const Cancellation& cancellation);
