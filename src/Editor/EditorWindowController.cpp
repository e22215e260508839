#include "Editor/EditorWindowController.h"

#include "Editor/AnnotationRenderer.h"
#include "Editor/CanvasView.h"
#include "Editor/EditorLayout.h"
#include "Editor/EditorToolbar.h"
#include "Editor/EditorWindow.h"
#include "Editor/Sidecar.h"
#include "Editor/ZoomView.h"
#include "Media/Picture.h"
#include "Platform/Pasteboard.h"
#include "Platform/WindowTraits.h"
#include "Support/Log.h"
#include "Support/ReplaceFile.h"
#include "Support/Sibling.h"

#include <QGuiApplication>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

using namespace std::chrono_literals;

namespace {

constexpr auto flashTime = 1400ms;

std::optional<BaseImage> loadImage(const QString& path)
{
    const auto info = Picture::info(path);
    if (!info)
        return std::nullopt;
    auto pixels = Picture::load(path);
    if (!pixels)
        return std::nullopt;
    return BaseImage::ofDensity(std::move(*pixels), info->density);
}

} // namespace

std::unique_ptr<EditorWindowController> EditorWindowController::open(const QUrl& image, Clock clock)
{
    const QString path = image.toLocalFile();
    auto picture = loadImage(path);
    if (!picture)
        return nullptr;
    auto* canvas = new CanvasView(std::move(*picture), Sidecar::load(path));
    return std::unique_ptr<EditorWindowController>(
        new EditorWindowController(image, std::move(clock), canvas));
}

EditorWindowController::EditorWindowController(const QUrl& image, Clock clock, CanvasView* canvas)
    : m_imageURL(image)
    , m_sidecar(image.toLocalFile())
    , m_window(std::make_unique<EditorWindow>(image.toLocalFile(), std::move(clock)))
    , m_canvas(canvas)
{
    const Geometry::Size picture = m_canvas->image().size;
    const double magnification =
        EditorLayout::initialMagnification(picture, EditorWindow::visibleFrame().size());
    m_window->setObjectName(QStringLiteral("EditorWindow"));
    m_window->willClose = [this] { windowWillClose(); };
    buildUI(magnification);
    m_window->place(EditorLayout::contentSize(picture, magnification),
                    EditorLayout::smallestWindow);

    m_canvas->model().onChange = [this] { m_sidecar.save(m_canvas->model().annotations()); };
    // A session that ends may not wait for us any longer than this.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
            &EditorWindowController::saveAndWait, Qt::DirectConnection);
    connectToolbar();
    addShortcuts();
}

EditorWindowController::~EditorWindowController()
{
    if (!m_isClosed)
        saveAndWait();
    m_canvas->model().onChange = {};
    m_window->willClose = {};
    m_window->hide();
    m_window.release()->deleteLater();
}

QWidget& EditorWindowController::window()
{
    return *m_window;
}

void EditorWindowController::buildUI(double initialMagnification)
{
    m_toolbar = new EditorToolbar;
    m_toolbar->setFixedHeight(static_cast<int>(EditorLayout::toolbarHeight));
    m_zoomView = new ZoomView(m_canvas);
    auto* column = new QVBoxLayout(m_window.get());
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolbar);
    column->addWidget(m_zoomView);
    m_toolbar->selectTool(m_canvas->model().tool());
    m_toolbar->highlightColor(m_canvas->model().colorHex());
    m_canvas->setZoom(initialMagnification);
    // Once the window has been laid out.
    QTimer::singleShot(0, this, [this, initialMagnification] {
        m_zoomView->setMagnification(initialMagnification);
        m_canvas->setFocus();
    });
}

void EditorWindowController::connectToolbar()
{
    CanvasModel& model = m_canvas->model();
    connect(m_toolbar, &EditorToolbar::toolClicked, this, [this, &model](EditorTool tool) {
        m_canvas->commitActiveTextField();
        model.setTool(tool);
        m_canvas->toolChanged();
        m_toolbar->selectTool(tool);
        m_canvas->setFocus();
    });
    connect(m_toolbar, &EditorToolbar::colorClicked, this, [this, &model](const QString& hex) {
        model.setColorHex(hex);
        m_canvas->styleChanged();
        m_toolbar->highlightColor(hex);
    });
    connect(m_toolbar, &EditorToolbar::strokeChanged, this, [this, &model](double width) {
        model.setStrokeWidth(width);
        m_canvas->styleChanged();
    });
    connect(m_toolbar, &EditorToolbar::undoClicked, this, [&model] { model.undo(); });
    connect(m_toolbar, &EditorToolbar::redoClicked, this, [&model] { model.redo(); });
    connect(m_toolbar, &EditorToolbar::clearClicked, this, [&model] { model.clear(); });
    connect(m_toolbar, &EditorToolbar::copyClicked, this, &EditorWindowController::copyFlattened);
    connect(m_toolbar, &EditorToolbar::exportClicked, this,
            &EditorWindowController::exportFlattened);
    connect(m_window.get(), &EditorWindow::returnPressed, this,
            &EditorWindowController::copyFlattened);
}

