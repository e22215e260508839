#include "Editor/CanvasView.h"

#include "Editor/AnnotationRenderer.h"
#include "Editor/LabelField.h"
#include "Platform/Colors.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <utility>

using Geometry::Point;

namespace {

constexpr double fieldWidth = 320;
constexpr double fieldPadding = 12;

} // namespace

CanvasView::CanvasView(BaseImage image, QList<Annotation> annotations, QWidget* parent)
    : QWidget(parent)
    , m_image(std::move(image))
    , m_model(std::move(annotations))
    , m_picture(m_image, m_model, Platform::underPageColor())
{
    setObjectName(QStringLiteral("CanvasView"));
    setAccessibleName(QStringLiteral("Canvas"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_model.onRedraw = [this](const Geometry::Rect& area) { redraw(area); };
    m_model.onAnnotationsRedraw = [this](const Geometry::Rect& area) {
        m_picture.annotationsChanged(area);
        redraw(area);
    };
    m_model.onAppend = [this] {
        m_picture.annotationAppended();
        redraw(m_model.places()[m_model.annotations().size() - 1].painted);
    };
    m_model.onMove = [this](const Geometry::Rect& from, const Geometry::Rect& to) {
        m_picture.selectionMoved(from, to);
    };
    setZoom(1);
    toolChanged();
}

CanvasView::~CanvasView() = default;

void CanvasView::setZoom(double zoom)
{
    m_zoom = zoom;
    resize(static_cast<int>(std::ceil(m_image.size.width * zoom)),
           static_cast<int>(std::ceil(m_image.size.height * zoom)));
    if (m_activeTextField)
        placeTextField();
    update();
}

void CanvasView::styleChanged()
{
    if (m_activeTextField)
        placeTextField();
}

void CanvasView::toolChanged()
{
    if (m_isPanning)
        setCursor(Qt::ClosedHandCursor);
    else
        setCursor(m_model.tool() == EditorTool::select ? Qt::ArrowCursor : Qt::CrossCursor);
}

void CanvasView::setPanning(bool isPanning)
{
    m_isPanning = isPanning;
    toolChanged();
}

Geometry::Flip CanvasView::flip() const
{
    return Geometry::Flip({0, 0, m_image.size.width, m_image.size.height});
}

Point CanvasView::pointFrom(const QMouseEvent& event) const
{
    return flip().bottomLeftFromTopLeft(
        Geometry::TopLeftPoint{event.position().x() / m_zoom, event.position().y() / m_zoom});
}

// Text

void CanvasView::beginTextEntry(Point p)
{
    m_activeTextField = new LabelField(this);
    m_editingTextOrigin = p;
    placeTextField();
    connect(m_activeTextField, &LabelField::ended, this, [this] {
        commitActiveTextField();
        setFocus();
    });
    m_activeTextField->show();
    m_activeTextField->setFocus();
    Q_EMIT typingChanged(true);
}

void CanvasView::placeTextField()
{
    const double size = CanvasModel::textSize(m_model.strokeWidth());
    m_activeTextField->setLook(Annotation::color(m_model.colorHex()), size * m_zoom);
    const Geometry::TopLeftRect box = flip().topLeftFromBottomLeft(Geometry::Rect{
        m_editingTextOrigin.x, m_editingTextOrigin.y, fieldWidth, size + fieldPadding});
    m_activeTextField->setGeometry(
        QRectF(box.x * m_zoom, box.y * m_zoom, box.width * m_zoom, box.height * m_zoom)
            .toAlignedRect());
}

void CanvasView::commitActiveTextField()
{
    LabelField* const field = std::exchange(m_activeTextField, nullptr);
    if (!field)
        return;
    // It may be one of its own events that ends it, and hiding it takes the focus from it.
    field->disconnect(this);
    const QString typed = field->finished();
    // Hiding it would have Qt look for the next widget, and scroll to where that begins.
    if (window()->focusWidget() == field)
        setFocus();
    field->hide();
    field->deleteLater();
    m_model.commitText(typed, m_editingTextOrigin);
    Q_EMIT typingChanged(false);
}

// Pointer and keys

void CanvasView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore(); // the middle one moves the picture
        return;
    }
    m_pressBeganTyping = false;
    setFocus(Qt::MouseFocusReason);
    commitActiveTextField();
    const Point p = pointFrom(*event);
    switch (m_model.mouseDown(p)) {
    case CanvasModel::Press::handled:
        return;
    case CanvasModel::Press::beginsText:
        beginTextEntry(p);
        m_pressBeganTyping = true;
        return;
    }
}

