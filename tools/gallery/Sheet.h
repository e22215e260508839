#pragma once

#include "Chrome.h"
#include "ChromeButton.h"

#include <QWidget>

/// The whole visual kit on one sheet, in real widgets that are never shown.
class Sheet : public QWidget {
    Q_OBJECT

public:
    Sheet();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// Each adds a section whose heading stands at `y` and returns where the next one goes.
    int addButtons(int y);
    int addBars(int y);
    int addPills(int y);
    int addPalette(int y);
    int addSymbols(int y);

    void addHeading(const QString& text, int y);
    QWidget* addCaption(const QString& text, int x, int y, int width);
    void addButtonStates(Chrome::Accent accent, int y);
};
