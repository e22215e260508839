#pragma once

#include "desktop/harness/App.h"
#include "desktop/harness/Windows.h"

namespace Desktop {

/// Somebody else's program on the desktop, and its window.
struct Helper {
    std::unique_ptr<App> app;
    Window window;
};

/// Opens a terminal that writes each line typed into it to `file`.
Outcome<Helper> openTerminal(const VirtualDesktop& desktop, const QString& title,
                             const QString& file);

/// Opens a file manager that shows a folder, whose name is the window's title.
Outcome<Helper> openFileManager(const VirtualDesktop& desktop, const QString& folder);
/// A place in its folder that no chip at the lower left of the screen covers.
QPoint folderView(const Helper& fileManager);

/// Opens an image editor without a picture; its window's title names the file that it edits.
Outcome<Helper> openImageEditor(const VirtualDesktop& desktop);

} // namespace Desktop
