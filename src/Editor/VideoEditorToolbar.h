#pragma once

#include "ChromeViews.h"

/// The bar above a video: what can be made of it.
class VideoEditorToolbar : public ChromeBarView {
    Q_OBJECT

public:
    explicit VideoEditorToolbar(QWidget* parent = nullptr);

Q_SIGNALS:
    void trimClicked();
    void saveClicked();
    void exportClicked();
    void copyClicked();
};
