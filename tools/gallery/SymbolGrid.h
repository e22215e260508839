#pragma once

#include <QWidget>

/// Every symbol with its name: at the sizes of the panels, on a button, and large.
class SymbolGrid : public QWidget {
    Q_OBJECT

public:
    /// As wide as given, as high as it needs, in points.
    SymbolGrid(int width, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};
