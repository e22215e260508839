#pragma once

#include "Editor/Annotation.h"

#include <optional>
#include <vector>

/// Where the annotations of a list are. To find that out anew takes the fonts and every point of
/// every stroke, so it is kept; asking for one of ten thousand then takes microseconds.
class AnnotationPlaces {
public:
    explicit AnnotationPlaces(const QList<Annotation>& annotations);

    struct Place {
        Geometry::Rect bounds;  ///< See `AnnotationRenderer::bounds`.
        Geometry::Rect painted; ///< See `AnnotationRenderer::painted`.
    };

    /// To be called after `count` annotations from `index` on were replaced by `newCount` others,
    /// which makes `annotations`.
    void replaced(const QList<Annotation>& annotations, qsizetype index, qsizetype count,
                  qsizetype newCount);

    const Place& operator[](qsizetype index) const
    {
        return m_places[static_cast<std::size_t>(index)];
    }
    qsizetype size() const { return static_cast<qsizetype>(m_places.size()); }

    /// The highest one whose bounds hold the point.
    std::optional<qsizetype> highestAt(Geometry::Point p) const;

private:
    std::vector<Place> m_places; // one for each annotation
};
