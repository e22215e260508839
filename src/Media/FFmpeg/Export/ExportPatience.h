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

/// What fails when it is cancelled fails for that reason.
inline MovieExport::Outcome outcome(const Cancellation& cancellation,
                                    const PossibleFailure& failure)
{
    if (failure && cancellation.isCancelled())
        return {MovieExport::End::failed, cancelled().message};
    if (failure)
        return {MovieExport::End::failed, failure->message};
    return {MovieExport::End::completed, {}};
}

} // namespace ExportPatience