void EditorWindowController::addShortcuts()
{
    CanvasModel& model = m_canvas->model();
    using Action = std::function<void()>;
    const auto add = [this](QKeyCombination keys, bool repeats, const Action& action) {
        auto* shortcut = new QShortcut(QKeySequence(keys), m_window.get());
        shortcut->setAutoRepeat(repeats); // while the keys are held
        connect(shortcut, &QShortcut::activated, this, action);
        // While a label is typed these keys are its field's.
        connect(m_canvas, &CanvasView::typingChanged, shortcut,
                [shortcut](bool isTyping) { shortcut->setEnabled(!isTyping); });
    };
    const Action undo = [&model] { model.undo(); };
    const Action redo = [&model] { model.redo(); };
    const Action copy = [this] { copyFlattened(); };
    const Action save = [this] { exportFlattened(); };
    const Action close = [this] { m_window->close(); };
    // Whatever else is held; Shift alone makes a difference, and to one of them.
    for (const Qt::KeyboardModifiers others :
         {Qt::KeyboardModifiers(Qt::NoModifier), Qt::KeyboardModifiers(Qt::AltModifier),
          Qt::KeyboardModifiers(Qt::MetaModifier), Qt::AltModifier | Qt::MetaModifier})
    {
        for (const bool isShifted : {false, true}) {
            const Qt::KeyboardModifiers modifiers =
                others | Qt::ControlModifier |
                (isShifted ? Qt::KeyboardModifiers(Qt::ShiftModifier) : Qt::NoModifier);
            add(modifiers | Qt::Key_Z, true, isShifted ? redo : undo);
            add(modifiers | Qt::Key_C, false, copy);
            add(modifiers | Qt::Key_S, false, save);
            add(modifiers | Qt::Key_W, false, close);
        }
    }
    add(Qt::CTRL | Qt::Key_Plus, true, [this] { m_zoomView->zoomIn(); });
    add(Qt::CTRL | Qt::Key_Equal, true, [this] { m_zoomView->zoomIn(); });
    add(Qt::CTRL | Qt::Key_Minus, true, [this] { m_zoomView->zoomOut(); });
    add(Qt::CTRL | Qt::Key_0, false, [this] { m_zoomView->setMagnification(1); });
}

void EditorWindowController::makeKeyAndOrderFront()
{
    Platform::bringToFront(*m_window);
}

void EditorWindowController::saveAndWait()
{
    m_canvas->commitActiveTextField();
    m_sidecar.save(m_canvas->model().annotations());
    m_sidecar.finish();
}

void EditorWindowController::copyFlattened()
{
    m_canvas->commitActiveTextField();
    const auto png =
        AnnotationRenderer::flattenedPng(m_canvas->image(), m_canvas->model().annotations());
    if (!png)
        return;
    // The pixels alone: the file shows what redactions hide.
    Platform::writePasteboard({.png = *png, .fileURL = std::nullopt});
    flashTitle(QStringLiteral("Copied ✓"));
}

void EditorWindowController::exportFlattened()
{
    m_canvas->commitActiveTextField();
    const auto png =
        AnnotationRenderer::flattenedPng(m_canvas->image(), m_canvas->model().annotations());
    if (!png)
        return;
    const QUrl copy = sibling(m_imageURL, QStringLiteral(" annotated.png"));
    if (const PossibleFailure failure = replaceFile(copy.toLocalFile(), *png)) {
        flashTitle(QStringLiteral("Export failed"));
        Log::line(QStringLiteral("export failed: ") + QString::fromStdString(failure->message));
        return;
    }
    flashTitle(QStringLiteral("Exported ✓ ") + copy.fileName());
}

void EditorWindowController::flashTitle(const QString& message)
{
    m_window->flashTitle(message, flashTime);
}

void EditorWindowController::windowWillClose()
{
    if (std::exchange(m_isClosed, true))
        return;
    saveAndWait();
    if (onClose)
        onClose(this);
}
