#include "Sheet.h"

#include "ChromeViews.h"
#include "SymbolGrid.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {

using Symbols::Symbol;
using Symbols::Weight;

constexpr int sheetWidth = 1080;
constexpr int margin = 32;
constexpr int labelColumn = 120;
constexpr int stateColumn = 190;

const QColor ground(0x1A, 0x1C, 0x20);
const QColor quiet(0x8C, 0x93, 0x9D);

Symbols::Image semibold(Symbol symbol, double pointSize = 12)
{
    return {symbol, pointSize, Weight::semibold, {}};
}

ChromeButton* button(QWidget* parent, Symbol symbol, double pointSize = 12)
{
    return new ChromeButton(semibold(symbol, pointSize), parent);
}

ChromeButton* button(QWidget* parent, const char* title,
                     Chrome::Accent accent = Chrome::Accent::none)
{
    auto* result = new ChromeButton(QString::fromUtf8(title), parent);
    result->setAccent(accent);
    return result;
}

QLabel* label(QWidget* parent, const QString& text, const QColor& color, double size,
              QFont::Weight weight = QFont::DemiBold)
{
    auto* result = new QLabel(text, parent);
    result->setFont(Chrome::font(size, weight));
    QPalette palette = result->palette();
    palette.setColor(QPalette::WindowText, color);
    result->setPalette(palette);
    result->adjustSize();
    return result;
}

/// A row of controls as the panels lay theirs out.
QHBoxLayout* row(QWidget* bar, int spacing, QMargins margins)
{
    auto* layout = new QHBoxLayout(bar);
    layout->setSpacing(spacing);
    layout->setContentsMargins(margins);
    return layout;
}

/// A disc, for a recording's light and the editor's colours.
class Dot : public QWidget {
public:
    Dot(QColor color, int side, double ringWidth, QWidget* parent)
        : QWidget(parent)
        , m_color(color)
        , m_ring(ringWidth)
    {
        setFixedSize(side, side);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(m_color);
        painter.setPen(m_ring > 0 ? QPen(QColor(255, 255, 255, 31), m_ring) : QPen(Qt::NoPen));
        const double inset = m_ring / 2;
        painter.drawEllipse(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
    }

private:
    QColor m_color;
    double m_ring;
};

/// Fills itself with a gradient or a colour.
class Swatch : public QWidget {
public:
    Swatch(const QBrush& brush, QRect box, QWidget* parent)
        : QWidget(parent)
        , m_brush(brush)
    {
        setGeometry(box);
    }

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), m_brush); }

private:
    QBrush m_brush;
};

/// Draws a pill by the routine that draws it straight onto a view.
class DrawnPill : public QWidget {
public:
    DrawnPill(QString text, QRect box, QWidget* parent)
        : QWidget(parent)
        , m_text(std::move(text))
    {
        setGeometry(box);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const Geometry::Flip flip({0, 0, double(width()), double(height())});
        Chrome::drawPill(painter, flip, m_text, {width() / 2.0, 8}, true);
    }

private:
    QString m_text;
};

} // namespace

Sheet::Sheet()
{
    int y = margin;
    y = addButtons(y);
    y = addBars(y);
    y = addPills(y);
    y = addPalette(y);
    y = addSymbols(y);
    resize(sheetWidth, y);
}

void Sheet::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), ground);
}

void Sheet::addHeading(const QString& text, int y)
{
    label(this, text, Chrome::textPrimary(), 15)->move(margin, y);
}

QWidget* Sheet::addCaption(const QString& text, int x, int y, int width)
{
    auto* caption = label(this, text, quiet, 11, QFont::Normal);
    caption->setGeometry(x, y, width, 16);
    return caption;
}

void Sheet::addButtonStates(Chrome::Accent accent, int y)
{
    struct State {
        bool down;
        bool toggledOn;
    };
    int column = margin + labelColumn;
    for (const State state : {State{false, false}, State{true, false}, State{false, true}}) {
        int x = column;
        for (ChromeButton* shown : {button(this, Symbol::micFill), button(this, "Record  ↩")}) {
            shown->setAccent(accent);
            shown->setDown(state.down);
            shown->setToggledOn(state.toggledOn);
            shown->move(x, y);
            shown->resize(shown->sizeHint());
            x += shown->width() + 10;
        }
        column += stateColumn;
    }
}

int Sheet::addButtons(int y)
{
    addHeading(QStringLiteral("Buttons"), y);
    y += 30;
    int x = margin + labelColumn;
    for (const char* state : {"normal", "pressed", "switched on"}) {
        addCaption(QString::fromLatin1(state), x, y, 120);
        x += stateColumn;
    }
    y += 24;
    struct Row {
        const char* name;
        Chrome::Accent accent;
    };
    for (const Row each : {Row{"none", Chrome::Accent::none}, Row{"blue", Chrome::Accent::blue},
                           Row{"red", Chrome::Accent::red}})
    {
        addCaption(QString::fromLatin1(each.name), margin, y + 4, labelColumn);
        addButtonStates(each.accent, y);
        y += 36;
    }
    return y + 20;
}

