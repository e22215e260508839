// Draws every piece of the visual kit, or of the annotations, on one sheet: gallery FILE SCALE
// [WHAT]

#include "AnnotationSheet.h"
#include "Sheet.h"

#include <QApplication>
#include <QImage>
#include <QTextStream>

#include <cmath>

namespace {

QImage kit(double scale)
{
    Sheet sheet;
    const QSizeF pixels = QSizeF(sheet.size()) * scale;
    QImage image(static_cast<int>(std::ceil(pixels.width())),
                 static_cast<int>(std::ceil(pixels.height())), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    sheet.render(&image);
    return image;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const QString what = arguments.value(3, QStringLiteral("kit"));
    const double scale = arguments.value(2).toDouble();
    if (arguments.size() > 4 || (what != u"kit" && what != u"annotations") ||
        !(scale >= 1 && scale <= 8)) // nor not a number
    {
        QTextStream(stderr) << "Usage: gallery FILE SCALE [kit|annotations]\n\n"
                               "Writes the sheet to FILE (PNG) at SCALE pixels a point, 1 to 8.\n";
        return 2;
    }

    const QImage image = what == u"kit" ? kit(scale) : AnnotationSheet::draw(scale);
    if (!image.save(arguments[1], "PNG")) {
        QTextStream(stderr) << "gallery: cannot write " << arguments[1] << '\n';
        return 1;
    }
    return 0;
}
