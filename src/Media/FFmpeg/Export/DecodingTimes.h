#pragma once

#include "Media/Av/Handles.h"
#include "Support/Result.h"

#include <deque>
#include <set>

/// Says when pictures are to be decoded that say only when they show, as Matroska's do.
///
/// They come in the order of decoding, in which some stand before ones that show earlier. Each is
/// decoded at a time at which one shows: as many pictures before its own as are overtaken among the
/// first ones, which are held until that is found out, or as the codec says.
class DecodingTimes {
public:
    /// `delay` is how many pictures the codec says that may be overtaken; 0 when it does not say.
    explicit DecodingTimes(std::size_t delay = 0)
        : m_early(delay)
    {
    }

    /// The next one, whose decoding time is made up. Null for none: there are no more.
    void put(Av::Packet picture);

    /// The next one with its decoding time; null until more were put.
    Av::Packet next();

    /// Whether it turned out that the times cannot be told. Nothing comes any more then.
    PossibleFailure failure() const { return m_failure; }

private:
    bool knowsOrder() const;
    void findOrder();
    std::int64_t nextTime();

    std::deque<Av::Packet> m_pictures;
    std::set<std::int64_t> m_times; // of all that were put, and at which none is decoded yet
    bool m_hasAll = false;
    bool m_isOrderFound = false;
    std::size_t m_early;     // so many are decoded before any shows
    std::int64_t m_step = 1; // between those
    std::int64_t m_last = INT64_MIN;
    PossibleFailure m_failure;
};
