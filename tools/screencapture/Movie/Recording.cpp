#include "Movie/Recording.h"

#include "Movie/Clock.h"
#include "Movie/Filming.h"
#include "Movie/SoundTrack.h"
#include "Placing.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double shortest = 1.0 / 60; // seconds that a movie lasts at least

std::int64_t ticks(double seconds)
{
    return std::llround(seconds * VideoEncoder::ticksASecond);
}

} // namespace

Result<int> recordMovie(const Arguments& arguments, const StopSignals& signals)
{
    const ParentWatch parent;
    const Result<X11::Connection> connection = X11::Connection::open();
    if (!connection)
        return connection.failure();
    const Result<ScreenTable::Placement> placement = placed(arguments.rectangle, *connection);
    if (!placement)
        return placement.failure();
    Result<MovieFile> file = MovieFile::create(arguments.file);
    if (!file)
        return file.failure();
    const Result<std::unique_ptr<ScreenSource>> source =
        ScreenSource::create(*connection, placement->pixels);
    if (!source)
        return source.failure();
    Result<VideoEncoder> encoder =
        VideoEncoder::create((*source)->picture().width(), (*source)->picture().height());
    if (!encoder)
        return encoder.failure();
    if (const int signal = signals.take())
        return signal;

    const double start = Clock::now();
    const Alarm alarm;
    SoundTrack sound(arguments.hasSound, start);
    Writing writing(std::move(*file), {encoder->parameters(), VideoEncoder::ticksASecond},
                    sound.kind(), alarm);
    sound.begin(writing);
    const SoundTrack::Stopping stopping(sound); // before the writing that it gives to
    Encoding encoding(std::move(*encoder), writing, alarm);
    Overlay overlay((*source)->pointer(), {arguments.showsPointer, arguments.showsClicks},
                    placement->scale);
    Filming filming({**source, overlay, encoding, writing, alarm, signals, parent}, start);

    PossibleFailure failure = filming.run();
    const double end = std::max(filming.time(), shortest);
    const PossibleFailure encodingFailure = encoding.finish();
    const PossibleFailure soundFailure = sound.finish(end);
    const PossibleFailure writingFailure = writing.finish(ticks(end));
    for (const PossibleFailure& other : {encodingFailure, soundFailure, writingFailure}) {
        if (!failure)
            failure = other;
    }
    if (failure)
        return *failure;
    return 0;
}
