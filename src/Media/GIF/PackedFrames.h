#pragma once

#include "Media/GIF/ColourCount.h"
#include "Media/GIF/Pixel.h"

#include <cstddef>
#include <span>
#include <vector>

namespace GIF {

/// Neighbouring pixels of a frame, counted from the upper left, row by row.
struct Span {
    std::size_t begin;
    std::size_t end;
};

/// Frames of a film, one after the other, in as little memory as is quick: what is the same as
/// before or beside costs next to nothing.
class PackedFrames {
public:
    /// Of frames with so many pixels each.
    explicit PackedFrames(std::size_t pixels);

    void add(std::span<const Pixel> frame);
    /// One that is as the one before it, which there is.
    void addRepetition();

    std::size_t count() const { return m_frames.size(); }
    /// How much memory the frames take.
    std::size_t bytes() const { return m_size; }

    /// The colours that came with these frames, each as often as it shows: in how many pixels, for
    /// how many frames.
    ColourCount colours() const;

    /// Forgets all frames but how the last one looked: what is added next is packed as a change of
    /// that.
    void clear();

    /// Reads them, the oldest first.
    class Reader {
    public:
        explicit Reader(const PackedFrames& frames)
            : m_frames(frames)
        {
        }

        /// Brings `frame`, which looks like the frame before, up to date. What has changed;
        /// the first frame after a beginning is changed everywhere. As often as there are frames.
        std::vector<Span> read(std::vector<Pixel>& frame);

    private:
        const PackedFrames& m_frames;
        std::size_t m_next = 0;
    };

private:
    class Writer;

    void change(std::size_t begin, std::size_t end, Pixel pixel);
    void finishFrame();

    /// In place of a frame's number: the pixel has looked as it does since before these frames.
    static constexpr std::uint32_t before = 0xffffffff;

    std::vector<std::vector<std::uint8_t>> m_frames;
    std::size_t m_size = 0;
    std::vector<std::uint8_t> m_bytes;  // of the frame that is being added
    std::vector<Pixel> m_last;          // how the last frame looks, as it is read
    std::vector<std::uint32_t> m_since; // from which of these frames on it does
    bool m_hasLast = false;
    ColourCount m_gone; // what shows no more
};

} // namespace GIF
