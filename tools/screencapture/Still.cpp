#include "Still.h"

#include "NewFile.h"
#include "Placing.h"
#include "Png/Encoder.h"
#include "Png/Workers.h"

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/RootImage.h"

#include <vector>

namespace {

constexpr double pointsAnInch = 72; // of a picture, by convention

std::vector<std::uint8_t> encoded(const X11::RootImage& image, double scale)
{
    const X11::RgbReader reader(image.format());
    const Png::Source source{
        image.width(), image.height(),
        [&](std::uint32_t y, std::uint8_t* rgb) { reader.read(image.row(y), image.width(), rgb); }};
    return Png::encode(source, pointsAnInch * scale, Png::processors());
}

} // namespace

PossibleFailure takeStill(const Arguments& arguments)
{
    const Result<X11::Connection> connection = X11::Connection::open();
    if (!connection)
        return connection.failure();
    const Result<ScreenTable::Placement> placement = placed(arguments.rectangle, *connection);
    if (!placement)
        return placement.failure();

    const Result<std::unique_ptr<OutputFile>> file = newFile(arguments.file);
    if (!file)
        return file.failure();
    const Result<X11::RootImage> image = X11::RootImage::grab(*connection, placement->pixels);
    if (!image)
        return image.failure();
    if (PossibleFailure failure = (*file)->append(encoded(*image, placement->scale)))
        return failure;
    return (*file)->publishUnsynced();
}
