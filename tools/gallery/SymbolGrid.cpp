#include "SymbolGrid.h"

#include "Chrome.h"
#include "Symbols.h"

#include <QPainter>

namespace {

constexpr int columns = 5;
constexpr int cellHeight = 92;

} // namespace

SymbolGrid::SymbolGrid(int width, QWidget* parent)
    : QWidget(parent)
{
    constexpr int count = static_cast<int>(Symbols::allSymbols.size());
    resize(width, (count + columns - 1) / columns * cellHeight);
}

void SymbolGrid::paintEvent(QPaintEvent*)
{
    using Symbols::Weight;
    QPainter painter(this);
    painter.setFont(Chrome::font(11, QFont::Normal));
    const double cellWidth = static_cast<double>(width()) / columns;
    for (std::size_t i = 0; i < Symbols::allSymbols.size(); ++i) {
        const Symbols::Symbol symbol = Symbols::allSymbols[i];
        const double x = static_cast<double>(i % columns) * cellWidth;
        const std::size_t row = i / columns;
        const double y = static_cast<double>(row) * cellHeight;
        struct Shown {
            double middle;
            double pointSize;
            Weight weight;
            QColor tint;
        };
        for (const Shown& shown : {Shown{14, 12, Weight::semibold, Chrome::iconNormal()},
                                   Shown{42, 13, Weight::semibold, Chrome::accentBlue()},
                                   Shown{70, 13, Weight::regular, Chrome::textPrimary()},
                                   Shown{120, 40, Weight::semibold, Chrome::textPrimary()}})
        {
            Symbols::draw(painter, {symbol, shown.pointSize, shown.weight, {}},
                          {x + shown.middle, y + 30}, shown.tint);
        }
        painter.setPen(QColor(0x8C, 0x93, 0x9D));
        painter.drawText(QPointF(x, y + 74), Symbols::name(symbol));
    }
}
