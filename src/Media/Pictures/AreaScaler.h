#pragma once

#include <QImage>
#include <QRectF>
#include <QSize>

#include <cstdint>
#include <vector>

/// Scales a part of a picture down while its rows come in: every pixel is the mean of the area that
/// it covers.
class AreaScaler {
public:
    /// `part` is in pixels of the source, from its top left, no smaller than `size`.
    AreaScaler(const QRectF& part, QSize size, bool hasAlpha);

    /// The rows that are wanted: from the first up to the end.
    int firstRow() const;
    int endRow() const;

    /// The rows from the first on, in order: four bytes a pixel of the whole width, alpha last, not
    /// premultiplied. Alpha is written to `row` when it has any: the colours come out
    /// premultiplied.
    void add(unsigned char* row);

    /// RGBX8888, or premultiplied RGBA8888, once all rows are in.
    QImage result() const { return m_result; }

private:
    struct Span { // of source pixels that a result pixel covers
        int first;
        int last;
        float firstShare;
        float lastShare;
    };
    static Span spanOf(double from, double to);
    std::vector<Span> columnSpans(const QRectF& part, int count) const;
    void accumulate(const unsigned char* row, float share);
    void finishRow();

    QRectF m_part;
    double m_step; // source rows a result row
    bool m_hasAlpha;
    QImage m_result;
    std::vector<Span> m_columns;
    int m_firstColumn;
    std::vector<std::uint32_t> m_sums; // of the wanted columns, in 256ths
    std::uint32_t m_weight = 0;        // what stands in the sums, in 256ths of a row
    int m_nextSourceRow;
    int m_nextResultRow = 0;
};
