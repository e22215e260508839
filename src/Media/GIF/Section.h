#pragma once

#include "Media/FrameReader.h"
#include "Media/GIF/FrameMapping.h"
#include "Media/GIF/PackedFrames.h"
#include "Media/GIF/Writing.h"

#include <QSize>

#include <functional>
#include <span>
#include <vector>

namespace GIF {

/// Takes a file's bytes as they come.
using Sink = std::function<PossibleFailure(const Bytes& bytes)>;

/// A run of a GIF's frames. They are kept until all are there, so that they get the colours that
/// suit them best; where they take too much memory, what is there is written and the rest gets
/// colours of its own. One thread at a time.
class Section {
public:
    struct Layout {
        QSize size; ///< Of the GIF.
        QSize box;  ///< What frames are to fit into.
        int delay;  ///< In hundredths of a second.
        /// How much memory the frames that are kept may take, in bytes.
        std::size_t mostKept;
    };

    /// Whether the section begins the file: its first colours are the file's then.
    enum class Place { AtTheBeginning, Behind };

    /// Whether it is of no use to go on; asked before each frame. Any thread.
    using IsOver = std::function<bool()>;

    Section(const Layout& layout, Place place, Sink sink, IsOver isOver);

    /// Takes the frames of `video` that show at `times`, which grow.
    PossibleFailure read(FrameSource& video, std::span<const double> times);

    bool isEmpty() const { return !m_hasWritten && m_kept.count() == 0; }
    /// Whether some of its frames are written.
    bool hasWritten() const { return m_hasWritten; }

    /// Writes what is kept and, if there is a section behind it of which nothing is written, what
    /// that one keeps. On two threads.
    PossibleFailure finish(const Section* next = nullptr);

private:
    PossibleFailure writeKept();
    PossibleFailure begin(const ColourCount& colours);
    PossibleFailure write(const PackedFrames& frames, int threads);
    std::vector<Bytes> encoded(PackedFrames::Reader& frames, std::size_t count, int threads);

    Layout m_layout;
    Sink m_sink;
    IsOver m_isOver;
    bool m_beginsFile;
    bool m_hasWritten = false;
    bool m_isPaletteOfFile = false;
    PackedFrames m_kept;
    FrameMapping m_mapping;
};

} // namespace GIF
