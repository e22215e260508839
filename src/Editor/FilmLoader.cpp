#include "Editor/FilmLoader.h"

#include "Media/FrameReader.h"
#include "Support/Background.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// A file as long as a day is read in that, from a slow disk.
constexpr std::chrono::milliseconds longest = 10min;

void readTimes(const QString& path, FilmLoader::GotTimes got, const Cancellation& cancellation)
{
    Background::threads().start([=, got = std::move(got)] {
        auto times = FilmTimes::read(path, {.time = longest, .cancellation = cancellation});
        got(times ? std::optional(std::move(*times)) : std::nullopt);
    });
}

void readFrames(const QString& path, const std::vector<double>& times, QSize box,
                FilmLoader::GotFrame got, const Cancellation& cancellation)
{
    Background::threads().start([=, got = std::move(got)] {
        const FrameReaderLimits limits{.cancellation = cancellation};
        auto film = FrameReader::open(path, limits);
        if (!film)
            return;
        int index = 0;
        for (const double time : times) {
            if (cancellation.isCancelled())
                return;
            if (const auto frame = film->frameAt(time, box))
                got(index, *frame);
            ++index;
        }
    });
}

} // namespace

FilmLoader FilmLoader::system()
{
    return {::readTimes, ::readFrames};
}
