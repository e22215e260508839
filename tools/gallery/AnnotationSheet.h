#pragma once

#include <QImage>

/// Every kind of annotation on one sheet: in use on a picture, in every size, in every colour.
namespace AnnotationSheet {

/// At `scale` pixels a point.
QImage draw(double scale);

} // namespace AnnotationSheet
