#include "Editor/EditorToolbar.h"

#include "ChromeButton.h"
#include "Editor/ColorSwatch.h"
#include "Editor/SegmentedControl.h"
#include "Symbols.h"

#include <QHBoxLayout>

#include <array>

using Symbols::Symbol;

namespace {

constexpr int spacing = 2;
constexpr int inset = 10;
constexpr int separatorHeight = 22;
constexpr double symbolSize = 13;

struct Tool {
    EditorTool tool;
    Symbol symbol;
    const char* tip;
};

constexpr std::array tools = {
    Tool{EditorTool::select, Symbol::cursorArrow, "Select / move (drag), Delete removes"},
    Tool{EditorTool::arrow, Symbol::arrowUpRight, "Arrow"},
    Tool{EditorTool::line, Symbol::lineDiagonal, "Line"},
    Tool{EditorTool::rect, Symbol::rectangle, "Rectangle"},
    Tool{EditorTool::ellipse, Symbol::circle, "Ellipse"},
    Tool{EditorTool::freehand, Symbol::scribble, "Freehand"},
    Tool{EditorTool::highlight, Symbol::highlighter, "Highlighter"},
    Tool{EditorTool::text, Symbol::textFormat, "Text (click to place)"},
    Tool{EditorTool::counter, Symbol::oneCircle, "Numbered counter (click to place)"},
    Tool{EditorTool::redact, Symbol::checkerboardRectangle, "Pixelate / redact"},
};

struct Color {
    const char* hex;
    const char* name;
};

constexpr std::array colors = {
    Color{"#FF3B30", "Red"},   Color{"#FF9500", "Orange"}, Color{"#FFCC00", "Yellow"},
    Color{"#34C759", "Green"}, Color{"#0A84FF", "Blue"},   Color{"#BF5AF2", "Purple"},
    Color{"#000000", "Black"}, Color{"#FFFFFF", "White"},
};

constexpr std::array strokeWidths = {2.0, 4.0, 7.0};

ChromeButton* symbolButton(Symbol symbol, const QString& tip)
{
    auto* button =
        new ChromeButton(Symbols::Image{symbol, symbolSize, Symbols::Weight::semibold, tip});
    button->setToolTip(tip);
    return button;
}

} // namespace

EditorToolbar::EditorToolbar(QWidget* parent)
    : ChromeBarView(parent)
{
    setObjectName(QStringLiteral("EditorToolbar"));
    setAccessibleName(QStringLiteral("Tools"));
    setFlat(true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(inset, 0, inset, 0);
    row->setSpacing(spacing);
    addTools(*row);
    row->addWidget(new ChromeSeparator(separatorHeight));
    addColors(*row);
    row->addWidget(new ChromeSeparator(separatorHeight));
    addStrokes(*row);
    row->addStretch();
    addCommands(*row);
}

void EditorToolbar::addTools(QHBoxLayout& row)
{
    for (const Tool& entry : tools) {
        ChromeButton* button = symbolButton(entry.symbol, QString::fromLatin1(entry.tip));
        connect(button, &ChromeButton::clicked, this,
                [this, tool = entry.tool] { Q_EMIT toolClicked(tool); });
        m_toolButtons.emplace_back(entry.tool, button);
        row.addWidget(button);
    }
}

void EditorToolbar::addColors(QHBoxLayout& row)
{
    for (const Color& entry : colors) {
        auto* swatch =
            new ColorSwatch(QString::fromLatin1(entry.hex), QString::fromLatin1(entry.name));
        connect(swatch, &ColorSwatch::clicked, this,
                [this, swatch] { Q_EMIT colorClicked(swatch->hex()); });
        m_colorButtons.emplace_back(swatch->hex(), swatch);
        row.addWidget(swatch);
    }
}

void EditorToolbar::addStrokes(QHBoxLayout& row)
{
    auto* strokes = new SegmentedControl(
        {QStringLiteral("S"), QStringLiteral("M"), QStringLiteral("L")},
        {QStringLiteral("Small"), QStringLiteral("Medium"), QStringLiteral("Large")});
    strokes->setSelectedSegment(1);
    strokes->setToolTip(QStringLiteral("Stroke / text size"));
    strokes->setAccessibleName(strokes->toolTip());
    connect(strokes, &SegmentedControl::chosen, this, [this](int segment) {
        Q_EMIT strokeChanged(strokeWidths.at(static_cast<std::size_t>(segment)));
    });
    row.addWidget(strokes);
}

void EditorToolbar::addCommands(QHBoxLayout& row)
{
    auto* undo = symbolButton(Symbol::arrowUturnBackward, QStringLiteral("Undo (⌘Z)"));
    connect(undo, &ChromeButton::clicked, this, &EditorToolbar::undoClicked);
    auto* redo = symbolButton(Symbol::arrowUturnForward, QStringLiteral("Redo (⇧⌘Z)"));
    connect(redo, &ChromeButton::clicked, this, &EditorToolbar::redoClicked);
    auto* clear = symbolButton(Symbol::trash, QStringLiteral("Remove all annotations"));
    connect(clear, &ChromeButton::clicked, this, &EditorToolbar::clearClicked);

    auto* copy = new ChromeButton(QStringLiteral("Copy ⌘C"));
    copy->setAccent(Chrome::Accent::blue);
    copy->setToolTip(QStringLiteral("Copy flattened image — paste straight into Cursor/Claude"));
    connect(copy, &ChromeButton::clicked, this, &EditorToolbar::copyClicked);
    auto* exportButton = new ChromeButton(QStringLiteral("Export ⌘S"));
    exportButton->setToolTip(QStringLiteral("Save flattened copy next to the original"));
    connect(exportButton, &ChromeButton::clicked, this, &EditorToolbar::exportClicked);

    for (ChromeButton* button : {undo, redo, clear, copy, exportButton})
        row.addWidget(button);
}

void EditorToolbar::selectTool(EditorTool tool)
{
    for (const auto& [its, button] : m_toolButtons)
        button->setToggledOn(its == tool);
}

void EditorToolbar::highlightColor(const QString& hex)
{
    for (const auto& [its, swatch] : m_colorButtons)
        swatch->setHighlighted(its == hex);
}
