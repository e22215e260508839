// Draws every piece of the visual kit on one sheet: gallery FILE SCALE

#include "Sheet.h"

#include <QApplication>
#include <QImage>
#include <QTextStream>

#include <cmath>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const double scale = arguments.size() == 3 ? arguments[2].toDouble() : 0;
    if (!(scale >= 1 && scale <= 8)) { // nor not a number
        QTextStream(stderr) << "Usage: gallery FILE SCALE\n\n"
                               "Writes the sheet to FILE (PNG) at SCALE pixels a point, 1 to 8.\n";
        return 2;
    }

    Sheet sheet;
    const QSizeF pixels = QSizeF(sheet.size()) * scale;
    QImage image(static_cast<int>(std::ceil(pixels.width())),
                 static_cast<int>(std::ceil(pixels.height())), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    sheet.render(&image);
    if (!image.save(arguments[1], "PNG")) {
        QTextStream(stderr) << "gallery: cannot write " << arguments[1] << '\n';
        return 1;
    }
    return 0;
}
