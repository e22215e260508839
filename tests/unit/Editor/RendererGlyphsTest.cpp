// Where the glyphs of labels and counters lie, by the numbers in the font's file.

#include "Editor/AnnotationRenderer.h"
#include "Editor/AnnotationText.h"

#include "unit/Editor/Shapes.h"

#include <QFontDatabase>
#include <QRawFont>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

using Geometry::Point;

/// The bold system font's own tables, in ems.
class FontFile {
public:
    FontFile()
    {
        QFont bold = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        bold.setBold(true);
        m_font = QRawFont::fromFont(bold);
        m_unitsAnEm = number<quint16>("head", 18);
    }

    double ascent() const { return number<qint16>("hhea", 4) / m_unitsAnEm; }
    double descent() const { return -number<qint16>("hhea", 6) / m_unitsAnEm; }

    double advance(QChar character) const
    {
        return number<quint16>("hmtx", 4 * glyph(character)) / m_unitsAnEm;
    }

    /// What is inked of a character, from its place on the base line, y up.
    Geometry::Rect ink(QChar character) const
    {
        const qsizetype index = glyph(character);
        const bool isLong = number<qint16>("head", 50) != 0;
        const auto place = static_cast<qsizetype>(isLong ? number<quint32>("loca", 4 * index)
                                                         : 2 * number<quint16>("loca", 2 * index));
        const auto edge = [&](qsizetype at) {
            return number<qint16>("glyf", place + at) / m_unitsAnEm;
        };
        return {edge(2), edge(4), edge(6) - edge(2), edge(8) - edge(4)};
    }

private:
    qsizetype glyph(QChar character) const
    {
        return m_font.glyphIndexesForString(QString(character)).value(0);
    }

    template <class Number>
    double number(const char* table, qsizetype at) const
    {
        const QByteArray bytes = m_font.fontTable(table);
        if (at + qsizetype{sizeof(Number)} > bytes.size())
            throw std::runtime_error(std::string("the font has no such number in ") + table);
        return qFromBigEndian<Number>(bytes.constData() + at);
    }

    QRawFont m_font;
    double m_unitsAnEm = 1;
};

constexpr Geometry::Size size{200, 100};

/// Where more than half of a pixel is of the colour, in points, y up.
Geometry::Rect inked(const Annotation& annotation, double density, const QColor& ground,
                     const QColor& color)
{
    const QImage image =
        AnnotationRenderer::flattened(plainPicture(size, density, ground), {annotation});
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (std::abs(image.pixelColor(x, y).blue() - color.blue()) < 128)
                box |= QRect(x, y, 1, 1);
        }
    }
    return {box.x() / density, (image.height() - box.y() - box.height()) / density,
            box.width() / density, box.height() / density};
}

void expectNear(const Geometry::Rect& seen, const Geometry::Rect& wanted, double tolerance)
{
    EXPECT_NEAR(seen.minX(), wanted.minX(), tolerance);
    EXPECT_NEAR(seen.maxX(), wanted.maxX(), tolerance);
    EXPECT_NEAR(seen.minY(), wanted.minY(), tolerance);
    EXPECT_NEAR(seen.maxY(), wanted.maxY(), tolerance);
}

class DrawnGlyphs : public testing::TestWithParam<double> {
protected:
    FontFile font;
};

INSTANTIATE_TEST_SUITE_P(PixelsAPoint, DrawnGlyphs, testing::Values(1.0, 2.0, 4.0));

} // namespace

TEST_P(DrawnGlyphs, ALabelStandsOnItsBaseLineInItsBox)
{
    const double density = GetParam();
    for (const double textSize : {14.0, 19.0, 26.0, 60.0}) {
        for (const char16_t letter : {u'H', u'g', u'8'}) {
            SCOPED_TRACE(testing::Message()
                         << textSize << " points, " << static_cast<char>(letter));
            Annotation label = markOf(AnnotationKind::text, {20, 25}, {20, 25}, 4, "#000000");
            label.text = QString(QChar(letter));
            label.fontSize = textSize;
            const Geometry::Rect ink = font.ink(letter);
            // The base line, but not the letter's place on it, is on a whole pixel.
            expectNear(inked(label, density, Qt::white, Qt::black),
                       {20 + ink.x * textSize, 25 + (font.descent() + ink.y) * textSize,
                        ink.width * textSize, ink.height * textSize},
                       1.01 / density + 0.01 * textSize);
        }
    }
}

TEST_P(DrawnGlyphs, ACountersNumberIsInItsMiddle)
{
    const double density = GetParam();
    // Line width, radius.
    for (const auto& [width, radius] : {std::pair{3.0, 12.0}, {5.0, 16.0}, {12.5, 40.0}}) {
        Annotation counter = markOf(AnnotationKind::counter, {90, 50}, {0, 0}, width, "#000000");
        counter.number = 8;
        const double textSize = 1.1 * radius;
        const Geometry::Rect ink = font.ink(u'8');
        const double left = 90 - font.advance(u'8') * textSize / 2;
        const double baseLine = 50 - (font.ascent() - font.descent()) * textSize / 2;
        expectNear(inked(counter, density, Qt::black, Qt::white),
                   {left + ink.x * textSize, baseLine + ink.y * textSize, ink.width * textSize,
                    ink.height * textSize},
                   0.55 / density + 0.01 * textSize);
    }
}

TEST(MeasuredGlyphs, AreAsWideAndHighAsTheFontsFileSays)
{
    const FontFile font;
    for (const double textSize : {14.0, 17.6, 26.0}) {
        const Geometry::Size box = AnnotationText::measure(QStringLiteral("8"), textSize);
        EXPECT_NEAR(box.width, font.advance(u'8') * textSize, 0.01 * textSize);
        EXPECT_NEAR(box.height, (font.ascent() + font.descent()) * textSize, 0.02 * textSize);
    }
}
