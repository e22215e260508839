#include "Editor/AnnotationPlaces.h"

#include "Editor/AnnotationRenderer.h"

#include <algorithm>
#include <iterator>

AnnotationPlaces::AnnotationPlaces(const QList<Annotation>& annotations)
{
    replaced(annotations, 0, 0, annotations.size());
}

void AnnotationPlaces::replaced(const QList<Annotation>& annotations, qsizetype index,
                                qsizetype count, qsizetype newCount)
{
    std::vector<Place> places;
    places.reserve(static_cast<std::size_t>(newCount));
    std::transform(annotations.begin() + index, annotations.begin() + index + newCount,
                   std::back_inserter(places), [](const Annotation& annotation) {
                       return Place{AnnotationRenderer::bounds(annotation),
                                    AnnotationRenderer::painted(annotation)};
                   });
    const auto first = m_places.begin() + index;
    const qsizetype inPlace = std::min(count, newCount);
    std::copy_n(places.begin(), inPlace, first);
    if (count > newCount)
        m_places.erase(first + newCount, first + count);
    else
        m_places.insert(first + inPlace, places.begin() + inPlace, places.end());
}

std::optional<qsizetype> AnnotationPlaces::highestAt(Geometry::Point p) const
{
    const auto hit = std::find_if(m_places.rbegin(), m_places.rend(),
                                  [p](const Place& place) { return place.bounds.contains(p); });
    if (hit == m_places.rend())
        return std::nullopt;
    return m_places.rend() - hit - 1;
}
