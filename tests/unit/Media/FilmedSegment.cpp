#include "unit/Media/FilmedSegment.h"

#include "Movie/Core/Picture.h"
#include "Movie/Encode/MovieStream.h"
#include "Movie/Encode/SoundEncoder.h"
#include "Movie/Encode/VideoEncoder.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double fragmentSeconds = 0.5;

template <class Value>
Value whole(Result<Value> result)
{
    if (!result)
        throw std::runtime_error(result.failure().message);
    return std::move(*result);
}

void check(const PossibleFailure& failure)
{
    if (failure)
        throw std::runtime_error(failure->message);
}

std::int64_t ticksOf(double seconds)
{
    return std::llround(seconds * VideoEncoder::ticksASecond);
}

Picture greyPicture(int width, int height, int grey)
{
    Picture picture(width, height);
    std::fill_n(picture.bytes(), picture.size(), std::uint8_t{128});
    for (int row = 0; row < picture.height(); ++row)
        std::fill_n(picture.lumaRow(row), picture.width(), static_cast<std::uint8_t>(grey));
    return picture;
}

std::vector<Av::Packet> encodedPictures(const FilmedSegment& segment, VideoEncoder& encoder)
{
    std::vector<Av::Packet> packets;
    const auto take = [&](std::vector<Av::Packet> more) {
        for (Av::Packet& packet : more)
            packets.push_back(std::move(packet));
    };
    double lastKey = -1;
    for (const FilmedSegment::Frame& frame : segment.frames) {
        Picture picture = greyPicture(segment.width, segment.height, frame.grey);
        const bool isKey = frame.time - lastKey >= 1;
        if (isKey)
            lastKey = frame.time;
        take(whole(encoder.encode(picture, ticksOf(frame.time), isKey)));
    }
    take(whole(encoder.finish()));
    for (std::size_t i = 0; i < packets.size(); ++i) {
        const bool isLast = i + 1 == packets.size();
        const std::int64_t until = isLast ? ticksOf(segment.duration) : packets[i + 1]->pts;
        packets[i]->duration = until - packets[i]->pts;
    }
    return packets;
}

std::vector<Av::Packet> encodedSound(const FilmedSegment& segment, SoundEncoder& encoder)
{
    const auto blocks =
        static_cast<int>(segment.duration * SoundEncoder::rate) / SoundEncoder::blockFrames;
    std::vector<float> samples(static_cast<std::size_t>(blocks * SoundEncoder::blockFrames) * 2);
    for (const int click : segment.clicks) {
        for (const int channel : {0, 1})
            samples.at(static_cast<std::size_t>(2 * click + channel)) = 0.9F;
    }
    std::vector<Av::Packet> packets;
    constexpr std::size_t block = SoundEncoder::blockFrames * std::size_t{2};
    for (std::size_t at = 0; at < samples.size(); at += block) {
        for (Av::Packet& packet : whole(encoder.encode(std::span(samples).subspan(at, block))))
            packets.push_back(std::move(packet));
    }
    for (Av::Packet& packet : whole(encoder.finish()))
        packets.push_back(std::move(packet));
    return packets;
}

} // namespace

FilmedSegment FilmedSegment::steady(double duration, int rate, int grey)
{
    FilmedSegment segment;
    segment.duration = duration;
    for (int i = 0; i / static_cast<double>(rate) < duration; ++i)
        segment.frames.push_back({i / static_cast<double>(rate), grey});
    return segment;
}

std::string FilmedSegment::bytes() const
{
    VideoEncoder pictures = whole(VideoEncoder::create(width, height));
    SoundEncoder sound = whole(SoundEncoder::create());
    const Av::Parameters pictureKind = pictures.parameters();
    const Av::Parameters soundKind = sound.parameters();
    MovieStream stream =
        whole(MovieStream::create(*pictureKind, VideoEncoder::ticksASecond,
                                  hasSound ? soundKind.get() : nullptr, SoundEncoder::rate));
    const std::vector<Av::Packet> shown = encodedPictures(*this, pictures);
    const std::vector<Av::Packet> heard =
        hasSound ? encodedSound(*this, sound) : std::vector<Av::Packet>();
    auto nextSound = heard.begin();
    const auto addSoundUpTo = [&](double seconds) {
        for (; nextSound != heard.end() &&
               static_cast<double>((*nextSound)->pts) / SoundEncoder::rate < seconds;
             ++nextSound)
            check(stream.addSound(**nextSound));
    };
    double fragmentStart = 0;
    for (const Av::Packet& packet : shown) {
        const double time = static_cast<double>(packet->pts) / VideoEncoder::ticksASecond;
        if (time - fragmentStart >= fragmentSeconds) {
            fragmentStart = time;
            addSoundUpTo(time);
            check(stream.closeFragment());
        }
        check(stream.addVideo(*packet));
    }
    addSoundUpTo(1e9);
    check(stream.closeFragment());
    const std::vector<std::uint8_t> all = stream.take();
    return {all.begin(), all.end()};
}

std::string FilmedSegment::withoutFirstFragment(const std::string& bytes)
{
    const std::size_t first = bytes.find("moof") - 4;
    const std::size_t second = bytes.find("moof", first + 8) - 4;
    return bytes.substr(0, first) + bytes.substr(second);
}
