#pragma once

#include "ChromeViews.h"
#include "Editor/CanvasModel.h"

#include <utility>
#include <vector>

class ChromeButton;
class ColorSwatch;
class QHBoxLayout;
class SegmentedControl;

/// The bar above the canvas. It says what the user has chosen, and shows what it is told to.
class EditorToolbar : public ChromeBarView {
    Q_OBJECT

public:
    explicit EditorToolbar(QWidget* parent = nullptr);

    /// Shows which tool is chosen.
    void selectTool(EditorTool tool);
    /// Shows which colour is chosen; none when it is not among the swatches.
    void highlightColor(const QString& hex);

    const std::vector<std::pair<EditorTool, ChromeButton*>>& toolButtons() const
    {
        return m_toolButtons;
    }
    const std::vector<std::pair<QString, ColorSwatch*>>& colorButtons() const
    {
        return m_colorButtons;
    }

Q_SIGNALS:
    void toolClicked(EditorTool tool);
    void colorClicked(const QString& hex);
    /// In points.
    void strokeChanged(double width);
    void undoClicked();
    void redoClicked();
    void clearClicked();
    void copyClicked();
    void exportClicked();

private:
    void addTools(QHBoxLayout& row);
    void addColors(QHBoxLayout& row);
    void addStrokes(QHBoxLayout& row);
    void addCommands(QHBoxLayout& row);

    // Children, in the order of the bar.
    std::vector<std::pair<EditorTool, ChromeButton*>> m_toolButtons;
    std::vector<std::pair<QString, ColorSwatch*>> m_colorButtons;
};
