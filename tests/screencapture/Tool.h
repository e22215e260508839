#pragma once

#include "support/ChildProcess.h"
#include "support/PngReader.h"
#include "support/TemporaryFolder.h"
#include "support/XServer.h"

#include <string>
#include <vector>

/// Helpers for running the built capture tool against real X servers.
namespace Tool {

/// The tool's own path.
std::string path();

/// A command for the tool on a display, with no table of screens, in the C locale.
Command command(const std::string& display, const std::vector<std::string>& arguments);

/// The arguments of a still, as the program gives them.
std::vector<std::string> still(const std::string& rectangle, const std::string& file);

/// Takes a still that has to succeed, without a word, and reads it.
PngImage capture(const Command& command, const std::string& file);
PngImage capture(const XServer& server, const std::string& rectangle);

/// Checks that the tool ended by itself with an error: a status that is not 0 and one line on
/// standard error, after its name; nothing on standard output. Returns that line.
std::string errorLine(const Outcome& outcome);

/// Programs that know what is on a screen. ImageMagick's import disagrees with the others about
/// channels of ten bits, of which it does not take the upper eight.
enum class Witness { Import, Scrot, ScrotWithPointer };

/// What another program sees on the whole screen.
PngImage reference(const XServer& server, Witness witness = Witness::Import);

/// The part of `image` that starts at (x, y), in pixels.
PngImage cut(const PngImage& image, std::uint32_t x, std::uint32_t y, std::uint32_t width,
             std::uint32_t height);

/// Compares sizes and every pixel.
void expectSamePixels(const PngImage& actual, const PngImage& expected);

} // namespace Tool
