#include "screencapture/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tool {

std::string path()
{
    return TAMRIK_SCREENCAPTURE;
}

Command command(const std::string& display, const std::vector<std::string>& arguments)
{
    Command command{{path()},
                    {{"DISPLAY", display},
                     {"TAMRIK_SCREENS", std::nullopt},
                     {"XAUTHORITY", std::nullopt},
                     {"LC_ALL", "C"}}};
    command.words.insert(command.words.end(), arguments.begin(), arguments.end());
    return command;
}

std::vector<std::string> still(const std::string& rectangle, const std::string& file)
{
    return {"-x", "-t", "png", "-R", rectangle, file};
}

PngImage capture(const Command& command, const std::string& file)
{
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, "");
    if (outcome.status != 0)
        return {};
    return readPng(contentOf(file));
}

PngImage capture(const XServer& server, const std::string& rectangle)
{
    const TemporaryFolder folder;
    const std::string file = folder / "still.png";
    return capture(command(server.display(), still(rectangle, file)), file);
}

std::string errorLine(const Outcome& outcome)
{
    EXPECT_EQ(outcome.signal, 0);
    EXPECT_GT(outcome.status, 0);
    EXPECT_NE(outcome.status, 127);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.error.starts_with("screencapture: ")) << outcome.error;
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_TRUE(outcome.error.ends_with('\n')) << outcome.error;
    EXPECT_GT(outcome.error.size(), std::string("screencapture: \n").size());
    return outcome.error;
}

PngImage reference(const XServer& server, Witness witness)
{
    const TemporaryFolder folder;
    const std::string file = folder / "reference.png";
    Command command{{}, {{"DISPLAY", server.display()}}};
    switch (witness) {
    case Witness::Import:
        command.words = {"import", "-silent", "-window", "root", "-depth", "8", "PNG24:" + file};
        break;
    case Witness::Scrot:
        command.words = {"scrot", file};
        break;
    case Witness::ScrotWithPointer:
        command.words = {"scrot", "--pointer", file};
        break;
    }
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    return readPng(contentOf(file));
}

PngImage cut(const PngImage& image, std::uint32_t x, std::uint32_t y, std::uint32_t width,
             std::uint32_t height)
{
    PngImage part;
    if (std::uint64_t{x} + width > image.width || std::uint64_t{y} + height > image.height) {
        ADD_FAILURE() << "the picture is too small to cut from";
        return part;
    }
    part.width = width;
    part.height = height;
    for (std::uint32_t row = y; row < y + height; ++row) {
        const auto start = image.rgb.begin() +
                           static_cast<std::ptrdiff_t>((std::size_t{row} * image.width + x) * 3);
        part.rgb.insert(part.rgb.end(), start, start + std::ptrdiff_t{3} * width);
    }
    return part;
}

void expectSamePixels(const PngImage& actual, const PngImage& expected)
{
    ASSERT_EQ(actual.width, expected.width);
    ASSERT_EQ(actual.height, expected.height);
    ASSERT_EQ(actual.rgb.size(), std::size_t{3} * expected.width * expected.height);
    ASSERT_EQ(expected.rgb.size(), actual.rgb.size());
    const auto [a, e] = std::mismatch(actual.rgb.begin(), actual.rgb.end(), expected.rgb.begin());
    const auto at = static_cast<std::size_t>(a - actual.rgb.begin()) / 3;
    EXPECT_TRUE(a == actual.rgb.end())
        << "first difference at " << at % actual.width << ',' << at / actual.width << ": "
        << std::hex
        << actual.pixel(static_cast<std::uint32_t>(at % actual.width),
                        static_cast<std::uint32_t>(at / actual.width))
        << " instead of "
        << expected.pixel(static_cast<std::uint32_t>(at % actual.width),
                          static_cast<std::uint32_t>(at / actual.width));
}

} // namespace Tool
