#pragma once

#include "Media/FilmTimes.h"

/// As FilmTimes::read.
Result<FilmTimes> readFilmTimes(const QString& path, const FrameReaderLimits& limits);
