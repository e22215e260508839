#pragma once

#include "Media/FFmpeg/Patience.h"
#include "Media/MovieExport.h"
#include "Support/Result.h"

/// How exports end that take as long as they take.
namespace ExportPatience {

/// Is over when it is cancelled.
inline Patience endless(const Cancellation& cancellation)
{
    Patience patience(std::chrono::hours(24 * 365), cancellation);
    patience.begin();
    return patience;
}

inline Failure cancelled()
{
    return {"it was cancelled"};
}

/// What ends before the end of its source: of `patience`, why. Nothing when that was the end.
inline PossibleFailure cutShort(const Patience& patience)
{
    if (patience.isOver())
        return cancelled();
    return patience.unreadable();
}

/// How what ended with `failure`, or well, is told. What fails when it is cancelled fails for that
/// reason; `unreadable` is what failed otherwise since a disk did.
inline MovieExport::Outcome outcome(const Patience& patience, const PossibleFailure& failure,
                                    MovieExport::End unreadable = MovieExport::End::unreadable)
{
    if (!failure)
        return {MovieExport::End::completed, {}};
    if (patience.isOver())
        return {MovieExport::End::failed, cancelled().message};
    return {patience.unreadable() ? unreadable : MovieExport::End::failed, failure->message};
}

} // namespace ExportPatience
