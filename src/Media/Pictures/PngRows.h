#pragma once

#include <QColorSpace>
#include <QIODevice>

#include <memory>

/// A PNG file's rows as they come.
class PngRows {
public:
    /// Reads up to the pixels. `file` stands at its beginning and outlives this. Nothing when it is
    /// broken.
    static std::unique_ptr<PngRows> open(QIODevice& file);
    ~PngRows();

    int width() const;
    int height() const;
    bool hasAlpha() const;
    /// How often all rows come, from top to bottom: each time finer when it is more than once.
    int passes() const;
    /// Invalid when the file names none.
    QColorSpace colorSpace() const;

    /// Writes the next row: red, green, blue and alpha (255 without), not premultiplied, a byte
    /// each. False when it cannot be read.
    bool readRow(unsigned char* row);

private:
    struct Decoder;
    explicit PngRows(std::unique_ptr<Decoder> decoder);
    std::unique_ptr<Decoder> m_decoder;
};
