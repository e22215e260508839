#include "Movie/SoundTrack.h"

#include "Movie/Clock.h"
#include "Report.h"

static_assert(SoundTimeline::rate == Microphone::rate);
static_assert(SoundTimeline::rate == SoundEncoder::rate);

SoundTrack::SoundTrack(bool isWanted, double start)
    : m_start(start)
    , m_isWanted(isWanted)
{
    if (!m_isWanted)
        m_kind.set_value({});
}

double SoundTrack::time() const
{
    return Clock::now() - m_start;
}

void SoundTrack::begin(Writing& writing)
{
    m_writing = &writing;
    if (!m_isWanted)
        return;
    m_microphone.emplace(Microphone::Listener{[this](bool isThere) { decide(isThere); },
                                              [this](std::span<const float> chunk, double age) {
                                                  if (!m_encoder)
                                                      return;
                                                  m_timeline.add(chunk, time() - age);
                                                  encodeWhatIsReady();
                                              },
                                              [this] {
                                                  if (!m_encoder)
                                                      return;
                                                  m_timeline.passTo(time());
                                                  encodeWhatIsReady();
                                              }});
}

void SoundTrack::decide(bool isThere)
{
    m_isDecided = true;
    if (!isThere) {
        report({"there is no microphone to record; the movie has no sound"});
        m_kind.set_value({});
        return;
    }
    Result<SoundEncoder> encoder = SoundEncoder::create();
    if (!encoder) {
        report({encoder.failure().message + "; the movie has no sound"});
        m_kind.set_value({});
        return;
    }
    m_kind.set_value({encoder->parameters(), SoundEncoder::rate});
    m_encoder.emplace(std::move(*encoder));
}

void SoundTrack::encodeWhatIsReady()
{
    for (;;) {
        const std::vector<float> block = m_timeline.take(SoundEncoder::blockFrames);
        if (block.empty())
            return;
        hand(m_encoder->encode(block));
    }
}

void SoundTrack::hand(Result<std::vector<Av::Packet>> packets)
{
    if (!packets) {
        if (!m_failure)
            m_failure = packets.failure();
        return;
    }
    for (Av::Packet& packet : *packets)
        m_writing->addSound(std::move(packet));
}

PossibleFailure SoundTrack::finish(double end)
{
    if (!m_microphone)
        return std::nullopt;
    m_microphone->stop();
    if (!m_isDecided)
        m_kind.set_value({});
    if (!m_encoder)
        return std::nullopt;
    m_timeline.finish(end);
    encodeWhatIsReady();
    hand(m_encoder->finish());
    return m_failure;
}
