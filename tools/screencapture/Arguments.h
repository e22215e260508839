#pragma once

#include "Support/Geometry.h"
#include "Support/Result.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What the command line asks for.
struct Arguments {
    /// In points, origin at the top left of the primary screen; finite and not empty.
    Geometry::TopLeftRect rectangle;
    /// As given; never empty.
    std::string file;
    /// A movie, and not a still. Only then may one of the following be set.
    bool isMovie = false;
    bool showsPointer = false;
    bool showsClicks = false;
    bool hasSound = false;
};

/// Reads `-x -t png -R x,y,w,h FILE` or `-v -x -C -R x,y,w,h -k -g FILE`: options in any order,
/// alone or run together, their values attached or separate, "--" to end them, the file last. Of an
/// option given twice the last counts.
///
/// `words` are the command line's without the program's name.
Result<Arguments> parseArguments(std::span<const char* const> words);

/// Reads "x,y,w,h": four finite decimal numbers with a dot, whatever the locale, and nothing else.
/// No blanks, no plus sign, no hexadecimal. Sizes may be anything finite.
std::optional<Geometry::TopLeftRect> parseRectangle(std::string_view text);