int Sheet::addBars(int y)
{
    addHeading(QStringLiteral("Bars"), y);
    y += 32;

    auto* hud = new ChromeBarView(this);
    auto* items = row(hud, 8, {14, 8, 10, 8});
    items->addWidget(label(hud, QStringLiteral("1280 × 720"), Chrome::textPrimary(), 13));
    items->addWidget(new ChromeSeparator(20));
    auto* mic = button(hud, Symbol::micFill);
    mic->setToggledOn(true);
    items->addWidget(mic);
    items->addWidget(button(hud, Symbol::videoFill));
    items->addWidget(button(hud, Symbol::crop));
    items->addWidget(new ChromeSeparator(20));
    items->addWidget(button(hud, "GIF  ⌥↩"));
    items->addWidget(button(hud, "Record  ↩", Chrome::Accent::red));
    items->addWidget(button(hud, Symbol::xmark));
    hud->move(margin, y);
    hud->adjustSize();

    auto* controls = new ChromeBarView(this);
    items = row(controls, 8, {14, 8, 10, 8});
    items->addWidget(new Dot(QColor(0xFF, 0x3B, 0x30), 8, 0, controls));
    items->addWidget(label(controls, QStringLiteral("12:07"), Chrome::textPrimary(), 13));
    items->addWidget(new ChromeSeparator(18));
    items->addWidget(button(controls, Symbol::pauseFill));
    auto* stop = button(controls, Symbol::stopFill);
    stop->setAccent(Chrome::Accent::red);
    items->addWidget(stop);
    items->addWidget(button(controls, Symbol::arrowCounterclockwise));
    items->addWidget(new ChromeSeparator(18));
    items->addWidget(button(controls, Symbol::trash));
    controls->move(margin + 500, y);
    controls->adjustSize();
    y += hud->height() + 20;

    auto* toolbar = new ChromeBarView(this);
    toolbar->setFlat(true);
    items = row(toolbar, 2, {10, 0, 10, 0});
    for (const Symbol tool :
         {Symbol::cursorArrow, Symbol::arrowUpRight, Symbol::lineDiagonal, Symbol::rectangle,
          Symbol::circle, Symbol::scribble, Symbol::highlighter, Symbol::textFormat,
          Symbol::oneCircle, Symbol::checkerboardRectangle})
    {
        auto* shown = button(toolbar, tool, 13);
        shown->setToggledOn(tool == Symbol::arrowUpRight);
        items->addWidget(shown);
    }
    items->addWidget(new ChromeSeparator(22));
    for (const char* hex :
         {"#FF3B30", "#FF9500", "#FFCC00", "#34C759", "#0A84FF", "#BF5AF2", "#000000", "#FFFFFF"})
        items->addWidget(new Dot(Chrome::color(hex), 16, 1.5, toolbar));
    items->addWidget(new ChromeSeparator(22));
    items->addStretch();
    for (const Symbol action :
         {Symbol::arrowUturnBackward, Symbol::arrowUturnForward, Symbol::trash})
        items->addWidget(button(toolbar, action, 13));
    items->addWidget(button(toolbar, "Copy ⌘C", Chrome::Accent::blue));
    items->addWidget(button(toolbar, "Export ⌘S"));
    toolbar->setGeometry(margin, y, sheetWidth - 2 * margin, 46);
    return y + toolbar->height() + 32;
}

int Sheet::addPills(int y)
{
    addHeading(QStringLiteral("Pills, separators"), y);
    y += 30;
    new DrawnPill(QStringLiteral("640 × 480"), {margin, y, 110, 34}, this);
    new DrawnPill(QStringLiteral("Drag to select capture area  ·  Esc to cancel"),
                  {margin + 120, y, 310, 34}, this);
    auto* badge = new ChromePillView(this);
    auto* text = label(badge, QStringLiteral("▶ 0:42"), Chrome::textPrimary(), 10);
    badge->setGeometry(margin + 450, y + 8, text->width() + 12, 18);
    text->move(6, (18 - text->height()) / 2);
    for (const int height : {18, 20, 22}) {
        auto* separator = new ChromeSeparator(height, this);
        separator->move(margin + 540 + (height - 18) * 10, y + 17 - height / 2);
    }
    return y + 34 + 28;
}

int Sheet::addPalette(int y)
{
    addHeading(QStringLiteral("Palette and gradients"), y);
    y += 32;
    struct Entry {
        const char* name;
        QBrush brush;
    };
    using Chrome::Accent;
    const Entry entries[] = {
        {"textPrimary", Chrome::textPrimary()},
        {"iconNormal", Chrome::iconNormal()},
        {"accentBlue", Chrome::accentBlue()},
        {"border", Chrome::border()},
        {"rimLight", Chrome::rimLight()},
        {"bar", Chrome::barGradient()},
        {"none", Chrome::buttonGradient(Accent::none, false)},
        {"none, pressed", Chrome::buttonGradient(Accent::none, true)},
        {"blue", Chrome::buttonGradient(Accent::blue, false)},
        {"blue, pressed", Chrome::buttonGradient(Accent::blue, true)},
        {"red", Chrome::buttonGradient(Accent::red, false)},
        {"red, pressed", Chrome::buttonGradient(Accent::red, true)},
    };
    constexpr int step = (sheetWidth - 2 * margin) / static_cast<int>(std::size(entries));
    int x = margin;
    for (const Entry& entry : entries) {
        new Swatch(entry.brush, {x, y, step - 10, 40}, this);
        addCaption(QString::fromLatin1(entry.name), x, y + 46, step);
        x += step;
    }
    return y + 46 + 16 + 28;
}

int Sheet::addSymbols(int y)
{
    addHeading(QStringLiteral("Symbols"), y);
    y += 32;
    auto* grid = new SymbolGrid(sheetWidth - 2 * margin, this);
    grid->move(margin, y);
    return y + grid->height() + margin;
}