void CanvasView::cancelPress()
{
    m_model.cancelPress();
    if (std::exchange(m_pressBeganTyping, false))
        commitActiveTextField(); // nothing has been typed
}

void CanvasView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons().testFlag(Qt::LeftButton))
        m_model.mouseDragged(pointFrom(*event));
    else
        event->ignore();
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_pressBeganTyping = false;
    m_model.mouseUp();
}

void CanvasView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        m_model.deleteSelection();
        return;
    case Qt::Key_Escape:
        if (m_model.selectedID())
            m_model.deselect();
        else if (!event->isAutoRepeat()) // held, it ends one thing
            window()->close();
        return;
    default: // all other keys
        QWidget::keyPressEvent(event);
    }
}

// Drawing

void CanvasView::redraw(const Geometry::Rect& area)
{
    // What comes from rounding to whole pixels, of the screen and of the picture.
    const double margin = 3 + m_zoom / m_image.pixelsPerPointX();
    const Geometry::TopLeftRect place = flip().topLeftFromBottomLeft(area);
    const QRectF scaled(place.x * m_zoom, place.y * m_zoom, place.width * m_zoom,
                        place.height * m_zoom);
    update((scaled.adjusted(-margin, -margin, margin, margin) & QRectF(rect())).toAlignedRect());
}

void CanvasView::paintSelection(QPainter& painter, const Geometry::Rect& bounds) const
{
    constexpr double width = 1.5;
    constexpr double radius = 4;
    constexpr double outside = 16; // what lies farther out is not seen
    const Geometry::TopLeftRect box = flip().topLeftFromBottomLeft(bounds);
    const QRectF near = QRectF(box.x, box.y, box.width, box.height) &
                        QRectF(-outside, -outside, m_image.size.width + 2 * outside,
                               m_image.size.height + 2 * outside);
    QPainterPath outline;
    outline.addRoundedRect(near, radius, radius);
    QPainterPathStroker dashes;
    dashes.setWidth(width);
    dashes.setCapStyle(Qt::FlatCap);
    dashes.setDashPattern({5 / width, 4 / width}); // in widths of the line
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(dashes.createStroke(outline), Platform::controlAccentColor());
}

void CanvasView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const QTransform toScreen = painter.deviceTransform();
    const double scale = m_zoom * toScreen.m11();
    m_picture.setScale(scale);
    // From here on in the screen's pixels, from a whole one on: the canvas's own corner may lie
    // between two.
    const QPoint corner(qRound(toScreen.dx()), qRound(toScreen.dy()));
    const QTransform onScreen =
        QTransform::fromTranslate(corner.x(), corner.y()) * toScreen.inverted();
    const auto pixels = [&](const QRect& part) {
        return toScreen.mapRect(QRectF(part)).toAlignedRect().translated(-corner);
    };
    QRegion area;
    for (const QRect& part : event->region())
        area += pixels(part);
    const QRect seen = pixels(visibleRegion().boundingRect()) | area.boundingRect();

    painter.setWorldTransform(onScreen);
    for (const QRect& part : area - m_picture.canvas())
        painter.fillRect(part, Platform::underPageColor());
    m_picture.paint(painter, area, seen & m_picture.canvas());
    if (const auto selected = m_model.selectedIndex()) {
        painter.setClipRect(m_picture.canvas());
        painter.setWorldTransform(QTransform::fromScale(scale, scale) * onScreen);
        paintSelection(painter, m_model.places()[*selected].bounds);
    }
}
