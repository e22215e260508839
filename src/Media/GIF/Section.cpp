#include "Media/GIF/Section.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <future>
#include <mutex>
#include <utility>

using namespace GIF;

namespace {

/// How much time may lie between when a frame is wanted and when it shows, in seconds.
constexpr double tolerance = 1.0 / 30;
constexpr std::size_t mostColours = 255; // and one for what is transparent
constexpr std::size_t framesAtOnce = 8;
constexpr double mostTolerance = 5;
constexpr double microsecond = 1e-6;

bool isClose(const FrameSource::Showing& showing, double time)
{
    return showing.begin <= time + tolerance + microsecond &&
           showing.end >= time - tolerance - microsecond;
}

/// By how much a pixel may be worse for staying as it is (a distance): the noise of cameras and
/// codecs takes less room then. Nobody sees it beside what the palette is off anyway; where that is
/// next to nothing, all is kept as it is.
int toleranceFor(const ColourCount& colours, const Palette& palette)
{
    return static_cast<int>(std::min(2 * meanUnlikeness(colours, palette), mostTolerance));
}

std::span<const Pixel> pixelsOf(const QImage& picture)
{
    const void* const bits = picture.constBits();
    return {static_cast<const Pixel*>(bits),
            static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height())};
}

/// In the middle of a picture of `size` without gaps between the rows.
QImage conformed(const QImage& picture, QSize size)
{
    const int tight = 4 * size.width();
    if (picture.size() == size && picture.bytesPerLine() == tight)
        return picture;
    QImage result(size, QImage::Format_RGB32); // rows of four bytes a pixel have no gaps
    result.fill(Qt::black);
    QPainter painter(&result);
    const QImage fitting = picture.size() == size ? picture
                                                  : picture.scaled(size, Qt::KeepAspectRatio,
                                                                   Qt::SmoothTransformation);
    painter.drawImage((size.width() - fitting.width()) / 2, (size.height() - fitting.height()) / 2,
                      fitting);
    return result;
}

} // namespace

Section::Section(const Layout& layout, Place place, Sink sink, IsOver isOver)
    : m_layout(layout)
    , m_sink(std::move(sink))
    , m_isOver(std::move(isOver))
    , m_beginsFile(place == Place::AtTheBeginning)
    , m_kept(static_cast<std::size_t>(layout.size.width()) *
             static_cast<std::size_t>(layout.size.height()))
    , m_mapping(layout.size.width(), layout.size.height())
{
}

PossibleFailure Section::read(FrameSource& video, std::span<const double> times)
{
    std::optional<double> last; // when the frame that was taken last begins
    for (const double time : times) {
        if (m_isOver())
            return Failure{"it was cancelled"};
        const auto showing = video.goTo(time);
        if (!showing || !isClose(*showing, time))
            continue;
        if (last == showing->begin) {
            m_kept.addRepetition();
            continue;
        }
        const auto picture = video.picture(m_layout.box);
        if (!picture)
            continue;
        m_kept.add(pixelsOf(conformed(*picture, m_layout.size)));
        last = showing->begin;
        if (m_kept.bytes() < m_layout.mostKept)
            continue;
        if (PossibleFailure failure = writeKept())
            return failure;
    }
    return {};
}

PossibleFailure Section::writeKept()
{
    if (PossibleFailure failure = begin(m_kept.colours()))
        return failure;
    PossibleFailure failure = write(m_kept, 1);
    m_kept.clear();
    return failure;
}

PossibleFailure Section::finish(const Section* next)
{
    ColourCount colours = m_kept.colours();
    if (next)
        colours.add(next->m_kept.colours());
    if (PossibleFailure failure = begin(colours))
        return failure;
    PossibleFailure failure = write(m_kept, 2);
    if (!failure && next)
        failure = write(next->m_kept, 2);
    return failure;
}

PossibleFailure Section::begin(const ColourCount& colours)
{
    const Palette palette = bestPalette(colours, mostColours);
    m_mapping.setPalette(palette, toleranceFor(colours, palette));
    m_isPaletteOfFile = m_beginsFile && !m_hasWritten;
    m_hasWritten = true;
    return m_isPaletteOfFile ? m_sink(beginning(m_layout.size, palette)) : PossibleFailure();
}

PossibleFailure Section::write(const PackedFrames& frames, int threads)
{
    PackedFrames::Reader reader(frames);
    for (std::size_t written = 0; written < frames.count();) {
        if (m_isOver())
            return Failure{"it was cancelled"};
        const std::size_t count = std::min(framesAtOnce, frames.count() - written);
        for (const Bytes& bytes : encoded(reader, count, threads)) {
            if (PossibleFailure failure = m_sink(bytes))
                return failure;
        }
        written += count;
    }
    return {};
}

std::vector<Bytes> Section::encoded(PackedFrames::Reader& frames, std::size_t count, int threads)
{
    std::vector<Bytes> all(count);
    std::mutex mapping; // frames are mapped one after the other, and compressed side by side
    std::size_t mapped = 0;
    const auto work = [&] {
        Compressor compressor;
        for (;;) {
            std::unique_lock lock(mapping);
            if (mapped == count)
                return;
            Bytes& bytes = all[mapped++];
            const IndexedFrame frame = m_mapping.next(frames);
            lock.unlock();
            appendFrame(bytes, frame, m_layout.delay, m_mapping.palette(), m_isPaletteOfFile,
                        compressor);
        }
    };
    std::vector<std::future<void>> others; // which are waited for also where one throws
    for (int i = 1; i < threads; ++i)
        others.push_back(std::async(std::launch::async, work));
    work();
    for (std::future<void>& other : others)
        other.get();
    return all;
}
