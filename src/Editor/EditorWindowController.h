#pragma once

#include "Editor/SidecarWriter.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class CanvasView;
class EditorToolbar;
class EditorWindow;
class ZoomView;

/// One picture in a window of its own: its annotations are loaded, saved with every change, copied
/// and exported. Main thread only.
class EditorWindowController : public QObject {
    Q_OBJECT

public:
    /// Null when the picture cannot be loaded. The window is not shown yet.
    static std::unique_ptr<EditorWindowController> open(const QUrl& image, Clock clock);
    /// Saves, if the window is still open. The window goes later: the end may come from within one
    /// of its events.
    ~EditorWindowController() override;

    /// Called once, when the window closes.
    std::function<void(EditorWindowController*)> onClose;

    const QUrl& imageURL() const { return m_imageURL; }
    QWidget& window();
    CanvasView& canvas() { return *m_canvas; }
    EditorToolbar& toolbar() { return *m_toolbar; }
    ZoomView& zoomView() { return *m_zoomView; }

    /// Shows the window on top, with the keyboard.
    void makeKeyAndOrderFront();

    void copyFlattened();
    void exportFlattened();

private:
    EditorWindowController(const QUrl& image, Clock clock, CanvasView* canvas);

    void buildUI(double initialMagnification);
    void connectToolbar();
    void addShortcuts();
    /// Takes in what is being typed, and returns when all of it is in the sidecar.
    void saveAndWait();
    void flashTitle(const QString& message);
    void windowWillClose();

    QUrl m_imageURL;
    SidecarWriter m_sidecar;
    std::unique_ptr<EditorWindow> m_window;
    // In the window.
    CanvasView* m_canvas;
    EditorToolbar* m_toolbar = nullptr;
    ZoomView* m_zoomView = nullptr;
    bool m_isClosed = false;
};
